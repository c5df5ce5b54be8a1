#include <rq/surface/PrimCurveMesh.h>

#include <host/bas/Parallel.h>
#include <rq/data/DAConstant.h>
#include <rq/data/DAParametric.h>
#include <rq/data/DASubArray.h>
#include <rq/prim/Refine.h>
#include <rq/surface/detail/curveMerges.h>
#include <rq/surface/detail/curveOptions.h>
#include <rq/surface/detail/lists.h>

const RQ_PrimCurveMesh::CurveMerges &RQ_PrimCurveMesh::curveMerges() const
{
    return merges_.getOrBuild([this] { return BAS_IntrusivePtr<const CurveMerges>(new CurveMerges(*this)); });
}

RQ_CurveHandle RQ_PrimCurveMesh::makeCurve(const CurveMerges &merges, int64_t curve) const
{
    const auto [begin, count] = counts_.getOffsetCount(curve);
    RQ_AttributeListHandle vertex;
    if (vertex_)
    {
        vertex = new RQ_AttributeList(merges.vertex, vertex_->getSegments());
        for (int segment = 0; segment < vertex->getSegments(); ++segment)
            for (int i = 0; i < vertex_->entries(); ++i)
                vertex->set(i, RQ_DASubArray::createSubArray(vertex_->get(i, segment), begin, count), segment);
        if (vertex->entries() > vertex_->entries())
            vertex->setAllSegments(vertex_->entries(), new RQ_DAParametric({count}));
    }
    const RQ_AttributeListHandle whole = rq::mergedList(
        merges.whole, uniform_, detail_,
        [curve](const RQ_DataArrayHandle &array) { return RQ_DAConstant::createConstant(array, curve, 1); },
        [](const RQ_DataArrayHandle &array) { return array; });
    const RQ_CurveHandle single(new RQ_PrimCurve);
    single->init(basis_, vertex, whole, wrap_);
    single->setOrder(getOrder(curve));
    single->setBreakpoints(useBreakpoints_, parameterization_);
    if (knots_)
        single->setKnots(RQ_DASubArray::createSubArray(knots_, knotOffset(curve), knotCount(curve)));
    return single;
}

RQ_CurveHandle RQ_PrimCurveMesh::getCurve(int64_t curve) const { return makeCurve(curveMerges(), curve); }

bool RQ_PrimCurveMesh::refine(RQ_Refine &sink, const RQ_RefineParms *parms) const
{
    // The least; the scheduler cuts larger pieces while all workers are busy.
    constexpr int64_t kCurvesPerTask = 1;
    if (basis_ != RQ_BASIS_LINEAR)
    {
        const RQ_CurveMeshHandle linear = refineToLinear(parms, rq::kSegmentsPerSpan);
        if (linear)
            sink.addPrimitive(linear);
        return bool(linear);
    }
    const int64_t curves = getCurveCount();
    if (curves < 1)
        return false;
    const CurveMerges &merges = curveMerges();
    const auto handOver = [&](int64_t curve) {
        const RQ_CurveHandle single = makeCurve(merges, curve);
        single->refineCopyTransformFrom(*this);
        sink.addPrimitive(single);
    };
    if (sink.allowThreading())
        host::parallelFor(curves, kCurvesPerTask, handOver);
    else
        for (int64_t curve = 0; curve < curves; ++curve)
            handOver(curve);
    return true;
}
