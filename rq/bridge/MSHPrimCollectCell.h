#pragma once

#include <rq/bridge/detail/BatchData.h>
#include <rq/bridge/detail/RunList.h>
#include <rq/surface/PrimCellMesh.h>

/// The cells of one type that a refinement meets.
///
/// Cost  a run of cells is counted; else 4 bytes for each cell and each of its vertices, or 8 for offsets from 2^30 on
class RQ_API RQ_MSHPrimCollectCellData : public rq::BatchData
{
public:
    RQ_MSHPrimCollectCellData(ELM_PrimitiveTypeId type, const RQ_RefineParms *parms) : type_(type), parms_(parms) {}
    ~RQ_MSHPrimCollectCellData() override;

    /// Append a primitive.  One of another type, or with a vertex that has no point, is left out.
    void append(const MSH_Primitive &cell);
    void append(const MSH_Detail &detail, const ELM_Range &range, BAS_Progress &progress) override;

    /// Append what other data gathered.
    void append(RQ_MSHPrimCollectCellData &following);

    /// Give all cells to a mesh that is not yet shared, without the points of the detail that they do not use.  Null without
    /// any.
    RQ_CellMeshHandle fill(const RQ_CellMeshHandle &mesh, const RQ_MSHDetailListHandle &details);

private:
    void appendBlock(const MSH_Detail &detail, ELM_Offset begin, ELM_Offset end);

    ELM_PrimitiveTypeId type_;
    const RQ_RefineParms *parms_;  // of the refinement, which outlives the data
    rq::RunList primitives_, vertices_;
};

/// What the collectors of tetrahedra and of hexahedra have in common: all cells of a refinement become one mesh that reads
/// the detail in place.
///
/// Options, see `RQ_RefineParms`:
///     fastpolycompacting   off: a mesh of all primitives drops unused points too; one of some always does
///     material arrays      as of polygons, see `RQ_MSHPrimCollectPoly`
class RQ_API RQ_MSHPrimCollectCell : public RQ_MSHPrimCollect
{
public:
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &details, const MSH_Primitive *const *primitives, int segments,
                               RQ_MSHPrimCollectData *data) const override;
    bool canMergeData() const override { return true; }
    void mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const override;
};
