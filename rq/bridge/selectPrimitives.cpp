#include <rq/bridge/detail/selectPrimitives.h>

ELM_Range rq::selectPrimitives(const ELM_Range &range, const ELM_Group *only, const ELM_Group *without)
{
    if (!only && !without)
        return range;
    const ELM_GroupHandle members(new ELM_Group(ELM_OWNER_PRIMITIVE, BAS_StringHolder()));
    members->unite(range);
    if (only)
        members->intersect(*only);
    if (without)
        members->subtract(*without);
    return members->range();
}
