#include <io/detail/Leftovers.h>

#include <algorithm>

#include <io/detail/Tally.h>

namespace rq::io
{
const char *Leftovers::nameOf(ELM_Owner owner)
{
    constexpr const char *kNames[] = {"vertices", "points", "primitives", "the detail"};
    return kNames[owner];
}

void Leftovers::hold(const ELM_Attribute *attribute) { held_.push_back(attribute); }

bool Leftovers::holds(const ELM_Attribute &attribute) const { return std::ranges::find(held_, &attribute) != held_.end(); }

void Leftovers::leaveOut(ELM_Offset primitive)
{
    const size_t type = size_t(detail_.typeOf(primitive));
    leftOut_.resize(std::max(leftOut_.size(), type + 1));
    ++leftOut_[type];
}

void Leftovers::warnOfAttributes()
{
    for (int owner = 0; owner < ELM_OWNERS; ++owner)
        for (const ELM_Attribute &attribute : detail_.attributes(ELM_Owner(owner)))
        {
            // The matrices of primitives that are left out anyway.
            const bool isMatrix = attribute.scope() == ELM_SCOPE_PRIVATE && attribute.name().view() == ELM_TRANSFORM_NAME;
            if (!holds(attribute) && !isMatrix)
                warn(fmt::format("attribute \"{}\" of {} is left out", attribute.name().c_str(), nameOf(ELM_Owner(owner))));
        }
}

void Leftovers::warnOfGroups(std::initializer_list<ELM_Owner> owners)
{
    for (const ELM_Owner owner : owners)
        for (int64_t i = 0; i < detail_.groups(owner).size(); ++i)
            warn(fmt::format("group \"{}\" of {} is left out", detail_.groups(owner)[i].name().c_str(), nameOf(owner)));
}

void Leftovers::warnOfElements()
{
    for (size_t type = 0; type < leftOut_.size(); ++type)
        if (leftOut_[type] > 0)
        {
            const ELM_PrimitiveDefinition *known = ELM_PrimitiveFactory::find(ELM_PrimitiveTypeId(type));
            warn(fmt::format("{} left out: {}", counted(leftOut_[type], "primitive is", "primitives are"),
                             known ? known->label.c_str() : "of no type"));
        }
    if (looseVertices_ > 0)
        warn(counted(looseVertices_, "vertex without a point is", "vertices without a point are") + " left out");
}
}  // namespace rq::io
