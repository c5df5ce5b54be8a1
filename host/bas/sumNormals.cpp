#include <host/bas/sumNormals.h>

#include <bit>

#include <host/bas/clones.h>
#include <host/bas/detail/LaneVector.h>

namespace
{
using host::CuspCosines;
using host::PaddedVector;

constexpr int64_t kSome = 4;

using Doubles = host::Lanes<double, kSome>;

HOST_LANES Doubles load(const double *values) { return host::lanesAt<kSome>(values); }

// A bit for each, which are rare.
template <class Mask> HOST_LANES uint64_t bitsOf(const Mask &mask)
{
    uint64_t bits = 0;
    if (host::isAny(mask))
        for (int64_t i = 0; i < kSome; ++i)
            bits |= uint64_t(mask[i] != 0) << i;
    return bits;
}

// Those whose lengths are plain numbers, four at a time; a bit for each that is left.
template <class Real>
HOST_CLONES uint64_t findPlain(const double *sums, const double *leastWeights, int64_t count, const CuspCosines &cusp,
                               bool normalize, Real *normals, uint64_t &creased)
{
    uint64_t others = 0;
    int64_t i = 0;
    for (; i + kSome <= count; i += kSome)
    {
        Doubles x = load(sums + 4 * i), y = load(sums + 4 * i + 4), z = load(sums + 4 * i + 8),
                weight = load(sums + 4 * i + 12);
        host::transpose(x, y, z, weight);
        const Doubles squared = x * x + y * y + z * z;
        const auto isPlain = (squared > host::kLeastPlainSquare) & (squared < host::kGreatestPlainSquare);
        const Doubles known = isPlain ? squared : Doubles{} + 1.0;
        const Doubles length = host::squareRoots(known);
        const Doubles inverse = normalize ? 1.0 / length : Doubles{} + 1.0;
        auto a = host::convertLanes<Real>(x * inverse), b = host::convertLanes<Real>(y * inverse),
             c = host::convertLanes<Real>(z * inverse), d = a;
        host::transpose(a, b, c, d);
        for (const auto &[k, normal] : {std::pair{0, a}, {1, b}, {2, c}, {3, d}})
            host::putLanes(normal, normals + 4 * (i + k));
        const Doubles least = leastWeights ? load(leastWeights + i) : Doubles{} + 1.0;
        const auto isSmooth = CuspCosines::kRounding * weight - length < cusp.slack() * least;
        creased |= bitsOf(~isSmooth) << i;
        others |= bitsOf(~isPlain) << i;
    }
    for (; i < count; ++i)
        others |= uint64_t(1) << i;
    return others;
}

template <class Real>
uint64_t find(const BAS_Vec4d *sums, const double *least, int64_t count, const CuspCosines &cusp, bool normalize,
              PaddedVector<Real> *normals)
{
    uint64_t creased = 0;
    for (uint64_t rest = findPlain(&sums->x, least, count, cusp, normalize, &normals->x, creased); rest != 0;
         rest &= rest - 1)
    {
        const int i = std::countr_zero(rest);
        const BAS_Vec3d sum(sums[i].x, sums[i].y, sums[i].z);
        BAS_Vec3d unit = sum;
        const double length = host::normalize(unit);
        const Imath::Vec3<Real> normal(normalize ? unit : sum);
        normals[i] = {normal.x, normal.y, normal.z, Real(0)};
        const bool isSmooth = cusp.isSmooth(length, sums[i].w, least ? least[i] : 1.0);
        creased = (creased & ~(uint64_t(1) << i)) | uint64_t(!isSmooth) << i;
    }
    return creased;
}
}  // namespace

namespace host
{
uint64_t sumNormals(const BAS_Vec4d *sums, const double *least, int64_t count, const CuspCosines &cusp, bool normalize,
                    PaddedVector<float> *normals)
{
    return find(sums, least, count, cusp, normalize, normals);
}

uint64_t sumNormals(const BAS_Vec4d *sums, const double *least, int64_t count, const CuspCosines &cusp, bool normalize,
                    PaddedVector<double> *normals)
{
    return find(sums, least, count, cusp, normalize, normals);
}
}  // namespace host
