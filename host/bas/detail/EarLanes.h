#pragma once

#include <bit>

#include <host/bas/detail/LaneSpot.h>

namespace host
{
/// Cuts counter-clockwise polygons in general position into triangles, as many of one size at a time as there are lanes.
///
/// Shape    n corners leave as n - 2 triangles, in the polygon's direction; short cuts and well-shaped triangles come first,
///          and no cut passes close to a corner while there is another choice
/// Failure  a polygon fails as soon as anything in it is too close to call or not as in one that does not cross itself (no
///          ear is left, corners on a line or in one place, coordinates that are not finite or of extreme size); what is
///          written for it is void
/// Cost     no memory beyond the object.  All corners that are left are looked at for every cut, without a question that
///          depends on the polygons
///
/// Polygons know nothing of each other: each is cut as it would be alone, to the bit.
template <class Real, int kLanes> class EarLanes
{
public:
    static constexpr int kMostCorners = 16;

    using Reals = Lanes<Real, kLanes>;
    using Int = std::conditional_t<sizeof(Real) == 4, int32_t, int64_t>;
    using Ints = Lanes<Int, kLanes>;
    template <int kSome> using Places = LaneSpot<Lanes<double, kSome>>;

    struct Triangles
    {
        Ints a, b, c;
    };

    /// Take over the corners of `kSome` polygons, which become those from `lane` on.
    template <int kSome> void place(int lane, const Places<kSome> *corners, int count);

    /// Look at the corners, when all polygons are in their places.
    void begin(int count);

    /// Nobody looks at what becomes of a lane: it holds up no others.
    void fail(int lane) { failed_[lane] = 1; }

    /// Cut, and write the `count - 2` triangles of each.
    void cut(Triangles *triangles);

    /// 0 for a polygon that has not failed.
    const Ints &failed() const { return failed_; }
    HOST_LANES bool hasHope() const { return isAny(failed_ == 0); }

    bool hasReflexCorner() const;

private:
    using Spot = LaneSpot<Reals>;

    // What is left of a polygon lies in a row, with two corners from its other end on either side.  The lowest bits of a
    // rank are the corner's number.
    struct Slot
    {
        Spot at;
        Ints rank;
    };

    template <class Mask> HOST_LANES static Spot choose(const Mask &mask, const Spot &a, const Spot &b)
    {
        return {mask ? a.x : b.x, mask ? a.y : b.y};
    }
    template <class Mask> HOST_LANES static Slot choose(const Mask &mask, const Slot &a, const Slot &b)
    {
        return {choose(mask, a.at, b.at), mask ? a.rank : b.rank};
    }

    struct Ear
    {
        Ints rank;
        Slot before, after;
        Spot at;
    };

    static constexpr int kAround = 2;
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

    static Ints rankOf(const Reals &side, const Reals &cut, const Reals &edges, const Ints &corner);
    void closeRow();
    template <class Visit> void visitEar(const Ints &rank, Visit &&visit);
    Ear bestEar();
    Ints flaws(const Ear &ear);
    void mark(const Ear &ear, const Ints &flags);
    Triangles cutOff(const Ear &ear);
    void takeOut(const Ints &rank);
    void cutQuad(Triangles *triangles);

    int left_ = 0;   // corners of each polygon
    Reals reach_;    // the largest coordinate
    Reals unclear_;  // sides up to here may have the wrong sign
    Ints failed_;
    Slot slots_[kMostCorners + 2 * kAround];
};

/// Move a polygon to the middle of its box and scale it by a power of two, so that its largest coordinate lies between one
/// and two and rounding it to `Real` loses least.
template <class Real, int kLanes>
template <int kSome>
HOST_LANES void EarLanes<Real, kLanes>::place(int lane, const Places<kSome> *corners, int count)
{
    using Doubles = Lanes<double, kSome>;
    using Longs = Lanes<int64_t, kSome>;
    LaneSpot<Doubles> low = corners[0], high = corners[0];
    for (int i = 1; i < count; ++i)
    {
        low = {least(low.x, corners[i].x), least(low.y, corners[i].y)};
        high = {greatest(high.x, corners[i].x), greatest(high.y, corners[i].y)};
    }
    const LaneSpot<Doubles> middle = {0.5 * (low.x + high.x), 0.5 * (low.y + high.y)}, half = high - middle;
    const Doubles reach = greatest(half.x, half.y);
    constexpr int64_t kExponent = int64_t(0x7ff) << 52, kTwiceOne = int64_t(0x7fe) << 52;
    const Doubles scale = std::bit_cast<Doubles>(kTwiceOne - (std::bit_cast<Longs>(reach) & kExponent));
    const auto put = [lane](auto &lanes, const auto &some) __attribute__((always_inline))
    {
        static_assert(sizeof(some) * kLanes == sizeof(lanes) * kSome);
        std::memcpy(reinterpret_cast<char *>(&lanes) + size_t(lane) * sizeof(lanes) / kLanes, &some, sizeof(some));
    };
    for (int i = 0; i < count; ++i)
    {
        put(slots_[kAround + i].at.x, convertLanes<Real>((corners[i].x - middle.x) * scale));
        put(slots_[kAround + i].at.y, convertLanes<Real>((corners[i].y - middle.y) * scale));
    }
    put(reach_, convertLanes<Real>(reach * scale));
    put(failed_, convertLanes<Int>((!(reach > 0x1p-500)) | (!(reach < 0x1p500))));
}

template <class Real, int kLanes> HOST_LANES void EarLanes<Real, kLanes>::begin(int count)
{
    left_ = count;
    unclear_ = kUnclear * reach_ * reach_;
    closeRow();
    Spot from = slots_[kAround].at - slots_[kAround - 1].at;
    Reals fromLength = square(from);
    for (int i = 0; i < count; ++i)
    {
        Slot *const slot = slots_ + kAround + i;
        const Spot to = slot[1].at - slot->at;
        const Reals side = cross(from, to), toLength = square(to);
        failed_ |= !(magnitude(side) > unclear_);
        slot->rank = rankOf(side, square(slot[1].at - slot[-1].at), fromLength + toLength, Ints{} + Int(i));
        from = to;
        fromLength = toLength;
    }
    closeRow();
}

/// Repeat the ends of the row on either side.
template <class Real, int kLanes> HOST_LANES void EarLanes<Real, kLanes>::closeRow()
{
    for (int i = 0; i < kAround; ++i)
    {
        slots_[i] = slots_[left_ + i];
        slots_[left_ + kAround + i] = slots_[kAround + i];
    }
}

template <class Real, int kLanes> bool EarLanes<Real, kLanes>::hasReflexCorner() const
{
    Ints greatestRank = {};
    for (int i = 0; i < left_; ++i)
        greatestRank = greatest(greatestRank, slots_[kAround + i].rank);
    return isAny(greatestRank >= kReflex);
}

/// Short cuts and well-shaped triangles first: squared length times squared sides by area.
template <class Real, int kLanes>
HOST_LANES auto EarLanes<Real, kLanes>::rankOf(const Reals &side, const Reals &cut, const Reals &edges, const Ints &corner)
    -> Ints
{
    // The bits of a positive number are nearly its logarithm, so that their difference orders well enough, and nothing waits
    // for a division.  No side exceeds 16, and with this much added the difference is positive and ends below `kPutOff`.
    using UInt = std::make_unsigned_t<Int>;
    using UInts = Lanes<UInt, kLanes>;
    constexpr UInt kMore = std::bit_cast<UInt>(Real(32.0));
    const UInts key = (kMore + std::bit_cast<UInts>(cut * (cut + edges)) - std::bit_cast<UInts>(side)) >> 3;
    const Ints rank = std::bit_cast<Ints>(key) & ~kCornerMask;
    return (side < Real(0.0) ? Ints{} + kReflex : rank) | corner;
}
}  // namespace host
