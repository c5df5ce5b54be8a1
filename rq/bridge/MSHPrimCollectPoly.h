#pragma once

#include <optional>

#include <host/elm/Group.h>
#include <rq/bridge/MSHPrimCollect.h>
#include <rq/bridge/detail/FaceLists.h>
#include <rq/bridge/detail/PolygonReader.h>

/// The polygons of one refinement: closed ones as the faces of one mesh, open ones by their offsets.
class RQ_API RQ_MSHPrimCollectPolyData : public RQ_MSHPrimCollectData
{
public:
    explicit RQ_MSHPrimCollectPolyData(const RQ_RefineParms *parms);
    ~RQ_MSHPrimCollectPolyData() override;

    /// Append one polygon of the detail.  A face with a vertex that has no point is left out.
    void append(const MSH_Detail &detail, ELM_Offset primitive);

    /// Append the polygons of a range, in parallel.  Nothing when it is interrupted.
    void append(const MSH_Detail &detail, const ELM_Range &range, BAS_Progress &progress);

    /// Append what other data gathered.
    void append(RQ_MSHPrimCollectPolyData &following);

    /// The mesh of all closed polygons, null without any.
    RQ_PrimitiveHandle makeMesh(const RQ_MSHDetailListHandle &details);

    const RQ_MSHOffsetList &getOpenPolygons() const { return open_; }
    const RQ_RefineParms *getParms() const { return parms_; }

private:
    bool coversDetail(const MSH_Detail &detail) const;

    const RQ_RefineParms *parms_;              // of the refinement, which outlives the data
    std::optional<rq::PolygonReader> reader_;  // of the detail that was read last
    rq::FaceLists closed_;
    RQ_MSHOffsetList open_;
    bool fastCompacting_;
};

/// The collector of host polygons: all closed ones of a refinement become one polygon mesh that reads the detail in place.
///
/// Open polygons follow the mesh in a collection, each wrapped as it is.
class RQ_API RQ_MSHPrimCollectPoly : public RQ_MSHPrimCollect
{
public:
    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &details,
                                           const RQ_RefineParms *parms) const override;
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &details, const MSH_Primitive *const *primitives, int segments,
                               RQ_MSHPrimCollectData *data) const override;
    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const override;
    bool canMergeData() const override { return true; }
    void mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const override;

    /// Take one polygon by its offset.
    void collectOne(RQ_MSHPrimCollectData *data, const MSH_Detail &detail, ELM_Offset primitive) const;

    /// Take all polygons of a range but those of a group (null: none), in parallel and without a call for each.
    void collectAll(RQ_MSHPrimCollectData *data, const MSH_Detail &detail, const ELM_Range &range,
                    const ELM_Group *skip) const;
};
