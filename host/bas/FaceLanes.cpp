#include <host/bas/FaceLanes.h>

#include <cmath>
#include <cstring>
#include <limits>

#include <host/bas/clones.h>
#include <host/bas/detail/EarLanesCut.h>
#include <host/bas/detail/LaneVector.h>
#include <host/bas/faceGeometry.h>

namespace host
{
namespace
{
// As many doubles as fill a register.
constexpr int kSome = 4;

using Doubles = Lanes<double, kSome>;
using Longs = Lanes<int64_t, kSome>;
using Ears = EarLanes<float, FaceLanes::kCount>;
using Vectors = LaneVector<Doubles>;

/// What `newellVector` sums up, in its order.
HOST_LANES Vectors newellOf(const Vectors *offsets, int corners)
{
    Vectors sum = {};
    for (int i = 2; i < corners; ++i)
    {
        const Vectors product = cross(offsets[i - 1], offsets[i]);
        sum = {sum.x + product.x, sum.y + product.y, sum.z + product.z};
    }
    return sum;
}

/// The axes of `faceFrame`, not-a-number where a vector's square is no plain number.
HOST_LANES void frameOf(const Vectors &newell, Vectors &axisX, Vectors &axisY)
{
    const Doubles squared = dot(newell, newell);
    const auto isPlain = (squared > kLeastPlainSquare) & (squared < kGreatestPlainSquare);
    const Doubles inverse = isPlain ? 1.0 / squareRoots(squared) : Doubles{} + std::numeric_limits<double>::quiet_NaN();
    const Vectors normal = {newell.x * inverse, newell.y * inverse, newell.z * inverse};
    const Longs signBit = std::bit_cast<Longs>(normal.z) & std::numeric_limits<int64_t>::min();
    const Doubles sign = std::bit_cast<Doubles>(signBit | std::bit_cast<int64_t>(1.0));
    const Doubles a = -1.0 / (sign + normal.z);
    const Doubles b = normal.x * normal.y * a;
    axisX = {1.0 + sign * normal.x * normal.x * a, sign * b, -sign * normal.x};
    axisY = {b, sign + normal.y * normal.y * a, -normal.y};
}

/// See some faces, from `face` on, along their Newell vectors.
HOST_LANES void placeSome(const double (*corners)[3][FaceLanes::kCount], int count, int face, Ears &ears)
{
    Vectors offsets[FaceLanes::kMostCorners], axisX, axisY;
    const auto at = [&](int i) __attribute__((always_inline))
    {
        const auto &axes = corners[i];
        return Vectors{lanesAt<kSome>(axes[0] + face), lanesAt<kSome>(axes[1] + face), lanesAt<kSome>(axes[2] + face)};
    };
    // Relative to the first corner: a face far from the origin keeps all its digits.
    const Vectors origin = at(0);
    for (int i = 0; i < count; ++i)
        offsets[i] = at(i) - origin;
    frameOf(newellOf(offsets, count), axisX, axisY);
    Ears::Places<kSome> places[FaceLanes::kMostCorners];
    for (int i = 0; i < count; ++i)
        places[i] = {dot(offsets[i], axisX), dot(offsets[i], axisY)};
    ears.place<kSome>(face, places, count);
}

HOST_CLONES uint32_t cutFaces(const double (*corners)[3][FaceLanes::kCount], int count, int faces,
                              int32_t (*triangles)[3][FaceLanes::kCount])
{
    if (count < 3 || count > FaceLanes::kMostCorners)
        return 0;
    Ears ears;
    for (int face = 0; face < FaceLanes::kCount; face += kSome)
        placeSome(corners, count, face, ears);
    ears.begin(count);
    for (int face = faces; face < FaceLanes::kCount; ++face)
        ears.fail(face);
    if (!ears.hasHope())
        return 0;
    Ears::Triangles cuts[FaceLanes::kMostCorners - 2];
    ears.cut(cuts);
    std::memcpy(triangles, cuts, size_t(count - 2) * sizeof(*cuts));
    uint32_t done = 0;
    for (int face = 0; face < faces; ++face)
        done |= uint32_t(ears.failed()[face] == 0) << face;
    return done;
}
}  // namespace

uint32_t FaceLanes::cut(int corners, int faces) { return cutFaces(corners_, corners, faces, triangles_); }
}  // namespace host
