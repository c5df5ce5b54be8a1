#pragma once

#include <cstring>

#include <host/elm/PageArray.h>

// What the parts of page arrays have in common.

/// Call a macro with each type of value that pages hold.
#define ELM_EACH_PAGE_TYPE(MACRO)                                                                                           \
    MACRO(uint8_t) MACRO(int8_t) MACRO(int16_t) MACRO(int32_t) MACRO(int64_t) MACRO(PLT_Half) MACRO(float) MACRO(double)

namespace host
{
/// The mask of a page of rows.
constexpr uint64_t kRawPage = uint64_t(ELM_PAGE_SIZE - 1);

inline int64_t pagesFor(int64_t rows) { return (rows + ELM_PAGE_SIZE - 1) >> ELM_PAGE_BITS; }

/// Write one tuple over and over.
template <class T> void repeat(T *to, const T *tuple, int64_t rows, int64_t tupleSize)
{
    if (tupleSize == 1)
        std::fill_n(to, rows, *tuple);
    else
        for (int64_t row = 0; row < rows; ++row)
            std::copy_n(tuple, tupleSize, to + row * tupleSize);
}

/// Equal bits: the two zeros differ, and a NaN is itself.
template <class T> bool sameValues(const T *a, const T *b, int64_t count)
{
    return std::memcmp(static_cast<const void *>(a), b, size_t(count) * sizeof(T)) == 0;
}

/// True when each of the rows is a copy of the first: the block equals itself one row on.
template <class T> bool sameRows(const T *tuples, int64_t rows, int64_t tupleSize)
{
    return sameValues(tuples, tuples + tupleSize, (rows - 1) * tupleSize);
}
}  // namespace host
