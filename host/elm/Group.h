#pragma once

#include <host/bas/StringHolder.h>
#include <host/elm/OffsetList.h>

class ELM_Group;
using ELM_GroupHandle = BAS_IntrusivePtr<ELM_Group>;

/// A named set of elements of one owner.
///
/// Ownership  intrusively counted and shared by all snapshots of a detail between which it did not change; copies share the
///            members until one of both is written
/// Threads    constant in a published detail; the mutating members are for the edit that owns the group
/// Cost       a bit for each offset from the first member to the last; set operations take 64 offsets at a time
class HOST_API ELM_Group final : public BAS_IntrusiveRefCounter<ELM_Group>
{
public:
    ELM_Group(ELM_Owner owner, const BAS_StringHolder &name) : owner_(owner), name_(name), members_(new ELM_OffsetBits) {}

    ELM_GroupHandle clone() const { return new ELM_Group(*this); }

    ELM_Owner owner() const { return owner_; }
    const BAS_StringHolder &name() const { return name_; }

    /// False for offsets beyond every member, too.
    bool contains(ELM_Offset offset) const { return members_->contains(offset); }

    /// Number of members.
    int64_t count() const { return members_->bits.count(); }

    /// The members, as they are now: later changes do not show in it.
    ELM_Range range() const { return ELM_Range(owner_, members_); }
    operator ELM_Range() const { return range(); }

    /// Put an element in, or take it out.  Negative offsets are ignored, and those that the detail does not have when the
    /// edit is committed are dropped then.
    void set(ELM_Offset offset, bool member = true) { setRange(offset, 1, member); }
    void setRange(ELM_Offset first, int64_t count, bool member = true);

    /// Set operations with another group, or any range, of the same owner; false, and no change, when it is another's.
    bool unite(const ELM_Range &other);
    bool intersect(const ELM_Range &other);
    bool subtract(const ELM_Range &other);

    /// Have those elements of `all` as members that were none.
    bool complement(const ELM_Range &all);

    /// True when a member is in the range.
    bool meets(const ELM_Range &range) const;

    /// Let element i be a member when element `rows[i]` was.
    void rearrange(const ELM_OffsetList &rows);

    /// Drop members from an offset on.
    void trim(ELM_Offset end);
    ELM_Offset end() const { return members_->end(); }

    int64_t memoryUsage() const { return int64_t(sizeof(*this) + sizeof(ELM_OffsetBits)) + members_->bits.getMemoryUsage(); }

private:
    ELM_Group(const ELM_Group &) = default;

    ELM_OffsetBits &own();
    void cover(ELM_Offset first, ELM_Offset end);
    template <class Change> bool changeWords(const ELM_Range &other, Change change);

    ELM_Owner owner_;
    BAS_StringHolder name_;
    ELM_OffsetBitsHandle members_;
};
