#include <rq/surface/PrimCurveMesh.h>

#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/CurveEval.h>
#include <rq/surface/detail/counts.h>
#include <rq/surface/detail/curveMerges.h>
#include <rq/surface/detail/curveOptions.h>
#include <rq/surface/detail/lists.h>

RQ_PrimCurveMesh::RQ_PrimCurveMesh() = default;

RQ_PrimCurveMesh::RQ_PrimCurveMesh(RQ_Basis basis, const RQ_DataArrayHandle &counts, const RQ_AttributeListHandle &vertex,
                                   const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail, bool wrap,
                                   RQ_IndexingMode mode, bool useBreakpoints, bool pinned,
                                   RQ_Parameterization parameterization)
{
    init(basis, counts, vertex, uniform, detail, wrap, mode, useBreakpoints, pinned, parameterization);
}

RQ_PrimCurveMesh::RQ_PrimCurveMesh(const RQ_PrimCurve &curve)
    : counts_(1, curve.getVertexCount()), vertex_(curve.getVertex()), uniform_(curve.getUniform()), basis_(curve.getBasis()),
      uniformOrder_(RQ_CurveEval::defaultOrder(curve.getBasis())), wrap_(curve.getWrap()),
      useBreakpoints_(curve.getUseBreakpoints()), parameterization_(curve.getBreakpointsParameterization())
{
    // Nobody has checked what the curve was given.
    setOrder(curve.getOrder());
    setKnots(curve.getKnots());
    setPrimitiveTransform(curve.getPrimitiveTransform());
    if (curve.isFrameInfoAvailable())
        setStaticGeometry(curve.isStaticGeometry());
}

RQ_PrimCurveMesh::RQ_PrimCurveMesh(const RQ_PrimCurveMesh &other, const RQ_AttributeListHandle &vertex,
                                   const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail)
    : RQ_PrimCurveMesh(other)
{
    vertex_ = vertex;
    uniform_ = uniform;
    detail_ = detail;
    dropDataIdHash();
}

RQ_PrimCurveMesh::RQ_PrimCurveMesh(const RQ_PrimCurveMesh &other, RQ_Basis basis, const RQ_CountArray &counts,
                                   const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                                   const RQ_AttributeListHandle &detail, bool wrap, const RQ_FaceSetMapHandle &faceSets)
    : RQ_Primitive(other), counts_(counts), vertex_(vertex), uniform_(uniform), detail_(detail), faceSets_(faceSets),
      basis_(basis), uniformOrder_(RQ_CurveEval::defaultOrder(basis)), wrap_(wrap), useBreakpoints_(other.useBreakpoints_),
      parameterization_(other.parameterization_)
{
    dropDataIdHash();
}

RQ_PrimCurveMesh::RQ_PrimCurveMesh(const RQ_PrimCurveMesh &other)
    : RQ_Primitive(other), counts_(other.counts_), knots_(other.knots_), varyingOrders_(other.varyingOrders_),
      vertex_(other.vertex_), uniform_(other.uniform_), detail_(other.detail_), faceSets_(other.faceSets_),
      knotCounts_(other.knotCounts_), basis_(other.basis_), uniformOrder_(other.uniformOrder_), wrap_(other.wrap_),
      useBreakpoints_(other.useBreakpoints_), pinned_(other.pinned_), parameterization_(other.parameterization_)
{}

RQ_PrimCurveMesh::~RQ_PrimCurveMesh() = default;

void RQ_PrimCurveMesh::init(RQ_Basis basis, const RQ_DataArrayHandle &counts, const RQ_AttributeListHandle &vertex,
                            const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail, bool wrap,
                            RQ_IndexingMode, bool useBreakpoints, bool pinned, RQ_Parameterization parameterization)
{
    counts_.clear();
    if (counts)
        counts_.init(counts);
    knots_.reset();
    varyingOrders_.reset();
    knotCounts_.clear();
    vertex_ = vertex;
    uniform_ = uniform;
    detail_ = detail;
    faceSets_.reset();
    merges_.reset();
    basis_ = basis;
    uniformOrder_ = RQ_CurveEval::defaultOrder(basis);
    wrap_ = wrap;
    useBreakpoints_ = useBreakpoints;
    pinned_ = pinned;
    parameterization_ = parameterization;
    dropDataIdHash();
}

