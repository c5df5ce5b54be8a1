#pragma once

#include <vector>

#include <rq/surface/PrimQuadric.h>

/// A cylinder or cone around the z axis, from z = -0.5 with radius 1 to z = 0.5.
///
/// Shape  v goes straight from the end at z = -0.5 to the other, u = 0 lies on the side of +x
class RQ_API RQ_PrimTube final : public RQ_PrimQuadric
{
public:
    /// `taper` is the radius at z = 0.5: 0 makes a cone, below 0 the tube passes through its tip.  `caps` closes the ends.
    /// False, with nothing changed, for a taper that is not finite.
    bool init(const RQ_AttributeListHandle &attributes, const RQ_TransformHandle &transform, double taper, bool caps);

    double getTaper() const { return taper_; }
    bool getCaps() const { return caps_; }

    /// The mesh of a tube at the origin.
    static RQ_PolygonMeshHandle makePolygonMesh(const RQ_RefineParms *parms, double taper = 1.0, bool caps = false);

    const char *className() const override;
    int getPrimitiveType() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

    /// With caps one polygon more at each end of the tube that lies in the range, first the lower one, with points of its
    /// own behind those of the grid.  A part of a turn is closed over the axis; an end of radius 0 needs no cap.
    RQ_PolygonMeshHandle createMesh(int nu, int nv, double umin, double umax, double vmin, double vmax, bool withNormals,
                                    bool withUV, RQ_Storage positions, RQ_Storage normals) const override;

protected:
    Profile profile(double v) const override;
    bool isRightHanded() const override { return true; }
    double reach(const BAS_Vec3d &direction) const override;
    bool saveShape(BAS_JSONWriter &writer) const override;

private:
    struct Cap;

    std::vector<Cap> findCaps(int nu, int nv, const RQ_Parametric &range) const;
    RQ_AttributeListHandle capPoints(const Cap &cap, const RQ_AttributeList &side, int64_t nu) const;

    double taper_ = 1.0;
    bool caps_ = false;
};
