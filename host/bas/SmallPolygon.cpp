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
}  // namespace

bool SmallPolygon::lookAtCorners()
{
    // Between these no fourth power of a length leaves the range of doubles.
    if (!(extent_ > 0x1p-200 && extent_ < 0x1p200))
        return false;
    // No side errs by more than 3.4e-16 times twice the square of the extent.
    unclear_ = 1e-15 * extent_ * extent_;
    double area = 0.0, fromX = x_[0] - x_[count_ - 1], fromY = y_[0] - y_[count_ - 1];
    bool clear = true;
    reflex_ = blocked_ = 0;
    for (int i = 0; i < count_; ++i)
    {
        prev_[i] = i > 0 ? i - 1 : count_ - 1;
        next_[i] = i + 1 < count_ ? i + 1 : 0;
        const double toX = x_[next_[i]] - x_[i], toY = y_[next_[i]] - y_[i];
        edge_[i] = toX * toX + toY * toY;
        side_[i] = fromX * toY - fromY * toX;
        clear &= std::abs(side_[i]) > unclear_;
        reflex_ |= uint32_t(side_[i] < 0.0) << i;
        area += (x_[i] - x_[0]) * toY - (y_[i] - y_[0]) * toX;
        fromX = toX;
        fromY = toY;
    }
    // At most 16 sums of products.
    return clear && area > 1e-13 * extent_ * extent_;
}

bool SmallPolygon::cut(Triangle *triangles)
{
    for (int i = 0; i < count_; ++i)
        rankEar(i, side_[i]);
    rank_[count_] = kNever;

    int last = 0;
    for (int left = count_; left > 3;)
    {
        const uint64_t best = lowestRank();
        if (best == kNever)
            return false;
        const int ear = int(best & kCornerMask), from = prev_[ear], to = next_[ear];
        const Place place = obstaclesOf(ear);
        if (place == Place::kUnclear)
            return false;
        rank_[ear] = kNever;
        if (place == Place::kInside)
        {
            waiting_[ear] = best;
            blocked_ |= 1u << ear;
            continue;
        }
        if (place == Place::kNear && !(best & kPutOff))
        {
            rank_[ear] = best | kPutOff;
            continue;
        }
        *triangles++ = {from, ear, to};
        next_[from] = to;
        prev_[to] = from;
        edge_[from] = cut_[ear];
        last = to;
        if (--left > 3)
        {
            const uint32_t before = reflex_;
            const bool isFromClear = lookAgain(from), isToClear = lookAgain(to);
            if (!(isFromClear && isToClear))
                return false;
            if (before != reflex_)
                releaseBlocked();
        }
    }
    *triangles = {prev_[last], last, next_[last]};
    return side(prev_[last], last, next_[last]) > unclear_;
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
void SmallPolygon::rankEar(int corner, double side)
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
    rank_[corner] = side > 0.0 ? (key & ~(kCornerMask | kPutOff)) | uint64_t(corner) : kNever;
}

/// Where the reflex corners are, as seen from the ear.
SmallPolygon::Place SmallPolygon::obstaclesOf(int ear) const
{
    const int a = prev_[ear], b = ear, c = next_[ear];
    double deepest = kNowhere, nearest = kNowhere;
    for (uint32_t rest = reflex_ & ~(1u << a | 1u << c); rest != 0; rest &= rest - 1)
    {
        const int p = std::countr_zero(rest);
        const double acrossCut = side(c, a, p), within = std::min(side(a, b, p), side(b, c, p));
        deepest = std::max(deepest, std::min(acrossCut, within));
        nearest = std::max(nearest, within > 0.0 ? acrossCut : kNowhere);
    }
    if (!(deepest < -unclear_))
        return deepest > unclear_ ? Place::kInside : Place::kUnclear;
    return nearest > -kNear * cut_[ear] ? Place::kNear : Place::kOutside;
}

bool SmallPolygon::lookAgain(int corner)
{
    const double turn = side(prev_[corner], corner, next_[corner]);
    const uint32_t bit = 1u << corner;
    reflex_ = turn < 0.0 ? reflex_ | bit : reflex_ & ~bit;
    blocked_ &= ~bit;
    rankEar(corner, turn);
    return std::abs(turn) > unclear_;
}

void SmallPolygon::releaseBlocked()
{
    for (; blocked_ != 0; blocked_ &= blocked_ - 1)
    {
        const int ear = std::countr_zero(blocked_);
        rank_[ear] = waiting_[ear];
    }
}
}  // namespace host
