#pragma once

#include <rq/prim/Primitive.h>
#include <rq/prim/RefineParms.h>
#include <rq/surface/Parametric.h>
#include <rq/surface/PrimPolygonMesh.h>

class RQ_PrimQuadric;
using RQ_QuadricHandle = BAS_IntrusivePtr<RQ_PrimQuadric>;

/// A surface swept by a profile around the z axis: the base of spheres, tubes, circles and hyperboloids.
///
/// Shape      u goes around the axis, counter-clockwise seen from +z, 0 to 1 being a whole turn; v goes along the profile
///            from 0 to 1.  The attributes are detail ones, of one entry
/// Units      a unit shape in its own space, placed by the primitive's transform
/// Failure    `init` refuses what is not finite: false, and nothing is changed
/// Ownership  shares attributes and transform
/// Threads    immutable once shared, safe to read from any thread; meshes are made in parallel and have the same bits for
///            any number of threads
class RQ_API RQ_PrimQuadric : public RQ_Primitive
{
public:
    ~RQ_PrimQuadric() override;

    /// Replace everything but the shape of a quadric that is not yet shared.  A null transform is the identity.
    bool init(const RQ_AttributeListHandle &attributes, const RQ_TransformHandle &transform,
              const RQ_Parametric &range = {});

    const RQ_AttributeListHandle &getAttributes() const { return attributes_; }

    /// The part of the surface that there is.
    const RQ_Parametric &getParametric() const { return range_; }

    /// What the options (null: all defaults) ask for: samples in both directions, 9 to 16384, and the range to sample.
    static void extractRefineParms(const RQ_RefineParms *parms, int &nu, int &nv, double &umin, double &umax, double &vmin,
                                   double &vmax);

    /// Cut in two along a parameter, at a fraction of the range between 0 and 1.  False, with nothing written, for others.
    bool splitU(RQ_QuadricHandle &low, RQ_QuadricHandle &high, double at = 0.5) const;
    bool splitV(RQ_QuadricHandle &low, RQ_QuadricHandle &high, double at = 0.5) const;

    /// Hand over the mesh of `refineToPolygonMesh`.  False when there is none.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;
    const RQ_ViewportRefineOptions &viewportRefineOptions() const override;

    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;
    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;
    const RQ_AttributeListHandle &getDetailAttributes() const override { return attributes_; }

    /// Write [name of the type, members of the shape..., range, lists].
    bool save(BAS_JSONWriter &writer) const override;
    RQ_PrimitiveHandle doHarden() const override;

    /// Sample what the options want of this quadric's range as a grid with "P", "N" and "uv", all of them bound to points.
    /// Null when nothing is left of the range.
    virtual RQ_PolygonMeshHandle refineToPolygonMesh(const RQ_RefineParms *parms) const;

    /// Change the samples to what the shape needs.
    virtual void adjustTesselationCounts(int &nu, int &nv) const;

    /// Sample a range, both ends included, by `nu` x `nv` points, and place them.
    ///
    /// Shape    point i + nu * j is sample i of u and j of v; over a whole turn the last column has the positions of the
    ///          first.  Faces wind as the normals point, which have length 1; "uv" are the parameters.  The transform is
    ///          within the points; it has one segment for each of its own
    /// Failure  null for counts below 2 and ranges that are not finite; storages are real32 and real64, any other is real32
    virtual RQ_PolygonMeshHandle createMesh(int nu, int nv, double umin, double umax, double vmin, double vmax,
                                            bool withNormals, bool withUV, RQ_Storage positions, RQ_Storage normals) const;

    /// The positions, or outward unit normals, of some u along one v, before the transform.
    virtual void fillQP(BAS_Vec3f *positions, int64_t count, const double *u, double v) const;
    virtual void fillQP(BAS_Vec3d *positions, int64_t count, const double *u, double v) const;
    virtual void fillQN(BAS_Vec3f *normals, int64_t count, const double *u, double v) const;
    virtual void fillQN(BAS_Vec3d *normals, int64_t count, const double *u, double v) const;

    /// Set to the box of this quadric's range, before the transform.
    virtual void getQBounds(BAS_BoundingBox &box) const;

    /// A copy of the same shape over another range; one that is not finite stands for this quadric's own.
    virtual RQ_QuadricHandle clone(const RQ_Parametric &range) const;
    using RQ_Primitive::clone;

protected:
    // What a subclass says of its shape: everything else follows from these.

    /// Where the surface is at u = 0, and which way is out.
    struct Profile
    {
        BAS_Vec3d point;
        BAS_Vec3d normal;  ///< of length 1
    };
    virtual Profile profile(double v) const = 0;

    /// Whether the way out is that of du x dv, not of dv x du.
    virtual bool isRightHanded() const = 0;

    /// How far the surface reaches: the greatest dot product of its points with `direction`, before the transform.
    ///
    /// The base knows surfaces that are ruled along v: a straight profile has its extremes at the ends.
    virtual double reach(const BAS_Vec3d &direction) const;

    /// The samples that the options want of this quadric's range, and what of it they leave; false when that is nothing.
    bool chooseSamples(const RQ_RefineParms *parms, int &nu, int &nv, RQ_Parametric &range) const;

    /// The samples of a range, placed: "P", and "N" unless its storage is the invalid one.  A single row is that of
    /// the range's last v.
    RQ_AttributeListHandle sweepGrid(int nu, int nv, const RQ_Parametric &range, RQ_Storage positions,
                                     RQ_Storage normals) const;

    /// The transform, the identity in place of none.
    const RQ_Transform &placement() const;

    /// Whether the transform, as it is in the first segment, turns left into right.
    bool isMirrored() const;

    /// Write the members of the shape into its record.
    virtual bool saveShape(BAS_JSONWriter &writer) const;

    /// What `save` writes, under a name of the subclass's own.
    bool saveQuadric(BAS_JSONWriter &writer, const char *typeName) const;

private:
    bool split(double RQ_Parametric::*begin, double RQ_Parametric::*end, double at, RQ_QuadricHandle &low,
               RQ_QuadricHandle &high) const;
    void enlargeByReach(BAS_BoundingBox &box, const BAS_Mat4d &matrix) const;

    RQ_AttributeListHandle attributes_;
    RQ_Parametric range_;
};
