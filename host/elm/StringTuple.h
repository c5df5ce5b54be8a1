#pragma once

#include <string_view>
#include <vector>

#include <host/bas/StringHolder.h>
#include <host/elm/PageArray.h>

/// The strings of an attribute: a table of distinct strings, and an index into it per row and component; -1 is no string.
///
/// Shape      the table keeps the order in which strings first appeared; entries that no row uses any more stay in it
/// Ownership  copies share table and indices; a write copies what it touches
/// Failure    rows and indices are not checked where nothing is said
/// Threads    reads are safe from any thread; writes need the only access to this copy
class HOST_API ELM_StringTuple
{
public:
    explicit ELM_StringTuple(int tupleSize = 1, int64_t size = 0);
    ~ELM_StringTuple();
    ELM_StringTuple(const ELM_StringTuple &);
    ELM_StringTuple &operator=(const ELM_StringTuple &);

    int tupleSize() const { return indices_.tupleSize(); }
    int64_t size() const { return indices_.size(); }

    /// The distinct strings, and the index column: -1, or a place in the table.
    const std::vector<BAS_StringHolder> &table() const;
    const ELM_PageArray<int32_t> &indices() const { return indices_; }

    int32_t index(int64_t row, int component = 0) const { return indices_.value(row, component); }

    /// The string of a row, empty when it has none.
    const BAS_StringHolder &get(int64_t row, int component = 0) const;

    /// The index of a string in the table, -1 when it is not there.
    int32_t find(std::string_view text) const;

    /// The index of a string in the table, which takes it in when it is new.
    int32_t add(std::string_view text);

    /// Give a row a string.
    void set(int64_t row, std::string_view text, int component = 0);

    /// Let rows share one string of the table, or none (-1).  For bulk writing: `add` each distinct string once.
    void fill(int64_t first, int64_t count, int32_t index);

    /// Replace the indices of rows, `tupleSize()` each.  False, and nothing changes, when the rows are not there or an
    /// index is neither -1 nor in the table.
    bool writeIndices(int64_t first, int64_t count, const int32_t *indices);

    void resize(int64_t size) { indices_.resize(size); }
    void reset(int64_t first, int64_t count) { indices_.reset(first, count); }
    void rearrange(const ELM_OffsetList &rows) { indices_.rearrange(rows); }
    void reverse(int64_t first, int64_t count) { indices_.reverse(first, count); }
    void defragment() { indices_.defragment(); }
    int64_t memoryUsage() const;

private:
    struct Table;

    BAS_IntrusivePtr<Table> table_;
    ELM_PageArray<int32_t> indices_;
};
