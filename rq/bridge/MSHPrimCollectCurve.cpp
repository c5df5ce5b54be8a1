#include <rq/bridge/MSHPrimCollectCurve.h>

#include <cmath>

#include <rq/bridge/detail/hasAllPoints.h>
#include <rq/data/DANumeric.h>
#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimNURBSCurveMesh.h>

namespace
{
/// Closed curves without knots of their own have even ones, which shape them like none.
bool areEven(const std::vector<double> &knots)
{
    const double step = (knots.back() - knots.front()) / double(knots.size() - 1);
    for (size_t i = 1; i < knots.size(); ++i)
        if (std::abs(knots[i] - knots[i - 1] - step) > 1e-12 * std::abs(knots.back()))
            return false;
    // Where all are one there is no curve at all.
    return step > 0.0;
}

/// The knots of all curves end to end, null when all are even.
RQ_DataArrayHandle knotsOf(const MSH_Detail &detail, const RQ_MSHOffsetList &curves)
{
    const BAS_IntrusivePtr<RQ_DANumeric<double>> all(new RQ_DANumeric<double>(0));
    bool even = true;
    for (int64_t i = 0; i < curves.entries(); ++i)
    {
        const std::vector<double> knots = MSH_Curve(detail, curves[i]).knots();
        even = even && areEven(knots);
        for (const double knot : knots)
            all->append(knot);
    }
    return even ? nullptr : RQ_DataArrayHandle(all);
}

RQ_CurveMeshHandle makeMesh(const RQ_MSHDetailList &details, const RQ_MSHPrimCollectCurveData::Groups::Group &group,
                            const RQ_RefineParms *parms)
{
    const MSH_Detail &detail = *details.getDetail();
    const auto &[kind, curves] = group;
    const BAS_IntrusivePtr<RQ_DANumeric<int64_t>> counts(new RQ_DANumeric<int64_t>(curves.entries()));
    RQ_MSHOffsetList vertices;
    for (int64_t i = 0; i < curves.entries(); ++i)
    {
        const RQ_MSHOffsetList ofCurve(detail.vertices(curves[i]));
        counts->data()[i] = ofCurve.entries();
        vertices.concat(ofCurve);
    }
    RQ_AttributeListHandle list = details.getVertexAttributes(nullptr, vertices, parms, RQ_MSHIncludePoint::INCLUDE);
    if (list && !kind.isRational)
        list = list->removeAttribute("Pw");
    const RQ_AttributeListHandle uniform = details.getPrimitiveAttributes(nullptr, curves, parms);
    const RQ_AttributeListHandle whole = details.getDetailAttributes(nullptr, parms);
    RQ_CurveMeshHandle mesh;
    if (kind.basis == RQ_BASIS_BSPLINE)
        mesh = new RQ_PrimNURBSCurveMesh(counts, list, uniform, whole, kind.wraps);
    else
        mesh = new RQ_PrimCurveMesh(kind.basis, counts, list, uniform, whole, kind.wraps);
    if (!mesh->setOrder(kind.order))
        return nullptr;
    if (kind.basis == RQ_BASIS_BSPLINE)
        if (const RQ_DataArrayHandle knots = knotsOf(detail, curves); knots && !mesh->setKnots(knots))
            return nullptr;
    return mesh;
}
}  // namespace

RQ_MSHPrimCollectCurveData::~RQ_MSHPrimCollectCurveData() = default;

void RQ_MSHPrimCollectCurveData::append(const MSH_Curve &curve)
{
    const RQ_Basis basis = curve.isBezier() ? RQ_BASIS_BEZIER : RQ_BASIS_BSPLINE;
    if (rq::hasAllPoints(curve))
        groups_.append({basis, curve.order(), curve.wraps(), curve.isRational()}, curve.offset());
}

RQ_MSHPrimCollectData *RQ_MSHPrimCollectCurve::beginCollecting(const RQ_MSHDetailListHandle &,
                                                               const RQ_RefineParms *parms) const
{
    return new RQ_MSHPrimCollectCurveData(parms);
}

RQ_PrimitiveHandle RQ_MSHPrimCollectCurve::collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *primitives,
                                                   int, RQ_MSHPrimCollectData *data) const
{
    static_cast<RQ_MSHPrimCollectCurveData *>(data)->append(MSH_Curve(*primitives[0]));
    return nullptr;
}

void RQ_MSHPrimCollectCurve::mergeData(RQ_MSHPrimCollectData *into, RQ_MSHPrimCollectData *from) const
{
    static_cast<RQ_MSHPrimCollectCurveData *>(into)->append(*static_cast<const RQ_MSHPrimCollectCurveData *>(from));
}

RQ_PrimitiveHandle RQ_MSHPrimCollectCurve::endCollecting(const RQ_MSHDetailListHandle &details,
                                                         RQ_MSHPrimCollectData *data) const
{
    const auto &gathered = static_cast<const RQ_MSHPrimCollectCurveData &>(*data);
    BAS_IntrusivePtr<RQ_PrimCollect> all(new RQ_PrimCollect);
    for (const RQ_MSHPrimCollectCurveData::Groups::Group &group : gathered.getGroups())
        if (const RQ_CurveMeshHandle mesh = makeMesh(*details, group, gathered.getParms()))
            all->appendPrimitive(mesh);
    return all->entries() > 1 ? RQ_PrimitiveHandle(all) : all->getPrim(0);
}
