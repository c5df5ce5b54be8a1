#include <algorithm>
#include <functional>
#include <list>
#include <numeric>
#include <random>
#include <thread>

#include <tbb/task_arena.h>

#include <host/bas/CopyCounter.h>
#include <host/bas/Parallel.h>
#include <host/elm/PrimitiveFactory.h>
#include <host/msh/Faces.h>
#include <rq/bridge/MSHElementId.h>
#include <rq/bridge/detail/ManyFaces.h>
#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimCurveMesh.h>
#include <tests/interrupter.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
constexpr const char *kSomeGroup = "some";

/// Faces, polylines, primitives that consist of faces, and particles in any order, loose vertices and points, a hidden group
/// and another one.  Every primitive and vertex has its number as an attribute.
MOD_ConstDetailHandle makeMixedDetail(unsigned seed, int64_t points, int primitives, bool looseVertices, bool holes)
{
    std::mt19937 random(seed);
    const auto below = [&](int64_t end) { return int64_t(random() % uint64_t(end)); };
    MOD_Edit edit{MOD_DetailHandle()};
    EXPECT_TRUE(edit.appendPoints(points));
    const auto pointsOf = [&](int count) {
        std::vector<int32_t> of(static_cast<size_t>(count));
        for (int32_t &point : of)
            point = int32_t(below(points - points / 8));
        return of;
    };
    const auto appendMany = [&](std::vector<int32_t> of, int64_t kind) {
        const int32_t corners = int32_t(of.size()), rows = corners < 1000 ? 2 : 100;
        switch (kind)
        {
        case 0:
            of[below(corners)] = of[below(corners)];  // a seam, often
            return edit.appendTriangleStrips({&corners, 1}, of);
        case 1:
            return edit.appendTriangleFans({&corners, 1}, of);
        case 2:
            return edit.appendGrids({rows, corners / rows, below(2) > 0, below(2) > 0}, of);
        default:
            std::vector<int32_t> sizes(size_t(rows == 2 ? below(3) : corners), 3), vertices;
            sizes.push_back(int32_t(below(5)));
            for (int64_t i = std::accumulate(sizes.begin(), sizes.end(), int64_t(0)); i > 0; --i)
                vertices.push_back(int32_t(below(corners)));
            return edit.appendSoup({sizes, vertices}, of);
        }
    };
    for (int done = 0; done < primitives;)
    {
        // Runs of equal faces here and there, single ones elsewhere; few particle systems.
        const int kind = int(below(16));
        const int count = std::min<int>(primitives - done, kind < 4 ? 1 + int(below(3000)) : 1);
        const int corners = kind == 4 ? 0 : 3 + int(below(3));
        const std::vector<int32_t> of = pointsOf(count * corners);
        if (kind == 15 && below(20) == 0)
            EXPECT_TRUE(edit.appendParticles(of));
        else if (kind == 13)
        {
            const std::vector<int32_t> all = pointsOf(2 * corners);
            EXPECT_TRUE(appendMany(all, below(4))) << edit.message();
        }
        else
            EXPECT_TRUE(edit.appendPolygons(std::vector<int32_t>(size_t(count), corners), of, kind != 14));
        done += count;
    }
    // In a large detail one of each kind that is so large that threads share it.
    for (int64_t kind = 0; kind < 4 && primitives > 20000; ++kind)
        EXPECT_TRUE(appendMany(pointsOf(20000), kind)) << edit.message();
    float *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->writeAll<float>();
    std::iota(p, p + 3 * points, 0.0f);
    int32_t *face = edit.attribute(ELM_OWNER_PRIMITIVE, "number", ELM_STORAGE_INT32)->writeAll<int32_t>();
    std::iota(face, face + edit.primitiveCount(), 0);
    for (int64_t i = 0; i < edit.primitiveCount(); ++i)
    {
        if (below(7) == 0)
            edit.group(ELM_OWNER_PRIMITIVE, ELM_HIDDEN_GROUP_NAME)->set(i);
        if (below(3) > 0)
            edit.group(ELM_OWNER_PRIMITIVE, kSomeGroup)->set(i);
    }
    for (int i = 0; looseVertices && i < 5; ++i)
        EXPECT_TRUE(edit.setVertexPoint(below(edit.vertexCount()), -1));
    for (int i = 0; holes && i < 30; ++i)
    {
        const int64_t first = below(primitives), loose = points - 1 - below(points / 8);
        EXPECT_TRUE(edit.remove(ELM_Range(ELM_OWNER_PRIMITIVE, first, std::min<int64_t>(primitives, first + below(50)))));
        EXPECT_TRUE(edit.remove(ELM_Range(ELM_OWNER_POINT, loose, loose + 1)));
    }
    return edit.commit();
}

