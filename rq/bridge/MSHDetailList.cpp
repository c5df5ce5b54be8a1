#include <rq/bridge/MSHDetailList.h>

#include <algorithm>

#include <host/msh/Detail.h>
#include <rq/bridge/MSHElementArray.h>
#include <rq/bridge/detail/PointMotion.h>

namespace
{
const RQ_MSHAttributeFilter &chooseFilter(const RQ_MSHAttributeFilter *filter, const RQ_RefineParms *parms)
{
    static const RQ_MSHAttributeFilter kEveryPublic;
    if (!filter && parms)
        filter = parms->getAttributeFilter();
    return filter ? *filter : kEveryPublic;
}
}  // namespace

const MOD_ConstDetailHandle &RQ_MSHDetailList::getHandle(int segment) const
{
    static const MOD_ConstDetailHandle kNone;
    return details_.empty() ? kNone : details_[size_t(std::clamp(segment, 0, getSegments() - 1))];
}

RQ_DataArrayHandle RQ_MSHDetailList::makeArray(const ELM_Attribute &attribute, const RQ_MSHOffsetList &rows,
                                               ELM_Owner rowOwner, int segment) const
{
    return new RQ_MSHElementArray(getHandle(segment), &attribute, rows, rowOwner);
}

RQ_DataArrayHandle RQ_MSHDetailList::makeSegment(const ELM_Attribute &attribute, const RQ_DataArrayHandle &first,
                                                 const RQ_MSHOffsetList &rows, ELM_Owner rowOwner, int segment) const
{
    if (motion_)
        return motion_->arrayOf(attribute, first, rows, rowOwner, segment);
    if (getHandle(segment) == getHandle())
        return first;
    const RQ_DataArrayHandle array = makeArray(attribute, rows, rowOwner, segment);
    const bool fits = array->isValid() && array->getStorage() == first->getStorage() &&
                      array->getTupleSize() == first->getTupleSize() && array->hasArrayEntries() == first->hasArrayEntries();
    return fits ? array : first;
}

RQ_AttributeListHandle RQ_MSHDetailList::makeList(std::initializer_list<ELM_Owner> owners,
                                                  const RQ_MSHAttributeFilter *filter, const RQ_MSHOffsetList &rows,
                                                  ELM_Owner rowOwner, const RQ_RefineParms *parms) const
{
    if (details_.empty())
        return nullptr;
    const RQ_MSHAttributeFilter &chosen = chooseFilter(filter, parms);
    RQ_AttributeMapHandle map(new RQ_AttributeMap);
    std::vector<const ELM_Attribute *> attributes;
    for (const ELM_Owner owner : owners)
        for (const ELM_Attribute &attribute : getDetail()->attributes(owner))
            if (chosen.isValid(attribute) && map->get(attribute.name()) < 0)
            {
                map->setOriginalOwner(map->add(attribute.name(), true), RQ_Owner(owner));
                attributes.push_back(&attribute);
            }
    if (attributes.empty())
        return nullptr;

    rows.hash();  // once, for the ids of all arrays
    RQ_AttributeListHandle list(new RQ_AttributeList(map, getSegments()));
    for (size_t i = 0; i < attributes.size(); ++i)
    {
        const RQ_DataArrayHandle first = makeArray(*attributes[i], rows, rowOwner, 0);
        for (int segment = 0; segment < getSegments(); ++segment)
            list->set(int(i), makeSegment(*attributes[i], first, rows, rowOwner, segment), segment);
    }
    return list;
}

RQ_AttributeListHandle RQ_MSHDetailList::getDetailAttributes(const RQ_MSHAttributeFilter *filter,
                                                             const RQ_RefineParms *parms) const
{
    return makeList({ELM_OWNER_DETAIL}, filter, RQ_MSHOffsetList(ELM_OffsetList(0, 1)), ELM_OWNER_DETAIL, parms);
}

