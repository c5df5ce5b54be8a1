#pragma once

#include <rq/surface/PrimTensorPatch.h>

/// Many patches that share a net: neighbours have their border's vertices in common.
class RQ_API RQ_PrimPatchMesh final : public RQ_PrimTensorPatch
{
public:
    RQ_PrimPatchMesh();
    RQ_PrimPatchMesh(const RQ_PrimPatchMesh &other);
    ~RQ_PrimPatchMesh() override;

    const char *className() const override;
    int getPrimitiveType() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;
};
