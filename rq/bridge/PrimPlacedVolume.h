#pragma once

#include <host/msh/Payload.h>
#include <rq/bridge/MSHDetailList.h>
#include <rq/surface/PrimCurveMesh.h>

/// What fills a cube with values: the base of dense and sparse volumes.
///
/// Shape      the cube from -1 to 1, placed by the primitive's transform, of which each motion segment has its own; the
///            values are those of the first.  The attributes of the host primitive, its vertex and its point are detail ones
/// Failure    measures are 0: a volume has no surface
/// Ownership  shares the host's values, which are never copied; the detail is let go when hardened
/// Threads    immutable once shared
class RQ_API RQ_PrimPlacedVolume : public RQ_Primitive
{
public:
    ~RQ_PrimPlacedVolume() override;

    /// What the host keeps of it: alive for as long as the handle is.
    const MSH_PayloadHandle &getPayload() const { return payload_; }

    /// The name of the field.
    virtual const BAS_StringHolder &getName() const = 0;

    /// The edges of the cube as straight curves, to show where it is.
    RQ_CurveMeshHandle createOutline() const;

    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;

    /// There is nothing simpler: hand this on as it is, for sinks that take volumes, and answer false.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;
    int getMotionSegments() const override;

    /// Without the host's values.
    int64_t getMemoryUsage() const override;
    const RQ_AttributeListHandle &getDetailAttributes() const override { return detail_; }
    double computePerimeter(int) const override { return 0.0; }
    double computeSurfaceArea(int) const override { return 0.0; }
    double computeVolume(const BAS_Vec3f &, int) const override { return 0.0; }
    RQ_PrimitiveHandle doHarden() const override;

protected:
    RQ_PrimPlacedVolume(const RQ_MSHDetailList &details, ELM_Offset volume, const RQ_RefineParms *parms);
    RQ_PrimPlacedVolume(const RQ_PrimPlacedVolume &other);

private:
    MSH_PayloadHandle payload_;
    RQ_AttributeListHandle detail_;
};
