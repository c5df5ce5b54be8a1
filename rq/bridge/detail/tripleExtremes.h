#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

namespace rq
{
/// Least and greatest values of three components; a component without any has the least above the greatest.
struct TripleExtremes
{
    static constexpr float kInfinity = std::numeric_limits<float>::infinity();

    std::array<float, 4> low{kInfinity, kInfinity, kInfinity, kInfinity};  // the last is for the vectors
    std::array<float, 4> high{-kInfinity, -kInfinity, -kInfinity, -kInfinity};

    void merge(const TripleExtremes &other)
    {
        for (size_t c = 0; c < 3; ++c)
        {
            low[c] = std::min(low[c], other.low[c]);
            high[c] = std::max(high[c], other.high[c]);
        }
    }
};

/// The extremes of the rows of three floats that indices show, not-a-number left out, without gathering the rows first.
template <class Index> TripleExtremes findExtremes(const float *rows, const Index *indices, int64_t count)
{
    TripleExtremes extremes;
#if defined(__x86_64__)
    // The second operand wins over not-a-number.
    __m128 low = _mm_loadu_ps(extremes.low.data()), high = _mm_loadu_ps(extremes.high.data());
    for (int64_t i = 0; i < count; ++i)
    {
        const float *row = rows + 3 * int64_t(indices[i]);
        int64_t xy;
        std::memcpy(&xy, row, sizeof(xy));
        const __m128 xyz = _mm_movelh_ps(_mm_castsi128_ps(_mm_cvtsi64_si128(xy)), _mm_load_ss(row + 2));
        low = _mm_min_ps(xyz, low);
        high = _mm_max_ps(xyz, high);
    }
    _mm_storeu_ps(extremes.low.data(), low);
    _mm_storeu_ps(extremes.high.data(), high);
#else
    for (int64_t i = 0; i < count; ++i)
        for (size_t c = 0; c < 3; ++c)
        {
            const float value = rows[3 * int64_t(indices[i]) + int64_t(c)];
            extremes.low[c] = value < extremes.low[c] ? value : extremes.low[c];
            extremes.high[c] = value > extremes.high[c] ? value : extremes.high[c];
        }
#endif
    return extremes;
}
}  // namespace rq
