#pragma once

#include <host/elm/Group.h>

/// The groups of one owner, in order of insertion, found by name.
///
/// Ownership  copies share everything until one of them is written
/// Cost       lookup and copies take constant time, however many groups there are
class HOST_API ELM_GroupDict
{
public:
    ELM_GroupDict();
    ~ELM_GroupDict();
    ELM_GroupDict(const ELM_GroupDict &);
    ELM_GroupDict &operator=(const ELM_GroupDict &);

    int64_t size() const;
    const ELM_Group &operator[](int64_t i) const;

    /// Null when there is none.
    const ELM_Group *find(std::string_view name) const;

    /// A group to write, created when there is none; a copy takes its place when others share it.
    ELM_Group *writable(ELM_Owner owner, const BAS_StringHolder &name);
    ELM_Group *writable(int64_t i);

    /// Drop a group.  False when there is none.
    bool remove(std::string_view name);

    /// Drop members from an offset on, from every group that has some.
    void trim(ELM_Offset end);

    /// Drop the members that are in a range, from every group that has some.
    void subtract(const ELM_Range &range);

    int64_t memoryUsage() const;

private:
    struct Table;

    Table &own();

    BAS_IntrusivePtr<Table> table_;
};
