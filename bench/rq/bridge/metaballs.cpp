#include <cmath>
#include <random>

#include <bench/Job.h>
#include <host/mod/Edit.h>
#include <host/msh/Detail.h>
#include <host/msh/Meta.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/bridge/MSHPrimMetaBall.h>
#include <rq/prim/RefineList.h>

namespace
{
constexpr int kBalls = 2000;
constexpr double kSide = 20.0;
constexpr double kDensity = 20.0;
constexpr double kCell = 2.0 / kDensity;

std::vector<BAS_Vec3f> makeCentres()
{
    std::mt19937 random(1);
    std::uniform_real_distribution<float> value(0.0f, float(kSide));
    std::vector<BAS_Vec3f> centres(kBalls);
    for (BAS_Vec3f &centre : centres)
        centre = {value(random), value(random), value(random)};
    return centres;
}

RQ_PrimitiveHandle makeMetaballs(const std::vector<BAS_Vec3f> &centres)
{
    const MOD_DetailHandle geometry;
    MOD_Edit edit(geometry);
    std::vector<int32_t> points(centres.size());
    for (size_t i = 0; i < points.size(); ++i)
        points[i] = int32_t(i);
    const bool isMade = edit.appendPoints(int64_t(points.size())) &&
                        edit.appendBlobs(ELM_PRIMITIVE_BLOB_ELLIPSOID, {}, points) &&
                        edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)
                            ->write(0, int64_t(points.size()), &centres[0].x);
    RQ_RefineList list;
    if (isMade)
        list.refine(RQ_MSHDetail::makeDetail(edit.commit()).get(), nullptr);
    return list.getPrimitive(0);
}

RQ_PolygonMeshHandle makeSurface(const RQ_PrimitiveHandle &metaballs)
{
    RQ_RefineParms parms;
    parms.setMetaDensity(kDensity);
    return static_cast<const RQ_MSHPrimMetaBall &>(*metaballs).refineToPolygonMesh(&parms);
}

/// What one would write first: every sample of the box in memory, and nets of quads around the edges that are cut (Gibson,
/// "Constrained Elastic Surface Nets", 1998), without normals.
struct DenseNets
{
    int64_t size[3];
    std::vector<float> values;
    std::vector<int32_t> pointOf;
    std::vector<BAS_Vec3f> points;
    std::vector<int32_t> quads;

    int64_t at(int64_t x, int64_t y, int64_t z) const { return (z * size[1] + y) * size[0] + x; }

    explicit DenseNets(const std::vector<BAS_Vec3f> &centres)
    {
        BAS_Vec3d low(1e30), high(-1e30);
        for (const BAS_Vec3f &c : centres)
            for (int axis = 0; axis < 3; ++axis)
            {
                low[axis] = std::min(low[axis], double(c[axis]) - 1.0);
                high[axis] = std::max(high[axis], double(c[axis]) + 1.0);
            }
        const BAS_Vec3d origin = low - BAS_Vec3d(kCell);
        for (int axis = 0; axis < 3; ++axis)
            size[axis] = int64_t(std::ceil((high[axis] - low[axis]) / kCell)) + 3;
        values.resize(size_t(size[0] * size[1] * size[2]), -0.5f);
        for (const BAS_Vec3f &c : centres)
            addBall(BAS_Vec3d(c) - origin);
        placePoints(origin);
        connect();
    }

    void addBall(const BAS_Vec3d &c)
    {
        const auto first = [&](int axis) { return int64_t(std::ceil((c[axis] - 1.0) / kCell)); };
        const auto end = [&](int axis) { return int64_t(std::floor((c[axis] + 1.0) / kCell)) + 1; };
        for (int64_t z = first(2); z < end(2); ++z)
            for (int64_t y = first(1); y < end(1); ++y)
                for (int64_t x = first(0); x < end(0); ++x)
                {
                    const double q = (BAS_Vec3d(double(x), double(y), double(z)) * kCell - c).length2();
                    const double left = q < 1.0 ? 1.0 - q : 0.0;
                    values[size_t(at(x, y, z))] += float(left * left * left);
                }
    }

