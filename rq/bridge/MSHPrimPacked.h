#pragma once

#include <host/bas/Published.h>
#include <host/mod/PrimPacked.h>
#include <rq/bridge/MSHDetailList.h>
#include <rq/prim/Primitive.h>

class BAS_Options;

/// A host primitive that stands for other geometry: a detail, a part of one, a file, a character.
///
/// Refining gives that geometry at a level of detail, placed.  A consumer that can share geometry asks `canInstance` and for
/// the key instead; `RQgatherInstances` does so for many at once.
///
/// Shape      attributes are those of the host primitive (uniform), its vertex and its point, one row each
/// Failure    geometry that cannot be had (a file that is gone) refines to nothing, with a warning
/// Ownership  keeps the details alive; the geometry itself is kept by the host
/// Threads    immutable once shared
class RQ_API RQ_MSHPrimPacked : public RQ_Primitive
{
public:
    /// `transformed`: what it refines to is placed where the host primitive stands.
    RQ_MSHPrimPacked(const RQ_MSHDetailListHandle &details, ELM_Offset offset, bool transformed = true);
    RQ_MSHPrimPacked(const MOD_ConstDetailHandle &detail, ELM_Offset offset, bool transformed = true);
    RQ_MSHPrimPacked(const RQ_MSHPrimPacked &other);
    ~RQ_MSHPrimPacked() override;

    const MOD_PrimPacked &getPrim() const { return packed_; }
    const MOD_PackedImpl &getImplementation() const { return packed_.implementation(); }
    const RQ_MSHDetailListHandle &getDetails() const { return details_; }

    bool transformed() const { return transformed_; }
    void setTransformed(bool transformed) { transformed_ = transformed; }

    /// The level that is shown where viewports show packed geometry at its own level (see host/msh/viewportLOD.h); at first
    /// that of the host primitive.
    int getViewportLOD() const { return viewportLOD_; }
    void setViewportLOD(int level) { viewportLOD_ = level; }

    /// True when the options ask for each primitive's own level and override it for none.
    static bool useViewportLOD(const RQ_RefineParms *parms);

    /// From the space of the geometry to the detail's: as the host has it, moving with its point.
    void getFullTransform(BAS_Mat4d &matrix, int segment = 0) const;

    /// From the space of the geometry to where this primitive is drawn: the former when `transformed`, then the transform of
    /// the primitive itself.
    void getViewportTransform(BAS_Mat4d &matrix, int segment = 0) const;

    /// The geometry at the level that the options ask for, not placed, and what places it; null handles for nothing.
    void geometryAndTransform(RQ_PrimitiveHandle &geometry, RQ_TransformHandle &transform,
                              const RQ_RefineParms *parms) const;

    /// The part of a detail that a fragment is, read in place; null for anything else.
    RQ_PrimitiveHandle buildUntransformedFragment() const;

    /// Add what the host primitive is to all geometry made from now on: attributes "__primitive_id" and "__point_id" of the
    /// whole.  For primitives that are not yet shared.
    void createPointPrimIDs();

    /// `geometry` with the attributes of the packed primitive, and its ids if there are any, as attributes of the whole,
    /// those left out whose names it has already.  Children of collections get them one by one.
    RQ_PrimitiveHandle copyPackedAttributesToGeometry(const RQ_PrimitiveHandle &geometry) const;

    // Instancing.

    /// Whether others of an equal key may share the geometry.
    virtual bool canInstance() const;

    /// Describe the geometry.  False when there is no key.
    virtual bool getInstanceKey(BAS_Options &key) const;

    /// Attributes of the packed primitive, of its vertex and its point: one row, one segment, without what places it.
    virtual RQ_AttributeListHandle getInstanceAttributes() const;

    /// What places the geometry.
    virtual RQ_TransformHandle getInstanceTransform() const;

    /// What all that share the key have in common: not refined, not placed.  Null when it cannot be had.
    virtual RQ_PrimitiveHandle getInstanceGeometry() const;

