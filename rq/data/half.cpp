#include <rq/data/detail/half.h>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace rq
{
namespace
{
template <class From, class To> void convertScalars(const From *from, To *to, int64_t begin, int64_t end)
{
    for (int64_t i = begin; i < end; ++i)
        to[i] = To(from[i]);
}

#if defined(__x86_64__)
const bool kHasF16C = __builtin_cpu_supports("avx") && __builtin_cpu_supports("f16c");

// Both converters run over whole groups of eight and answer how many values they did.  The processor makes every
// not-a-number quiet, which the scalar conversion does not, so a group with one is left to the latter.

__attribute__((target("avx,f16c"))) int64_t convertGroups(const PLT_Half *from, float *to, int64_t count)
{
    int64_t i = 0;
    for (; i + 8 <= count; i += 8)
    {
        const __m256 values = _mm256_cvtph_ps(_mm_loadu_si128(reinterpret_cast<const __m128i *>(from + i)));
        if (_mm256_movemask_ps(_mm256_cmp_ps(values, values, _CMP_UNORD_Q)) == 0)
            _mm256_storeu_ps(to + i, values);
        else
            convertScalars(from, to, i, i + 8);
    }
    return i;
}

__attribute__((target("avx,f16c"))) int64_t convertGroups(const float *from, PLT_Half *to, int64_t count)
{
    int64_t i = 0;
    for (; i + 8 <= count; i += 8)
    {
        const __m256 values = _mm256_loadu_ps(from + i);
        if (_mm256_movemask_ps(_mm256_cmp_ps(values, values, _CMP_UNORD_Q)) == 0)
            _mm_storeu_si128(reinterpret_cast<__m128i *>(to + i), _mm256_cvtps_ph(values, _MM_FROUND_TO_NEAREST_INT));
        else
            convertScalars(from, to, i, i + 8);
    }
    return i;
}
#else
const bool kHasF16C = false;

template <class From, class To> int64_t convertGroups(const From *, To *, int64_t) { return 0; }
#endif
}  // namespace

void convertHalfs(const PLT_Half *from, float *to, int64_t count)
{
    convertScalars(from, to, kHasF16C ? convertGroups(from, to, count) : 0, count);
}

void convertHalfs(const float *from, PLT_Half *to, int64_t count)
{
    convertScalars(from, to, kHasF16C ? convertGroups(from, to, count) : 0, count);
}
}  // namespace rq
