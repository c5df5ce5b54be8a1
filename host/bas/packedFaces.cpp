#include <host/bas/packedFaces.h>

#include <algorithm>
#include <limits>

#include <host/bas/faceGeometry.h>

#if defined(__x86_64__)
#include <immintrin.h>

#define HOST_WIDE __attribute__((target("avx2")))

namespace
{
bool isWide()
{
    static const bool kIsWide = __builtin_cpu_supports("avx2");
    return kIsWide;
}

// Three axes of four vectors.
struct Axes
{
    __m256d x, y, z;
};

// What follows the last point may not be read; after any other one a number is, and nobody looks at it.
enum class Points
{
    all,
    allButLast
};

template <Points kPoints> HOST_WIDE inline __m256d pointAt(host::PackedPositions positions, int64_t point)
{
    const float *at = positions.values + 3 * point;
    if constexpr (kPoints == Points::allButLast)
        return _mm256_cvtps_pd(_mm_loadu_ps(at));
    const __m128 xy = _mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i *>(at)));
    return _mm256_cvtps_pd(_mm_movelh_ps(xy, _mm_load_ss(at + 2)));
}

template <class Index> HOST_WIDE bool isBelow(const Index *points, int64_t count, int64_t last)
{
    Index greatest = 0;
    for (int64_t i = 0; i < count; ++i)
        greatest = std::max(greatest, points[i]);
    return greatest < last;
}

HOST_WIDE inline __m256d cross(__m256d a, __m256d b)
{
    constexpr int kNextAxis = _MM_SHUFFLE(3, 0, 2, 1);
    const __m256d turned = _mm256_sub_pd(_mm256_mul_pd(a, _mm256_permute4x64_pd(b, kNextAxis)),
                                         _mm256_mul_pd(_mm256_permute4x64_pd(a, kNextAxis), b));
    return _mm256_permute4x64_pd(turned, kNextAxis);
}

HOST_WIDE inline Axes transposed(const __m256d (&vectors)[4])
{
    const __m256d xz01 = _mm256_unpacklo_pd(vectors[0], vectors[1]), xz23 = _mm256_unpacklo_pd(vectors[2], vectors[3]);
    const __m256d y01 = _mm256_unpackhi_pd(vectors[0], vectors[1]), y23 = _mm256_unpackhi_pd(vectors[2], vectors[3]);
    return {_mm256_permute2f128_pd(xz01, xz23, 0x20), _mm256_permute2f128_pd(y01, y23, 0x20),
            _mm256_permute2f128_pd(xz01, xz23, 0x31)};
}

// Two edges of a face, by the places of their ends among its corners.
struct Edges
{
    int from, to, otherFrom, otherTo;
};

constexpr Edges kDiagonals = {0, 2, 1, 3};
constexpr Edges kFirstEdges = {0, 1, 0, 2};

// The cross products of these edges of four faces.
template <Edges kEdges, Points kPoints, class Index>
HOST_WIDE inline Axes crossFour(const host::PackedFaces<Index> &faces, int64_t first)
{
    __m256d products[4];
    for (int64_t i = 0; i < 4; ++i)
    {
        const Index *points = faces.points + (first + i) * faces.corners;
        const auto at = [&](int corner) HOST_WIDE { return pointAt<kPoints>(faces.positions, points[corner]); };
        const __m256d edge = _mm256_sub_pd(at(kEdges.to), at(kEdges.from));
        const __m256d other = _mm256_sub_pd(at(kEdges.otherTo), at(kEdges.otherFrom));
        products[i] = cross(edge, other);
    }
    return transposed(products);
}

HOST_WIDE inline __m256d dot(const Axes &a, const Axes &b)
{
    return _mm256_add_pd(_mm256_add_pd(_mm256_mul_pd(a.x, b.x), _mm256_mul_pd(a.y, b.y)), _mm256_mul_pd(a.z, b.z));
}

// Takes the Newell vectors in place of those that are not to be trusted.
template <Points kPoints, class Index>
HOST_WIDE inline void mend(const host::PackedFaces<Index> &faces, int64_t first, Axes &turns)
{
    const __m256d squared = dot(turns, turns);
    const __m256d isTrusted =
        _mm256_and_pd(_mm256_cmp_pd(squared, _mm256_set1_pd(host::kLeastTrustedSquare), _CMP_GT_OQ),
                      _mm256_cmp_pd(squared, _mm256_set1_pd(std::numeric_limits<double>::max()), _CMP_LE_OQ));
    if (_mm256_movemask_pd(isTrusted) == 0xf)
        return;
    const Axes whole = crossFour<kDiagonals, kPoints>(faces, first);
    turns = {_mm256_blendv_pd(whole.x, turns.x, isTrusted), _mm256_blendv_pd(whole.y, turns.y, isTrusted),
             _mm256_blendv_pd(whole.z, turns.z, isTrusted)};
}

