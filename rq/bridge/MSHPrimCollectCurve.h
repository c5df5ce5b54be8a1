#pragma once

#include <host/msh/Curve.h>
#include <rq/bridge/KindGroups.h>
#include <rq/bridge/MSHPrimCollect.h>
#include <rq/surface/Basis.h>

/// The curves of one refinement, by what all curves of a mesh have in common.
class RQ_API RQ_MSHPrimCollectCurveData : public RQ_MSHPrimCollectData
{
public:
    struct Kind
    {
        RQ_Basis basis;
        int order;
        bool wraps;
        bool isRational;

        auto operator<=>(const Kind &other) const = default;
    };
    using Groups = RQ_KindGroups<Kind>;

    explicit RQ_MSHPrimCollectCurveData(const RQ_RefineParms *parms) : parms_(parms) {}
    ~RQ_MSHPrimCollectCurveData() override;

    /// Append one curve, unless it has a vertex without a point.
    void append(const MSH_Curve &curve);

    /// Append what other data gathered.
    void append(const RQ_MSHPrimCollectCurveData &following) { groups_.concat(following.groups_); }

    const Groups &getGroups() const { return groups_; }
    const RQ_RefineParms *getParms() const { return parms_; }

private:
    const RQ_RefineParms *parms_;  // of the refinement, which outlives the data
    Groups groups_;
};

/// The collector of host NURBS and Bezier curves: those of one basis, order and form become one `RQ_PrimNURBSCurveMesh`, or
/// `RQ_PrimCurveMesh` of Bezier curves; several meshes come in a collection.
///
/// Vertex attributes are those of vertices and their points, read in place; weights only reach meshes of rational curves.
/// NURBS keep their knots; breakpoints between Bezier spans shape nothing and are left behind.
class RQ_API RQ_MSHPrimCollectCurve : public RQ_MSHPrimCollect
{
public:
    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &details,
                                           const RQ_RefineParms *parms) const override;
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &details, const MSH_Primitive *const *primitives, int segments,
                               RQ_MSHPrimCollectData *data) const override;
    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const override;
    bool canMergeData() const override { return true; }
    void mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const override;
};
