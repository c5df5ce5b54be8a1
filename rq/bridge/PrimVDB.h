#pragma once

#include <host/msh/SparseVolume.h>
#include <rq/bridge/PrimPlacedVolume.h>

/// A sparse volume of a host detail: a grid of some library, behind a handle whose kind tells what to cast it to.
///
/// What the grid fills is known to nobody here and taken for the cube.
class RQ_API RQ_PrimVDB final : public RQ_PrimPlacedVolume
{
public:
    RQ_PrimVDB(const RQ_MSHDetailList &details, ELM_Offset volume, const RQ_RefineParms *parms = nullptr);
    RQ_PrimVDB(const RQ_PrimVDB &other);
    ~RQ_PrimVDB() override;

    /// The grid, and the name that its kind is registered under.
    const MSH_OpaqueHandle &getGrid() const { return data().grid; }
    const char *getKind() const { return data().grid->kind(); }
    const BAS_StringHolder &getName() const override { return data().name; }

    const char *className() const override;
    int getPrimitiveType() const override;

    /// Write [name of the type, name, kind, lists]: not the grid.
    bool save(BAS_JSONWriter &writer) const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

private:
    const MSH_SparseVolumeData &data() const { return MSHpayloadData<MSH_SparseVolumeData>(*getPayload()); }
};
