#include <rq/surface/PrimCurveMesh.h>

#include <algorithm>

#include <host/bas/Diagnostics.h>
#include <rq/data/Counts.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>

namespace
{
// The tests take Bezier spans for cubic ones whatever the order: that is what can be drawn without conversion.
bool canBeDrawn(RQ_Basis basis, int64_t vertices, bool wrap)
{
    switch (basis)
    {
    case RQ_BASIS_LINEAR:
        return vertices >= (wrap ? 3 : 2);
    case RQ_BASIS_BEZIER:
        return vertices >= 3 && (wrap ? vertices : vertices - 1) % 3 == 0;
    default:
        return vertices >= 4;
    }
}

using Rows = BAS_IntrusivePtr<RQ_DANumeric<int64_t>>;

/// The elements of the items that `items` names, where item i has [begin(i), end(i)).
template <class Begin> Rows elementsOf(const rq::Values<int64_t> &items, Begin &&begin)
{
    int64_t count = 0;
    for (const int64_t item : items)
        count += begin(item + 1) - begin(item);
    const Rows rows(new RQ_DANumeric<int64_t>(count));
    int64_t *out = rows->data();
    for (const int64_t item : items)
        for (int64_t element = begin(item); element < begin(item + 1); ++element)
            *out++ = element;
    return rows;
}
}  // namespace

RQ_CurveMeshHandle RQ_PrimCurveMesh::selectCurves(const RQ_DataArrayHandle &curves) const
{
    const rq::Counts counts(counts_);
    const rq::Values<int64_t> kept(curves);
    const Rows vertices = elementsOf(kept, [&](int64_t curve) { return counts.begin(curve); });
    const RQ_CurveMeshHandle mesh = clone(vertex_ ? vertex_->createIndirect(vertices) : nullptr,
                                          uniform_ ? uniform_->createIndirect(curves) : nullptr, detail_);
    if (knots_)
        mesh->knots_ =
            RQ_DAIndirect::createIndirect(knots_, elementsOf(kept, [&](int64_t curve) { return knotOffset(curve); }));
    if (varyingOrders_)
    {
        mesh->varyingOrders_ = RQ_DAIndirect::createIndirect(varyingOrders_, curves);
        mesh->knotCounts_.init(RQ_DAIndirect::createIndirect(knotCounts_.extractCounts(), curves));
    }
    mesh->counts_.init(RQ_DAIndirect::createIndirect(counts_.extractCounts(), curves));
    if (faceSets_)
        mesh->faceSets_ = faceSets_->followFaces(curves);
    return mesh;
}

RQ_CurveMeshHandle RQ_PrimCurveMesh::removeDegenerate() const
{
    const rq::Counts counts(counts_);
    const Rows kept(new RQ_DANumeric<int64_t>);
    for (int64_t curve = 0; curve < getCurveCount(); ++curve)
        if (canBeDrawn(basis_, counts.count(curve), wrap_))
            kept->append(curve);
    const int64_t dropped = getCurveCount() - kept->entries();
    if (dropped == 0)
        return const_cast<RQ_PrimCurveMesh *>(this);
    BAS_Diagnostics::warn(1, "{} degenerate curves detected ({} total)", dropped, std::max(getCurveCount(), dropped));
    return selectCurves(kept);
}
