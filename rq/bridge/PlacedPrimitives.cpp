#include <rq/bridge/detail/PlacedPrimitives.h>

#include <algorithm>
#include <vector>

#include <host/msh/Detail.h>
#include <rq/bridge/MSHElementArray.h>
#include <rq/data/Values.h>
#include <rq/data/mixId.h>
#include <rq/prim/CompactTransformArray.h>

namespace
{
const ELM_Attribute *transformOf(const MSH_Detail &detail)
{
    return detail.find(ELM_OWNER_PRIMITIVE, ELM_SCOPE_PRIVATE, ELM_TRANSFORM_NAME);
}

/// What the caller's filter, if any, lets pass of all but the placement.
class PlacedFilter final : public RQ_MSHQuadricAttributeFilter
{
public:
    PlacedFilter(const MSH_Detail &detail, const RQ_RefineParms *parms)
        : RQ_MSHQuadricAttributeFilter(&detail.positions(), transformOf(detail)),
          callers_(parms ? parms->getAttributeFilter() : nullptr)
    {}

    bool isValid(const ELM_Attribute &attribute) const override
    {
        return RQ_MSHQuadricAttributeFilter::isValid(attribute) && (!callers_ || callers_->isValid(attribute));
    }

private:
    const RQ_MSHAttributeFilter *callers_;
};

/// The two columns that make the placements of one segment.
struct Columns
{
    RQ_DataArrayHandle matrixArray, pointArray;
    rq::Values<double> matrices, points;

    Columns(const MOD_ConstDetailHandle &handle, const RQ_MSHOffsetList &primitives, const RQ_MSHOffsetList &vertices)
    {
        const MSH_Detail &detail = *handle.readLock();
        matrixArray = new RQ_MSHElementArray(handle, transformOf(detail), primitives, ELM_OWNER_PRIMITIVE);
        pointArray = new RQ_MSHElementArray(handle, &detail.positions(), vertices, ELM_OWNER_VERTEX);
        matrices = rq::Values<double>(matrixArray);
        points = rq::Values<double>(pointArray);
    }

    BAS_Mat4d placement(int64_t i) const
    {
        BAS_Mat4d matrix;
        for (int row = 0; row < 3; ++row)
        {
            if (i < matrices.entries() && matrices.tupleSize() >= 9)
                std::copy_n(&matrices.data()[matrices.tupleSize() * i + 3 * row], 3, matrix[row]);
            matrix[3][row] = i < points.entries() && row < points.tupleSize() ? points(i, row) : 0.0;
        }
        return matrix;
    }
};
}  // namespace

RQ_TransformArrayHandle rq::placementsOf(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &primitives)
{
    const RQ_MSHOffsetList vertices = details.firstVertices(primitives);
    std::vector<Columns> columns;
    uint64_t id = uint64_t(details.getSegments());
    bool hasId = true;
    for (int segment = 0; segment < details.getSegments(); ++segment)
    {
        const Columns &added = columns.emplace_back(details.getHandle(segment), primitives, vertices);
        for (const RQ_DataArrayHandle &array : {added.matrixArray, added.pointArray})
        {
            id = RQmixId(id) + RQmixId(uint64_t(array->getDataId()));
            hasId = hasId && (array->getDataId() != -1 || !array->isValid());
        }
    }
    const BAS_IntrusivePtr<RQ_CompactTransformArray> placements(new RQ_CompactTransformArray);
    placements->setAffine(primitives.entries(), details.getSegments(),
                          [&](int64_t i, int segment) { return columns[size_t(segment)].placement(i); });
    placements->setDataId(hasId ? validId(id) : -1);
    return placements;
}

RQ_AttributeListHandle rq::attributesOfPlaced(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &primitives,
                                              const RQ_RefineParms *parms)
{
    const PlacedFilter filter(*details.getDetail(), parms);
    const RQ_AttributeListHandle vertex =
        details.getPrimitiveVertexAttributes(&filter, primitives, parms, RQ_MSHIncludePoint::INCLUDE);
    const RQ_AttributeListHandle own = details.getPrimitiveAttributes(&filter, primitives, parms);
    return vertex ? vertex->mergeNewAttributes(own) : own;
}
