#pragma once

#include <memory>
#include <vector>

#include <host/bas/BitArray.h>
#include <host/bas/Intrusive.h>
#include <host/bas/StringHolder.h>
#include <host/elm/types.h>

class ELM_Group;
using ELM_GroupHandle = BAS_IntrusivePtr<ELM_Group>;

/// A named set of elements of one owner.
///
/// Ownership  intrusively counted and shared by all snapshots of a detail between which it did not change
/// Threads    constant in a published detail; the mutating members are for the edit that owns the group
class HOST_API ELM_Group final : public BAS_IntrusiveRefCounter<ELM_Group>
{
public:
    ELM_Group(ELM_Owner owner, const BAS_StringHolder &name) : owner_(owner), name_(name), bits_(new BAS_BitArray) {}

    /// A copy with its own members.
    ELM_GroupHandle clone() const;

    ELM_Owner owner() const { return owner_; }
    const BAS_StringHolder &name() const { return name_; }

    /// False for offsets beyond every member, too.
    bool contains(ELM_Offset offset) const { return offset >= 0 && offset < bits_->size() && bits_->get(offset); }

    /// Number of members.
    int64_t count() const { return bits_->count(); }

    /// A bit for each offset up to the last that was ever set or cleared.
    const std::shared_ptr<BAS_BitArray> &bits() const { return bits_; }

    /// Put an element in, or take it out.  Negative offsets are ignored, and those beyond the elements that the detail has
    /// when the edit is committed are dropped then.
    void set(ELM_Offset offset, bool member = true) { setRange(offset, 1, member); }
    void setRange(ELM_Offset first, int64_t count, bool member = true);

    /// Drop members from an offset on.
    void trim(ELM_Offset end)
    {
        if (bits_->size() > end)
            bits_->resize(end);
    }

    int64_t memoryUsage() const { return int64_t(sizeof(*this)) + bits_->getMemoryUsage(); }

private:
    ELM_Owner owner_;
    BAS_StringHolder name_;
    std::shared_ptr<BAS_BitArray> bits_;
};

/// The groups of one owner, in order of insertion.
class HOST_API ELM_GroupDict
{
public:
    int64_t size() const { return int64_t(groups_.size()); }
    const ELM_Group &operator[](int64_t i) const { return *groups_[size_t(i)]; }

    /// Null when there is none.
    const ELM_Group *find(std::string_view name) const;

    /// A group to write, created when there is none; a copy takes its place when others share it.
    ELM_Group *writable(ELM_Owner owner, const BAS_StringHolder &name);

    /// Drop members from an offset on, from every group that has some.
    void trim(ELM_Offset end);

private:
    std::vector<ELM_GroupHandle> groups_;
};