struct Variant
{
    const char *what;
    bool skipsHidden, onlySome, inRange, looseVertices, holes;
};

const Variant kVariants[] = {
    {"everything", false, false, false, false, false},
    {"without the hidden ones", true, false, false, false, false},
    {"one group", false, true, false, false, false},
    {"a range of primitives", true, false, true, false, false},
    {"all at once", true, true, true, false, true},
    {"vertices without points", false, false, false, true, false},
    {"with vacant offsets", false, false, false, false, true},
};

struct Refinement
{
    MOD_ConstDetailHandle detail;
    std::shared_ptr<const ELM_Range> range;
    RQ_RefineParms parms;

    Refinement(const Variant &variant, const MOD_ConstDetailHandle &geometry) : detail(geometry)
    {
        parms.setSkipHidden(variant.skipsHidden);
        parms.setGeoRefineGroup(variant.onlySome ? kSomeGroup : nullptr);
        const int64_t primitives = geometry.readLock()->capacity(ELM_OWNER_PRIMITIVE);
        if (variant.inRange)
            range = std::make_shared<ELM_Range>(ELM_OWNER_PRIMITIVE, primitives / 5, primitives - primitives / 7);
    }

    std::vector<RQ_PrimitiveHandle> run() const { return refine(detail, &parms, range); }

    bool wants(ELM_Offset primitive, bool skipsHidden, bool onlySome) const
    {
        const MSH_Detail &d = *detail.readLock();
        return !(skipsHidden && d.hidden()->contains(primitive)) && (!range || range->contains(primitive)) &&
               !(onlySome && !d.group(ELM_OWNER_PRIMITIVE, kSomeGroup)->contains(primitive));
    }
};

/// What a walk that does one thing after the other sees: numbers of primitives and points, all in order.
struct Seen
{
    std::vector<int64_t> others, faces, open, loosePoints;  // others: particle systems
    std::vector<float> corners, openCorners;                // x of every face's points, and of every polyline's

    bool operator==(const Seen &) const = default;
};

Seen walkPlainly(const Refinement &refinement, const Variant &variant)
{
    const MSH_Detail &detail = *refinement.detail.readLock();
    Seen seen;
    std::vector<bool> used(size_t(detail.capacity(ELM_OWNER_POINT)), false);
    for (ELM_Offset i = 0; i < detail.capacity(ELM_OWNER_PRIMITIVE); ++i)
    {
        const MSH_Primitive primitive(detail, i);
        if (primitive.type() == ELM_PRIMITIVE_NONE)
            continue;
        const auto noteFace = [&](const auto &face, int64_t count) {
            std::vector<float> along;
            for (int64_t v = 0; v < count && face.point(v) >= 0; ++v)
                along.push_back(detail.positions().pages<float>()->value(face.point(v)));
            if (int64_t(along.size()) < count)
                return;
            const bool isOpen = primitive.type() == ELM_PRIMITIVE_POLYGON && !detail.isClosed(i);
            (isOpen ? seen.open : seen.faces).push_back(i);
            std::vector<float> &corners = isOpen ? seen.openCorners : seen.corners;
            corners.insert(corners.end(), along.begin(), along.end());
        };
        for (int64_t v = 0; v < primitive.vertexCount(); ++v)
            if (primitive.point(v) >= 0)
                used[size_t(primitive.point(v))] = true;
        if (!refinement.wants(i, variant.skipsHidden, variant.onlySome))
            continue;
        if (const MSH_Faces faces(primitive); faces.isValid())
            for (const MSH_Faces::Face face : faces)
                noteFace(face, face.size());
        else if (primitive.type() == ELM_PRIMITIVE_POLYGON)
            noteFace(primitive, primitive.vertexCount());
        else
            seen.others.push_back(i);
    }
    for (int64_t point = 0; point < detail.capacity(ELM_OWNER_POINT) && !refinement.range && !variant.onlySome; ++point)
        if (!used[size_t(point)] && detail.isLive(ELM_OWNER_POINT, point) && detail.topologyIsValid())
            seen.loosePoints.push_back(point);
    return seen;
}