// Divides by the lengths, and writes them, while the next faces are read: alone these take as long as the reading.
HOST_WIDE inline void normalizeFour(Axes vectors, int64_t first, host::VectorLanes &normals, double *lengths)
{
    const __m256d squared = dot(vectors, vectors);
    const __m256d isPlain = _mm256_and_pd(_mm256_cmp_pd(squared, _mm256_set1_pd(host::kLeastPlainSquare), _CMP_GT_OQ),
                                          _mm256_cmp_pd(squared, _mm256_set1_pd(host::kGreatestPlainSquare), _CMP_LT_OQ));
    const bool arePlain = _mm256_movemask_pd(isPlain) == 0xf;
    if (arePlain)
    {
        const __m256d length = _mm256_sqrt_pd(squared);
        vectors = {_mm256_div_pd(vectors.x, length), _mm256_div_pd(vectors.y, length), _mm256_div_pd(vectors.z, length)};
        _mm256_storeu_pd(lengths + first, length);
    }
    _mm256_storeu_pd(normals.x + first, vectors.x);
    _mm256_storeu_pd(normals.y + first, vectors.y);
    _mm256_storeu_pd(normals.z + first, vectors.z);
    for (int64_t i = first; !arePlain && i < first + 4; ++i)
    {
        BAS_Vec3d vector = normals[i];
        lengths[i] = host::normalize(vector);
        normals.set(i, vector);
    }
}

template <Edges kEdges, bool mends, Points kPoints, class Index>
HOST_WIDE void crossAll(const host::PackedFaces<Index> faces, host::VectorLanes &normals, double *lengths)
{
    for (int64_t next = 0; next < faces.faces; next += 4)
    {
        // The last four may have been there before in part.
        const int64_t first = std::min(next, faces.faces - 4);
        Axes vectors = crossFour<kEdges, kPoints>(faces, first);
        if constexpr (mends)
            mend<kPoints>(faces, first, vectors);
        normalizeFour(vectors, first, normals, lengths);
    }
}

// The corners of one face are the lanes: from each to the next one, and from each to the one before.
template <int kCorners> constexpr int kNext = kCorners == 4 ? _MM_SHUFFLE(0, 3, 2, 1) : _MM_SHUFFLE(3, 0, 2, 1);
template <int kCorners> constexpr int kBefore = kCorners == 4 ? _MM_SHUFFLE(2, 1, 0, 3) : _MM_SHUFFLE(3, 1, 0, 2);

template <int kCorners> HOST_WIDE inline __m256d edgesFrom(__m256d corners)
{
    return _mm256_sub_pd(_mm256_permute4x64_pd(corners, kNext<kCorners>), corners);
}

template <int kCorners, Points kPoints, class Index>
HOST_WIDE void turnCorners(const host::PackedFaces<Index> faces, host::TurnLanes &turns)
{
    double *const acrossTo = turns.across.data(), *const alongTo = turns.along.data();
    for (int64_t face = 0; face < faces.faces; ++face)
    {
        const Index *points = faces.points + face * kCorners;
        __m256d corners[4];
        for (int i = 0; i < 4; ++i)
            corners[i] = pointAt<kPoints>(faces.positions, points[i < kCorners ? i : 0]);
        const Axes at = transposed(corners);
        const Axes next = {edgesFrom<kCorners>(at.x), edgesFrom<kCorners>(at.y), edgesFrom<kCorners>(at.z)};
        const Axes before = {_mm256_permute4x64_pd(next.x, kBefore<kCorners>),
                             _mm256_permute4x64_pd(next.y, kBefore<kCorners>),
                             _mm256_permute4x64_pd(next.z, kBefore<kCorners>)};
        const Axes across = {_mm256_sub_pd(_mm256_mul_pd(before.y, next.z), _mm256_mul_pd(before.z, next.y)),
                             _mm256_sub_pd(_mm256_mul_pd(before.z, next.x), _mm256_mul_pd(before.x, next.z)),
                             _mm256_sub_pd(_mm256_mul_pd(before.x, next.y), _mm256_mul_pd(before.y, next.x))};
        // A triangle's fourth lane is overwritten by the next face, or lies in the spare room.
        _mm256_storeu_pd(acrossTo + face * kCorners, dot(across, across));
        _mm256_storeu_pd(alongTo + face * kCorners, _mm256_xor_pd(dot(before, next), _mm256_set1_pd(-0.0)));
    }
}
}  // namespace

namespace host
{
template <class Index> bool PackedFaces<Index>::normals(VectorLanes &normals, double *lengths) const
{
    return visit([&]<int kCorners, Points kPoints>() {
        crossAll<kCorners == 4 ? kDiagonals : kFirstEdges, false, kPoints>(*this, normals, lengths);
    });
}

template <class Index> bool PackedFaces<Index>::fastNormals(VectorLanes &normals, double *lengths) const
{
    return visit(
        [&]<int kCorners, Points kPoints>() { crossAll<kFirstEdges, kCorners == 4, kPoints>(*this, normals, lengths); });
}

template <class Index> bool PackedFaces<Index>::turns(TurnLanes &turns) const
{
    return visit([&]<int kCorners, Points kPoints>() { turnCorners<kCorners, kPoints>(*this, turns); });
}

template <class Index> template <class Visit> bool PackedFaces<Index>::visit(Visit &&visit) const
{
    if (!isWide() || faces < 4 || corners < 3 || corners > 4)
        return false;
    const bool isInside = isBelow(points, faces * corners, positions.count - 1);
    if (corners == 4)
        isInside ? visit.template operator()<4, Points::allButLast>() : visit.template operator()<4, Points::all>();
    else
        isInside ? visit.template operator()<3, Points::allButLast>() : visit.template operator()<3, Points::all>();
    return true;
}
}  // namespace host

#else

namespace host
{
template <class Index> bool PackedFaces<Index>::normals(VectorLanes &, double *) const { return false; }
template <class Index> bool PackedFaces<Index>::fastNormals(VectorLanes &, double *) const { return false; }
template <class Index> bool PackedFaces<Index>::turns(TurnLanes &) const { return false; }
}  // namespace host

#endif

template struct host::PackedFaces<int32_t>;
template struct host::PackedFaces<int64_t>;
