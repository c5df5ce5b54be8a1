#pragma once

#include <host/elm/Range.h>
#include <rq/bridge/MSHDetailList.h>
#include <rq/prim/Primitive.h>

/// A host detail as a primitive: where geometry enters the library.  Refining it makes the primitives that can be drawn.
///
/// Shape      one snapshot per motion segment, and a range of primitives if not all
/// Ownership  keeps the snapshots alive
/// Threads    immutable; several threads may refine it at the same time
class RQ_API RQ_MSHDetail final : public RQ_Primitive
{
public:
    using RangeHandle = std::shared_ptr<const ELM_Range>;

    /// Wrap a snapshot, or one per motion segment, and of its primitives only those that `range` has, where one is given.
    explicit RQ_MSHDetail(const MOD_ConstDetailHandle &detail, const RangeHandle &range = {});
    /// Samples lie `secondsApart`; `RQ_MSHDetailList` tells what becomes of those that differ.
    explicit RQ_MSHDetail(std::vector<MOD_ConstDetailHandle> details, const RangeHandle &range = {},
                          double secondsApart = RQ_MSHDetailList::kFrameSeconds);
    RQ_MSHDetail(const RQ_MSHDetail &other);
    ~RQ_MSHDetail() override;

    static RQ_PrimitiveHandle makeDetail(const MOD_ConstDetailHandle &detail, const RangeHandle &range = {});

    /// A snapshot whose points move by their velocity "v" from segment to segment, `secondsApart` each.
    static RQ_PrimitiveHandle makeMoving(const MOD_ConstDetailHandle &detail, int segments, double secondsApart,
                                         const RangeHandle &range = {});

    /// Only the faces, as one mesh; null when there are none, or when it is interrupted.
    static RQ_PrimitiveHandle makePolygonMesh(const MOD_ConstDetailHandle &detail, const RangeHandle &range = {},
                                              const RQ_RefineParms *parms = nullptr);

    /// All points, or those of a range of points; null when there are none.
    static RQ_PrimitiveHandle makePointMesh(const MOD_ConstDetailHandle &detail, const RangeHandle &range = {});

    const MOD_ConstDetailHandle &getGeometry(int segment = 0) const { return details_->getHandle(segment); }
    const RQ_MSHDetailListHandle &getDetails() const { return details_; }
    const RangeHandle &getRange() const { return range_; }

    const char *className() const override;
    int getPrimitiveType() const override;

    /// Positions, and all of the circles, spheres, tubes, blobs, volumes and packed geometry that stands there.
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;
    void getVelocityRange(BAS_Vec3f &minimum, BAS_Vec3f &maximum, const BAS_StringHolder &name) const override;

    /// Hand every primitive of the detail to the sink through the collector of its type, and points that no primitive uses
    /// as point meshes.  The sink is called from this thread alone, in an order that does not depend on threads, and not at
    /// all when the refinement is interrupted.  False only without a detail.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;

    int getMotionSegments() const override { return std::max(1, details_->getSegments()); }
    int64_t getMemoryUsage() const override;
    bool save(BAS_JSONWriter &writer) const override;

    /// A snapshot never changes, so a copy that shares it is as good as one of its own.
    RQ_PrimitiveHandle doHarden() const override { return doSoftCopy(); }
    RQ_PrimitiveHandle doSoftCopy() const override;

private:
    RQ_MSHDetail(const RQ_MSHDetailListHandle &details, const RangeHandle &range);

    RQ_MSHDetailListHandle details_;
    RangeHandle range_;
};
