#pragma once

// Conversions that compilers do not vectorise well: everything from or to floating-point values, eight at a time, for
// x86-64 processors with AVX2 and F16C.  Results have the bits of RQconvert.

#if defined(__x86_64__)
#include <immintrin.h>

#include <rq/data/convert.h>

#define RQ_LANES __attribute__((target("avx2,f16c")))
#define RQ_LANE RQ_LANES __attribute__((always_inline)) inline

namespace rq::lanes
{
// Eight values take one register or two: 32-bit integers (narrow ones are widened), floats (halves are widened), and these.
struct Doubles
{
    __m256d low, high;
};
struct Longs
{
    __m256i low, high;
};

RQ_LANE __m128i *at(void *place) { return static_cast<__m128i *>(place); }
RQ_LANE const __m128i *at(const void *place) { return static_cast<const __m128i *>(place); }

RQ_LANE __m256i loadFull(const void *from) { return _mm256_loadu_si256(static_cast<const __m256i *>(from)); }
RQ_LANE __m256i load(const uint8_t *from) { return _mm256_cvtepu8_epi32(_mm_loadl_epi64(at(from))); }
RQ_LANE __m256i load(const int8_t *from) { return _mm256_cvtepi8_epi32(_mm_loadl_epi64(at(from))); }
RQ_LANE __m256i load(const int16_t *from) { return _mm256_cvtepi16_epi32(_mm_loadu_si128(at(from))); }
RQ_LANE __m256i load(const int32_t *from) { return loadFull(from); }
RQ_LANE Longs load(const int64_t *from) { return {loadFull(from), loadFull(from + 4)}; }
RQ_LANE __m256 load(const PLT_Half *from) { return _mm256_cvtph_ps(_mm_loadu_si128(at(from))); }
RQ_LANE __m256 load(const float *from) { return _mm256_loadu_ps(from); }
RQ_LANE Doubles load(const double *from) { return {_mm256_loadu_pd(from), _mm256_loadu_pd(from + 4)}; }

/// The lowest byte of each integer.
RQ_LANE __m128i lowBytes(__m256i values)
{
    const __m256i order = _mm256_broadcastsi128_si256(_mm_set_epi64x(-1, 0x80808080'0c080400));
    const __m256i packed = _mm256_shuffle_epi8(values, order);
    return _mm_unpacklo_epi32(_mm256_castsi256_si128(packed), _mm256_extracti128_si256(packed, 1));
}

/// The lower half of each integer.
RQ_LANE __m128i lowHalves(__m256i values)
{
    const __m256i order = _mm256_broadcastsi128_si256(_mm_set_epi64x(-1, 0x0d0c0908'05040100));
    return _mm256_castsi256_si128(_mm256_permute4x64_epi64(_mm256_shuffle_epi8(values, order), 0x08));
}

RQ_LANE void storeFull(void *to, __m256i values) { _mm256_storeu_si256(static_cast<__m256i *>(to), values); }
RQ_LANE void store(uint8_t *to, __m256i values) { _mm_storel_epi64(at(to), lowBytes(values)); }
RQ_LANE void store(int8_t *to, __m256i values) { _mm_storel_epi64(at(to), lowBytes(values)); }
RQ_LANE void store(int16_t *to, __m256i values) { _mm_storeu_si128(at(to), lowHalves(values)); }
RQ_LANE void store(int32_t *to, __m256i values) { storeFull(to, values); }
RQ_LANE void store(PLT_Half *to, __m256 values) { _mm_storeu_si128(at(to), _mm256_cvtps_ph(values, 0)); }
RQ_LANE void store(float *to, __m256 values) { _mm256_storeu_ps(to, values); }
RQ_LANE void store(int64_t *to, Longs values)
{
    storeFull(to, values.low);
    storeFull(to + 4, values.high);
}
RQ_LANE void store(double *to, Doubles values)
{
    _mm256_storeu_pd(to, values.low);
    _mm256_storeu_pd(to + 4, values.high);
}

// What does not fit comes out of the processor as the least integer, which is right for what is too small.  Inverting its
// bits gives the greatest one for what is too large, and not-a-number is cleared.
RQ_LANE __m256i toInts(__m256 values)
{
    const __m256 tooLarge = _mm256_cmp_ps(values, _mm256_set1_ps(0x1p31f), _CMP_GE_OQ);
    const __m256 ordered = _mm256_cmp_ps(values, values, _CMP_ORD_Q);
    const __m256i cut = _mm256_xor_si256(_mm256_cvttps_epi32(values), _mm256_castps_si256(tooLarge));
    return _mm256_and_si256(cut, _mm256_castps_si256(ordered));
}

// Doubles hold the greatest integer, so what is too large can be replaced before.
RQ_LANE __m128i toInts(__m256d values)
{
    const __m256d numbers = _mm256_and_pd(values, _mm256_cmp_pd(values, values, _CMP_ORD_Q));
    return _mm256_cvttpd_epi32(_mm256_min_pd(numbers, _mm256_set1_pd(0x1p31 - 1)));
}
RQ_LANE __m256i toInts(Doubles values) { return _mm256_set_m128i(toInts(values.high), toInts(values.low)); }

RQ_LANE Doubles toDoubles(__m256i values)
{
    return {_mm256_cvtepi32_pd(_mm256_castsi256_si128(values)), _mm256_cvtepi32_pd(_mm256_extracti128_si256(values, 1))};
}
RQ_LANE Doubles toDoubles(__m256 values)
{
    return {_mm256_cvtps_pd(_mm256_castps256_ps128(values)), _mm256_cvtps_pd(_mm256_extractf128_ps(values, 1))};
}

// The lower 32 bits are put below those of 2^52, and the upper ones, made unsigned by 2^31, below those of 2^84: both are
// exact, and only their sum, freed from what was added, is rounded.
RQ_LANE __m256d toDouble(__m256i longs)
{
    const __m256d shift = _mm256_set1_pd(0x1p52), highShift = _mm256_set1_pd(0x1p84 + 0x1p63);
    const __m256i low = _mm256_blend_epi32(_mm256_castpd_si256(shift), longs, 0x55);
    const __m256i high = _mm256_xor_si256(_mm256_srli_epi64(longs, 32), _mm256_castpd_si256(highShift));
    const __m256d upper = _mm256_sub_pd(_mm256_castsi256_pd(high), _mm256_set1_pd(0x1p84 + 0x1p63 + 0x1p52));
    return _mm256_add_pd(upper, _mm256_castsi256_pd(low));
}
RQ_LANE Doubles toDoubles(Longs values) { return {toDouble(values.low), toDouble(values.high)}; }

RQ_LANE __m256 toFloats(__m256i values) { return _mm256_cvtepi32_ps(values); }
RQ_LANE __m256 toFloats(__m256 values) { return values; }
RQ_LANE __m256 toFloats(Doubles values)
{
    return _mm256_set_m128(_mm256_cvtpd_ps(values.high), _mm256_cvtpd_ps(values.low));
}
RQ_LANE __m256 toFloats(Longs values) { return toFloats(toDoubles(values)); }

// Next to 1.5 * 2^52 the digits of a double are those of the integer.
RQ_LANE __m256i toLong(__m256d values)
{
    const __m256d shift = _mm256_set1_pd(0x1.8p52);
    const __m256d cut = _mm256_round_pd(values, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
    return _mm256_sub_epi64(_mm256_castpd_si256(_mm256_add_pd(cut, shift)), _mm256_castpd_si256(shift));
}
RQ_LANE Longs toLongs(Doubles values) { return {toLong(values.low), toLong(values.high)}; }
RQ_LANE Longs toLongs(__m256 values) { return toLongs(toDoubles(values)); }

/// Whether all values are less than 2^51 in size.
RQ_LANE bool areModest(__m256 values)
{
    const __m256 size = _mm256_andnot_ps(_mm256_set1_ps(-0.0f), values);
    return _mm256_movemask_ps(_mm256_cmp_ps(size, _mm256_set1_ps(0x1p51f), _CMP_LT_OQ)) == 0xff;
}
RQ_LANE bool areModest(Doubles values)
{
    const __m256d sign = _mm256_set1_pd(-0.0), end = _mm256_set1_pd(0x1p51);
    const __m256d low = _mm256_cmp_pd(_mm256_andnot_pd(sign, values.low), end, _CMP_LT_OQ);
    const __m256d high = _mm256_cmp_pd(_mm256_andnot_pd(sign, values.high), end, _CMP_LT_OQ);
    return _mm256_movemask_pd(_mm256_and_pd(low, high)) == 0xf;
}

/// Whether all values lie in -2^53 to 2^53, so that doubles hold them.
RQ_LANE bool areModest(Longs values)
{
    const __m256i shift = _mm256_set1_epi64x(int64_t(1) << 53);
    const __m256i shifted = _mm256_or_si256(_mm256_add_epi64(values.low, shift), _mm256_add_epi64(values.high, shift));
    return _mm256_testz_si256(shifted, _mm256_set1_epi64x(-(int64_t(1) << 54)));
}

/// Whether eight values as loaded are among those that the functions above convert by the policy.
template <class To, class From, class Lanes> RQ_LANE bool areCovered(Lanes values)
{
    constexpr bool kSmall = std::same_as<From, float> || std::same_as<From, PLT_Half>;
    if constexpr (std::same_as<To, int64_t> || (std::same_as<From, int64_t> && !std::same_as<To, double>))
        return areModest(values);
    else if constexpr (kSmall && (std::same_as<To, float> || std::same_as<To, PLT_Half>))
        // The processor makes every not-a-number quiet, the scalar conversion of halves does not.
        return _mm256_movemask_ps(_mm256_cmp_ps(values, values, _CMP_UNORD_Q)) == 0;
    else
        return true;
}

/// Convert whole groups of eight values and return how many values they were.
template <class To, class From> RQ_LANES int64_t convertGroups(const From *from, To *to, int64_t count)
{
    // Where far more is read than written, the processor's own guesses run too late: float to uint8 takes 0.22 instead of
    // 0.26 ns a value.
    constexpr int64_t kAhead = 1024;
    int64_t i = 0;
    for (; i + 8 <= count; i += 8)
    {
        if constexpr (sizeof(From) >= 4 * sizeof(To))
            _mm_prefetch(reinterpret_cast<const char *>(from + i) + kAhead, _MM_HINT_T0);
        const auto values = load(from + i);
        if (!areCovered<To, From>(values))
            for (int64_t k = i; k < i + 8; ++k)
                to[k] = RQconvert<To>(from[k]);
        else if constexpr (std::same_as<To, double>)
            store(to + i, toDoubles(values));
        else if constexpr (std::same_as<To, int64_t>)
            store(to + i, toLongs(values));
        else if constexpr (std::is_integral_v<To>)
            store(to + i, toInts(values));
        else
            store(to + i, toFloats(values));
    }
    return i;
}
}  // namespace rq::lanes

#undef RQ_LANE
#undef RQ_LANES
#endif
