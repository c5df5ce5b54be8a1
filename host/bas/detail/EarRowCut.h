#pragma once

#include <host/bas/detail/EarRow.h>

// The cutting of EarRow.h, apart from what lies before it.

namespace host
{
template <class Real> HOST_LANES bool EarRow<Real>::cut(Triangle *triangles)
{
    if (count_ == 3)
    {
        *triangles = {0, 1, 2, false};
        return (reflex_ & 2) == 0;
    }
    return withParts([&](auto parts) __attribute__((always_inline)) { return cutBy<parts>(triangles); });
}

template <class Real> template <int kParts> HOST_LANES bool EarRow<Real>::cutBy(Triangle *triangles)
{
    Ranks<kParts> ranks;
    std::copy_n(ranks_.parts, kParts, ranks.parts);
    Int ear = lowest(ranks);
    for (int left = count_; left > 4; --left)
    {
        for (Int flaws = flawsOf(ear, ranks); flaws != 0; flaws = flawsOf(ear, ranks))
        {
            const bool isInside = (flaws & kBlocked) != 0;
            if (ear >= kBlocked || (!isInside && (flaws & kUnsure) != 0))
                return false;
            waiting_ |= isInside ? ~uint32_t(0) : 0;
            for (Ints &some : ranks.parts)
                some |= (some == ear) & (isInside ? kBlocked : kPutOff);
            ear = lowest(ranks);
        }
        const int tip = int(ear & kCornerMask);
        *triangles++ = {prev_[tip], tip, next_[tip], false};
        if (!cutOff(ear, ranks))
            return false;
    }
    return cutQuad(ear, triangles);
}

template <class Real> template <int kParts> HOST_LANES auto EarRow<Real>::lowest(const Ranks<kParts> &ranks) -> Int
{
    Ints low = ranks.parts[0];
    for (int part = 1; part < kParts; ++part)
        low = least(low, ranks.parts[part]);
    return foldLanes(low, [](const auto &a, const auto &b) { return least(a, b); });
}

/// What keeps an ear from being cut now; 0 for a good one.
template <class Real>
template <int kParts>
HOST_LANES auto EarRow<Real>::flawsOf(Int ear, const Ranks<kParts> &ranks) const -> Int
{
    const int b = int(ear & kCornerMask), a = prev_[b], c = next_[b];
    if ((reflex_ & ~(1u << a | 1u << c)) == 0)
        return ear >= kBlocked ? kUnsure : 0;
    const Spots tip = everywhere(b), before = everywhere(a), after = everywhere(c);
    const Spots in = tip - before, out = after - tip, back = before - after;
    const Reals near = -Rank::kNear * square(back);
    Ints flaws = {};
    for (int part = 0; part < kParts; ++part)
    {
        const Ints corners = cornersOf(part);
        const auto isEnd = (corners == Int(a)) | (corners == Int(c));
        const Spots here = from(part * kLanes), fromTip = here - tip;
        const Reals within = least(cross(in, fromTip), cross(out, fromTip));
        const Reals acrossCut = cross(back, here - before);
        const Reals depth = least(within, acrossCut);
        const auto isNear = (within > Real(0.0)) & (acrossCut > near);
        flaws |= (ranks.parts[part] >= kReflex) & ~isEnd &
                 (((depth > unclear_) & kBlocked) | (~(depth < -unclear_) & kUnsure) | (isNear & kPutOff));
    }
    return (anyOf(flaws) & ~(ear & kPutOff)) | (ear >= kBlocked ? kUnsure : 0);
}

/// Take an ear off and put the best one of those that are left in its place.  False when a corner beside it is too close to
/// call.
template <class Real> template <int kParts> HOST_LANES bool EarRow<Real>::cutOff(Int &ear, Ranks<kParts> &ranks)
{
    const int b = int(ear & kCornerMask), a = prev_[b], c = next_[b];
    const Spot atA = at(a), atC = at(c), beforeA = at(prev_[a]), behindC = at(next_[c]);
    next_[a] = c;
    prev_[c] = a;
    // The others are compared while these two are worked out.
    for (int part = 0; part < kParts; ++part)
    {
        const Ints corners = cornersOf(part);
        const auto isOne = (corners == Int(a)) | (corners == Int(b)) | (corners == Int(c));
        ranks.parts[part] = isOne ? Ints{} + kGone : ranks.parts[part];
    }
    ear = lowest(ranks);

    const Spot cut = atC - atA, in = atA - beforeA, out = behindC - atC;
    const Real length = square(cut), sideA = cross(in, cut), sideC = cross(cut, out);
    const Int rankA = Rank::template of<1>(sideA, square(atC - beforeA), square(in) + length, Int(a));
    const Int rankC = Rank::template of<1>(sideC, square(behindC - atA), length + square(out), Int(c));
    ear = least(ear, least(rankA, rankC));
    for (int part = 0; part < kParts; ++part)
    {
        const Ints corners = cornersOf(part);
        Ints &some = ranks.parts[part];
        some = corners == Int(a) ? Ints{} + rankA : corners == Int(c) ? Ints{} + rankC : some;
    }

    const uint32_t before = reflex_;
    reflex_ &= ~(1u << a | 1u << c);
    reflex_ |= uint32_t(rankA >= kReflex) << a | uint32_t(rankC >= kReflex) << c;
    // Ears wait no longer once there is a reflex corner less.  One question: corners change at random, but ears seldom wait.
    if (((reflex_ ^ before) & waiting_) != 0)
    {
        waiting_ = 0;
        for (Ints &some : ranks.parts)
            some = some == kGone ? some : some & ~kBlocked;
        ear = lowest(ranks);
    }
    return magnitude(sideA) > unclear_ && magnitude(sideC) > unclear_;
}

/// The last four corners: a reflex one leaves no choice.
template <class Real> HOST_LANES bool EarRow<Real>::cutQuad(Int ear, Triangle *triangles) const
{
    const int a = reflex_ != 0 ? 31 - std::countl_zero(reflex_) : prev_[ear & kCornerMask];
    const int b = next_[a], c = next_[b], d = next_[c];
    const Spot first = at(a), diagonal = at(c) - first;
    triangles[0] = {a, b, c, false};
    triangles[1] = {c, d, a, false};
    return cross(at(b) - first, diagonal) > unclear_ && cross(diagonal, at(d) - first) > unclear_;
}
}  // namespace host
