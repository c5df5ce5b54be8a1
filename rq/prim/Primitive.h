#pragma once

#include <atomic>

#include <host/bas/BoundingBox.h>
#include <host/fwd.h>
#include <rq/attrib/AttributeList.h>
#include <rq/prim/Refine.h>
#include <rq/prim/Transform.h>

class BAS_JSONWriter;
class BAS_StringMMPattern;
class RQ_ViewportRefineOptions;

/// The base of everything that can be drawn.
///
/// A consumer refines a primitive into a sink, refines again what it receives, and goes on until every primitive is of a
/// type that it draws itself.
///
/// Shape      attributes lie in four lists by owner: vertex, point, uniform (per face), detail; any of them may be null. The
///            order of the virtual operations is part of the interface; subclasses append theirs.
/// Units      bounds, widths and measures are in the units of "P", after the primitive's transform
/// Failure    nothing throws: missing attributes give false, null handles and zero
/// Ownership  counted; lives on the heap behind an `RQ_PrimitiveHandle`.  Operations that change something return a new
///            primitive, or this one when nothing changes
/// Threads    immutable once shared, safe to read from any thread; setters belong to the maker
class RQ_API RQ_Primitive : public BAS_IntrusiveRefCounter<RQ_Primitive>
{
public:
    virtual ~RQ_Primitive();

    virtual const char *className() const = 0;

    /// One of `RQ_PrimitiveType`, or an id of `createPrimitiveTypeId`.
    virtual int getPrimitiveType() const;

    /// An id that stays the same for as long as the primitive stands for the same thing.  False when there is none.
    virtual bool getUniqueID(int64_t &id) const;

    /// Enlarge one box per motion segment by the primitive.
    virtual void enlargeBounds(BAS_BoundingBox *boxes, int segments) const = 0;

    /// Enlarge by what a renderer must cover (displacement and the like included).
    virtual void enlargeRenderBounds(BAS_BoundingBox *boxes, int segments) const;

    /// Least and greatest velocity per axis.  Both zero when the attribute is missing, no float, or bound to the detail.
    virtual void getVelocityRange(BAS_Vec3f &minimum, BAS_Vec3f &maximum, const BAS_StringHolder &name) const;

    /// Hand simpler primitives to `sink`.  False when the primitive cannot be refined.  `parms` null means all defaults.
    virtual bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const;

    virtual int getMotionSegments() const = 0;
    virtual int64_t getMemoryUsage() const = 0;

    virtual const RQ_AttributeListHandle &getPointAttributes() const;
    virtual const RQ_AttributeListHandle &getVertexAttributes() const;
    virtual const RQ_AttributeListHandle &getUniformAttributes() const;
    virtual const RQ_AttributeListHandle &getDetailAttributes() const;

    /// Look for an attribute in the lists of `owners`, in that order, and tell its storage and tuple size.
    virtual bool hasDataArray(const BAS_StringHolder &name, const RQ_Owner *owners, int count, RQ_Storage *storage = nullptr,
                              int64_t *tupleSize = nullptr) const;

    /// Read from a newer detail from now on.  True when nothing but values changed, so that the primitive stays usable;
    /// false when it must be made again.  Must not race with readers.
    virtual bool updateGeoPrim(const MOD_ConstDetailHandle &detail, const RQ_RefineParms &parms);

    /// The version of the topology that the detail attribute "__topology" holds.  False without it, or when it is -1.
    virtual bool getTopologyVersion(int64_t &version) const;

    /// Write as JSON.  False when the class has no saved form (the attribute lists can still be written).
    virtual bool save(BAS_JSONWriter &writer) const;

    virtual const RQ_ViewportRefineOptions &viewportRefineOptions() const;

    /// The point of every vertex, null for primitives without.
    virtual const RQ_DataArrayHandle &getVertexList() const;

    /// Make one normal per point from the positions.  `weights`, if given, one per vertex.  Null where that means nothing.
    virtual RQ_DataArrayHandle createPointNormals(int segment, const char *positions, bool normalize, const float *weights,
                                                  RQ_Storage storage) const;

    // Measures: by default the sum over what the primitive refines to, 0 when it does not.
    virtual double computePerimeter(int segment) const;
    virtual double computeSurfaceArea(int segment) const;
    virtual double computeVolume(const BAS_Vec3f &reference, int segment) const;

