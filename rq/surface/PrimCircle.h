#pragma once

#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimQuadric.h>

/// The unit disc around the origin, in the plane of x and y and facing +z.
///
/// Shape  v goes straight from the centre to the rim, u = 0 lies on the side of +x
class RQ_API RQ_PrimCircle final : public RQ_PrimQuadric
{
public:
    /// The mesh of a disc, or the rim of one, at the origin that faces along `axis` (0 x, 1 y, 2 z); null for any other.
    static RQ_PolygonMeshHandle makePolygonMesh(const RQ_RefineParms *parms, int axis = 2);
    static RQ_CurveMeshHandle makeCurve(const RQ_RefineParms *parms, int axis = 2);

    /// The rim through as many points as the polygon mesh has there, as a linear curve with "P" and "uv": closed, without
    /// the first point again at the end, when it goes all around.  Null when nothing is left of the range.
    RQ_CurveMeshHandle refineToCurve(const RQ_RefineParms *parms) const;

    /// Enlarge by the whole unit disc, placed by `matrix`: the exact box of the ellipse.
    static void computeCircleBounds(BAS_BoundingBox &box, const BAS_Mat4d &matrix);

    const char *className() const override;
    int getPrimitiveType() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

    /// Centre and rim suffice.
    void adjustTesselationCounts(int &nu, int &nv) const override;

protected:
    Profile profile(double v) const override;
    bool isRightHanded() const override { return false; }
};
