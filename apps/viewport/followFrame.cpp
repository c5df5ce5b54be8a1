#include <apps/viewport/followFrame.h>

#include <host/msh/sameTopology.h>
#include <rq/bridge/MSHElementArray.h>

namespace rq::viewport
{
namespace
{
bool hasSameForm(const ELM_Attribute &a, const ELM_Attribute &b)
{
    return a.storage() == b.storage() && a.tupleSize() == b.tupleSize() && a.typeInfo() == b.typeInfo() &&
           a.hasArrays() == b.hasArrays() && a.size() == b.size();
}

bool hasSameValues(const MOD_ConstDetailHandle &before, const ELM_Attribute &a, const MOD_ConstDetailHandle &loaded,
                   const ELM_Attribute &b)
{
    const ELM_Owner owner = a.owner();
    const auto arrayOf = [owner](const MOD_ConstDetailHandle &detail, const ELM_Attribute &attribute) {
        return RQ_DataArrayHandle(
            new RQ_MSHElementArray(detail, &attribute, RQ_MSHOffsetList(*detail.readLock(), owner), owner));
    };
    return hasSameForm(a, b) && arrayOf(before, a)->isEqual(*arrayOf(loaded, b));
}

bool hasSameMembers(const ELM_Group &a, const ELM_Group &b)
{
    if (a.count() != b.count())
        return false;
    const ELM_Range left = a.range(), right = b.range();
    for (ELM_Offset at = left.begin() & ~ELM_Offset(63); at < left.end(); at += 64)
        if (left.word(at) != right.word(at))
            return false;
    return true;
}

bool hasSameGroups(const ELM_GroupDict &a, const ELM_GroupDict &b)
{
    for (int64_t i = 0; a.size() == b.size() && i < a.size(); ++i)
        if (!(a[i].name() == b[i].name()) || !hasSameMembers(a[i], b[i]))
            return false;
    return a.size() == b.size();
}
}  // namespace

MOD_ConstDetailHandle followFrame(const MOD_ConstDetailHandle &before, const MOD_ConstDetailHandle &loaded)
{
    const MSH_Detail *old = before.readLock(), *fresh = loaded.readLock();
    if (!old || !fresh || old == fresh || !MSHhasSameTopology(*old, *fresh))
        return loaded;
    MSH_DetailData data = old->data();
    data.metaCacheCount = fresh->metaCacheCount();
    data.attributes = fresh->data().attributes;
    for (ELM_AttributeDict &dict : data.attributes)
        for (int64_t i = 0; i < dict.size(); ++i)
        {
            const ELM_Attribute &attribute = dict[i];
            const ELM_Attribute *same = old->find(attribute.owner(), attribute.scope(), attribute.name().view());
            if (same && hasSameValues(before, *same, loaded, attribute))
                dict.insert(same->clone());
        }
    for (const ELM_Owner owner : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE})
        if (!hasSameGroups(old->groups(owner), fresh->groups(owner)))
            data.groups[owner] = fresh->data().groups[owner];
    return MOD_ConstDetailHandle(new MSH_Detail(data, old));
}
}  // namespace rq::viewport