RQ_DataArrayHandle RQ_PrimCurveMesh::getCurveCounts(RQ_IndexingMode mode) const { return rq::countsOfWidth(counts_, mode); }

void RQ_PrimCurveMesh::addFaceSet(const BAS_StringHolder &name, const RQ_FaceSetHandle &set)
{
    // Other meshes may share the map that is there.
    const RQ_FaceSetMapHandle sets(faceSets_ ? new RQ_FaceSetMap(*faceSets_) : new RQ_FaceSetMap);
    sets->add(name, set, true);
    faceSets_ = sets;
}

const char *RQ_PrimCurveMesh::className() const { return "RQ_PrimCurveMesh"; }
int RQ_PrimCurveMesh::getPrimitiveType() const { return RQ_PRIM_CURVE_MESH; }

int RQ_PrimCurveMesh::getMotionSegments() const { return rq::motionSegments(*this, {&vertex_, &uniform_, &detail_}); }

int64_t RQ_PrimCurveMesh::getMemoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this)) + counts_.getMemoryUsage() + rq::memoryUsage({&vertex_, &uniform_, &detail_});
    for (const RQ_DataArrayHandle *array : {&knots_, &varyingOrders_})
        if (*array)
            bytes += (*array)->getMemoryUsage();
    if (!isUniformOrder())
        bytes += knotCounts_.getMemoryUsage();
    if (faceSets_)
        bytes += faceSets_->getMemoryUsage();
    return bytes;
}

bool RQ_PrimCurveMesh::save(BAS_JSONWriter &writer) const
{
    const jsonWriter record(writer, RQprimitiveType(getPrimitiveType()));
    bool saved = counts_.save(*record) && record->writeString(RQbasis(basis_)) && record->writeInt(uniformOrder_) &&
                 record->writeBool(wrap_) && saveAttributeLists(*record) && record->beginMap();
    if (varyingOrders_)
        saved = saved && record->key("order") && varyingOrders_->save(*record);
    if (knots_)
        saved = saved && record->key("knots") && knots_->save(*record);
    if (faceSets_)
        saved = saved && record->key("facesets") && faceSets_->save(*record);
    return saved && record->endMap();
}

const RQ_ViewportRefineOptions &RQ_PrimCurveMesh::viewportRefineOptions() const { return rq::curveRefineOptions(basis_); }

RQ_PrimitiveHandle RQ_PrimCurveMesh::doHarden() const
{
    const RQ_CurveMeshHandle copy = clone(vertex_, uniform_, detail_);
    rq::hardenLists({&copy->vertex_, &copy->uniform_, &copy->detail_});
    for (RQ_DataArrayHandle *array : {&copy->knots_, &copy->varyingOrders_})
        if (*array)
            *array = (*array)->harden();
    copy->counts_.harden();
    copy->knotCounts_.harden();
    return copy;
}

RQ_PrimitiveHandle RQ_PrimCurveMesh::doSoftCopy() const { return clone(vertex_, uniform_, detail_); }

RQ_CurveMeshHandle RQ_PrimCurveMesh::clone(const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                                           const RQ_AttributeListHandle &detail) const
{
    return new RQ_PrimCurveMesh(*this, vertex, uniform, detail);
}

RQ_PrimitiveHandle RQ_PrimCurveMesh::doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                                      const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                                      const BAS_StringMMPattern *detail) const
{
    const rq::MergedLists merged(*this, source, vertex, point, uniform, detail);
    return merged.changed ? clone(merged.vertex, merged.uniform, merged.detail)
                          : RQ_CurveMeshHandle(const_cast<RQ_PrimCurveMesh *>(this));
}
