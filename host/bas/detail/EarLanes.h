#pragma once

#include <host/bas/detail/EarRank.h>

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
    using Rank = EarRank<Real>;
    static constexpr int kMostCorners = Rank::kMostCorners;

    using Reals = Lanes<Real, kLanes>;
    using Int = typename Rank::Int;
    using Ints = Lanes<Int, kLanes>;
    template <int kSome> using Places = LaneSpot<Lanes<double, kSome>>;

    struct Triangles
    {
        Ints a, b, c;
    };

    /// Take over the corners of `kSome` polygons, which become those from `lane` on.
    template <int kSome> HOST_LANES void place(int lane, const Places<kSome> *corners, int count);

    /// Look at the corners, when all polygons are in their places.
    HOST_LANES void begin(int count);

    /// Nobody looks at what becomes of a lane: it holds up no others.
    void fail(int lane) { failed_[lane] = 1; }

    /// Cut, and write the `count - 2` triangles of each.
    HOST_LANES void cut(Triangles *triangles);

    /// 0 for a polygon that has not failed.
    const Ints &failed() const { return failed_; }
    HOST_LANES bool hasHope() const { return isAny(failed_ == 0); }

private:
    using Spot = LaneSpot<Reals>;

    // What is left of a polygon lies in a row, with two corners from its other end on either side.
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
    static constexpr Int kCornerMask = Rank::kCornerMask, kReflex = Rank::kReflex, kBlocked = Rank::kBlocked,
                         kPutOff = Rank::kPutOff;

    HOST_LANES void closeRow();
    HOST_LANES Ear bestEar() const;
    HOST_LANES Ints flaws(const Ear &ear);
    HOST_LANES void mark(const Ear &ear, const Ints &flags);
    HOST_LANES Triangles cutOff(const Ear &ear);
    HOST_LANES void cutQuad(Triangles *triangles);

    int left_ = 0;   // corners of each polygon
    Reals reach_;    // the largest coordinate
    Reals unclear_;  // sides up to here may have the wrong sign
    Ints failed_;
    Slot slots_[kMostCorners + 2 * kAround];
};

template <class Real, int kLanes>
template <int kSome>
HOST_LANES void EarLanes<Real, kLanes>::place(int lane, const Places<kSome> *corners, int count)
{
    using Doubles = Lanes<double, kSome>;
    LaneSpot<Doubles> low = corners[0], high = corners[0];
    for (int i = 1; i < count; ++i)
    {
        low = {least(low.x, corners[i].x), least(low.y, corners[i].y)};
        high = {greatest(high.x, corners[i].x), greatest(high.y, corners[i].y)};
    }
    const EarPlacement<Doubles> placement(low, high);
    const auto put = [lane](auto &lanes, const auto &some) __attribute__((always_inline))
    {
        static_assert(sizeof(some) * kLanes == sizeof(lanes) * kSome);
        std::memcpy(reinterpret_cast<char *>(&lanes) + size_t(lane) * sizeof(lanes) / kLanes, &some, sizeof(some));
    };
    for (int i = 0; i < count; ++i)
    {
        put(slots_[kAround + i].at.x, convertLanes<Real>((corners[i].x - placement.middle.x) * placement.scale));
        put(slots_[kAround + i].at.y, convertLanes<Real>((corners[i].y - placement.middle.y) * placement.scale));
    }
    put(reach_, convertLanes<Real>(placement.reach * placement.scale));
    put(failed_, convertLanes<Int>(placement.failed()));
}

template <class Real, int kLanes> HOST_LANES void EarLanes<Real, kLanes>::begin(int count)
{
    left_ = count;
    unclear_ = Rank::kUnclear * reach_ * reach_;
    closeRow();
    Spot from = slots_[kAround].at - slots_[kAround - 1].at;
    Reals fromLength = square(from);
    for (int i = 0; i < count; ++i)
    {
        Slot *const slot = slots_ + kAround + i;
        const Spot to = slot[1].at - slot->at;
        const Reals side = cross(from, to), toLength = square(to);
        failed_ |= !(magnitude(side) > unclear_);
        slot->rank =
            Rank::template of<kLanes>(side, square(slot[1].at - slot[-1].at), fromLength + toLength, Ints{} + Int(i));
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
}  // namespace host
