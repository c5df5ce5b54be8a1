#include <opensubdiv/far/patchMap.h>
#include <opensubdiv/far/patchTableFactory.h>
#include <opensubdiv/far/primvarRefiner.h>
#include <opensubdiv/far/topologyDescriptor.h>

#include <bench/subdCages.h>

namespace
{
using namespace OpenSubdiv;
using Refiner = std::shared_ptr<Far::TopologyRefiner>;

struct Point
{
    float x, y, z;

    void Clear() { x = y = z = 0; }
    void AddWithWeight(const Point &other, float weight)
    {
        x += other.x * weight;
        y += other.y * weight;
        z += other.z * weight;
    }
};

Refiner makeRefiner(const bench::BallCage &ball)
{
    Far::TopologyDescriptor descriptor;
    descriptor.numVertices = ball.points();
    descriptor.numFaces = int(ball.counts.size());
    descriptor.numVertsPerFace = ball.counts.data();
    descriptor.vertIndicesPerFace = ball.indices.data();
    using Factory = Far::TopologyRefinerFactory<Far::TopologyDescriptor>;
    return Refiner(Factory::Create(descriptor, Factory::Options(Sdc::SCHEME_CATMARK)));
}

std::vector<Point> pointsOf(const bench::BallCage &ball)
{
    std::vector<Point> points;
    for (size_t i = 0; i < ball.positions.size(); i += 3)
        points.push_back({ball.positions[i], ball.positions[i + 1], ball.positions[i + 2]});
    return points;
}

std::vector<Point> interpolate(const Far::TopologyRefiner &refiner, std::vector<Point> from)
{
    const Far::PrimvarRefiner primvar(refiner);
    for (int level = 1; level <= refiner.GetMaxLevel(); ++level)
    {
        std::vector<Point> to(size_t(refiner.GetLevel(level).GetNumVertices()));
        primvar.Interpolate(level, from, to);
        from.swap(to);
    }
    return from;
}

std::vector<int32_t> quadsOf(const Far::TopologyRefiner &refiner)
{
    const Far::TopologyLevel &last = refiner.GetLevel(refiner.GetMaxLevel());
    std::vector<int32_t> quads;
    quads.reserve(size_t(last.GetNumFaceVertices()));
    for (int face = 0; face < last.GetNumFaces(); ++face)
    {
        const Far::ConstIndexArray corners = last.GetFaceVertices(face);
        quads.insert(quads.end(), corners.begin(), corners.begin() + 4);
    }
    return quads;
}

struct Refined
{
    Refiner refiner;
    std::vector<Point> points;
    std::vector<int32_t> quads;
};

bench::Work refineFirst()
{
    const auto ball = std::make_shared<bench::BallCage>();
    const auto refine = [ball] {
        Refined result{makeRefiner(*ball), {}, {}};
        result.refiner->RefineUniform(Far::TopologyRefiner::UniformOptions(bench::BallCage::kLevel));
        result.points = interpolate(*result.refiner, pointsOf(*ball));
        result.quads = quadsOf(*result.refiner);
        return result;
    };
    return {[refine] { return bench::keep(refine()); },
            [refine] {
                const Refined result = refine();
                return bench::ballError(&result.points[0].x, result.quads.data(), int64_t(result.quads.size() / 4));
            }};
}

bench::Work refineAgain()
{
    const auto ball = std::make_shared<bench::BallCage>();
    const Refiner refiner = makeRefiner(*ball);
    refiner->RefineUniform(Far::TopologyRefiner::UniformOptions(bench::BallCage::kLevel));
    const auto quads = std::make_shared<std::vector<int32_t>>(quadsOf(*refiner));
    return {[=] { return bench::keep(interpolate(*refiner, pointsOf(*ball))); },
            [=] {
                const std::vector<Point> points = interpolate(*refiner, pointsOf(*ball));
                return bench::ballError(&points[0].x, quads->data(), int64_t(quads->size() / 4));
            }};
}

/// Patches made the usual way, with the points of all levels and of the patches behind those of the cage.
struct Patches
{
    Refiner refiner;
    std::unique_ptr<const Far::PatchTable> table;
    std::unique_ptr<const Far::PatchMap> map;
    std::vector<Point> points;

    explicit Patches(const bench::BallCage &ball) : refiner(makeRefiner(ball)), points(pointsOf(ball))
    {
        Far::PatchTableFactory::Options options(4);
        refiner->RefineAdaptive(options.GetRefineAdaptiveOptions());
        table.reset(Far::PatchTableFactory::Create(*refiner, options));
        map = std::make_unique<const Far::PatchMap>(*table);
        const size_t refined = size_t(refiner->GetNumVerticesTotal());
        points.resize(refined + size_t(table->GetNumLocalPoints()));
        const Far::PrimvarRefiner primvar(*refiner);
        Point *from = points.data();
        for (int level = 1; level <= refiner->GetMaxLevel(); ++level)
        {
            Point *to = from + refiner->GetLevel(level - 1).GetNumVertices();
            primvar.Interpolate(level, from, to);
            from = to;
        }
        table->ComputeLocalPointValues(points.data(), points.data() + refined);
    }

    void evaluate(int32_t face, float u, float v, Point *results[3]) const
    {
        float weights[3][20];
        const Far::PatchTable::PatchHandle *handle = map->FindPatch(face, double(u), double(v));
        table->EvaluateBasis(*handle, u, v, weights[0], weights[1], weights[2]);
        const Far::ConstIndexArray controls = table->GetPatchVertices(*handle);
        for (int result = 0; result < 3; ++result)
        {
            results[result]->Clear();
            for (int i = 0; i < controls.size(); ++i)
                results[result]->AddWithWeight(points[size_t(controls[i])], weights[result][i]);
        }
    }
};

bench::Work evaluate()
{
    using Samples = bench::BallSamples;
    struct Sample
    {
        int32_t face;
        float u, v;
    };
    const auto patches = std::make_shared<Patches>(bench::BallCage());
    const auto samples = std::make_shared<std::vector<Sample>>();
    for (int64_t i = 0; i < Samples::kCount; ++i)
        samples->push_back({Samples::face(i), Samples::u(i), Samples::v(i)});
    const auto out = std::make_shared<std::vector<Point>>(size_t(3 * Samples::kCount));
    const auto run = [=] {
        Point *results[3] = {out->data(), out->data() + Samples::kCount, out->data() + 2 * Samples::kCount};
        for (const Sample &sample : *samples)
        {
            patches->evaluate(sample.face, sample.u, sample.v, results);
            for (Point *&result : results)
                ++result;
        }
        return std::shared_ptr<void>();
    };
    return {run, [=] {
                run();
                const float *p = &out->data()->x;
                return bench::sampleError(p, p + 3 * Samples::kCount, p + 6 * Samples::kCount);
            }};
}

const bool registered = [] {
    bench::addBallRefine("opensubdiv", 1, false, refineFirst);
    bench::addBallRefine("opensubdiv", 1, true, refineAgain);
    bench::addBallLimit("opensubdiv", 1, evaluate);
    return true;
}();
}  // namespace
