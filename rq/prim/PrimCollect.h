#pragma once

#include <memory>

#include <rq/prim/Primitive.h>

namespace rq
{
class AppendList;
}

/// An ordered list of primitives that behaves as one.
///
/// Refining hands out the children, each with the collection's transform applied after its own; they are not refined
/// themselves.
///
/// Shape      children in order of arrival; once threads have met, those of each thread, with others in between.  A null
///            child is kept and counted, and passed over by every operation
/// Threads    `appendPrimitive` from any thread, also during other operations: these see the children that were there when
///            they started.  `clear` needs the collection for itself.
/// Cost       threads that append at the same time do not hold up each other
class RQ_API RQ_PrimCollect : public RQ_Primitive
{
public:
    RQ_PrimCollect();

    // Copies share the children and take over the state and the transform.
    RQ_PrimCollect(const RQ_PrimCollect &other);
    RQ_PrimCollect &operator=(const RQ_PrimCollect &other);
    ~RQ_PrimCollect() override;

    void appendPrimitive(const RQ_PrimitiveHandle &primitive);

    /// Make room for `count` children in all.
    void reserve(int64_t count);

    int64_t entries() const;

    /// The child at `index`, null out of range.
    RQ_PrimitiveHandle getPrim(int64_t index) const;

    void clear();

    const char *className() const override;
    int getPrimitiveType() const override;

    /// The union of the children's bounds.  The collection's own transform is not applied.
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;
    void enlargeRenderBounds(BAS_BoundingBox *boxes, int segments) const override;

    /// The union of the children's ranges and zero.
    void getVelocityRange(BAS_Vec3f &minimum, BAS_Vec3f &maximum, const BAS_StringHolder &name) const override;

    /// Hand over the children.  False when there are none.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;

    /// The smallest count among the children, 1 without any.
    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;

    /// True when some child updated itself.
    bool updateGeoPrim(const MOD_ConstDetailHandle &detail, const RQ_RefineParms &parms) override;

    /// Write ["List", [children]].
    bool save(BAS_JSONWriter &writer) const override;

    /// A collection of hardened children; a child that cannot be hardened is shared.
    RQ_PrimitiveHandle doHarden() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

protected:
    /// Replace every child by its hardened copy.
    void hardenContents();

private:
    template <class Visit> void forEach(int64_t begin, int64_t end, Visit &&visit) const;
    template <class Enlarge> void enlarge(BAS_BoundingBox *boxes, int segments, Enlarge &&enlargeBy) const;

    std::unique_ptr<rq::AppendList> children_;
};
