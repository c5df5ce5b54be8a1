#pragma once

#include <bit>

#include <host/bas/detail/LaneSpot.h>

namespace host
{
/// What `EarLanes` and `EarRow` agree on, so that they cut a polygon alike: where its corners are put, in which order they
/// are cut, and what is too close to call.
template <class Real> struct EarRank
{
    static constexpr int kMostCorners = 16;

    using Int = std::conditional_t<sizeof(Real) == 4, int32_t, int64_t>;

    // The lowest bits of a rank are the corner's number.
    static constexpr Int kCornerMask = kMostCorners - 1;
    // Above all ears are those that would leave a sliver, which come after the others; then those that wait for a reflex
    // corner to go; then reflex corners.
    static constexpr Int kReflex = Int(1) << (8 * sizeof(Int) - 2), kBlocked = kReflex >> 1, kPutOff = kReflex >> 2;

    // A corner nearer to a cut than this share of the cut's length makes a sliver with it.  A sixteenth leaves the fewest in
    // polygons whose edges zigzag; half and double of it do nearly as well.
    static constexpr Real kNear = 0.0625;

    // Coordinates of at most m err by u m (u is half the distance from 1 to the next number), which changes the double area
    // of a triangle by up to 8 u m^2; computing it adds up to 32 u m^2.
    static constexpr Real kUnclear = Real(40.0) * (sizeof(Real) == 4 ? Real(0x1p-24) : Real(0x1p-53));

    /// The rank of corners, each with twice the area of its ear and the squared lengths of the cut and of both edges: short
    /// cuts and well-shaped triangles first, by squared length times squared sides by area.
    template <int kLanes>
    HOST_LANES static Lanes<Int, kLanes> of(const Lanes<Real, kLanes> &side, const Lanes<Real, kLanes> &cut,
                                            const Lanes<Real, kLanes> &edges, const Lanes<Int, kLanes> &corner)
    {
        // The bits of a positive number are nearly its logarithm, so that their difference orders well enough, and nothing
        // waits for a division.  No side exceeds 16, and with this much added the difference is positive and ends below
        // `kPutOff`.
        using UInt = std::make_unsigned_t<Int>;
        using UInts = Lanes<UInt, kLanes>;
        constexpr UInt kMore = std::bit_cast<UInt>(Real(32.0));
        const UInts key = (kMore + std::bit_cast<UInts>(cut * (cut + edges)) - std::bit_cast<UInts>(side)) >> 3;
        // Reflex corners come at random: no branch may wait for the sign.
        using Ints = Lanes<Int, kLanes>;
        const Ints isReflex = std::bit_cast<Ints>(side) >> (8 * sizeof(Int) - 1);
        return (std::bit_cast<Ints>(key) & ~kCornerMask & ~isReflex) | (isReflex & kReflex) | corner;
    }
};

/// How polygons move to the middle of their boxes and are scaled by a power of two, so that the largest coordinate lies
/// between one and two and rounding it to fewer digits loses least.
template <class Doubles> struct EarPlacement
{
    HOST_LANES EarPlacement(const LaneSpot<Doubles> &low, const LaneSpot<Doubles> &high)
        : middle(0.5 * (low.x + high.x), 0.5 * (low.y + high.y)), reach(greatest(high.x - middle.x, high.y - middle.y))
    {
        using Longs = std::conditional_t<std::is_arithmetic_v<Doubles>, int64_t, Lanes<int64_t, sizeof(Doubles) / 8>>;
        constexpr int64_t kExponent = int64_t(0x7ff) << 52, kTwiceOne = int64_t(0x7fe) << 52;
        scale = std::bit_cast<Doubles>(kTwiceOne - (std::bit_cast<Longs>(reach) & kExponent));
    }

    /// -1 (or true) where no power of two does.
    HOST_LANES auto failed() const { return (!(reach > 0x1p-500)) | (!(reach < 0x1p500)); }

    LaneSpot<Doubles> middle;
    Doubles reach;  // the largest coordinate, before it is scaled
    Doubles scale;
};
}  // namespace host
