#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/subd/SubdLimit.h>

#include <bench/subdCages.h>

namespace
{
RQ_SubdivisionMeshHandle makeCage()
{
    const bench::BallCage ball;
    const RQ_AttributeListHandle none(new RQ_AttributeList(nullptr));
    const RQ_DataArrayHandle points(new RQ_DANumeric<float>(ball.positions.data(), ball.points(), 3, RQ_TYPE_POINT));
    return new RQ_PrimSubdivisionMesh(RQ_CountArray(bench::BallCage::kFaces, 4),
                                      new RQ_DANumeric<int32_t>(ball.indices.data(), int64_t(ball.indices.size())),
                                      none->addAttribute("P", points, false));
}

double errorOf(const RQ_PrimPolygonMesh &mesh)
{
    const rq::Values<float> points(mesh.getShared()->get("P"));
    const rq::Values<int32_t> quads(mesh.getVertexList());
    return bench::ballError(points.data(), quads.data(), mesh.getFaceCount());
}

bench::Work refineFirst()
{
    const RQ_SubdivisionMeshHandle cage = makeCage();
    const auto refine = [cage] { return RQ_SubdTopology::create(*cage)->refine(*cage, bench::BallCage::kLevel); };
    // What a topology keeps is part of the job's memory.
    const auto run = [cage] {
        const RQ_SubdTopologyHandle topology = RQ_SubdTopology::create(*cage);
        return bench::keep(std::pair(topology, topology->refine(*cage, bench::BallCage::kLevel)));
    };
    return {run, [refine] { return errorOf(*refine()); }};
}

bench::Work refineAgain()
{
    const RQ_SubdivisionMeshHandle cage = makeCage();
    const RQ_SubdTopologyHandle topology = RQ_SubdTopology::create(*cage);
    const auto refine = [=] { return topology->refine(*cage, bench::BallCage::kLevel); };
    return {[refine] { return bench::keep(refine()); }, [refine] { return errorOf(*refine()); }};
}

bench::Work evaluate()
{
    const RQ_SubdivisionMeshHandle cage = makeCage();
    const RQ_SubdLimitHandle limit = RQ_SubdLimit::create(RQ_SubdTopology::create(*cage), cage->getShared()->get("P"));
    const auto samples = std::make_shared<std::vector<RQ_SubdSample>>();
    for (int64_t i = 0; i < bench::BallSamples::kCount; ++i)
        samples->push_back({bench::BallSamples::face(i), 0, bench::BallSamples::u(i), bench::BallSamples::v(i)});
    const auto out = std::make_shared<std::vector<float>>(size_t(9 * bench::BallSamples::kCount));
    const auto run = [=] {
        float *p = out->data(), *du = p + 3 * samples->size(), *dv = du + 3 * samples->size();
        limit->evaluate(samples->data(), int64_t(samples->size()), {p, du, dv});
        return std::shared_ptr<void>();
    };
    return {run, [=] {
                run();
                const float *p = out->data();
                return bench::sampleError(p, p + 3 * samples->size(), p + 6 * samples->size());
            }};
}

const bool registered = [] {
    for (const int threads : {1, 2})
    {
        bench::addBallRefine("ours", threads, false, refineFirst);
        bench::addBallRefine("ours", threads, true, refineAgain);
        bench::addBallLimit("ours", threads, evaluate);
    }
    return true;
}();
}  // namespace
