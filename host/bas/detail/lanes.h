#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <type_traits>

// Numbers side by side that are computed with as one; one alone is a plain number, and the same expressions do for both.
// A comparison of several answers -1 or 0 for each, by which `?:` picks.
//
// They take the widest registers of the function that all this is inlined into (see clones.h).

// No value of such a type is handed to a function that stays one, so that it does not matter how.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wpsabi"
#endif

#define HOST_LANES [[gnu::always_inline]] inline

namespace host
{
template <class T, int kCount> struct LanesOf
{
    typedef T Type __attribute__((vector_size(kCount * sizeof(T))));
};
template <class T> struct LanesOf<T, 1>
{
    using Type = T;
};
template <class T, int kCount> using Lanes = typename LanesOf<T, kCount>::Type;

/// Those that lie one after the other in memory.
template <int kCount, class T> HOST_LANES Lanes<T, kCount> lanesAt(const T *from)
{
    Lanes<T, kCount> lanes;
    std::memcpy(&lanes, from, sizeof(lanes));
    return lanes;
}
template <class Some, class T> HOST_LANES void putLanes(const Some &lanes, T *to)
{
    static_assert(sizeof(lanes) % sizeof(T) == 0);
    std::memcpy(to, &lanes, sizeof(lanes));
}

template <class T> HOST_LANES T least(const T &a, const T &b) { return a < b ? a : b; }
template <class T> HOST_LANES T greatest(const T &a, const T &b) { return a > b ? a : b; }
template <class T> HOST_LANES T magnitude(const T &a) { return greatest(a, -a); }

template <class Mask> HOST_LANES bool isAny(const Mask &mask)
{
    if constexpr (std::is_arithmetic_v<Mask>)
        return mask != 0;
    else
    {
        uint64_t words[sizeof(Mask) / 8], sum = 0;
        std::memcpy(words, &mask, sizeof(words));
        for (const uint64_t word : words)
            sum |= word;
        return sum != 0;
    }
}

template <class Some> HOST_LANES Some squareRoots(const Some &lanes)
{
    Some roots;
    for (size_t i = 0; i < sizeof(lanes) / sizeof(lanes[0]); ++i)
        roots[i] = std::sqrt(lanes[i]);
    return roots;
}

/// One number from four, by an operation on some and some that may come in any order.
template <class Four, class Fold> HOST_LANES auto foldLanes(const Four &four, Fold &&fold)
{
    static_assert(sizeof(four) == 4 * sizeof(four[0]));
    const Four two = fold(four, __builtin_shufflevector(four, four, 2, 3, 0, 1));
    return fold(two, __builtin_shufflevector(two, two, 1, 0, 3, 2))[0];
}

/// The same values as another type of number.
template <class T, class From> HOST_LANES auto convertLanes(const From &from)
{
    if constexpr (std::is_arithmetic_v<From>)
        return T(from);
    else
        return __builtin_convertvector(from, Lanes<T, int(sizeof(From) / sizeof(from[0]))>);
}

/// Let lanes change places with the four that they stand in: the first of each become the first four.
template <class Four> HOST_LANES void transpose(Four &a, Four &b, Four &c, Four &d)
{
    const Four evenOfTwo = __builtin_shufflevector(a, b, 0, 4, 2, 6), oddOfTwo = __builtin_shufflevector(a, b, 1, 5, 3, 7);
    const Four evenOfOthers = __builtin_shufflevector(c, d, 0, 4, 2, 6),
               oddOfOthers = __builtin_shufflevector(c, d, 1, 5, 3, 7);
    a = __builtin_shufflevector(evenOfTwo, evenOfOthers, 0, 1, 4, 5);
    b = __builtin_shufflevector(oddOfTwo, oddOfOthers, 0, 1, 4, 5);
    c = __builtin_shufflevector(evenOfTwo, evenOfOthers, 2, 3, 6, 7);
    d = __builtin_shufflevector(oddOfTwo, oddOfOthers, 2, 3, 6, 7);
}
}  // namespace host
