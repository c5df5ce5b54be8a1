#pragma once

#include <map>
#include <vector>

#include <rq/bridge/MSHOffsetList.h>

/// The primitives of one refinement, by what all primitives of a mesh have in common: a `Kind`, which has an order.
///
/// Threads  one object per thread
/// Cost     constant for a primitive of the kind of the one before, else logarithmic in the number of kinds
template <class Kind> class RQ_KindGroups
{
public:
    struct Group
    {
        Kind kind;
        RQ_MSHOffsetList primitives;
    };

    void append(const Kind &kind, ELM_Offset primitive) { primitivesOf(kind).append(primitive); }

    /// Append what other groups gathered.
    void concat(const RQ_KindGroups &following)
    {
        for (const Group &group : following.groups_)
            primitivesOf(group.kind).concat(group.primitives);
    }

    /// In the order of their first primitives.
    auto begin() const { return groups_.begin(); }
    auto end() const { return groups_.end(); }

private:
    RQ_MSHOffsetList &primitivesOf(const Kind &kind)
    {
        // Primitives of a kind mostly follow each other.
        if (groups_.empty() || !(groups_[last_].kind == kind))
        {
            const auto [place, isNew] = places_.try_emplace(kind, groups_.size());
            if (isNew)
                groups_.push_back({kind, {}});
            last_ = place->second;
        }
        return groups_[last_].primitives;
    }

    std::vector<Group> groups_;
    std::map<Kind, size_t> places_;
    size_t last_ = 0;  // the group that was asked for last
};
