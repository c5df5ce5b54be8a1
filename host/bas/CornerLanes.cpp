#include <host/bas/CornerLanes.h>

#include <algorithm>

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

template <int kCorners, class Index>
void readFaces(const float *values, const Index *points, host::CornerLanes<float> &lanes)
{
    const auto readAt = [&](int64_t first, const Index *a, const Index *b, const Index *c, const Index *d) {
        for (int k = 0; k < kCorners; ++k)
            readFour(values + 3 * int64_t(a[k]), values + 3 * int64_t(b[k]), values + 3 * int64_t(c[k]),
                     values + 3 * int64_t(d[k]), lanes.at[k][0] + first, lanes.at[k][1] + first, lanes.at[k][2] + first);
    };
    int64_t i = 0;
    for (; i + 4 <= lanes.faces; i += 4)
    {
        const Index *const face = points + i * kCorners;
        if (host::areInRow<kCorners, 4>(face))
            for (int k = 0; k < kCorners; ++k)
                readRow(values + 3 * int64_t(face[k]), lanes.at[k][0] + i, lanes.at[k][1] + i, lanes.at[k][2] + i);
        else
            readAt(i, face, face + kCorners, face + 2 * kCorners, face + 3 * kCorners);
    }
    // The last face fills what is left of its four lanes.
    const auto faceAt = [&](int64_t face) { return points + std::min(face, lanes.faces - 1) * kCorners; };
    if (i < lanes.faces)
        readAt(i, faceAt(i), faceAt(i + 1), faceAt(i + 2), faceAt(i + 3));
}

template <class Index> void readLanes(const float *values, const Index *points, host::CornerLanes<float> &lanes)
{
    if (lanes.corners == 4)
        readFaces<4>(values, points, lanes);
    else
        readFaces<3>(values, points, lanes);
}
}  // namespace

namespace host
{
void PackedPositions::read(const int32_t *points, CornerLanes<float> &lanes) const { readLanes(values, points, lanes); }
void PackedPositions::read(const int64_t *points, CornerLanes<float> &lanes) const { readLanes(values, points, lanes); }
}  // namespace host
