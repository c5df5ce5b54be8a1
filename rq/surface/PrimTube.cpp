#include <rq/surface/PrimTube.h>

#include <algorithm>
#include <cmath>

#include <host/bas/JSONWriter.h>
#include <rq/prim/PrimitiveType.h>

bool RQ_PrimTube::init(const RQ_AttributeListHandle &attributes, const RQ_TransformHandle &transform, double taper,
                       bool caps)
{
    if (!std::isfinite(taper) || !RQ_PrimQuadric::init(attributes, transform))
        return false;
    taper_ = taper;
    caps_ = caps;
    return true;
}

RQ_PolygonMeshHandle RQ_PrimTube::makePolygonMesh(const RQ_RefineParms *parms, double taper, bool caps)
{
    RQ_PrimTube tube;
    return tube.init({}, {}, taper, caps) ? tube.refineToPolygonMesh(parms) : nullptr;
}

const char *RQ_PrimTube::className() const { return "RQ_PrimTube"; }
int RQ_PrimTube::getPrimitiveType() const { return RQ_PRIM_TUBE; }
bool RQ_PrimTube::saveShape(BAS_JSONWriter &writer) const { return writer.writeReal64(taper_) && writer.writeBool(caps_); }
RQ_PrimitiveHandle RQ_PrimTube::doSoftCopy() const { return new RQ_PrimTube(*this); }

RQ_PrimQuadric::Profile RQ_PrimTube::profile(double v) const
{
    // Beyond the tip of a cone the outside is on the other side of the profile.
    const double radius = (1.0 - v) + v * taper_;
    const double slope = 1.0 - taper_, side = radius < 0.0 ? -1.0 : 1.0;
    return {{radius, 0.0, v - 0.5}, BAS_Vec3d(side, 0.0, side * slope) / std::hypot(1.0, slope)};
}

// Caps of a part of a turn have a corner on the axis.
double RQ_PrimTube::reach(const BAS_Vec3d &direction) const
{
    double farthest = RQ_PrimQuadric::reach(direction);
    const RQ_Parametric &range = getParametric();
    for (const double end : {0.0, 1.0})
        if (caps_ && std::abs(range.umax - range.umin) < 1.0 && (range.vmin == end || range.vmax == end))
            farthest = std::max(farthest, (end - 0.5) * direction.z);
    return farthest;
}
