#pragma once

#include <vector>

#include <host/elm/Group.h>
#include <rq/bridge/MSHPrimCollect.h>
#include <rq/data/CountArray.h>

/// The polygons of one refinement: closed ones as the faces of one mesh, open ones by their offsets.
class RQ_API RQ_MSHPrimCollectPolyData : public RQ_MSHPrimCollectData
{
public:
    explicit RQ_MSHPrimCollectPolyData(const RQ_RefineParms *parms);
    ~RQ_MSHPrimCollectPolyData() override;

    /// Append one polygon of the detail.  A face with a vertex that has no point is left out.
    void append(const MSH_Detail &detail, ELM_Offset primitive);

    /// Append runs of closed polygons at once.
    void appendFaces(ELM_Offset firstPrimitive, int64_t primitives, ELM_Offset firstVertex, int64_t verticesEach);

    /// The mesh of all closed polygons, null without any.
    RQ_PrimitiveHandle makeMesh(const RQ_MSHDetailListHandle &details) const;

    const RQ_MSHOffsetList &getOpenPolygons() const { return open_; }
    const RQ_RefineParms *getParms() const { return parms_; }

private:
    bool coversDetail(const MSH_Detail &detail) const;
    RQ_CountArray faceCounts() const;

    const RQ_RefineParms *parms_;  // of the refinement, which outlives the data
    RQ_MSHOffsetList primitives_;  // one entry a face
    RQ_MSHOffsetList vertices_;
    std::vector<int32_t> counts_;  // empty while all faces have the same number of vertices
    int64_t faces_ = 0;
    int64_t minCount_ = 0;
    int64_t maxCount_ = 0;
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

    /// Take one polygon by its offset.
    void collectOne(RQ_MSHPrimCollectData *data, const MSH_Detail &detail, ELM_Offset primitive) const;

    /// Take all polygons of a range but those of a group (null: none), without a call for each.
    void collectAll(RQ_MSHPrimCollectData *data, const MSH_Detail &detail, const ELM_Range &range,
                    const ELM_Group *skip) const;
};
