#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include <host/plt/types.h>
#include <rq/data/convert.h>

// From sums of weighted values to values of an attribute.

namespace rq
{
/// The type in which values of an attribute are summed.
template <class Out>
using SumOf = std::conditional_t<std::is_same_v<Out, float> || std::is_same_v<Out, PLT_Half>, float, double>;

/// A value of the storage: integers are rounded to the nearest and kept in their range.
template <class Out, class T> Out stored(T value)
{
    if constexpr (std::is_integral_v<Out> && sizeof(Out) < sizeof(int64_t))
        return RQconvert<Out>(
            std::floor(std::clamp(value, T(std::numeric_limits<Out>::min()), T(std::numeric_limits<Out>::max())) + T(0.5)));
    else if constexpr (std::is_integral_v<Out>)
        return RQconvert<Out>(std::floor(value + T(0.5)));
    else
        return RQconvert<Out>(value);
}

/// Divide each row of `components` values by the weight behind it, by nothing where that is 0, and close the gaps.  Returns
/// the values that are left.
template <class T> int64_t divideRows(T *rows, int64_t count, int components)
{
    const T *from = rows;
    T *to = rows;
    for (const T *end = from + count * (components + 1); from < end; from += components + 1)
    {
        const T weight = from[components];
        for (int c = 0; c < components; ++c)
            *to++ = weight == T(0) ? T(0) : from[c] / weight;
    }
    return to - rows;
}
}  // namespace rq
