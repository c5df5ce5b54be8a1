#include <rq/bridge/detail/refineKey.h>

#include <algorithm>
#include <initializer_list>

#include <host/msh/Detail.h>
#include <rq/bridge/detail/KeyText.h>
#include <rq/bridge/detail/builtInCollectors.h>

namespace
{
void addForm(rq::KeyText &key, const ELM_Attribute &attribute)
{
    key.add(attribute.name().view())
        .add(int(attribute.scope()))
        .add(int(attribute.storage()))
        .add(attribute.tupleSize())
        .add(int(attribute.typeInfo()))
        .add(attribute.hasArrays());
}

/// Attributes that become something else than attributes.
bool isUsedUp(const ELM_Attribute &attribute, const RQ_RefineParms *parms)
{
    const std::string_view name = attribute.name().view();
    const auto isOneOf = [name](std::initializer_list<std::string_view> names) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    if (parms && parms->getPolysAsSubdivision() &&
        (isOneOf({"crease", "corner", "hole"}) || name.starts_with("osd_") || name.ends_with("interpolateboundary")))
        return true;
    return parms && parms->getPointInstanceEnable() && isOneOf({ELM_INSTANCE_FILE_NAME});
}

/// Call `visit(owner, attribute)` for all attributes.
template <class Visit> void eachAttribute(const MSH_Detail &detail, Visit &&visit)
{
    for (const ELM_Owner owner : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE, ELM_OWNER_DETAIL})
        for (const ELM_Attribute &attribute : detail.attributes(owner))
            visit(owner, attribute);
}

void addDetail(rq::KeyText &key, const MSH_Detail &detail)
{
    key.add(detail.topologyId());
    eachAttribute(detail, [&key](ELM_Owner owner, const ELM_Attribute &attribute) {
        key.add(int(owner));
        addForm(key, attribute);
    });
    const ELM_GroupDict &groups = detail.groups(ELM_OWNER_PRIMITIVE);
    for (int64_t i = 0; i < groups.size(); ++i)
        key.add(static_cast<const void *>(&groups[i]));
}

void addParms(rq::KeyText &key, const RQ_RefineParms &parms)
{
    // The text has all values of the material arrays, which their ids stand for.
    RQ_RefineParms stored(parms);
    stored.setViewportMaterialAttrib(nullptr, nullptr);
    BAS_WorkBuffer text;
    stored.dump(text);
    key.add(std::string_view(text.data(), text.size()))
        .add(parms.getFlags())
        .add(static_cast<const void *>(parms.getAttributeFilter()));
    for (const RQ_DataArrayHandle &array : {parms.getViewportMaterialAttrib(), parms.getViewportMaterialRemapAttrib()})
        key.add(array ? array->getDataId() : -1).add(static_cast<const void *>(array.get()));
}
}  // namespace

bool rq::isRepeatable(const RQ_MSHDetailList &details)
{
    const MSH_Detail *detail = details.getDetail();
    if (!detail || details.movesPoints())
        return false;
    const auto isReadInPlace = [](ELM_PrimitiveTypeId type) {
        const auto collector = RQ_MSHPrimCollect::getCollector(type);
        return collector && gathersBatches(*collector);
    };
    for (size_t type = ELM_PRIMITIVE_NONE + 1; type < detail->data().typeCounts.size(); ++type)
        if (detail->primitiveCount(ELM_PrimitiveTypeId(type)) > 0 && !isReadInPlace(ELM_PrimitiveTypeId(type)))
            return false;
    return true;
}

std::string rq::refineKey(const RQ_MSHDetailList &details, const ELM_Range *range, const RQ_RefineParms *parms)
{
    KeyText key('D');
    key.add(static_cast<const void *>(range)).add(details.getSegments());
    for (int segment = 0; segment < details.getSegments(); ++segment)
    {
        // Segments of one snapshot share their arrays.
        int same = 0;
        while (!(details.getHandle(same) == details.getHandle(segment)))
            ++same;
        key.add(same);
        addDetail(key, *details.getDetail(segment));
    }
    if (parms)
        addParms(key, *parms);
    return key.text();
}

std::string rq::usedUpValues(const RQ_MSHDetailList &details, const RQ_RefineParms *parms)
{
    KeyText ids('U');
    for (int segment = 0; segment < details.getSegments(); ++segment)
        eachAttribute(*details.getDetail(segment), [&](ELM_Owner, const ELM_Attribute &attribute) {
            if (isUsedUp(attribute, parms))
                ids.add(attribute.dataId());
        });
    return ids.text();
}