    // What `harden`, `clone` and `attributeMerge` do.
    virtual RQ_PrimitiveHandle doHarden() const;
    virtual RQ_PrimitiveHandle doSoftCopy() const = 0;
    virtual RQ_PrimitiveHandle doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                                const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                                const BAS_StringMMPattern *detail) const;

    // Not virtual.

    /// Make a copy that owns all its data.  Null when the class refuses.
    RQ_PrimitiveHandle harden() const { return doHarden(); }

    /// Make a copy that shares the arrays.
    RQ_PrimitiveHandle clone() const { return doSoftCopy(); }

    /// Take over the attributes of `source` whose name fits the pattern of their list; null takes none.
    RQ_PrimitiveHandle attributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                      const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                      const BAS_StringMMPattern *detail) const;

    /// The list of an owner, null for anything that is no owner.
    const RQ_AttributeListHandle &getAttributeList(int owner) const;

    /// Look for an attribute in the vertex, point, uniform and detail lists, in this order.  `owner` tells where it was
    /// found, and is detail when it was not.
    const RQ_DataArrayHandle &findAttribute(const BAS_StringHolder &name, RQ_Owner &owner, int segment) const;

    const RQ_TransformHandle &getPrimitiveTransform() const { return transform_; }
    void setPrimitiveTransform(const RQ_TransformHandle &transform) { transform_ = transform; }

    /// True when the primitive is known not to change from frame to frame.
    bool isStaticGeometry() const { return staticState() == 1; }
    void setStaticGeometry(bool isStatic);
    bool isFrameInfoAvailable() const { return staticState() >= 0; }

    /// Hash the data ids of all attributes.  False when one has none: then the values must not be cached.
    ///
    /// Meshes with equal lists hash equal whatever their topology: combine it with the vertex list's data id and
    /// `getTopologyVersion`.  With `cache` the hash of this segment is kept; threads that do so at the same time must ask
    /// for the same segment.
    bool getDataIdHash(uint64_t &hash, int segment, bool cache) const;

    /// Place a copy by `transform`, after the primitive's own: this primitive itself when that changes nothing, unless
    /// `force` asks for a copy.
    RQ_PrimitiveHandle copyTransformed(const RQ_TransformHandle &transform, bool force = false) const;

    /// Place this primitive, made by refining `source`, as the source is.
    void refineCopyTransformFrom(const RQ_Primitive &source);

    /// Move the sides of one box per segment outward by the largest "width" or "pscale", and answer true.  Without either by
    /// `defaultWidth` (negative: 0.05; 0 for one that is neither negative nor finite), and answer false.
    bool enlargeWidth(BAS_BoundingBox *boxes, int segments, float defaultWidth) const;

    /// Range of up to three components.  False, and both zero, when the array is null or holds no floats.
    static bool computeVelocityRange(BAS_Vec3f &minimum, BAS_Vec3f &maximum, const RQ_DataArrayHandle &velocity);

    /// Put the attributes of `source` whose name fits one of the patterns into `destination`, replacing those of the same
    /// name.  Arrays that are not as long as the destination's first are left out.  `changed` becomes true when one was
    /// taken, and is left alone when the result is `destination` itself.
    static RQ_AttributeListHandle mergeAttributeLists(bool &changed, const RQ_AttributeListHandle &destination,
                                                      const RQ_AttributeListHandle &source, const BAS_StringMMPattern *first,
                                                      const BAS_StringMMPattern *second);

    /// Refine once: the one primitive that results, or a collection of them.  Null when refining changed nothing.
    static RQ_PrimitiveHandle refinePrimitive(const RQ_PrimitiveHandle &primitive, const RQ_RefineParms *parms);

    /// Wrap a detail and refine it once.
    static RQ_PrimitiveHandle refineDetail(const MOD_ConstDetailHandle &detail, const RQ_RefineParms *parms);

    /// Take an id, from 50 on, for a kind of primitive that is defined outside the library.  Safe from any thread.
    static int createPrimitiveTypeId();

    /// Print the saved form to standard output.
    void dumpPrimitive() const;

    /// Print the attribute lists to standard output, with their values if `verbose`.  `label` may be null.
    void dumpAttributeLists(const char *label, bool verbose) const;

    /// Write a map of the lists that exist ("vertex", "point", "uniform", "constant") and the "transform" unless it is the
    /// identity.
    bool saveAttributeLists(BAS_JSONWriter &writer) const;

protected:
    RQ_Primitive();

    /// Shares the transform and takes over the state, the cached hash included: a constructor that replaces lists calls
    /// `dropDataIdHash`.
    RQ_Primitive(const RQ_Primitive &other);
    RQ_Primitive &operator=(const RQ_Primitive &other);

    void dropDataIdHash();

    /// Enlarge one box per segment by "P" of `points`, each position placed by the primitive's transform.
    void enlargeP(BAS_BoundingBox *boxes, int segments, const RQ_AttributeListHandle &points) const;

    // Enlarge by the positions alone, without the transform.  Tuples of fewer than three components add nothing.
    static void enlargeP(BAS_BoundingBox &box, const RQ_AttributeListHandle &points, int segment);
    static void enlargeP(BAS_BoundingBox &box, const RQ_DataArray &positions);

    /// Enlarge by homogeneous positions; one with w = 0 counts as the origin.
    static void enlargePw(BAS_BoundingBox &box, const RQ_DataArray &positions);

    class jsonWriter;  // see PrimitiveJSON.h

private:
    int cachedSegment() const;
    int staticState() const { return int(int32_t(state_.load(std::memory_order_relaxed)) >> 30); }

    // 30 low bits: the segment of the cached hash; 2 high bits: the static state.  Signed, -1 is unknown in both.
    mutable std::atomic<uint32_t> state_{0xFFFFFFFFu};
    RQ_TransformHandle transform_;
    mutable std::atomic<uint64_t> dataIdHash_{0};
};
