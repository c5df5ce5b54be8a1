#pragma once

#include <span>

#include <host/elm/IndexedRows.h>
#include <host/bas/OptionsHolder.h>

/// The arrays of an attribute whose rows are arrays of varying length: distinct arrays one after another, and the place of
/// one per row; 0 is the empty array.
///
/// Shape      Value is one of the eight numeric types, `BAS_StringHolder` or `BAS_OptionsHolder`; an array holds a multiple
///            of `tupleSize()` values.  The table keeps the order in which arrays first appeared; entries that no row uses
///            any more stay in it.
/// Ownership  copies share table and indices; a write copies what it touches
/// Failure    rows and indices are not checked where nothing is said
/// Threads    reads are safe from any thread; writes need the only access to this copy
template <class Value> class HOST_API ELM_ArrayTuple : public ELM_IndexedRows
{
public:
    explicit ELM_ArrayTuple(int tupleSize = 1, int64_t size = 0);
    ~ELM_ArrayTuple();
    ELM_ArrayTuple(const ELM_ArrayTuple &);
    ELM_ArrayTuple &operator=(const ELM_ArrayTuple &);

    int tupleSize() const { return tupleSize_; }

    /// Number of distinct arrays, the empty one included, and one of them.
    int64_t arrayCount() const;
    std::span<const Value> array(int32_t place) const;

    /// The array of a row.
    std::span<const Value> get(int64_t row) const { return array(index(row)); }

    /// The place of an array in the table, which takes it in when it is new; -1 when its size is no multiple of the tuple
    /// size.
    int32_t add(std::span<const Value> values);

    /// Give a row an array.  False, and no change, when its size is no multiple of the tuple size.
    bool set(int64_t row, std::span<const Value> values);

    /// Let rows share one array of the table.  For bulk writing: `add` each distinct array once.
    void fill(int64_t first, int64_t count, int32_t place) { fillIndices(first, count, place); }

    /// Replace the places of rows.  False, and nothing changes, when the rows are not there or a place is not in the table.
    bool writeIndices(int64_t first, int64_t count, const int32_t *places)
    {
        return writeChecked(first, count, places, 0, arrayCount());
    }

    int64_t memoryUsage() const;

private:
    struct Table;

    int tupleSize_;
    BAS_IntrusivePtr<Table> table_;
};

using ELM_StringArrays = ELM_ArrayTuple<BAS_StringHolder>;
using ELM_DictArrays = ELM_ArrayTuple<BAS_OptionsHolder>;

extern template class ELM_ArrayTuple<uint8_t>;
extern template class ELM_ArrayTuple<int8_t>;
extern template class ELM_ArrayTuple<int16_t>;
extern template class ELM_ArrayTuple<int32_t>;
extern template class ELM_ArrayTuple<int64_t>;
extern template class ELM_ArrayTuple<PLT_Half>;
extern template class ELM_ArrayTuple<float>;
extern template class ELM_ArrayTuple<double>;
extern template class ELM_ArrayTuple<BAS_StringHolder>;
extern template class ELM_ArrayTuple<BAS_OptionsHolder>;
