#include <rq/surface/PrimCurveMesh.h>

#include <algorithm>
#include <cmath>

#include <rq/prim/RefineParms.h>
#include <rq/surface/detail/curveDistance.h>
#include <rq/surface/detail/curveOptions.h>
#include <rq/surface/detail/sampledList.h>

namespace
{
constexpr double kMostSegments = 16384.0;

// Of all curves together, unless they have so many vertices that this does not suffice for usual ones: some gigabytes.
constexpr double kMostPoints = double(1 << 28);

int segmentsPerSpan(const RQ_PrimCurveMesh &mesh, const RQ_RefineParms *parms, double lod)
{
    const double fitting = std::max(kMostPoints / double(mesh.getVertexCount() + 1), rq::kSegmentsPerSpan);
    const double segments = std::ceil(lod * RQ_RefineParms::getLOD(parms));
    return segments > 1.0 ? int(std::min({segments, kMostSegments, fitting})) : 1;
}
}  // namespace

bool RQ_PrimCurveMesh::canBeSampled() const { return getCurveCount() > 0 && basis_ >= 0 && basis_ <= RQ_BASIS_POWER; }

RQ_CurveMeshHandle RQ_PrimCurveMesh::sampled(const rq::CurveSampling &sampling) const
{
    return new RQ_PrimCurveMesh(*this, RQ_BASIS_LINEAR, sampling.points(),
                                vertex_ ? rq::sampledList(sampling, *vertex_) : nullptr, uniform_, detail_, wrap_,
                                faceSets_);
}

RQ_CurveMeshHandle RQ_PrimCurveMesh::refineToLinear(const RQ_RefineParms *parms, double lod) const
{
    if (basis_ == RQ_BASIS_LINEAR)
        return const_cast<RQ_PrimCurveMesh *>(this);
    if (!canBeSampled())
        return {};
    return sampled(rq::CurveSampling(rq::SpanShapes(*this), segmentsPerSpan(*this, parms, lod)));
}

RQ_CurveMeshHandle RQ_PrimCurveMesh::refineToDistance(double distance) const
{
    if (!(distance > 0.0))
        return {};
    if (basis_ == RQ_BASIS_LINEAR)
        return const_cast<RQ_PrimCurveMesh *>(this);
    if (!canBeSampled() || !vertex_ || !vertex_->get("P", 0))
        return {};
    const rq::SpanShapes shapes(*this);
    RQ_CountArray spans;
    std::vector<int> segments = rq::segmentsWithin(shapes, *vertex_, distance, spans);
    return sampled(rq::CurveSampling(shapes, spans, std::move(segments)));
}
