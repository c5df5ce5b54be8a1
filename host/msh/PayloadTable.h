#pragma once

#include <functional>
#include <memory>
#include <unordered_map>

#include <host/elm/PageArray.h>
#include <host/msh/Payload.h>

/// The payloads of a detail; primitives name them by number.
///
/// Ownership  copies share the table until one is changed, which then costs a handle a payload
/// Cost       small equal payloads of one type become one: a million grids of one size share 16 bytes
class HOST_API MSH_PayloadTable
{
public:
    struct Entry
    {
        ELM_PrimitiveTypeId type;
        MSH_PayloadHandle payload;
    };

    int64_t size() const { return table_ ? int64_t(table_->entries.size()) : 0; }
    const Entry &operator[](int64_t i) const { return table_->entries[size_t(i)]; }

    /// Add a payload, or find its equal.  Returns its number.
    int32_t add(ELM_PrimitiveTypeId type, const MSH_PayloadHandle &payload);

    /// Drop the payloads that no row of `column` names, and renumber the column.
    void keepUsed(ELM_PageArray<int32_t> &column);

    /// Give the elements that payloads refer to their new offsets; -1 for those that are gone, which are taken out.
    void renumber(ELM_Owner owner, const std::function<ELM_Offset(ELM_Offset)> &newOffset);

    /// Bytes of all payloads and of the table.
    int64_t memoryUsage() const;

private:
    struct Table
    {
        std::vector<Entry> entries;
        std::unordered_multimap<uint64_t, int32_t> small;  // hash -> number
        std::vector<int32_t> referring;                    // to elements
    };

    Table &writable();

    std::shared_ptr<Table> table_;
};