RQ_AttributeListHandle RQ_MSHDetailList::getPointAttributes(const RQ_MSHAttributeFilter *filter,
                                                            const RQ_MSHOffsetList &points,
                                                            const RQ_RefineParms *parms) const
{
    return makeList({ELM_OWNER_POINT}, filter, points, ELM_OWNER_POINT, parms);
}

RQ_AttributeListHandle RQ_MSHDetailList::getPrimitiveAttributes(const RQ_MSHAttributeFilter *filter,
                                                                const RQ_MSHOffsetList &primitives,
                                                                const RQ_RefineParms *parms) const
{
    return makeList({ELM_OWNER_PRIMITIVE}, filter, primitives, ELM_OWNER_PRIMITIVE, parms);
}

RQ_AttributeListHandle RQ_MSHDetailList::getVertexAttributes(const RQ_MSHAttributeFilter *filter,
                                                             const RQ_MSHOffsetList &vertices, const RQ_RefineParms *parms,
                                                             RQ_MSHIncludePoint point) const
{
    if (point == RQ_MSHIncludePoint::INCLUDE)
        return makeList({ELM_OWNER_VERTEX, ELM_OWNER_POINT}, filter, vertices, ELM_OWNER_VERTEX, parms);
    return makeList({ELM_OWNER_VERTEX}, filter, vertices, ELM_OWNER_VERTEX, parms);
}

RQ_AttributeListHandle RQ_MSHDetailList::getPrimitiveVertexAttributes(const RQ_MSHAttributeFilter *filter,
                                                                      const RQ_MSHOffsetList &primitives,
                                                                      const RQ_RefineParms *parms,
                                                                      RQ_MSHIncludePoint point) const
{
    const RQ_MSHOffsetList vertices = firstVertices(primitives);
    return vertices.entries() == primitives.entries() ? getVertexAttributes(filter, vertices, parms, point) : nullptr;
}

RQ_MSHOffsetList RQ_MSHDetailList::firstVertices(const RQ_MSHOffsetList &primitives) const
{
    RQ_MSHOffsetList vertices;
    vertices.reserve(primitives.entries());
    for (int64_t i = 0; i < primitives.entries() && !details_.empty(); ++i)
    {
        const MSH_Detail::VertexRun run = getDetail()->vertexRun(primitives[i]);
        if (run.count == 0)
            return {};
        vertices.append(run.start);
    }
    return vertices;
}

RQ_AttributeListHandle RQ_MSHDetailList::createPrimitive(const RQ_MSHAttributeFilter *filter, ELM_Offset primitive,
                                                         const RQ_RefineParms *parms, RQ_MSHIncludeDetail detail) const
{
    const RQ_MSHOffsetList row(ELM_OffsetList(primitive, 1));
    if (detail == RQ_MSHIncludeDetail::INCLUDE)
        return makeList({ELM_OWNER_PRIMITIVE, ELM_OWNER_DETAIL}, filter, row, ELM_OWNER_PRIMITIVE, parms);
    return makeList({ELM_OWNER_PRIMITIVE}, filter, row, ELM_OWNER_PRIMITIVE, parms);
}

RQ_AttributeListHandle RQ_MSHDetailList::createPrimitiveVertex(const RQ_MSHAttributeFilter *filter, ELM_Offset primitive,
                                                               const RQ_RefineParms *parms, RQ_MSHIncludePoint point) const
{
    const ELM_OffsetList vertices = details_.empty() ? ELM_OffsetList() : getDetail()->vertices(primitive);
    if (vertices.isEmpty())
        return nullptr;
    return getVertexAttributes(filter, RQ_MSHOffsetList(ELM_OffsetList(vertices[0], 1)), parms, point);
}

RQ_AttributeListHandle RQ_MSHDetailList::createVertex(const RQ_MSHAttributeFilter *filter, ELM_Offset primitive,
                                                      const RQ_RefineParms *parms, RQ_MSHIncludePoint point) const
{
    if (details_.empty())
        return nullptr;
    return getVertexAttributes(filter, RQ_MSHOffsetList(getDetail()->vertices(primitive)), parms, point);
}
