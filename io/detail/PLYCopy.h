#pragma once

#include <algorithm>
#include <bit>
#include <cstring>

#include <io/detail/PLYValues.h>

namespace rq::io
{
/// A number at any address, in this machine's order of bytes or in the other one.
template <class T> T loadPLY(const char *from, bool swapped)
{
    char bytes[sizeof(T)];
    std::memcpy(bytes, from, sizeof(T));
    if (swapped)
        std::reverse(bytes, bytes + sizeof(T));
    return std::bit_cast<T>(bytes);
}

/// Copy `rows` runs of values that lie `recordSize` bytes apart.
struct PLYCopy
{
    const char *from;
    int64_t recordSize;
    void *to;
    int64_t stride;  ///< values from row to row
    int64_t components;
    int64_t rows;
    double divisor = 1.0;
};

template <bool Swapped, class From, class To> void copyPLYRuns(const PLYCopy &copy)
{
    To *to = static_cast<To *>(copy.to);
    if constexpr (!Swapped && std::is_same_v<From, To>)
    {
        if (copy.recordSize == copy.components * int64_t(sizeof(To)) && copy.stride == copy.components)
        {
            std::memcpy(to, copy.from, size_t(copy.rows * copy.recordSize));
            return;
        }
    }
    const auto copyRows = [&](auto components) {
        const char *from = copy.from;
        for (int64_t row = 0; row < copy.rows; ++row, from += copy.recordSize, to += copy.stride)
        {
            for (int64_t c = 0; c < components; ++c)
                to[c] = convertPLY<To>(loadPLY<From>(from + c * int64_t(sizeof(From)), Swapped), copy.divisor);
        }
    };
    // Triples are what files are made of.
    if (copy.components == 3)
        copyRows(std::integral_constant<int64_t, 3>());
    else
        copyRows(copy.components);
}

using PLYCopyFunction = void (*)(const PLYCopy &);

inline PLYCopyFunction findPLYCopy(PLYType type, ELM_Storage storage, bool swapped)
{
    return visitPLYConversion(type, storage, [&](auto from, auto to) -> PLYCopyFunction {
        using From = decltype(from);
        using To = decltype(to);
        return swapped ? copyPLYRuns<true, From, To> : copyPLYRuns<false, From, To>;
    });
}
}  // namespace rq::io
