#include <benchmark/benchmark.h>

#include <bench/Job.h>
#include <bench/rq/bridge/details.h>
#include <host/msh/Detail.h>
#include <rq/bridge/MSHPrimCollectPoly.h>
#include <rq/data/DANumeric.h>
#include <rq/prim/RefineCollect.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace
{
using bench::kCells;
using bench::QuadMesh;
using bench::Work;

constexpr double kFaces = double(kCells) * kCells;

RQ_PrimitiveHandle refined(const MOD_ConstDetailHandle &detail, const RQ_RefineParms *parms = nullptr)
{
    RQ_RefineCollect collect;
    RQ_MSHDetail::makeDetail(detail)->refine(collect, parms);
    return collect.entries() > 0 ? collect.getPrim(collect.entries() - 1) : RQ_PrimitiveHandle();
}

/// How many faces are missing.
double missingFaces(const RQ_PrimitiveHandle &primitive, double expected)
{
    const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(primitive.get());
    return std::abs(expected - double(mesh ? mesh->getFaceCount() : 0));
}

/// The bound collector of a caller: polygons one by one.
class OneByOne final : public RQ_MSHPrimCollectPoly
{};

enum class Kind
{
    PLAIN,      ///< quads and nothing else
    MIXED,      ///< and a cloud of particles
    HIDDEN,     ///< every hundredth quad is hidden
    UNEVEN,     ///< triangles and quads
    ONE_BY_ONE  ///< quads, given to a caller's collector
};

MOD_ConstDetailHandle makeDetail(Kind kind, const MOD_DetailHandle &geometry = {})
{
    const QuadMesh quads(kCells);
    if (kind == Kind::UNEVEN)
    {
        std::vector<int32_t> counts(size_t(quads.faces()), 4);
        for (size_t i = 0; i < counts.size(); i += 2)
            counts[i] = 3;
        std::vector<int32_t> corners;
        for (size_t face = 0; face < counts.size(); ++face)
            corners.insert(corners.end(), quads.indices.begin() + 4 * face, quads.indices.begin() + 4 * face + counts[face]);
        MOD_Edit edit(geometry);
        if (!edit.appendPoints(quads.points()) || !edit.appendPolygons(counts, corners, true))
            return {};
        bench::addPositions(edit, quads.positions);
        return edit.commit();
    }
    const auto change = [kind](MOD_Edit &edit) {
        const int32_t cloud[] = {0, 1, 2};
        if (kind == Kind::MIXED)
            static_cast<void>(edit.appendParticles(cloud));
        for (int64_t face = 0; kind == Kind::HIDDEN && face < edit.primitiveCount(); face += 100)
            edit.group(ELM_OWNER_PRIMITIVE, ELM_HIDDEN_GROUP_NAME)->set(face);
    };
    return bench::makeDetail(quads, change, geometry);
}

using Collecting = void (*)(const RQ_MSHPrimCollect &collector, const RQ_MSHDetailListHandle &details,
                            RQ_MSHPrimCollectData *data);

void collectAll(const RQ_MSHPrimCollect &collector, const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data)
{
    const MSH_Detail &detail = *details->getDetail();
    static_cast<const RQ_MSHPrimCollectPoly &>(collector).collectAll(details, data, detail,
                                                                     detail.range(ELM_OWNER_PRIMITIVE), detail.hidden());
}

/// As the walk does it for a caller's collector.
void collectOneByOne(const RQ_MSHPrimCollect &collector, const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data)
{
    const MSH_Detail &detail = *details->getDetail();
    ELM_Group wanted(ELM_OWNER_PRIMITIVE, BAS_StringHolder());
    if (detail.hidden())
    {
        wanted.unite(detail.range(ELM_OWNER_PRIMITIVE));
        wanted.subtract(*detail.hidden());
    }
    for (const auto [begin, end] : (detail.hidden() ? wanted.range() : detail.range(ELM_OWNER_PRIMITIVE)).blocks())
        for (ELM_Offset i = begin; i < end; ++i)
        {
            const MSH_Primitive primitive(detail, i);
            const MSH_Primitive *const pointer = &primitive;
            collector.collect(details, &pointer, 1, data);
        }
    // What came one by one is read before the next batch.
    static_cast<const RQ_MSHPrimCollectPoly &>(collector).collectAll(details, data, detail, ELM_Range(), nullptr);
}

/// The walk alone: what the collector of polygons gathers.
void addWalk(const char *who, Kind kind, Collecting collect = collectAll, int threads = 1)
{
    bench::add({"walk", "quads1M", who, threads, kFaces, 0.0, false, [=] {
                    const RQ_MSHDetailListHandle details = std::make_shared<RQ_MSHDetailList>(makeDetail(kind));
                    const auto run = [=] {
                        const RQ_MSHPrimCollectPoly collector;
                        const std::shared_ptr<RQ_MSHPrimCollectData> data(collector.beginCollecting(details, nullptr));
                        collect(collector, details, data.get());
                        return std::shared_ptr<void>(data);
                    };
                    return Work{run, {}};
                }});
}

/// From the detail to the mesh.
void addRefine(const char *who, Kind kind, int threads = 1)
{
    bench::add({"detail_to_mesh", "quads1M", who, threads, kFaces, kFaces * 28.0, false, [kind] {
                    const MOD_ConstDetailHandle detail = makeDetail(kind);
                    if (kind == Kind::ONE_BY_ONE)
                        RQ_MSHPrimCollect::bind(std::make_shared<OneByOne>(), ELM_PRIMITIVE_POLYGON);
                    detail.readLock()->hasUnusedPoints();
                    const double expected = kind == Kind::HIDDEN ? 0.99 * kFaces : kFaces;
                    return Work{[=] { return bench::keep(refined(detail)); },
                                [=] {
                                    const int64_t before = bench::copiedBytes();
                                    const RQ_PrimitiveHandle mesh = refined(detail);
                                    return missingFaces(mesh, expected) + double(bench::copiedBytes() - before);
                                }};
                }});
}

/// What the prototype does for the same: append every face to growing lists, and look up the point of every vertex.
void addPrototype()
{
    bench::add({"detail_to_mesh", "quads1M", "prototype", 1, kFaces, kFaces * 28.0, false, [] {
                    const auto quads = std::make_shared<QuadMesh>(kCells);
                    const auto pages = std::make_shared<std::vector<const int32_t *>>();
                    for (size_t i = 0; i < quads->indices.size(); i += 1024)
                        pages->push_back(quads->indices.data() + i);
                    return Work{[=] {
                                    struct Lists
                                    {
                                        std::vector<int64_t> primitives, vertices;
                                        std::vector<int32_t> counts, points;
                                        bool rising = true, narrow = true;
                                        int32_t least = INT32_MAX, most = 0;
                                    };
                                    const auto lists = std::make_shared<Lists>();
                                    lists->primitives.reserve(size_t(quads->faces()));
                                    lists->counts.reserve(size_t(quads->faces()));
                                    lists->vertices.reserve(quads->indices.size());
                                    int64_t last = -1;
                                    for (int64_t face = 0; face < quads->faces(); ++face)
                                    {
                                        lists->primitives.push_back(face);
                                        lists->counts.push_back(4);
                                        lists->least = std::min(lists->least, 4);
                                        lists->most = std::max(lists->most, 4);
                                        for (int64_t vertex = 4 * face; vertex < 4 * face + 4; ++vertex)
                                        {
                                            lists->rising &= vertex >= last;
                                            lists->narrow &= vertex < 0x40000000;
                                            last = vertex;
                                            lists->vertices.push_back(vertex);
                                        }
                                    }
                                    lists->points.resize(lists->vertices.size());
                                    for (size_t i = 0; i < lists->points.size(); ++i)
                                        lists->points[i] =
                                            (*pages)[size_t(lists->vertices[i] >> 10)][lists->vertices[i] & 1023];
                                    return std::shared_ptr<void>(lists);
                                },
                                {}};
                }});
}

/// The points of an explicit list of all vertices, beside a plain loop; and of a run of them.
void addVertexPoints()
{
    constexpr double kVertices = 4.0 * kFaces;
    struct Lists
    {
        MOD_ConstDetailHandle detail = makeDetail(Kind::PLAIN);
        RQ_MSHOffsetList run{*detail.readLock(), ELM_OWNER_VERTEX}, list = run;
    };
    const auto add = [](const char *who, double bytes, std::shared_ptr<void> (*make)(const Lists &)) {
        bench::add({"vertex_points", "quads1M", who, 1, kVertices, bytes, false, [make] {
                        const auto lists = std::make_shared<Lists>();
                        lists->list.set(0, 1);
                        lists->list.hash();
                        return Work{[=] { return make(*lists); }, {}};
                    }});
    };
    add("ours", kVertices * 12.0,
        [](const Lists &lists) { return bench::keep(lists.list.createVertexPointArray(lists.detail)); });
    add("plain loop", kVertices * 12.0, [](const Lists &lists) {
        const auto array = std::make_shared<BAS_IntrusivePtr<RQ_DANumeric<int32_t>>>(
            new RQ_DANumeric<int32_t>(lists.list.entries(), 1, RQ_TYPE_NONE));
        const int32_t *from = lists.detail.readLock()->vertexPoint().contiguous32();
        const int32_t *rows = lists.list.offsetList().data32();
        for (int64_t i = 0; i < lists.list.entries(); ++i)
            (*array)->data()[i] = from[rows[i]];
        return std::shared_ptr<void>(array);
    });
    add("ours, a run", 0.0, [](const Lists &lists) { return bench::keep(lists.run.createVertexPointArray(lists.detail)); });
}

/// A detail of few polygons: how long until it can be drawn, and what it costs to draw it again after a change.
void addSmall()
{
    constexpr int64_t kTurns = 1000;
    bench::add({"detail_to_mesh", "quads100", "ours", 1, double(kTurns), 0.0, false, [] {
                    const MOD_ConstDetailHandle detail = bench::makeDetail(QuadMesh(10));
                    return Work{[=] {
                                    for (int64_t i = 0; i < kTurns; ++i)
                                        benchmark::DoNotOptimize(refined(detail));
                                    return std::shared_ptr<void>();
                                },
                                [=] { return missingFaces(refined(detail), 100.0); }};
                }});
}

/// Positions change, nothing else: follow the new snapshot, or refine it.
void addUpdate(const char *mesh, Kind kind)
{
    // Following takes some 200 ns: fewer turns would measure the clock.
    const auto add = [=](const char *who, bool rebinds) {
        const int64_t turns = rebinds ? 20000 : 100;
        bench::add({"changed_positions", mesh, who, 1, double(turns), 0.0, false, [=] {
                        const MOD_DetailHandle geometry;
                        const MOD_ConstDetailHandle before = makeDetail(kind, geometry);
                        MOD_Edit edit(geometry);
                        edit.attribute(ELM_OWNER_POINT, ELM_POSITION_NAME, ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)
                            ->modifyAll<float>()[0] += 1.0f;
                        const MOD_ConstDetailHandle after = edit.commit();
                        after.readLock()->hasUnusedPoints();
                        const RQ_PrimitiveHandle primitive = refined(before);
                        const RQ_RefineParms parms;
                        return Work{[=] {
                                        for (int64_t turn = 0; turn < turns; ++turn)
                                            if (rebinds)
                                                primitive->updateGeoPrim(turn % 2 ? before : after, parms);
                                            else
                                                benchmark::DoNotOptimize(refined(turn % 2 ? before : after));
                                        return std::shared_ptr<void>();
                                    },
                                    {}};
                    }});
    };
    add("ours, followed", true);
    add("ours, refined anew", false);
}

const bool registered = [] {
    for (const int threads : {1, 2})
    {
        addWalk("ours", Kind::PLAIN, collectAll, threads);
        addWalk("ours, hidden group", Kind::HIDDEN, collectAll, threads);
        addWalk("ours, triangles and quads", Kind::UNEVEN, collectAll, threads);
    }
    addWalk("ours, one by one", Kind::PLAIN, collectOneByOne);
    addWalk("ours, one by one, hidden group", Kind::HIDDEN, collectOneByOne);
    addWalk("ours, one by one, triangles and quads", Kind::UNEVEN, collectOneByOne);
    addPrototype();
    for (const int threads : {1, 2})
    {
        addRefine("ours", Kind::PLAIN, threads);
        addRefine("ours, beside particles", Kind::MIXED, threads);
        addRefine("ours, hidden group", Kind::HIDDEN, threads);
        addRefine("ours, triangles and quads", Kind::UNEVEN, threads);
        addRefine("ours, one by one", Kind::ONE_BY_ONE, threads);
    }
    addVertexPoints();
    addSmall();
    addUpdate("quads1M", Kind::PLAIN);
    addUpdate("quads1M, some hidden", Kind::HIDDEN);
    addUpdate("triangles and quads1M", Kind::UNEVEN);
    return true;
}();
}  // namespace