bool has(const RQ_AttributeListHandle &list, const char *name) { return list && list->hasName(name); }

Seen look(const std::vector<RQ_PrimitiveHandle> &primitives)
{
    Seen seen;
    const auto noteMesh = [&](const RQ_PrimPolygonMesh &mesh) {
        std::string why;
        EXPECT_TRUE(mesh.validate(&why)) << why;
        for (int64_t face = 0; face < mesh.getFaceCount(); ++face)
        {
            seen.faces.push_back(mesh.getUniform()->get("number")->getI64(face));
            for (int64_t i = 0; i < mesh.getFaceCountArray().getCount(face); ++i)
                seen.corners.push_back(mesh.getShared()->get("P")->getF32(mesh.getPoint(face, i)));
        }
    };
    const auto noteCurves = [&](const RQ_PrimCurveMesh &curves) {
        std::string why;
        EXPECT_TRUE(curves.validate(&why)) << why;
        for (int64_t i = 0; i < curves.getCurveCount(); ++i)
            seen.open.push_back(curves.getUniform()->get("number")->getI64(i));
        for (int64_t i = 0; i < curves.getVertexCount(); ++i)
            seen.openCorners.push_back(curves.getVertex()->get("P")->getF32(i));
    };
    const std::function<void(const RQ_PrimitiveHandle &)> note = [&](const RQ_PrimitiveHandle &primitive) {
        if (const auto *curves = as<RQ_PrimCurveMesh>(primitive))
            noteCurves(*curves);
        if (const auto *mesh = as<RQ_PrimPolygonMesh>(primitive))
            noteMesh(*mesh);
        if (const auto *points = as<RQ_PrimPointMesh>(primitive); points && has(points->getDetailAttributes(), "number"))
            seen.others.push_back(points->getDetailAttributes()->get("number")->getI64(0));
        else if (points)
            for (int64_t i = 0; i < points->getPointCount(); ++i)
                seen.loosePoints.push_back(int64_t(points->getPoints()->get("P")->getF32(i)) / 3);
        if (const auto *several = as<RQ_PrimCollect>(primitive))
            for (int64_t i = 0; i < several->entries(); ++i)
                note(several->getPrim(i));
    };
    std::for_each(primitives.begin(), primitives.end(), note);
    return seen;
}

/// A binding that ends with the scope.
struct Bound
{
    ELM_PrimitiveTypeId type;

    Bound(const std::shared_ptr<const RQ_MSHPrimCollect> &collector, ELM_PrimitiveTypeId type_) : type(type_)
    {
        RQ_MSHPrimCollect::bind(collector, type);
    }
    ~Bound() { RQ_MSHPrimCollect::bind(nullptr, type); }
};

TEST(Walk, SeesWhatAPlainLoopSees)
{
    for (unsigned seed = 0; seed < 4; ++seed)
        for (const Variant &variant : kVariants)
        {
            SCOPED_TRACE(std::string(variant.what) + ", seed " + std::to_string(seed));
            // The last ones are large enough for several threads.
            const MOD_ConstDetailHandle detail =
                makeMixedDetail(seed, seed < 3 ? 500 : 30000, seed < 3 ? 3000 : 30000, variant.looseVertices, variant.holes);
            const Refinement refinement(variant, detail);
            EXPECT_TRUE(look(refinement.run()) == walkPlainly(refinement, variant));
        }
}

TEST(Walk, GivesTheSameOneByOneAndAtOnce)
{
    for (const Variant &variant : kVariants)
    {
        SCOPED_TRACE(variant.what);
        const Refinement refinement(variant, makeMixedDetail(5, 30000, 30000, variant.looseVertices, variant.holes));
        const std::string atOnce = textOf(refinement.run());
        std::list<Bound> bound;
        const auto collector = std::make_shared<RQ_MSHPrimCollectPoly>();
        for (const ELM_PrimitiveTypeId type : rq::kTypesOfFaces)
            bound.emplace_back(collector, type);
        EXPECT_TRUE(textOf(refinement.run()) == atOnce);
        // Of one type only: what the others make is told apart.
        bound.erase(std::next(bound.begin()), bound.end());
        EXPECT_EQ(look(refinement.run()).others, walkPlainly(refinement, variant).others);
    }
}

