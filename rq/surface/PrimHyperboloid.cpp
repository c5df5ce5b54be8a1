#include <rq/surface/PrimHyperboloid.h>

#include <cmath>

#include <host/bas/JSONWriter.h>
#include <rq/prim/PrimitiveType.h>

namespace
{
bool isFinite(const BAS_Vec3d &v) { return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z); }
}  // namespace

bool RQ_PrimHyperboloid::init(const BAS_Vec3d &p0, const BAS_Vec3d &p1, const RQ_AttributeListHandle &attributes,
                              const RQ_TransformHandle &transform, const RQ_Parametric &range)
{
    if (!isFinite(p0) || !isFinite(p1) || !isFinite(p1 - p0) || !RQ_PrimQuadric::init(attributes, transform, range))
        return false;
    p0_ = p0;
    p1_ = p1;
    dp_ = p1 - p0;
    return true;
}

const char *RQ_PrimHyperboloid::className() const { return "RQ_PrimHyperboloid"; }
int RQ_PrimHyperboloid::getPrimitiveType() const { return RQ_PRIM_HYPERBOLOID; }
RQ_PrimitiveHandle RQ_PrimHyperboloid::doSoftCopy() const { return new RQ_PrimHyperboloid(*this); }
void RQ_PrimHyperboloid::adjustTesselationCounts(int &, int &nv) const { nv = 2; }

bool RQ_PrimHyperboloid::saveShape(BAS_JSONWriter &writer) const
{
    return writer.uniformArray(&p0_.x, 3) && writer.uniformArray(&p1_.x, 3);
}

RQ_PrimQuadric::Profile RQ_PrimHyperboloid::profile(double v) const
{
    // The derivative along u is the point turned by a quarter around the axis.
    const auto across = [this](const BAS_Vec3d &p) { return BAS_Vec3d(-p.y, p.x, 0.0).cross(dp_); };
    const BAS_Vec3d point = v == 1.0 ? p1_ : p0_ + dp_ * v;
    BAS_Vec3d normal = across(point);
    // On the axis all directions meet: take that of the points next to it.
    if (normal.length() == 0.0)
        normal = across(v > 0.5 ? -dp_ : dp_);
    return {point, normal.normalized()};
}
