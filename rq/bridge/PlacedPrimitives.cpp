#include <rq/bridge/detail/PlacedPrimitives.h>

#include <vector>

#include <host/msh/Detail.h>
#include <rq/bridge/MSHElementArray.h>
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

/// The positions of vertices in every segment, as samples or velocities move them; null without any.
RQ_AttributeListHandle positionsOf(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &vertices)
{
    struct OnlyPositions final : RQ_MSHAttributeFilter
    {
        bool isValid(const ELM_Attribute &attribute) const override
        {
            return attribute.owner() == ELM_OWNER_POINT && attribute.name() == ELM_POSITION_NAME;
        }
    };
    const OnlyPositions filter;
    return details.getVertexAttributes(&filter, vertices, nullptr, RQ_MSHIncludePoint::INCLUDE);
}

/// The two columns that make the placements of one segment.
class Columns
{
public:
    Columns(const MOD_ConstDetailHandle &handle, const RQ_MSHOffsetList &primitives, const RQ_DataArrayHandle &points)
        : matrices_(new RQ_MSHElementArray(handle, transformOf(*handle.readLock()), primitives, ELM_OWNER_PRIMITIVE)),
          points_(points), hasMatrices_(matrices_->isValid() && matrices_->getTupleSize() == 9),
          hasPoints_(points && points->getTupleSize() >= 3 && points->entries() == primitives.entries())
    {}

    /// Set the rows of matrices that are the identity.
    void read(int64_t first, int64_t count, BAS_Mat4d *out) const
    {
        std::vector<double> rows(size_t(9 * count));
        if (hasMatrices_)
        {
            matrices_->fillArray(rows.data(), first, count);
            for (int64_t i = 0; i < 9 * count; ++i)
                out[i / 9][i % 9 / 3][i % 3] = rows[size_t(i)];
        }
        if (hasPoints_)
        {
            points_->fillArray(rows.data(), first, count, 3);
            for (int64_t i = 0; i < 3 * count; ++i)
                out[i / 3][3][i % 3] = rows[size_t(i)];
        }
    }

    /// Mix what the placements depend on into an id.  False when that has no ids.
    bool mixId(uint64_t &id) const
    {
        bool all = true;
        for (const RQ_DataArrayHandle &array : {matrices_, points_})
        {
            const bool isThere = array && array->isValid();
            id = RQmixId(id) + RQmixId(uint64_t(isThere ? array->getDataId() : -1));
            all = all && !(isThere && array->getDataId() == -1);
        }
        return all;
    }

private:
    RQ_DataArrayHandle matrices_, points_;
    bool hasMatrices_, hasPoints_;
};
}  // namespace

RQ_TransformArrayHandle rq::placementsOf(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &primitives)
{
    const RQ_AttributeListHandle points = positionsOf(details, details.firstVertices(primitives));
    std::vector<Columns> columns;
    uint64_t id = uint64_t(details.getSegments());
    bool hasId = true;
    for (int segment = 0; segment < details.getSegments(); ++segment)
    {
        columns.emplace_back(details.getHandle(segment), primitives, points ? points->get(0, segment) : nullptr);
        hasId = columns.back().mixId(id) && hasId;
    }
    const auto read = [&](int64_t first, int64_t count, int segment, BAS_Mat4d *out) {
        columns[size_t(segment)].read(first, count, out);
    };
    const BAS_IntrusivePtr<RQ_CompactTransformArray> placements(new RQ_CompactTransformArray);
    placements->setAffine(primitives.entries(), details.getSegments(), read);
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
