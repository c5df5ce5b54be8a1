#pragma once

#include <rq/surface/PrimQuadric.h>

/// The unit sphere around the origin.
///
/// Shape  v goes from the pole at z = 1 to that at z = -1, u = 0 lies on the side of +x
class RQ_API RQ_PrimSphere final : public RQ_PrimQuadric
{
public:
    /// The mesh of a sphere at the origin.
    static RQ_PolygonMeshHandle makePolygonMesh(const RQ_RefineParms *parms);

    /// Enlarge by the whole unit sphere, placed by `matrix`: the exact box of the ellipsoid.
    static void computeSphereBounds(BAS_BoundingBox &box, const BAS_Mat4d &matrix);

    const char *className() const override;
    int getPrimitiveType() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

protected:
    Profile profile(double v) const override;
    bool isRightHanded() const override { return false; }
    double reach(const BAS_Vec3d &direction) const override;
};
