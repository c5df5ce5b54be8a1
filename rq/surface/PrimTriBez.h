#pragma once

#include <rq/surface/PrimNet.h>
#include <rq/surface/PrimPolygonMesh.h>

/// A triangular Bezier patch.
///
/// Shape    rows of degree + 1, degree, ... 1 control vertices, one row after the other.  The corners are the first vertex,
///          the last of the first row, and the last of all, counter-clockwise seen from the front
/// Failure  `init` refuses what does not fit together
class RQ_API RQ_PrimTriBez final : public RQ_PrimNet
{
public:
    static constexpr int kHighestDegree = 30;

    RQ_PrimTriBez();
    RQ_PrimTriBez(const RQ_PrimTriBez &other);
    ~RQ_PrimTriBez() override;

    /// Replace everything of a patch that is not yet shared.  False, and nothing changed, for a degree below 1 or above 30,
    /// and for vertex attributes that are missing or of another number.
    bool init(int degree, const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform = {},
              const RQ_AttributeListHandle &detail = {});

    int getDegree() const { return degree_; }

    /// A mesh of triangles, with all vertex attributes as those of points, evaluated with Bernstein polynomials (Farin,
    /// Triangular Bernstein-Bezier patches, 1986).
    ///
    /// Shape    every side is cut into 8 steps, of flat patches 1, times "lod" and the larger of "ulod" and "vlod", at most
    ///          1024.  Without "N" there are unit normals.  Uniform attributes become detail ones
    /// Failure  null before `init`
    RQ_PolygonMeshHandle refineToPolygonMesh(const RQ_RefineParms *parms) const;

    const char *className() const override;
    int getPrimitiveType() const override;

    /// Hand over the mesh of `refineToPolygonMesh`.  False when there is none.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

protected:
    bool saveShape(BAS_JSONWriter &writer) const override;

private:
    int degree_ = 0;
};
