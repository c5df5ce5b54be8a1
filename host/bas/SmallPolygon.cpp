#include <host/bas/SmallPolygon.h>

#include <bit>
#include <limits>

namespace host
{
namespace
{
constexpr uint64_t kNever = std::numeric_limits<uint64_t>::max();
constexpr uint64_t kCornerMask = SmallPolygon::kMostCorners - 1;

// An ear that would leave a sliver comes after all others, and is then cut all the same.
constexpr uint64_t kPutOff = uint64_t(1) << 63;

// A corner nearer to a cut than this share of the cut's length makes a sliver with it.  A sixteenth leaves the fewest in
// polygons whose edges zigzag; half and double of it do nearly as well.
constexpr double kNear = 0.0625;

constexpr double kNowhere = -std::numeric_limits<double>::infinity();

uint64_t isNegative(double side) { return std::bit_cast<uint64_t>(side) >> 63; }

/// The corner's bit where it is reflex.
uint32_t bitOf(int corner, double side) { return uint32_t(isNegative(side)) << corner; }
}  // namespace

bool SmallPolygon::lookAtCorners(double reach)
{
    // Between these no fourth power of a length leaves the range of doubles.
    if (!(reach > 0x1p-200 && reach < 0x1p200))
        return false;
    // No difference of coordinates exceeds twice the reach, and no side errs by more than 3.4e-16 times twice its square.
    unclear_ = 4e-15 * reach * reach;
    x_[count_] = x_[0];
    y_[count_] = y_[0];
    double fromX = x_[0] - x_[count_ - 1], fromY = y_[0] - y_[count_ - 1];
    bool clear = true;
    reflex_ = blocked_ = 0;
    for (int i = 0; i < count_; ++i)
    {
        prev_[i] = i - 1;
        next_[i] = i + 1;
        const double toX = x_[i + 1] - x_[i], toY = y_[i + 1] - y_[i];
        edge_[i] = toX * toX + toY * toY;
        side_[i] = fromX * toY - fromY * toX;
        clear &= std::abs(side_[i]) > unclear_;
        reflex_ |= bitOf(i, side_[i]);
        fromX = toX;
        fromY = toY;
    }
    prev_[0] = count_ - 1;
    next_[count_ - 1] = 0;
    return clear;
}

bool SmallPolygon::cut(Triangle *triangles)
{
    for (int i = 0; i < count_; ++i)
        rank_[i] = rankOf(i, side_[i]);
    rank_[count_] = kNever;

    uint64_t best = lowestRank();
    for (int left = count_; left > 4;)
    {
        if (best == kNever)
            return false;
        const int ear = int(best & kCornerMask);
        const Place place = obstaclesOf(ear);
        if (place == Place::kUnclear)
            return false;
        rank_[ear] = kNever;
        if (place == Place::kInside)
        {
            waiting_[ear] = best;
            blocked_ |= 1u << ear;
            best = lowestRank();
        }
        else if (place == Place::kNear && !(best & kPutOff))
        {
            rank_[ear] = best | kPutOff;
            best = lowestRank();
        }
        else
        {
            *triangles++ = {prev_[ear], ear, next_[ear]};
            --left;
            if (!cutOff(ear, best))
                return false;
        }
    }
    if (count_ > 3)
        return best != kNever && cutQuad(int(best & kCornerMask), triangles);
    *triangles = {0, 1, 2};
    return side_[1] > unclear_;
}

/// Take an ear off and find the best one of those that are left.  False when a corner beside it is too close to call.
bool SmallPolygon::cutOff(int ear, uint64_t &best)
{
    const int from = prev_[ear], to = next_[ear];
    next_[from] = to;
    prev_[to] = from;
    edge_[from] = cut_[ear];
    // The others are compared while the two are worked out.
    rank_[from] = rank_[to] = kNever;
    best = lowestRank();

    const double atFrom = side(prev_[from], from, to), atTo = side(from, to, next_[to]);
    const uint32_t both = 1u << from | 1u << to, before = reflex_;
    reflex_ = (reflex_ & ~both) | bitOf(from, atFrom) | bitOf(to, atTo);
    blocked_ &= ~both;
    rank_[from] = rankOf(from, atFrom);
    rank_[to] = rankOf(to, atTo);
    best = std::min({best, rank_[from], rank_[to]});
    // One question: reflex corners go at random, but seldom does an ear wait for it.
    if ((before != reflex_) & (blocked_ != 0))
        for (; blocked_ != 0; blocked_ &= blocked_ - 1)
        {
            const int released = std::countr_zero(blocked_);
            rank_[released] = waiting_[released];
            best = std::min(best, rank_[released]);
        }
    return (std::abs(atFrom) > unclear_) & (std::abs(atTo) > unclear_);
}

/// The last four corners: a reflex one leaves no choice.
bool SmallPolygon::cutQuad(int ear, Triangle *triangles) const
{
    const int a = reflex_ ? std::countr_zero(reflex_) : prev_[ear];
    const int b = next_[a], c = next_[b], d = prev_[a];
    triangles[0] = {a, b, c};
    triangles[1] = {c, d, a};
    return (side(a, b, c) > unclear_) & (side(c, d, a) > unclear_);
}

uint64_t SmallPolygon::lowestRank() const
{
    uint64_t even = rank_[0], odd = rank_[1];
    for (int i = 2; i < count_; i += 2)
    {
        even = std::min(even, rank_[i]);
        odd = std::min(odd, rank_[i + 1]);
    }
    return std::min(even, odd);
}

/// Short cuts and well-shaped triangles first: squared length times squared sides by area.
uint64_t SmallPolygon::rankOf(int corner, double side)
{
    const int a = prev_[corner], c = next_[corner];
    const double dx = x_[c] - x_[a], dy = y_[c] - y_[a];
    const double cut = dx * dx + dy * dy;
    cut_[corner] = cut;
    const double dividend = cut * (cut + edge_[a] + edge_[corner]);
    // The bits of a positive double are nearly its logarithm, so that their difference orders well enough; no division holds
    // up the next cut, and powers of two change all alike.
    constexpr uint64_t kMiddle = uint64_t(1) << 62;
    const uint64_t key = kMiddle + std::bit_cast<uint64_t>(dividend) - std::bit_cast<uint64_t>(side);
    const uint64_t never = -uint64_t(isNegative(side));
    return (key & ~(kCornerMask | kPutOff)) | uint64_t(corner) | never;
}

/// Where the reflex corners are, as seen from the ear.
SmallPolygon::Place SmallPolygon::obstaclesOf(int ear) const
{
    const int a = prev_[ear], b = ear, c = next_[ear];
    uint32_t rest = reflex_ & ~(1u << a | 1u << c);
    if (rest == 0)
        return Place::kOutside;
    double deepest = kNowhere, nearest = kNowhere;
    const auto look = [&](int p) {
        const double acrossCut = side(c, a, p), within = std::min(side(a, b, p), side(b, c, p));
        deepest = std::max(deepest, std::min(acrossCut, within));
        nearest = std::max(nearest, within > 0.0 ? acrossCut : kNowhere);
    };
    // Two at a time, the same one twice if need be: one or two are the rule, and a wrong guess costs more than a look.
    for (; rest != 0; rest &= rest - 1)
    {
        const int p = std::countr_zero(rest);
        look(p);
        rest &= rest - 1;
        look(rest ? std::countr_zero(rest) : p);
    }
    if (!(deepest < -unclear_))
        return deepest > unclear_ ? Place::kInside : Place::kUnclear;
    return nearest > -kNear * cut_[ear] ? Place::kNear : Place::kOutside;
}

}  // namespace host