    template <class Visit> void visitCells(Visit &&visit) const
    {
        for (int64_t z = 1; z + 1 < size[2]; ++z)
            for (int64_t y = 1; y + 1 < size[1]; ++y)
                for (int64_t x = 1; x + 1 < size[0]; ++x)
                    visit(x, y, z);
    }

    void placePoints(const BAS_Vec3d &origin)
    {
        pointOf.resize(values.size(), -1);
        const int64_t steps[] = {1, size[0], size[0] * size[1]};
        for (int64_t z = 0; z + 1 < size[2]; ++z)
            for (int64_t y = 0; y + 1 < size[1]; ++y)
                for (int64_t x = 0; x + 1 < size[0]; ++x)
                {
                    const float *corner = values.data() + at(x, y, z);
                    BAS_Vec3d sum(0.0);
                    int count = 0;
                    for (int axis = 0; axis < 3; ++axis)
                        for (int side = 0; side < 4; ++side)
                        {
                            const int u = (axis + 1) % 3, v = (axis + 2) % 3;
                            const float *a = corner + (side & 1) * steps[u] + (side >> 1) * steps[v];
                            const float b = a[steps[axis]];
                            if ((*a > 0.0f) == (b > 0.0f))
                                continue;
                            BAS_Vec3d cut(0.0);
                            cut[axis] = double(*a) / (double(*a) - double(b));
                            cut[u] = side & 1;
                            cut[v] = side >> 1;
                            sum += cut;
                            ++count;
                        }
                    if (count == 0)
                        continue;
                    pointOf[size_t(at(x, y, z))] = int32_t(points.size());
                    points.emplace_back(origin + (BAS_Vec3d(double(x), double(y), double(z)) + sum / count) * kCell);
                }
    }

    void connect()
    {
        const int64_t steps[] = {1, size[0], size[0] * size[1]};
        visitCells([&](int64_t x, int64_t y, int64_t z) {
            const int64_t here = at(x, y, z);
            for (int axis = 0; axis < 3; ++axis)
            {
                const bool isInside = values[size_t(here)] > 0.0f;
                if (isInside == (values[size_t(here + steps[axis])] > 0.0f))
                    continue;
                const int64_t u = steps[(axis + 1) % 3], v = steps[(axis + 2) % 3];
                const int64_t around[] = {here - u - v, here - v, here, here - u};
                for (int i = 0; i < 4; ++i)
                    quads.push_back(pointOf[size_t(around[isInside ? i : 3 - i])]);
            }
        });
    }
};

void add(int threads)
{
    const auto enter = [&](const char *who, auto &&make, auto &&count) {
        bench::add({"metaballs", "2k balls", who, threads, 0.0, 0.0, false, [=] {
                        const auto centres = std::make_shared<std::vector<BAS_Vec3f>>(makeCentres());
                        const double cuts = double(DenseNets(*centres).quads.size() / 4);
                        const auto run = make(centres);
                        return bench::Work{[run] { return bench::keep(run()); },
                                           [=] { return std::abs(count(run()) / cuts - 1.0); }, cuts};
                    }});
    };
    enter(
        "ours",
        [](const auto &centres) {
            const RQ_PrimitiveHandle metaballs = makeMetaballs(*centres);
            return [metaballs] { return makeSurface(metaballs); };
        },
        [](const RQ_PolygonMeshHandle &mesh) { return double(mesh->getPointCount()); });
    if (threads == 1)
        enter(
            "prototype", [](const auto &centres) { return [centres] { return DenseNets(*centres); }; },
            [](const DenseNets &nets) { return double(nets.quads.size() / 4); });
}

const bool registered = [] {
    for (const int threads : {1, 2})
        add(threads);
    return true;
}();
}  // namespace
