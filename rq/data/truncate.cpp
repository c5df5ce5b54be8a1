#include <rq/data/detail/truncate.h>

#include <rq/data/convert.h>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

namespace rq
{
namespace
{
#if defined(__x86_64__)
// What does not fit comes out of the processor as the least integer, which is right for what is too small.  Inverting its
// bits gives the greatest one for what is too large, and not-a-number is cleared.

__m128i truncateFour(const float *from)
{
    const __m128 values = _mm_loadu_ps(from);
    const __m128i tooLarge = _mm_castps_si128(_mm_cmpge_ps(values, _mm_set1_ps(0x1p31f)));
    const __m128i ordered = _mm_castps_si128(_mm_cmpord_ps(values, values));
    return _mm_and_si128(_mm_xor_si128(_mm_cvttps_epi32(values), tooLarge), ordered);
}

// The masks of two doubles, narrowed to 32 bits each.
__m128i narrowMasks(__m128d low, __m128d high)
{
    return _mm_castps_si128(_mm_shuffle_ps(_mm_castpd_ps(low), _mm_castpd_ps(high), _MM_SHUFFLE(2, 0, 2, 0)));
}

__m128i truncateFour(const double *from)
{
    const __m128d low = _mm_loadu_pd(from), high = _mm_loadu_pd(from + 2), end = _mm_set1_pd(0x1p31);
    const __m128i tooLarge = narrowMasks(_mm_cmpge_pd(low, end), _mm_cmpge_pd(high, end));
    const __m128i ordered = narrowMasks(_mm_cmpord_pd(low, low), _mm_cmpord_pd(high, high));
    const __m128i cut = _mm_unpacklo_epi64(_mm_cvttpd_epi32(low), _mm_cvttpd_epi32(high));
    return _mm_and_si128(_mm_xor_si128(cut, tooLarge), ordered);
}

template <class From> int64_t truncateGroups(const From *from, int32_t *to, int64_t count)
{
    int64_t i = 0;
    for (; i + 4 <= count; i += 4)
        _mm_storeu_si128(reinterpret_cast<__m128i *>(to + i), truncateFour(from + i));
    return i;
}
#else
template <class From> int64_t truncateGroups(const From *, int32_t *, int64_t) { return 0; }
#endif

template <class From> void truncateAll(const From *from, int32_t *to, int64_t count)
{
    for (int64_t i = truncateGroups(from, to, count); i < count; ++i)
        to[i] = RQconvert<int32_t>(from[i]);
}
}  // namespace

void truncateValues(const float *from, int32_t *to, int64_t count) { truncateAll(from, to, count); }
void truncateValues(const double *from, int32_t *to, int64_t count) { truncateAll(from, to, count); }
}  // namespace rq
