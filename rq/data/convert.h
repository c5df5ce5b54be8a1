#pragma once

#include <limits>

#include <rq/data/NumericTypes.h>

/// Convert one value: the one policy that every path of the library follows.
///
/// Shape    no normalisation and no clamping: 255 in uint8 is 255.0, a wide integer keeps its low bits in a narrow one
/// Failure  a float that does not fit an integer: not-a-number is 0; targets of up to 32 bits take the value saturated to
///          32 bits and keep its low bits (300.7 to uint8 is 44, -1 is 255); 64-bit targets saturate
/// Cost     no branches, so loops over it vectorise
template <RQ_NumericValue To, RQ_NumericValue From> inline To RQconvert(From from)
{
    if constexpr (std::same_as<To, From>)
        return from;
    else if constexpr (std::same_as<From, PLT_Half>)
        return RQconvert<To>(float(from));
    else if constexpr (std::same_as<To, PLT_Half>)
        return PLT_Half(float(from));
    else if constexpr (std::is_integral_v<To> && std::is_floating_point_v<From>)
    {
        using Wide = std::conditional_t<std::same_as<To, int64_t>, int64_t, int32_t>;
        constexpr Wide kMin = std::numeric_limits<Wide>::min(), kMax = std::numeric_limits<Wide>::max();
        // The first value beyond the range; a power of two, so exact in every float type.
        constexpr From kEnd = -From(kMin);
        const bool fits = from >= From(kMin) && from < kEnd;
        const Wide inside = Wide(fits ? from : From(0));
        const Wide outside = from >= kEnd ? kMax : from < From(kMin) ? kMin : 0;
        return To(fits ? inside : outside);
    }
    else
        return To(from);
}

namespace rq
{
/// Convert `count` contiguous values.
///
/// Shape    the source and the target must not overlap unless they are the same block of the same storage
/// Failure  nothing is written when either storage is not numeric
/// Threads  runs in parallel above some 100,000 values; the result does not depend on the number of threads
RQ_API void convertValues(const void *from, RQ_Storage fromStorage, void *to, RQ_Storage toStorage, int64_t count);

/// Convert rows of a table: the first `components` values of each of `rows` rows, which begin `fromStride` and `toStride`
/// values apart.  What lies between the rows of the target is not touched.
RQ_API void convertRows(const void *from, RQ_Storage fromStorage, int64_t fromStride, void *to, RQ_Storage toStorage,
                        int64_t toStride, int64_t components, int64_t rows);

/// Convert the rows `indices[0 .. rows)` of a table to consecutive rows of another.
RQ_API void gatherRows(const void *from, RQ_Storage fromStorage, int64_t fromStride, const int64_t *indices, void *to,
                       RQ_Storage toStorage, int64_t toStride, int64_t components, int64_t rows);
RQ_API void gatherRows(const void *from, RQ_Storage fromStorage, int64_t fromStride, const int32_t *indices, void *to,
                       RQ_Storage toStorage, int64_t toStride, int64_t components, int64_t rows);
}  // namespace rq
