#include <rq/surface/PrimCurve.h>

#include <rq/data/DAParametric.h>
#include <rq/data/Positions.h>
#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/CurveEval.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/detail/curveOptions.h>
#include <rq/surface/detail/lists.h>

RQ_PrimCurve::RQ_PrimCurve() = default;
RQ_PrimCurve::RQ_PrimCurve(const RQ_PrimCurve &other) = default;
RQ_PrimCurve::~RQ_PrimCurve() = default;

bool RQ_PrimCurve::init(RQ_Basis basis, const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                        bool wrap)
{
    static const BAS_StringHolder kUV = BAS_StringHolder::literal("uv");
    basis_ = basis;
    order_ = RQ_CurveEval::defaultOrder(basis);
    knots_.reset();
    setBreakpoints(false, RQ_PARAMETERIZATION_UNIFORM);
    vertex_ = vertex;
    uniform_ = uniform;
    wrap_ = wrap;
    dropDataIdHash();
    if (!vertex_ || vertex_->entries() < 1 || !rq::checkLengths("vertex", vertex_, getVertexCount()).empty() ||
        !rq::checkLengths("uniform", uniform_, 1).empty())
        return false;
    if (!vertex_->hasName(kUV) && !(uniform_ && uniform_->hasName(kUV)))
        vertex_ = vertex_->addAttribute(kUV, new RQ_DAParametric({getVertexCount()}), false);
    return true;
}

int64_t RQ_PrimCurve::getVertexCount() const { return rq::entriesOf(vertex_); }

double RQ_PrimCurve::curveLength(int segment) const
{
    if (basis_ != RQ_BASIS_LINEAR)
    {
        const RQ_CurveMeshHandle whole(new RQ_PrimCurveMesh(*this));
        const RQ_CurveMeshHandle linear = whole->refineToLinear(nullptr, rq::kSegmentsPerSpan);
        if (!linear)
            return 0.0;
        const RQ_CurveHandle pieces = linear->getCurve(0);
        pieces->setPrimitiveTransform(getPrimitiveTransform());
        return pieces->curveLength(segment);
    }
    const rq::Positions positions(vertex_ ? vertex_->get("P", segment) : nullptr);
    if (positions.entries() < 2)
        return 0.0;
    const bool placed = getPrimitiveTransform() && !getPrimitiveTransform()->isIdentity();
    BAS_Mat4d matrix;
    if (placed)
        getPrimitiveTransform()->getMatrix(matrix, segment);
    const auto point = [&](int64_t i) { return placed ? host::transformPoint(positions[i], matrix) : positions[i]; };
    double length = wrap_ ? (point(0) - point(positions.entries() - 1)).length() : 0.0;
    for (int64_t i = 1; i < positions.entries(); ++i)
        length += (point(i) - point(i - 1)).length();
    return length;
}

const char *RQ_PrimCurve::className() const { return "RQ_PrimCurve"; }
int RQ_PrimCurve::getPrimitiveType() const { return RQ_PRIM_CURVE; }

void RQ_PrimCurve::enlargeBounds(BAS_BoundingBox *boxes, int segments) const
{
    const RQ_CurveMeshHandle mesh(new RQ_PrimCurveMesh(*this));
    mesh->enlargeBounds(boxes, segments);
}

bool RQ_PrimCurve::refine(RQ_Refine &sink, const RQ_RefineParms *parms) const
{
    if (basis_ == RQ_BASIS_LINEAR)
        return false;
    const RQ_CurveMeshHandle mesh(new RQ_PrimCurveMesh(*this));
    const RQ_CurveMeshHandle linear = mesh->refineToLinear(parms, rq::kSegmentsPerSpan);
    return linear && linear->refine(sink, parms);
}

int RQ_PrimCurve::getMotionSegments() const { return rq::motionSegments(*this, {&vertex_, &uniform_}); }

int64_t RQ_PrimCurve::getMemoryUsage() const
{
    return int64_t(sizeof(*this)) + rq::memoryUsage({&vertex_, &uniform_}) + (knots_ ? knots_->getMemoryUsage() : 0);
}

bool RQ_PrimCurve::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, RQprimitiveType(RQ_PRIM_CURVE));
    return record->writeString(RQbasis(basis_)) && record->writeInt(order_) && record->writeBool(wrap_) &&
           saveAttributeLists(*record) &&
           (!knots_ || (record->beginMap() && record->key("knots") && knots_->save(*record) && record->endMap()));
}

const RQ_ViewportRefineOptions &RQ_PrimCurve::viewportRefineOptions() const { return rq::curveRefineOptions(basis_); }

RQ_PrimitiveHandle RQ_PrimCurve::doHarden() const
{
    const RQ_CurveHandle copy(new RQ_PrimCurve(*this));
    rq::hardenLists({&copy->vertex_, &copy->uniform_});
    if (knots_)
        copy->knots_ = knots_->harden();
    copy->dropDataIdHash();
    return copy;
}

RQ_PrimitiveHandle RQ_PrimCurve::doSoftCopy() const { return new RQ_PrimCurve(*this); }

RQ_PrimitiveHandle RQ_PrimCurve::doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                                  const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                                  const BAS_StringMMPattern *detail) const
{
    bool changed = false;
    const RQ_AttributeListHandle vertices =
        mergeAttributeLists(changed, vertex_, source.getVertexAttributes(), vertex, point);
    const RQ_AttributeListHandle whole =
        mergeAttributeLists(changed, uniform_, source.getUniformAttributes(), uniform, detail);
    if (!changed)
        return const_cast<RQ_PrimCurve *>(this);
    const RQ_CurveHandle copy(new RQ_PrimCurve(*this));
    copy->vertex_ = vertices;
    copy->uniform_ = whole;
    copy->dropDataIdHash();
    return copy;
}
