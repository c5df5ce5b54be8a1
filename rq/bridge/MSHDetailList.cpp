#include <rq/bridge/MSHDetailList.h>

#include <algorithm>

#include <host/bas/Diagnostics.h>
#include <host/msh/Detail.h>
#include <rq/bridge/MSHElementArray.h>

namespace
{
bool sameCounts(const MSH_Detail &a, const MSH_Detail &b)
{
    return a.capacity(ELM_OWNER_POINT) == b.capacity(ELM_OWNER_POINT) &&
           a.capacity(ELM_OWNER_VERTEX) == b.capacity(ELM_OWNER_VERTEX) &&
           a.capacity(ELM_OWNER_PRIMITIVE) == b.capacity(ELM_OWNER_PRIMITIVE);
}

const RQ_MSHAttributeFilter &chooseFilter(const RQ_MSHAttributeFilter *filter, const RQ_RefineParms *parms)
{
    static const RQ_MSHAttributeFilter kEveryPublic;
    if (!filter && parms)
        filter = parms->getAttributeFilter();
    return filter ? *filter : kEveryPublic;
}
}  // namespace

RQ_MSHDetailList::RQ_MSHDetailList(const MOD_ConstDetailHandle &detail)
    : RQ_MSHDetailList(std::vector<MOD_ConstDetailHandle>{detail})
{}

RQ_MSHDetailList::RQ_MSHDetailList(std::vector<MOD_ConstDetailHandle> details) : details_(std::move(details))
{
    std::erase_if(details_, [](const MOD_ConstDetailHandle &detail) { return !detail; });
    const auto differs = [this](const MOD_ConstDetailHandle &detail) {
        return !sameCounts(*detail.readLock(), *details_[0].readLock());
    };
    if (!std::any_of(details_.begin(), details_.end(), differs))
        return;
    std::fill(details_.begin(), details_.end(), MOD_ConstDetailHandle(details_[0]));
    BAS_Diagnostics::warn("motion segments differ in topology: the first one stands for all");
}

const MOD_ConstDetailHandle &RQ_MSHDetailList::getHandle(int segment) const
{
    static const MOD_ConstDetailHandle kNone;
    return details_.empty() ? kNone : details_[size_t(std::clamp(segment, 0, getSegments() - 1))];
}

RQ_AttributeListHandle RQ_MSHDetailList::makeList(ELM_Owner owner, const RQ_MSHAttributeFilter *filter,
                                                  const RQ_MSHOffsetList &offsets, const RQ_RefineParms *parms) const
{
    if (details_.empty())
        return nullptr;
    const RQ_MSHAttributeFilter &chosen = chooseFilter(filter, parms);
    RQ_AttributeMapHandle map(new RQ_AttributeMap);
    std::vector<const ELM_Attribute *> attributes;
    for (const ELM_Attribute &attribute : getDetail()->attributes(owner))
        if (chosen.isValid(attribute))
        {
            map->setOriginalOwner(map->add(attribute.name(), true), RQ_Owner(owner));
            attributes.push_back(&attribute);
        }
    if (attributes.empty())
        return nullptr;

    RQ_AttributeListHandle list(new RQ_AttributeList(map, getSegments()));
    for (size_t i = 0; i < attributes.size(); ++i)
    {
        const RQ_DataArrayHandle first(new RQ_MSHElementArray(getHandle(), attributes[i], offsets, owner));
        for (int segment = 0; segment < getSegments(); ++segment)
        {
            // A segment that lacks the attribute, or has another kind of it, repeats the first.
            RQ_DataArrayHandle array = first;
            if (!(getHandle(segment) == getHandle()))
                array = new RQ_MSHElementArray(getHandle(segment), attributes[i], offsets, owner);
            const bool fits = array->isValid() && array->getStorage() == first->getStorage() &&
                              array->getTupleSize() == first->getTupleSize();
            list->set(int(i), fits ? array : first, segment);
        }
    }
    return list;
}

RQ_AttributeListHandle RQ_MSHDetailList::getDetailAttributes(const RQ_MSHAttributeFilter *filter,
                                                             const RQ_RefineParms *parms) const
{
    return makeList(ELM_OWNER_DETAIL, filter, RQ_MSHOffsetList(ELM_OffsetList(0, 1)), parms);
}

RQ_AttributeListHandle RQ_MSHDetailList::getPointAttributes(const RQ_MSHAttributeFilter *filter,
                                                            const RQ_MSHOffsetList &points,
                                                            const RQ_RefineParms *parms) const
{
    return makeList(ELM_OWNER_POINT, filter, points, parms);
}

RQ_AttributeListHandle RQ_MSHDetailList::getPrimitiveAttributes(const RQ_MSHAttributeFilter *filter,
                                                                const RQ_MSHOffsetList &primitives,
                                                                const RQ_RefineParms *parms) const
{
    return makeList(ELM_OWNER_PRIMITIVE, filter, primitives, parms);
}

RQ_AttributeListHandle RQ_MSHDetailList::getVertexAttributes(const RQ_MSHAttributeFilter *filter,
                                                             const RQ_MSHOffsetList &vertices,
                                                             const RQ_RefineParms *parms) const
{
    return makeList(ELM_OWNER_VERTEX, filter, vertices, parms);
}
