#include <numeric>

#include <host/msh/Detail.h>
#include <rq/bridge/MSHDetailList.h>

namespace
{
constexpr int64_t kGroupsWithMembers = 1, kAllGroups = 2;

/// The places in `primitives` of a group's members.
RQ_FaceSetHandle membersAmong(const RQ_MSHOffsetList &primitives, const ELM_Group &group)
{
    const RQ_FaceSetHandle set(new RQ_FaceSet);
    std::vector<int64_t> faces;
    if (primitives.isTrivial())
    {
        const ELM_Offset first = primitives.offsetList().start();
        for (const auto [begin, end] : ELM_Range(group).slice(first, first + primitives.entries()).blocks())
        {
            faces.resize(size_t(end - begin));
            std::iota(faces.begin(), faces.end(), begin - first);
            set->addFaces(faces.data(), end - begin);
        }
        return set;
    }
    for (int64_t i = 0; i < primitives.entries(); ++i)
        if (group.contains(primitives[i]))
            faces.push_back(i);
    set->addFaces(faces.data(), int64_t(faces.size()));
    return set;
}
}  // namespace

RQ_FaceSetMapHandle RQ_MSHDetailList::buildFaceSets(const RQ_MSHOffsetList &primitives, int64_t mode) const
{
    if (details_.empty() || (mode != kGroupsWithMembers && mode != kAllGroups))
        return nullptr;
    const ELM_GroupDict &groups = getDetail()->groups(ELM_OWNER_PRIMITIVE);
    RQ_FaceSetMapHandle map;
    for (int64_t i = 0; i < groups.size(); ++i)
    {
        const RQ_FaceSetHandle set = membersAmong(primitives, groups[i]);
        if (mode == kGroupsWithMembers && set->entries() == 0)
            continue;
        if (!map)
            map = new RQ_FaceSetMap;
        map->add(groups[i].name(), set);
    }
    return map;
}
