#include <rq/surface/PrimCurveMesh.h>

#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/surface/CurveEval.h>

int64_t RQ_PrimCurveMesh::knotOffset(int64_t curve) const
{
    const int64_t perCurve = wrap_ ? 2 * int64_t(uniformOrder_) - 1 : uniformOrder_;
    return isUniformOrder() ? counts_.getOffset(curve) + curve * perCurve : knotCounts_.getOffset(curve);
}

bool RQ_PrimCurveMesh::setBasis(RQ_Basis basis, int order)
{
    int least, greatest;
    RQ_CurveEval::orderRange(basis, least, greatest);
    if (order < least || order > greatest || order < 1 || !canHaveBasis(basis))
        return false;
    // Even knots of the same number in all would belong to other curves.
    if (uniformOrder_ != order)
        knots_.reset();
    basis_ = basis;
    uniformOrder_ = order;
    varyingOrders_.reset();
    knotCounts_.clear();
    return true;
}

bool RQ_PrimCurveMesh::setBasis(RQ_Basis basis, const RQ_DataArrayHandle &orders)
{
    if (!orders || orders->entries() != getCurveCount() || orders->getTupleSize() != 1 ||
        !RQisInteger(orders->getStorage()) || orders->hasArrayEntries() || !canHaveBasis(basis))
        return false;
    int least, greatest;
    RQ_CurveEval::orderRange(basis, least, greatest);
    const rq::Values<int64_t> values(orders);
    const BAS_IntrusivePtr<RQ_DANumeric<int64_t>> knotCounts(new RQ_DANumeric<int64_t>(values.entries()));
    for (int64_t curve = 0; curve < values.entries(); ++curve)
    {
        if (values[curve] < least || values[curve] > greatest || values[curve] < 1)
            return false;
        knotCounts->data()[curve] = counts_.getCount(curve) + (wrap_ ? 2 * values[curve] - 1 : values[curve]);
    }
    basis_ = basis;
    uniformOrder_ = 0;
    varyingOrders_ = orders;
    knotCounts_.init(knotCounts);
    knots_.reset();
    return true;
}

bool RQ_PrimCurveMesh::setKnots(const RQ_DataArrayHandle &knots)
{
    if (!knots || knots->getTupleSize() != 1 || !RQisNumeric(knots->getStorage()) || knots->hasArrayEntries() ||
        knots->entries() != knotCount())
        return false;
    const rq::Values<double> values(knots);
    for (int64_t curve = 0; curve < getCurveCount(); ++curve)
        for (int64_t i = knotOffset(curve); i < knotOffset(curve + 1); ++i)
            if (!(values[i] - values[i] == 0.0) || (i > knotOffset(curve) && values[i] < values[i - 1]))
                return false;
    knots_ = knots;
    return true;
}
