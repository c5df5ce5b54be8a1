#pragma once

#include <limits>

#include <host/bas/detail/EarLanes.h>

// The cutting of EarLanes.h, apart from what lies before it.

namespace host
{
template <class Real, int kLanes> HOST_LANES void EarLanes<Real, kLanes>::cut(Triangles *triangles)
{
    if (left_ == 3)
    {
        const Slot *const slot = slots_ + kAround;
        failed_ |= slot[1].rank >= kReflex;
        *triangles = {slot[0].rank & kCornerMask, slot[1].rank & kCornerMask, slot[2].rank & kCornerMask};
        return;
    }
    while (left_ > 4)
    {
        Ear ear = bestEar();
        // Whoever has found its ear finds the same again.
        for (Ints found = flaws(ear); isAny(found); found = flaws(ear))
        {
            mark(ear, found);
            ear = bestEar();
        }
        *triangles++ = cutOff(ear);
    }
    cutQuad(triangles);
}

template <class Real, int kLanes> HOST_LANES auto EarLanes<Real, kLanes>::bestEar() const -> Ear
{
    const Slot *const first = slots_ + kAround, *const end = first + left_;
    Ear ear = {};
    ear.rank = first->rank;
    for (const Slot *slot = first + 1; slot != end; ++slot)
        ear.rank = least(ear.rank, slot->rank);
    for (const Slot *slot = first; slot != end; ++slot)
    {
        const auto isHere = slot->rank == ear.rank;
        ear.before = choose(isHere, slot[-1], ear.before);
        ear.at = choose(isHere, slot->at, ear.at);
        ear.after = choose(isHere, slot[1], ear.after);
    }
    return ear;
}

/// What keeps each ear from being cut now, as a flag for its rank; 0 for a good one.
template <class Real, int kLanes> HOST_LANES auto EarLanes<Real, kLanes>::flaws(const Ear &ear) -> Ints
{
    const Reals nowhere = Reals{} - std::numeric_limits<Real>::infinity();
    const Spot in = ear.at - ear.before.at, out = ear.after.at - ear.at, back = ear.before.at - ear.after.at;
    Reals deepest = nowhere, nearest = nowhere;  // reflex corners, from the border inwards and from the cut
    for (int i = 0; i < left_; ++i)
    {
        const Slot &slot = slots_[kAround + i];
        const auto isOther = (slot.rank >= kReflex) & (slot.rank != ear.before.rank) & (slot.rank != ear.after.rank);
        const Spot fromTip = slot.at - ear.at;
        const Reals within = least(cross(in, fromTip), cross(out, fromTip));
        const Reals acrossCut = cross(back, slot.at - ear.before.at);
        deepest = greatest(deepest, isOther ? least(within, acrossCut) : nowhere);
        nearest = greatest(nearest, isOther & (within > Real(0.0)) ? acrossCut : nowhere);
    }
    const auto isInside = deepest > unclear_;
    failed_ |= (ear.rank >= kBlocked) | ((!isInside) & (!(deepest < -unclear_)));
    const auto isNear = (nearest > -Rank::kNear * square(back)) & ((ear.rank & kPutOff) == 0);
    const Ints flags = isInside ? Ints{} + kBlocked : isNear ? Ints{} + kPutOff : Ints{};
    return failed_ != 0 ? Ints{} : flags;
}

template <class Real, int kLanes> HOST_LANES void EarLanes<Real, kLanes>::mark(const Ear &ear, const Ints &flags)
{
    for (int i = 0; i < left_; ++i)
    {
        Ints &rank = slots_[kAround + i].rank;
        rank |= rank == ear.rank ? flags : Ints{};
    }
    closeRow();
}

template <class Real, int kLanes> HOST_LANES auto EarLanes<Real, kLanes>::cutOff(const Ear &ear) -> Triangles
{
    const Ints a = ear.before.rank & kCornerMask, c = ear.after.rank & kCornerMask;
    Spot beforeA = {}, behindC = {};
    for (Slot *slot = slots_ + kAround, *const end = slot + left_; slot != end; ++slot)
    {
        const auto isHere = slot->rank == ear.rank;
        beforeA = choose(isHere, slot[-2].at, beforeA);
        behindC = choose(isHere, slot[2].at, behindC);
    }
    const Spot cut = ear.after.at - ear.before.at, in = ear.before.at - beforeA, out = behindC - ear.after.at;
    const Reals length = square(cut), sideA = cross(in, cut), sideC = cross(cut, out);
    failed_ |= (!(magnitude(sideA) > unclear_)) | (!(magnitude(sideC) > unclear_));
    const Ints rankA = Rank::template of<kLanes>(sideA, square(ear.after.at - beforeA), square(in) + length, a);
    const Ints rankC = Rank::template of<kLanes>(sideC, square(behindC - ear.before.at), length + square(out), c);
    // Ears wait no longer once there is a reflex corner less.
    const Ints released = (((rankA ^ ear.before.rank) | (rankC ^ ear.after.rank)) & kReflex) >> 1;

    const auto renewed = [&](const Slot &slot) __attribute__((always_inline))
    {
        const Ints rank = slot.rank == ear.before.rank ? rankA : slot.rank == ear.after.rank ? rankC : slot.rank & ~released;
        return Slot{slot.at, rank};
    };
    Slot *slot = slots_ + kAround;
    Slot here = renewed(*slot);
    auto isBehind = slot->rank == ear.rank;
    for (Slot *const end = slot + left_ - 1; slot != end; ++slot)
    {
        const Slot next = renewed(slot[1]);
        isBehind |= slot->rank == ear.rank;
        *slot = choose(isBehind, next, here);
        here = next;
    }
    --left_;
    closeRow();
    return {a, ear.rank & kCornerMask, c};
}

/// The last four corners: a reflex one leaves no choice.
template <class Real, int kLanes> HOST_LANES void EarLanes<Real, kLanes>::cutQuad(Triangles *triangles)
{
    const Slot *const first = slots_ + kAround;
    Ints lowest = first->rank, highest = first->rank;
    for (int i = 1; i < 4; ++i)
    {
        lowest = least(lowest, first[i].rank);
        highest = greatest(highest, first[i].rank);
    }
    const auto hasReflex = highest >= kReflex;
    Slot a = {}, b = {}, c = {}, d = {};
    for (int i = 0; i < 4; ++i)
    {
        const auto isHere = hasReflex ? first[i - 1].rank == highest : first[i].rank == lowest;
        a = choose(isHere, first[i - 1], a);
        b = choose(isHere, first[i], b);
        c = choose(isHere, first[i + 1], c);
        d = choose(isHere, first[(i + 2) % 4], d);
    }
    const Spot diagonal = c.at - a.at;
    failed_ |= (!(cross(b.at - a.at, diagonal) > unclear_)) | (!(cross(diagonal, d.at - a.at) > unclear_));
    triangles[0] = {a.rank & kCornerMask, b.rank & kCornerMask, c.rank & kCornerMask};
    triangles[1] = {c.rank & kCornerMask, d.rank & kCornerMask, a.rank & kCornerMask};
}
}  // namespace host