    /// The detail that it stands for; a handle of nothing when it cannot be had.
    virtual MOD_ConstDetailHandle getPackedDetail() const;

    const char *className() const override;
    int getPrimitiveType() const override;

    /// Enlarge by the placed corners of the geometry's box.
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;
    void enlargeRenderBounds(BAS_BoundingBox *boxes, int segments) const override;

    /// The range of the geometry's points.
    void getVelocityRange(BAS_Vec3f &minimum, BAS_Vec3f &maximum, const BAS_StringHolder &name) const override;

    /// Hand over the geometry as one primitive, placed.  The level is that of "viewport:packed_lod" and the override: 0
    /// nothing, 1 the middle of its box, 2 the box, 3 points, any other all of it.  A mesh of polygons becomes one of
    /// subdivision where the options ask for it.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;
    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;
    const RQ_AttributeListHandle &getPointAttributes() const override;
    const RQ_AttributeListHandle &getVertexAttributes() const override;
    const RQ_AttributeListHandle &getUniformAttributes() const override;

    /// It may refine to something else when the level of detail changes.
    const RQ_ViewportRefineOptions &viewportRefineOptions() const override;

    bool save(BAS_JSONWriter &writer) const override;

    /// A snapshot never changes, so a copy that shares it is as good as one of its own.
    RQ_PrimitiveHandle doHarden() const override { return doSoftCopy(); }
    RQ_PrimitiveHandle doSoftCopy() const override;

protected:
    // The geometry at each level, not placed; null for nothing.
    virtual RQ_PrimitiveHandle getPointCloud(const RQ_RefineParms *parms) const;
    virtual RQ_PrimitiveHandle getFullGeometry(const RQ_RefineParms *parms) const;
    virtual RQ_PrimitiveHandle getBoxGeometry(const RQ_RefineParms *parms) const;
    virtual RQ_PrimitiveHandle getCentroidGeometry(const RQ_RefineParms *parms) const;

private:
    // Made when they are first asked for.
    struct Lists : BAS_IntrusiveRefCounter<Lists>
    {
        RQ_AttributeListHandle point, vertex, uniform;
    };

    const Lists &lists() const;
    int64_t levelFor(const RQ_RefineParms *parms) const;
    RQ_PrimitiveHandle geometryAt(int64_t level, const RQ_RefineParms *parms) const;

    /// Put `array` into `list` under a name that is free there, or leave the list as it is.
    static void appendAttribute(RQ_AttributeListHandle &list, const BAS_StringHolder &name, const RQ_DataArrayHandle &array);

    RQ_MSHDetailListHandle details_;
    MOD_PrimPacked packed_;  // of the first detail
    bool transformed_;
    int viewportLOD_;
    RQ_DataArrayHandle primitiveIds_, pointIds_;
    host::PublishedCache<Lists> lists_{};
};

/// One whose geometry others may share: a whole detail, or a file.
class RQ_API RQ_MSHPrimPackedShared : public RQ_MSHPrimPacked
{
public:
    using RQ_MSHPrimPacked::RQ_MSHPrimPacked;
    ~RQ_MSHPrimPackedShared() override;

    bool canInstance() const override { return true; }
    RQ_PrimitiveHandle doSoftCopy() const override;
};

/// A list of primitives in which all that can share geometry do: packed primitives of one key become an `RQ_PrimInstance`
/// of it, with their attributes as those of the instances, in the place of the first of them; those that have no vertex
/// become one of their own.
///
/// Failure  all others stay as they are: null handles, and packed primitives whose geometry cannot be had, of which
///          `BAS_Diagnostics` warns
/// Threads  safe from any thread
/// Cost     a key for each primitive that is not of the same implementation as the one before
RQ_API std::vector<RQ_PrimitiveHandle> RQgatherInstances(const std::vector<RQ_PrimitiveHandle> &primitives);
