#pragma once

#include <rq/surface/PrimQuadric.h>

/// What the line between two points sweeps when it turns around the z axis: a one-sheeted hyperboloid, and among its special
/// cases cones, cylinders, discs and rings.
///
/// Shape  v goes along the line, which is where it was drawn at u = 0.  Outward is du x dv: away from the axis where the
///        line rises
class RQ_API RQ_PrimHyperboloid final : public RQ_PrimQuadric
{
public:
    /// False, with nothing changed, when a point or the range is not finite.
    bool init(const BAS_Vec3d &p0, const BAS_Vec3d &p1, const RQ_AttributeListHandle &attributes,
              const RQ_TransformHandle &transform, const RQ_Parametric &range = {});

    /// The ends of the line, and what leads from the first to the second.
    const BAS_Vec3d &getP0() const { return p0_; }
    const BAS_Vec3d &getP1() const { return p1_; }
    const BAS_Vec3d &getDP() const { return dp_; }

    const char *className() const override;
    int getPrimitiveType() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

    /// It is straight along v.
    void adjustTesselationCounts(int &nu, int &nv) const override;

protected:
    Profile profile(double v) const override;
    bool isRightHanded() const override { return true; }
    bool saveShape(BAS_JSONWriter &writer) const override;

private:
    BAS_Vec3d p0_{1.0, 0.0, -0.5}, p1_{1.0, 0.0, 0.5}, dp_{0.0, 0.0, 1.0};
};
