#pragma once

#include <algorithm>
#include <iterator>

#include <host/bas/detail/EarCutter.h>
#include <host/bas/detail/EarRank.h>

namespace host
{
/// The corners of one polygon; behind the last comes the first one, again and again.
struct EarCorners
{
    static constexpr int kMost = EarRank<float>::kMostCorners;

    void take(const BAS_Vec2d *points, int count)
    {
        std::fill(std::begin(x), std::end(x), points[0].x);
        std::fill(std::begin(y), std::end(y), points[0].y);
        for (int i = 1; i < count; ++i)
        {
            x[i] = points[i].x;
            y[i] = points[i].y;
        }
    }

    alignas(32) double x[kMost], y[kMost];
};

/// Cuts one polygon as `EarLanes` cuts several, to the bit, but with a lane for each of its corners: all are asked at once
/// which is the best ear and whether they lie in it.
///
/// Failure  answers false where `EarLanes` fails
/// Cost     no memory beyond the object
template <class Real> class EarRow
{
public:
    using Triangle = EarCutter::Triangle;

    /// Look at 3 to `EarCorners::kMost` corners.
    HOST_LANES bool begin(const EarCorners &corners, int count);

    /// The largest coordinate, from the middle of the box.
    double reach() const { return reach_; }

    /// Twice the area as it is scaled, good to a thousandth: no coordinate exceeds two.
    Real area() const { return area_; }

    bool hasReflexCorner() const { return reflex_ != 0; }

    /// Cut, and write `count - 2` triangles.  Once after a `begin` that answered true.
    HOST_LANES bool cut(Triangle *triangles);

private:
    using Rank = EarRank<Real>;
    using Int = typename Rank::Int;
    // Wider registers gain nothing, and in ones wider than the processor's a compiler compares number by number.
    static constexpr int kLanes = 4;
    using Reals = Lanes<Real, kLanes>;
    using Ints = Lanes<Int, kLanes>;
    using Spot = LaneSpot<Real>;
    using Spots = LaneSpot<Reals>;

    // Of the corners that are left; all others have a rank between those of ears and of reflex corners.
    template <int kParts> struct Ranks
    {
        Ints parts[kParts];
    };

    static constexpr int kMostParts = EarCorners::kMost / kLanes;
    static constexpr Int kCornerMask = Rank::kCornerMask, kReflex = Rank::kReflex, kBlocked = Rank::kBlocked,
                         kPutOff = Rank::kPutOff, kGone = kReflex - 1;
    static constexpr Int kUnsure = 1;  // beside `kBlocked` and `kPutOff` as what speaks against an ear

    HOST_LANES Spot at(int corner) const { return {x_[kLanes + corner], y_[kLanes + corner]}; }
    HOST_LANES Spots everywhere(int corner) const { return {x_[kLanes + corner] - Reals{}, y_[kLanes + corner] - Reals{}}; }
    HOST_LANES Spots from(int corner) const
    {
        Spots spots;
        std::memcpy(&spots.x, x_ + kLanes + corner, sizeof(spots.x));
        std::memcpy(&spots.y, y_ + kLanes + corner, sizeof(spots.y));
        return spots;
    }

    HOST_LANES static Ints cornersOf(int part)
    {
        Ints corners = {};
        for (int i = 0; i < kLanes; ++i)
            corners[i] = Int(part * kLanes + i);
        return corners;
    }

    HOST_LANES static Int anyOf(const Ints &flags)
    {
        return foldLanes(flags, [](const auto &a, const auto &b) { return a | b; });
    }

    /// Call `act` with as many parts as the corners take.
    template <class Act> HOST_LANES bool withParts(Act &&act) const
    {
        return count_ <= 2 * kLanes   ? act(std::integral_constant<int, 2>())
               : count_ <= 3 * kLanes ? act(std::integral_constant<int, 3>())
                                      : act(std::integral_constant<int, kMostParts>());
    }

    // Inlined where they are declared, as where they are defined is too late for the clones of their callers.
    template <int kParts> HOST_LANES bool place(const EarCorners &corners);
    template <int kParts> HOST_LANES bool look();
    template <int kParts> HOST_LANES bool cutBy(Triangle *triangles);
    template <int kParts> HOST_LANES static Int lowest(const Ranks<kParts> &ranks);
    template <int kParts> HOST_LANES Int flawsOf(Int ear, const Ranks<kParts> &ranks) const;
    template <int kParts> HOST_LANES bool cutOff(Int &ear, Ranks<kParts> &ranks);
    HOST_LANES bool cutQuad(Int ear, Triangle *triangles) const;

    int count_ = 0;
    double reach_ = 0.0;
    Real area_ = 0;
    Real unclear_ = 0;      // sides up to here may have the wrong sign
    uint32_t reflex_ = 0;   // a bit per corner
    uint32_t waiting_ = 0;  // all bits while ears wait for a reflex corner to go
    Ranks<kMostParts> ranks_;
    alignas(32) int prev_[EarCorners::kMost], next_[EarCorners::kMost];
    // With the last corner before the first, and the first behind the last.
    alignas(32) Real x_[EarCorners::kMost + 2 * kLanes], y_[EarCorners::kMost + 2 * kLanes];
};

template <class Real> HOST_LANES bool EarRow<Real>::begin(const EarCorners &corners, int count)
{
    count_ = count;
    return withParts([&](auto parts) __attribute__((always_inline)) { return place<parts>(corners) && look<parts>(); });
}

template <class Real> template <int kParts> HOST_LANES bool EarRow<Real>::place(const EarCorners &corners)
{
    constexpr int kSome = 4, kHere = kParts * kLanes;
    using Doubles = Lanes<double, kSome>;
    const auto at = [&](int i) __attribute__((always_inline))
    {
        LaneSpot<Doubles> some;
        std::memcpy(&some.x, corners.x + i, sizeof(some.x));
        std::memcpy(&some.y, corners.y + i, sizeof(some.y));
        return some;
    };
    LaneSpot<Doubles> lows = at(0), highs = lows;
    for (int i = kSome; i < kHere; i += kSome)
    {
        lows = {least(lows.x, at(i).x), least(lows.y, at(i).y)};
        highs = {greatest(highs.x, at(i).x), greatest(highs.y, at(i).y)};
    }
    const auto lower = [](const auto &a, const auto &b) { return least(a, b); };
    const auto higher = [](const auto &a, const auto &b) { return greatest(a, b); };
    const EarPlacement<double> placement({foldLanes(lows.x, lower), foldLanes(lows.y, lower)},
                                         {foldLanes(highs.x, higher), foldLanes(highs.y, higher)});
    reach_ = placement.reach;
    const Real furthest = Real(placement.reach * placement.scale);
    unclear_ = Rank::kUnclear * furthest * furthest;
    for (int i = 0; i < kHere; i += kSome)
    {
        const auto x = convertLanes<Real>((at(i).x - placement.middle.x) * placement.scale);
        const auto y = convertLanes<Real>((at(i).y - placement.middle.y) * placement.scale);
        std::memcpy(x_ + kLanes + i, &x, sizeof(x));
        std::memcpy(y_ + kLanes + i, &y, sizeof(y));
    }
    x_[kLanes + kHere] = x_[kLanes];
    y_[kLanes + kHere] = y_[kLanes];
    x_[kLanes - 1] = x_[kLanes + count_ - 1];
    y_[kLanes - 1] = y_[kLanes + count_ - 1];
    return !placement.failed();
}

template <class Real> template <int kParts> HOST_LANES bool EarRow<Real>::look()
{
    Ints unclear = {}, reflex = {};
    Reals areas = {};
    for (int part = 0; part < kParts; ++part)
    {
        const Ints corners = cornersOf(part);
        const Spots here = from(part * kLanes), last = from(part * kLanes - 1), next = from(part * kLanes + 1);
        const Spots in = here - last, out = next - here;
        const Reals side = cross(in, out);
        const auto isHere = corners < Int(count_);
        const Ints rank = Rank::template of<kLanes>(side, square(next - last), square(in) + square(out), corners);
        ranks_.parts[part] = isHere ? rank : Ints{} + kGone;
        unclear |= isHere & ~(magnitude(side) > unclear_);
        reflex |= isHere & (side < Real(0.0)) & (Int(1) << corners);
        areas += cross(here, next);  // behind the last corner there is none
        for (int i = 0; i < kLanes; ++i)
        {
            prev_[part * kLanes + i] = part * kLanes + i - 1;
            next_[part * kLanes + i] = part * kLanes + i + 1;
        }
    }
    prev_[0] = count_ - 1;
    next_[count_ - 1] = 0;
    reflex_ = uint32_t(anyOf(reflex));
    waiting_ = 0;
    area_ = foldLanes(areas, [](const auto &a, const auto &b) { return a + b; });
    return anyOf(unclear) == 0;
}
}  // namespace host
