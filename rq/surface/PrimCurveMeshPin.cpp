#include <rq/surface/PrimCurveMesh.h>

#include <algorithm>
#include <cstring>

#include <rq/data/Counts.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/surface/CurveEval.h>

namespace
{
using Rows = BAS_IntrusivePtr<RQ_DANumeric<int64_t>>;

/// Repetitions of an end vertex that make a curve of a basis end there: of an order-k B-spline the point at the end is
/// shaped by k - 1 vertices, of a Catmull-Rom curve the end is the second vertex.
int64_t repetitions(RQ_Basis basis, int order)
{
    return basis == RQ_BASIS_BSPLINE ? order - 2 : basis == RQ_BASIS_CATMULLROM ? 1 : 0;
}

/// Rows of items with their first and last element `extra(i)` times more often, or, where that is negative, less often.
/// `counts` becomes the elements of each item.
template <class Begin, class Extra> Rows stretch(int64_t items, Begin &&begin, Extra &&extra, RQ_CountArray &counts)
{
    const Rows sizes(new RQ_DANumeric<int64_t>(items));
    const auto stretched = [&](int64_t item) {
        const int64_t count = begin(item + 1) - begin(item), size = count + 2 * extra(item);
        return count > 0 && size > 0 ? size : count;
    };
    for (int64_t item = 0; item < items; ++item)
        sizes->data()[item] = stretched(item);
    counts.init(sizes);
    const Rows rows(new RQ_DANumeric<int64_t>(counts.sumCounts()));
    int64_t *out = rows->data();
    for (int64_t item = 0; item < items; ++item)
    {
        const int64_t first = begin(item), last = begin(item + 1) - 1, size = stretched(item);
        const int64_t shift = (size - (last - first + 1)) / 2;
        for (int64_t i = 0; i < size; ++i)
            *out++ = std::clamp(first + i - shift, first, last);
    }
    return rows;
}

/// Entry rows[i] of `array` as entry i.  Where the array shows another in such a way that this shows it as it is, the other.
RQ_DataArrayHandle seenThrough(const RQ_DataArrayHandle &array, const Rows &rows)
{
    if (const auto *view = dynamic_cast<const RQ_DAIndirect *>(array.get());
        view && view->source()->entries() == rows->entries())
    {
        const rq::Values<int64_t> indices(view->indices());
        int64_t row = 0;
        while (row < rows->entries() && indices[rows->data()[row]] == row)
            ++row;
        if (row == rows->entries())
            return view->source();
    }
    return RQ_DAIndirect::createIndirect(array, rows);
}

RQ_AttributeListHandle seenThrough(const RQ_AttributeListHandle &list, const Rows &rows)
{
    if (!list)
        return {};
    const RQ_AttributeListHandle seen(new RQ_AttributeList(list->getMap(), list->getSegments()));
    for (int segment = 0; segment < list->getSegments(); ++segment)
        for (int i = 0; i < list->entries(); ++i)
            if (segment > 0 && list->get(i, segment) == list->get(i, segment - 1))
                seen->set(i, seen->get(i, segment - 1), segment);
            else
                seen->set(i, seenThrough(list->get(i, segment), rows), segment);
    return seen;
}

/// Whether all vertices within `extra(curve)` of an end lie where that end is.
template <class Extra> bool endsAreRepeated(const RQ_PrimCurveMesh &mesh, Extra &&extra)
{
    const rq::Values<double> positions(mesh.getVertex() ? mesh.getVertex()->get("P", 0) : nullptr);
    const rq::Counts counts(mesh.getCurveCountArray());
    const auto same = [&](int64_t a, int64_t b) {
        const double *values = positions.data();
        const int64_t size = positions.tupleSize();
        return std::memcmp(values + a * size, values + b * size, size_t(size) * sizeof(double)) == 0;
    };
    if (positions.entries() < counts.sum())
        return false;
    for (int64_t curve = 0; curve < counts.entries(); ++curve)
        for (int64_t i = 1; i <= extra(curve) && counts.count(curve) > 2 * extra(curve); ++i)
            if (!same(counts.begin(curve), counts.begin(curve) + i) ||
                !same(counts.end(curve) - 1, counts.end(curve) - 1 - i))
                return false;
    return true;
}
}  // namespace

RQ_CurveMeshHandle RQ_PrimCurveMesh::stretched(bool pin) const
{
    const rq::Counts counts(counts_);
    const auto extra = [&](int64_t curve) { return repetitions(basis_, getOrder(curve)) * (pin ? 1 : -1); };
    RQ_CountArray vertices;
    const Rows rows = stretch(
        getCurveCount(), [&](int64_t curve) { return counts.begin(curve); }, extra, vertices);
    const RQ_CurveMeshHandle mesh = clone(seenThrough(vertex_, rows), uniform_, detail_);
    mesh->counts_ = vertices;
    mesh->pinned_ = pin;
    // Curves without a vertex stay so, and with them their knots.
    const auto knotExtra = [&](int64_t curve) { return (vertices.getCount(curve) - counts.count(curve)) / 2; };
    RQ_CountArray knots;
    if (knots_ || varyingOrders_)
    {
        const Rows knotRows = stretch(
            getCurveCount(), [this](int64_t curve) { return knotOffset(curve); }, knotExtra, knots);
        if (knots_)
            mesh->knots_ = seenThrough(knots_, knotRows);
        if (varyingOrders_)
            mesh->knotCounts_ = knots;
    }
    return mesh;
}

RQ_CurveMeshHandle RQ_PrimCurveMesh::pinCurves() const
{
    const int order = isUniformOrder() ? uniformOrder_ : RQ_CurveEval::defaultOrder(basis_);
    const bool freeEnds = !wrap_ && !pinned_ && repetitions(basis_, order) > 0;
    return freeEnds ? stretched(true) : RQ_CurveMeshHandle(const_cast<RQ_PrimCurveMesh *>(this));
}

RQ_CurveMeshHandle RQ_PrimCurveMesh::unpinCurves() const
{
    const bool repeated =
        pinned_ && !wrap_ && endsAreRepeated(*this, [this](int64_t curve) { return repetitions(basis_, getOrder(curve)); });
    return repeated ? stretched(false) : RQ_CurveMeshHandle(const_cast<RQ_PrimCurveMesh *>(this));
}
