#pragma once

#include <rq/surface/PrimTensorPatch.h>

/// One patch: a net of as many rows and columns as the orders of its directions.
class RQ_API RQ_PrimPatch final : public RQ_PrimTensorPatch
{
public:
    RQ_PrimPatch();
    RQ_PrimPatch(const RQ_PrimPatch &other);
    ~RQ_PrimPatch() override;

    /// Refused for more than one span as well.
    bool init(const RQ_NetDirection &u, const RQ_NetDirection &v, const RQ_AttributeListHandle &vertex,
              const RQ_AttributeListHandle &uniform = {}, const RQ_AttributeListHandle &detail = {}) override;

    const char *className() const override;
    int getPrimitiveType() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;
};