TEST(Walk, GivesTheSameBytesForAnyNumberOfWorkers)
{
    const auto recordMerging = std::make_shared<Recorder>(true), record = std::make_shared<Recorder>(false);
    for (const Variant &variant : kVariants)
    {
        const MOD_ConstDetailHandle detail = makeMixedDetail(7, 25000, 25000, variant.looseVertices, variant.holes);
        const Refinement refinement(variant, detail);
        const std::pair<const char *, std::shared_ptr<const RQ_MSHPrimCollect>> kCases[] = {
            {"built in", nullptr},
            {"one by one", std::make_shared<RQ_MSHPrimCollectPoly>()},
            {"merging", recordMerging},
            {"not merging", record}};
        for (const auto &[what, collector] : kCases)
        {
            SCOPED_TRACE(std::string(variant.what) + ", " + what);
            std::string expected;
            const Bound bound(collector, ELM_PRIMITIVE_POLYGON);
            for (const int workers : {1, 2, 3, 8, 64})
            {
                const BAS_Threads::Limit limit(workers);
                tbb::task_arena arena(workers);
                const std::string text = arena.execute([&] { return textOf(refinement.run()); });
                if (expected.empty())
                    expected = text;
                EXPECT_TRUE(text == expected) << workers << " workers";
            }
        }
    }
}

// Whoever calls the collector of polygons need not keep to their order, nor end one data before another begins.
TEST(Walk, KeepsTheOrderInWhichPolygonsAreGiven)
{
    const MOD_ConstDetailHandle detail = makeMixedDetail(5, 400, 300, false, false);
    const auto details = std::make_shared<RQ_MSHDetailList>(detail);
    const RQ_MSHPrimCollectPoly collector;
    const std::vector<std::vector<ELM_Offset>> kParts = {{7, 8, 9, 12}, {13, 14, 200}, {},   {201, 240, 241, 30},
                                                         {31, 33},      {2, 1, 0, 0},  {299}};
    const std::unique_ptr<RQ_MSHPrimCollectData> all(collector.beginCollecting(details, nullptr));
    Seen expected;
    for (const std::vector<ELM_Offset> &part : kParts)
    {
        const std::unique_ptr<RQ_MSHPrimCollectData> data(collector.beginCollecting(details, nullptr));
        for (const ELM_Offset offset : part)
        {
            collector.collectOne(details, data.get(), *detail.readLock(), offset);
            if (detail.readLock()->typeOf(offset) == ELM_PRIMITIVE_POLYGON)
                (detail.readLock()->isClosed(offset) ? expected.faces : expected.open).push_back(offset);
        }
        collector.mergeData(all.get(), data.get());
    }
    const Seen seen = look({collector.endCollecting(details, all.get())});
    EXPECT_EQ(seen.faces, expected.faces);
    EXPECT_EQ(seen.open, expected.open);
}

TEST(Walk, CopiesNoAttributeAndStoresNoMoreThanItsLists)
{
    const int cells = 200, faces = cells * cells;
    const struct
    {
        const char *what;
        int everyHidden;  // every so many faces, 0 for none
        bool mixed;       // with triangles among the quads
        int64_t perFace, perVertex;
    } kCases[] = {{"a grid", 0, false, 0, 0},
                  {"faces of two sizes", 0, true, 4, 0},
                  {"some hidden", 101, false, 12, 12},
                  {"some hidden of two sizes", 101, true, 12, 12}};
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        MOD_Edit edit{MOD_DetailHandle()};
        std::vector<int32_t> counts, corners;
        for (int32_t face = 0; face < faces; ++face)
        {
            const int32_t first = face / cells * (cells + 1) + face % cells;
            const int32_t quad[] = {first, first + 1, first + cells + 2, first + cells + 1};
            counts.push_back(c.mixed && face % 3 == 0 ? 3 : 4);
            corners.insert(corners.end(), quad, quad + counts.back());
        }
        ASSERT_TRUE(edit.appendPoints((cells + 1) * (cells + 1)) && edit.appendPolygons(counts, corners, true));
        std::fill_n(edit.attribute(ELM_OWNER_VERTEX, "uv", ELM_STORAGE_REAL32, 2)->writeAll<float>(), 2 * corners.size(),
                    0.5f);
        for (int face = 50; c.everyHidden && face < faces; face += c.everyHidden)
            edit.group(ELM_OWNER_PRIMITIVE, ELM_HIDDEN_GROUP_NAME)->set(face);
        const MOD_ConstDetailHandle detail = edit.commit();
        const BAS_CopyCounter::Totals before = BAS_CopyCounter::totals();
        const std::vector<RQ_PrimitiveHandle> primitives = refine(detail);
        EXPECT_EQ(BAS_CopyCounter::totals(), before);
        const auto *mesh = as<RQ_PrimPolygonMesh>(primitives.at(0));
        ASSERT_NE(mesh, nullptr);
        const int64_t lists = c.perFace * mesh->getFaceCount() + c.perVertex * mesh->getVertexCount();
        EXPECT_LE(mesh->getMemoryUsage(), lists + 8192);
        EXPECT_NE(mesh->getVertex()->get("uv"), nullptr);
    }
}

