#include <host/elm/Group.h>

#include <algorithm>

ELM_GroupHandle ELM_Group::clone() const
{
    ELM_GroupHandle copy(new ELM_Group(owner_, name_));
    *copy->bits_ = *bits_;
    return copy;
}

void ELM_Group::setRange(ELM_Offset first, int64_t count, bool member)
{
    ELM_Offset end = std::max<ELM_Offset>(0, first + count);
    first = std::max<ELM_Offset>(0, first);
    if (!member)
        end = std::min(end, bits_->size());
    else if (end > bits_->size() && first < end)
        bits_->resize(end);
    while (first < end)
    {
        // Whole words at once, where there are any.
        if ((first & 63) == 0 && end - first >= 64)
        {
            const int64_t words = (end - first) >> 6;
            std::fill_n(bits_->words() + (first >> 6), words, member ? ~uint64_t(0) : 0);
            first += words << 6;
        }
        else
            bits_->set(first++, member);
    }
}

const ELM_Group *ELM_GroupDict::find(std::string_view name) const
{
    for (const ELM_GroupHandle &group : groups_)
        if (group->name().view() == name)
            return group.get();
    return nullptr;
}

void ELM_GroupDict::trim(ELM_Offset end)
{
    for (ELM_GroupHandle &group : groups_)
        if (group->bits()->size() > end)
        {
            if (group->use_count() > 1)
                group = group->clone();
            group->trim(end);
        }
}

ELM_Group *ELM_GroupDict::writable(ELM_Owner owner, const BAS_StringHolder &name)
{
    for (ELM_GroupHandle &group : groups_)
        if (group->name() == name)
        {
            if (group->use_count() > 1)
                group = group->clone();
            return group.get();
        }
    return groups_.emplace_back(new ELM_Group(owner, name)).get();
}
