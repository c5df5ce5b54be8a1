#pragma once

#include <memory>

#include <host/msh/Surface.h>
#include <rq/surface/PrimTensorPatch.h>

/// A host's NURBS or Bezier surface, with the curves that trim it.
///
/// The refined mesh has what lies to the left of outer loops: cells of its grid are cut along the loops, whose curves become
/// twice as many pieces a span as the grid has steps.
class RQ_API RQ_MSHPrimTPSurf final : public RQ_PrimTensorPatch
{
public:
    RQ_MSHPrimTPSurf();
    RQ_MSHPrimTPSurf(const RQ_MSHPrimTPSurf &other);
    ~RQ_MSHPrimTPSurf() override;

    /// A surface of the host; a list has an entry a vertex of it.  False, as `RQ_PrimTensorPatch::init`.
    bool init(const MSH_Surface &surface, const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform = {},
              const RQ_AttributeListHandle &detail = {});
    using RQ_PrimTensorPatch::init;

    /// The curves in the plane of the knots; no loops without.
    const MSH_TrimLoops &getTrims() const;

    const char *className() const override;
    int getPrimitiveType() const override;
    int64_t getMemoryUsage() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

protected:
    bool saveShape(BAS_JSONWriter &writer) const override;
    Loops trimLoops(int pieces) const override;

private:
    std::shared_ptr<const MSH_TrimLoops> trims_;  // null without
};