TEST(Walk, GivesNothingWhenItIsInterrupted)
{
    const Refinement refinement(kVariants[0], makeMixedDetail(1, 30000, 40000, false, false));
    {
        const Interrupter interrupter(3);
        EXPECT_TRUE(refinement.run().empty());
    }
    EXPECT_FALSE(refinement.run().empty());
}

// The collector of a type in use changes while details are walked and types are added.  Both that take turns gather alike.
TEST(Walk, GoesOnWhileCollectorsAndTypesComeAndGo)
{
    const Bound bound(std::make_shared<Recorder>(false), ELM_PRIMITIVE_POLYGON);
    const Refinement refinement(kVariants[1], makeMixedDetail(3, 400, 2000, false, false));
    const std::string expected = textOf(refinement.run());
    std::atomic<bool> stop{false};
    std::thread binder([&] {
        for (int i = 0; !stop; ++i)
            RQ_MSHPrimCollect::bind(std::make_shared<Recorder>(i % 2 == 0), ELM_PRIMITIVE_POLYGON);
    });
    std::thread adder([] {
        for (int i = 0; i < 20; ++i)
            EXPECT_NE(ELM_PrimitiveFactory::add("walk_test_type" + std::to_string(i), "Test", i % 2 == 0),
                      ELM_PRIMITIVE_NONE);
    });
    std::thread asker([&] {
        while (!stop)
            EXPECT_NE(std::dynamic_pointer_cast<const Recorder>(RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_POLYGON)),
                      nullptr)
                << "a new type took the binding back";
    });
    std::thread other([&] {
        while (!stop)
            EXPECT_TRUE(textOf(refinement.run()) == expected);
    });
    for (int i = 0; i < 20; ++i)
        EXPECT_TRUE(textOf(refinement.run()) == expected);
    stop = true;
    for (std::thread *thread : {&binder, &adder, &asker, &other})
        thread->join();
}

TEST(Walk, CarriesOffsetsBeyond32Bits)
{
    // More points than 32 bits number, of which only what is not zero takes memory.
    constexpr int64_t kPoints = (int64_t(1) << 31) + 100;
    MOD_Edit edit{MOD_DetailHandle()};
    ASSERT_TRUE(edit.appendPoints(kPoints));
    const int64_t face[] = {0, kPoints - 2, kPoints - 1};
    ASSERT_TRUE(edit.appendPolygons(3, face, true)) << edit.message();
    const float position[] = {1, 2, 3};
    ASSERT_TRUE(
        edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->write(kPoints - 1, 1, position));
    const MOD_ConstDetailHandle detail = edit.commit();
    const RQ_MSHElementId ids(detail, RQ_MSHOffsetList(ELM_OffsetList(0, 3)), ELM_OWNER_POINT, true);
    EXPECT_EQ(ids.getStorage(), RQ_STORAGE_INT64) << "of three vertices, whose points are further on";
    EXPECT_EQ(ids.getI64(2), kPoints - 1);
    const RQ_PrimitiveHandle primitive = RQ_MSHDetail::makePolygonMesh(detail);
    const auto *mesh = as<RQ_PrimPolygonMesh>(primitive);
    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(mesh->getVertexList()->getStorage(), RQ_STORAGE_INT64);
    EXPECT_EQ(mesh->getPoint(0, 2), kPoints - 1);
    const RQ_DataArrayHandle &p = mesh->getShared()->get("P");
    EXPECT_EQ(p->entries(), kPoints);
    float row[3] = {};
    p->fillArray(row, kPoints - 1, 1);
    EXPECT_EQ(row[2], 3.0f);
    EXPECT_EQ(p->getF32(kPoints - 2, 2), 0.0f);
}
}  // namespace
