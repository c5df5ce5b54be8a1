#include <host/bas/CornerLanes.h>

#include <algorithm>

#include <host/bas/clones.h>
#include <host/bas/detail/faceRows.h>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace
{
#if defined(__SSE2__)
// Two floats that need not be aligned, of one point and of another.
inline __m128 pairsAt(const float *low, const float *high)
{
    const __m128 pair = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(low)));
    return _mm_loadh_pi(pair, reinterpret_cast<const __m64 *>(high));
}

// x and y, then y and z, so that nothing behind the last point is touched.
inline void readFour(const float *a, const float *b, const float *c, const float *d, float *x, float *y, float *z)
{
    const __m128 xyOfTwo = pairsAt(a, b), xyOfOthers = pairsAt(c, d);
    const __m128 yzOfTwo = pairsAt(a + 1, b + 1), yzOfOthers = pairsAt(c + 1, d + 1);
    _mm_store_ps(x, _mm_shuffle_ps(xyOfTwo, xyOfOthers, _MM_SHUFFLE(2, 0, 2, 0)));
    _mm_store_ps(y, _mm_shuffle_ps(xyOfTwo, xyOfOthers, _MM_SHUFFLE(3, 1, 3, 1)));
    _mm_store_ps(z, _mm_shuffle_ps(yzOfTwo, yzOfOthers, _MM_SHUFFLE(3, 1, 3, 1)));
}

// The same of four points that lie one after the other.
inline void readRow(const float *from, float *x, float *y, float *z)
{
    const __m128 a = _mm_loadu_ps(from), b = _mm_loadu_ps(from + 4), c = _mm_loadu_ps(from + 8);
    const __m128 xyOfOthers = _mm_shuffle_ps(b, c, _MM_SHUFFLE(2, 1, 3, 2));
    const __m128 yzOfTwo = _mm_shuffle_ps(a, b, _MM_SHUFFLE(1, 0, 2, 1));
    _mm_store_ps(x, _mm_shuffle_ps(a, xyOfOthers, _MM_SHUFFLE(2, 0, 3, 0)));
    _mm_store_ps(y, _mm_shuffle_ps(yzOfTwo, xyOfOthers, _MM_SHUFFLE(3, 1, 2, 0)));
    _mm_store_ps(z, _mm_shuffle_ps(yzOfTwo, c, _MM_SHUFFLE(3, 0, 3, 1)));
}
#else
inline void readFour(const float *a, const float *b, const float *c, const float *d, float *x, float *y, float *z)
{
    const float *const points[] = {a, b, c, d};
    for (int i = 0; i < 4; ++i)
    {
        x[i] = points[i][0];
        y[i] = points[i][1];
        z[i] = points[i][2];
    }
}

inline void readRow(const float *from, float *x, float *y, float *z)
{
    readFour(from, from + 3, from + 6, from + 9, x, y, z);
}
#endif

template <int kCorners, int kKnown, class Index>
HOST_CLONES void readFaces(const float *values, const Index *points, host::CornerLanes<float> &lanes)
{
    // The last face fills what is left of its four lanes.
    for (int64_t i = 0; i < lanes.faces; i += 4)
    {
        const Index *const face = points + i * kCorners;
        const bool isWhole = i + 4 <= lanes.faces;
        if (isWhole && host::areInRow<kCorners, 4>(face))
            for (int k = 0; k < kKnown; ++k)
                readRow(values + 3 * int64_t(face[k]), lanes.at[k][0] + i, lanes.at[k][1] + i, lanes.at[k][2] + i);
        else
        {
            const auto at = [&](int64_t own, int k) {
                return values + 3 * int64_t(points[std::min(i + own, lanes.faces - 1) * kCorners + k]);
            };
            for (int k = 0; k < kKnown; ++k)
                readFour(at(0, k), at(1, k), at(2, k), at(3, k), lanes.at[k][0] + i, lanes.at[k][1] + i, lanes.at[k][2] + i);
        }
    }
}

template <class Index> void readLanes(const float *values, const Index *points, host::CornerLanes<float> &lanes)
{
    if (lanes.corners == 3)
        readFaces<3, 3>(values, points, lanes);
    else if (lanes.known == 3)
        readFaces<4, 3>(values, points, lanes);
    else
        readFaces<4, 4>(values, points, lanes);
}
}  // namespace

namespace host
{
void PackedPositions::read(const int32_t *points, CornerLanes<float> &lanes) const { readLanes(values, points, lanes); }

void PackedPositions::read(const int64_t *points, CornerLanes<float> &lanes) const { readLanes(values, points, lanes); }
}  // namespace host
