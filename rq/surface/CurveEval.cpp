#include <rq/surface/CurveEval.h>

#include <rq/data/DAConstantValue.h>
#include <rq/data/DAIndirect.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/detail/evaluateCurves.h>
#include <rq/surface/detail/sampledList.h>

namespace
{
constexpr int kMostSegments = 16384;

/// The vertices [first, first + vertices) as a mesh of one curve; null where the list lacks them.
RQ_CurveMeshHandle oneCurve(const RQ_CurveEval &eval, const RQ_AttributeList &list, int64_t first, int64_t vertices)
{
    if (first < 0 || vertices < 0)
        return {};
    for (int segment = 0; segment < list.getSegments(); ++segment)
        for (int i = 0; i < list.entries(); ++i)
            if (const RQ_DataArrayHandle &array = list.get(i, segment); array && array->entries() - first < vertices)
                return {};
    const RQ_DataArrayHandle counts(new RQ_DAConstantValue<int64_t>(1, vertices));
    const RQ_CurveMeshHandle mesh(
        new RQ_PrimCurveMesh(eval.basis(), counts, list.createSubArray(first, vertices), {}, {}, eval.periodic()));
    mesh->setOrder(eval.order());
    return mesh;
}

size_t slots(const RQ_AttributeList &list) { return size_t(list.entries()) * size_t(list.getSegments()); }
}  // namespace

RQ_CurveEval::RQ_CurveEval(RQ_Basis basis, bool periodic)
    : basis_(basis), order_(defaultOrder(basis)), step_(RQbasisStep(basis, order_)), periodic_(periodic)
{}

void RQ_CurveEval::orderRange(RQ_Basis basis, int &smallest, int &greatest)
{
    static constexpr int kRanges[][2] = {{2, 2}, {2, maximumBezierOrder}, {2, rq::kLargestOrder}, {4, 4},
                                         {4, 4}, {2, rq::kLargestOrder}};
    const bool known = basis >= RQ_BASIS_LINEAR && basis <= RQ_BASIS_POWER;
    smallest = known ? kRanges[basis][0] : 0;
    greatest = known ? kRanges[basis][1] : 0;
}

bool RQ_CurveEval::setOrder(int order)
{
    int smallest, greatest;
    orderRange(basis_, smallest, greatest);
    if (order < smallest || order > greatest || order < 1)
        return false;
    if (order != order_)
        tables_.reset();
    order_ = order;
    step_ = RQbasisStep(basis_, order);
    return true;
}

bool RQ_CurveEval::validCount(int64_t vertices, int order) const
{
    if (vertices < order - periodic_)
        return false;
    const int step = order == order_ ? step_ : RQbasisStep(basis_, order);
    return step == 1 || (step > 1 && (periodic_ ? vertices : vertices - order) % step == 0);
}

int64_t RQ_CurveEval::spanCount(int64_t vertices) const { return rq::spanCount(basis_, order_, periodic_, vertices); }

bool RQ_CurveEval::preCompute(int segments)
{
    int smallest, greatest;
    orderRange(basis_, smallest, greatest);
    if (greatest == 0 || segments < 1 || segments > kMostSegments)
        return false;
    const auto weightsAt = [this](double t, double *weights) { rq::basisWeights(basis_, order_, t, weights); };
    tables_ = std::make_shared<rq::SpanTables>(order_, segments, weightsAt);
    return true;
}

int RQ_CurveEval::segments() const { return tables_ ? tables_->joined.samples : 0; }

int64_t RQ_CurveEval::pointCount(int64_t vertices) const
{
    const int64_t spans = spanCount(vertices);
    return spans * segments() + (spans > 0 && !periodic_ && tables_);
}

BAS_Array<RQ_DataArrayHandle> RQ_CurveEval::allocateNumericArrays(const RQ_AttributeList &list, int64_t entries)
{
    BAS_Array<RQ_DataArrayHandle> arrays;
    for (int segment = 0; segment < list.getSegments(); ++segment)
        for (int i = 0; i < list.entries(); ++i)
        {
            const RQ_DataArrayHandle &array = list.get(i, segment);
            arrays.push_back(array && rq::isEvaluated(*array) ? rq::makeLike(*array, entries) : nullptr);
        }
    return arrays;
}

bool RQ_CurveEval::refineToNumeric(const RQ_AttributeList &list, int64_t first, int64_t vertices,
                                   const BAS_Array<RQ_DataArrayHandle> &arrays, int64_t at) const
{
    const RQ_CurveMeshHandle mesh = tables_ ? oneCurve(*this, list, first, vertices) : nullptr;
    if (!mesh || arrays.size() != slots(list))
        return false;
    const rq::CurveSampling sampling(rq::SpanShapes(*mesh), *tables_, segments());
    const RQ_AttributeList &own = *mesh->getVertex();
    bool written = true;
    for (int segment = 0, slot = 0; segment < own.getSegments(); ++segment)
        for (int i = 0; i < own.entries(); ++i, ++slot)
            if (arrays[size_t(slot)])
                written = own.get(i, segment) && written &&
                          rq::evaluateCurves(sampling, *own.get(i, segment), rq::rationalWeights(own, i, segment),
                                             *arrays[size_t(slot)], at);
    return written;
}

RQ_AttributeListHandle RQ_CurveEval::copyToAttributes(const RQ_AttributeList &list, int64_t first, int64_t vertices,
                                                      const BAS_Array<RQ_DataArrayHandle> &arrays) const
{
    const RQ_CurveMeshHandle mesh = tables_ ? oneCurve(*this, list, first, vertices) : nullptr;
    if (!mesh || arrays.size() != slots(list))
        return {};
    const RQ_DataArrayHandle nearest = rq::CurveSampling(rq::SpanShapes(*mesh), *tables_, segments()).nearestVertices();
    const RQ_AttributeListHandle result(new RQ_AttributeList(list.getMap(), list.getSegments()));
    for (int segment = 0, slot = 0; segment < list.getSegments(); ++segment)
        for (int i = 0; i < list.entries(); ++i, ++slot)
        {
            const RQ_DataArrayHandle &own = mesh->getVertex()->get(i, segment);
            result->set(i, arrays[size_t(slot)] ? arrays[size_t(slot)] : RQ_DAIndirect::createIndirect(own, nearest),
                        segment);
        }
    return result;
}
