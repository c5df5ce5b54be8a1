#pragma once

#include <host/elm/PageArray.h>

/// Rows that are places in a table of distinct values: what attributes of text, dictionaries and arrays have in common.
///
/// Ownership, Threads  as `ELM_PageArray`
class HOST_API ELM_IndexedRows
{
public:
    /// Rows of `components` indices, `none` where nothing was written.
    ELM_IndexedRows(int components, int32_t none, int64_t size);

    int64_t size() const { return indices_.size(); }

    /// The index column.
    const ELM_PageArray<int32_t> &indices() const { return indices_; }
    int32_t index(int64_t row, int component = 0) const { return indices_.value(row, component); }

    // As the operations of `ELM_PageArray`.
    void resize(int64_t size) { indices_.resize(size); }
    void reset(int64_t first, int64_t count) { indices_.reset(first, count); }
    void rearrange(const ELM_OffsetList &rows) { indices_.rearrange(rows); }
    void reverse(int64_t first, int64_t count) { indices_.reverse(first, count); }
    void defragment() { indices_.defragment(); }

protected:
    void fillIndices(int64_t first, int64_t count, int32_t index);
    bool writeChecked(int64_t first, int64_t count, const int32_t *indices, int32_t low, int64_t high);

    ELM_PageArray<int32_t> indices_;
};
