#include <rq/bridge/MSHPrimTPSurf.h>

#include <host/bas/JSONWriter.h>
#include <rq/bridge/detail/trimPolygons.h>
#include <rq/prim/PrimitiveType.h>

namespace
{
RQ_NetDirection directionOf(bool isBezier, int order, bool wraps, int64_t vertices, std::vector<double> knots)
{
    return {isBezier ? RQ_BASIS_BEZIER : RQ_BASIS_BSPLINE, order, wraps, vertices, std::move(knots)};
}

template <class T> bool writeArray(BAS_JSONWriter &writer, const char *name, const std::vector<T> &values)
{
    return writer.key(name) && writer.uniformArray(values.data(), int64_t(values.size()));
}
}  // namespace

RQ_MSHPrimTPSurf::RQ_MSHPrimTPSurf() = default;
RQ_MSHPrimTPSurf::RQ_MSHPrimTPSurf(const RQ_MSHPrimTPSurf &other) = default;
RQ_MSHPrimTPSurf::~RQ_MSHPrimTPSurf() = default;

bool RQ_MSHPrimTPSurf::init(const MSH_Surface &surface, const RQ_AttributeListHandle &vertex,
                            const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail)
{
    const bool isBezier = surface.isBezier();
    const RQ_NetDirection u = directionOf(isBezier, surface.orderU(), surface.wrapsU(), surface.columns(), surface.knotsU());
    const RQ_NetDirection v = directionOf(isBezier, surface.orderV(), surface.wrapsV(), surface.rows(), surface.knotsV());
    if (!init(u, v, vertex, uniform, detail))
        return false;
    trims_.reset();
    if (!surface.trims().loopCurves.empty())
        trims_ = std::make_shared<const MSH_TrimLoops>(surface.trims());
    return true;
}

const MSH_TrimLoops &RQ_MSHPrimTPSurf::getTrims() const
{
    static const MSH_TrimLoops none;
    return trims_ ? *trims_ : none;
}

const char *RQ_MSHPrimTPSurf::className() const { return "RQ_MSHPrimTPSurf"; }
int RQ_MSHPrimTPSurf::getPrimitiveType() const { return RQ_PRIM_MSH_TPSURF; }

int64_t RQ_MSHPrimTPSurf::getMemoryUsage() const
{
    const MSH_TrimLoops &trims = getTrims();
    return RQ_PrimTensorPatch::getMemoryUsage() + int64_t(sizeof(*this) - sizeof(RQ_PrimTensorPatch)) +
           int64_t((trims.knots.size() + trims.points.size()) * sizeof(double) +
                   (trims.loopCurves.size() + trims.orders.size() + trims.counts.size()) * sizeof(int32_t));
}

RQ_PrimitiveHandle RQ_MSHPrimTPSurf::doSoftCopy() const { return new RQ_MSHPrimTPSurf(*this); }

bool RQ_MSHPrimTPSurf::saveShape(BAS_JSONWriter &writer) const
{
    if (!RQ_PrimTensorPatch::saveShape(writer) || !trims_)
        return !trims_;
    return writer.beginMap() && writeArray(writer, "trim_loops", trims_->loopCurves) &&
           writeArray(writer, "trim_orders", trims_->orders) && writeArray(writer, "trim_counts", trims_->counts) &&
           writeArray(writer, "trim_knots", trims_->knots) && writeArray(writer, "trim_points", trims_->points) &&
           writer.endMap();
}

RQ_MSHPrimTPSurf::Loops RQ_MSHPrimTPSurf::trimLoops(int pieces) const
{
    return trims_ ? rq::trimPolygons(*trims_, pieces) : Loops();
}
