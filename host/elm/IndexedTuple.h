#pragma once

#include <string_view>
#include <type_traits>
#include <vector>

#include <host/bas/OptionsHolder.h>
#include <host/elm/IndexedRows.h>

/// The strings or dictionaries of an attribute: a table of distinct values, and an index into it per row and component;
/// -1 is none.
///
/// Shape      Value is `BAS_StringHolder` or `BAS_OptionsHolder`; dictionaries of the same content are one.  The table keeps
///            the order in which values first appeared; entries that no row uses any more stay in it.
/// Ownership  copies share table and indices; a write copies what it touches
/// Failure    rows and indices are not checked where nothing is said
/// Threads    reads are safe from any thread; writes need the only access to this copy
template <class Value> class HOST_API ELM_IndexedTuple : public ELM_IndexedRows
{
public:
    /// What a value is looked up by.
    using Key = std::conditional_t<std::is_same_v<Value, BAS_StringHolder>, std::string_view, const BAS_OptionsHolder &>;

    explicit ELM_IndexedTuple(int tupleSize = 1, int64_t size = 0);
    ~ELM_IndexedTuple();
    ELM_IndexedTuple(const ELM_IndexedTuple &);
    ELM_IndexedTuple &operator=(const ELM_IndexedTuple &);

    int tupleSize() const { return indices_.tupleSize(); }

    /// The distinct values.
    const std::vector<Value> &table() const;

    /// The value of a row, empty when it has none.
    const Value &get(int64_t row, int component = 0) const;

    /// The index of a value in the table, -1 when it is not there.
    int32_t find(Key value) const;

    /// The index of a value in the table, which takes it in when it is new.
    int32_t add(Key value);

    /// Give a row a value.
    void set(int64_t row, Key value, int component = 0) { indices_.writableTuple(row)[component] = add(value); }

    /// Let rows share one value of the table, or none (-1).  For bulk writing: `add` each distinct value once.
    void fill(int64_t first, int64_t count, int32_t index) { fillIndices(first, count, index); }

    /// Replace the indices of rows, `tupleSize()` each.  False, and nothing changes, when the rows are not there or an
    /// index is neither -1 nor in the table.
    bool writeIndices(int64_t first, int64_t count, const int32_t *indices)
    {
        return writeChecked(first, count, indices, -1, int64_t(table().size()));
    }

    int64_t memoryUsage() const;

private:
    struct Table;

    BAS_IntrusivePtr<Table> table_;
};

using ELM_StringTuple = ELM_IndexedTuple<BAS_StringHolder>;
using ELM_DictTuple = ELM_IndexedTuple<BAS_OptionsHolder>;

extern template class ELM_IndexedTuple<BAS_StringHolder>;
extern template class ELM_IndexedTuple<BAS_OptionsHolder>;
