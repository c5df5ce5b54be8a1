#include <host/bas/detail/SmallPolygon.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace host
{
namespace
{
constexpr uint64_t kNever = std::numeric_limits<uint64_t>::max();
constexpr uint64_t kCornerMask = SmallPolygon::kMostCorners - 1;
}  // namespace

bool SmallPolygon::begin(const BAS_Vec2d *points, int count)
{
    if (count > kMostCorners)
        return false;
    count_ = count;
    double lowX = points[0].x, highX = lowX, lowY = points[0].y, highY = lowY;
    for (int i = 0; i < count; ++i)
    {
        x_[i] = points[i].x;
        y_[i] = points[i].y;
        lowX = std::min(lowX, x_[i]);
        highX = std::max(highX, x_[i]);
        lowY = std::min(lowY, y_[i]);
        highY = std::max(highY, y_[i]);
        prev_[i] = i - 1;
        next_[i] = i + 1;
    }
    prev_[0] = count - 1;
    next_[count - 1] = 0;

    // No difference exceeds the extent, so no side errs by more than 3.4e-16 times twice its square.
    const double extent = std::max(highX - lowX, highY - lowY);
    unclear_ = 1e-15 * extent * extent;
    if (!turnCounterClockwise(extent))
        return false;
    reflex_ = blocked_ = 0;
    bool clear = true;
    for (int i = 0; i < count; ++i)
    {
        side_[i] = side(prev_[i], i, next_[i]);
        clear = clear && std::abs(side_[i]) > unclear_;
        reflex_ |= uint32_t(side_[i] < 0.0) << i;
    }
    return clear;
}

bool SmallPolygon::turnCounterClockwise(double extent)
{
    double area = 0.0;
    for (int i = 1; i + 1 < count_; ++i)
        area += side(0, i, i + 1);
    // At most 14 sums of 14 sides.
    if (!(std::abs(area) > 1e-13 * extent * extent))
        return false;
    if (area < 0.0)
        for (int i = 0; i < count_; ++i)
            x_[i] = -x_[i];
    return true;
}

bool SmallPolygon::cut(std::vector<EarCutter::Triangle> &triangles)
{
    triangles.clear();
    for (int i = 0; i < count_; ++i)
    {
        const double dx = x_[next_[i]] - x_[i], dy = y_[next_[i]] - y_[i];
        edge_[i] = dx * dx + dy * dy;
    }
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
        const Place place = obstaclesIn(from, ear, to);
        if (place == Place::kUnclear)
            return false;
        rank_[ear] = kNever;
        if (place == Place::kInside)
        {
            waiting_[ear] = best;
            blocked_ |= 1u << ear;
            continue;
        }
        triangles.push_back({from, ear, to, false});
        next_[from] = to;
        prev_[to] = from;
        edge_[from] = cut_[ear];
        last = to;
        if (--left > 3)
        {
            const uint32_t before = reflex_;
            if (!lookAgain(from) || !lookAgain(to))
                return false;
            if (before != reflex_)
                releaseBlocked();
        }
    }
    triangles.push_back({prev_[last], last, next_[last], false});
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

/// The same order as in `EarCutter`, down to the bit.
void SmallPolygon::rankEar(int corner, double side)
{
    const int a = prev_[corner], c = next_[corner];
    const double dx = x_[c] - x_[a], dy = y_[c] - y_[a];
    const double cut = dx * dx + dy * dy;
    cut_[corner] = cut;
    const double key = cut * ((cut + edge_[a] + edge_[corner]) / side);
    rank_[corner] = side > 0.0 ? (std::bit_cast<uint64_t>(key) & ~kCornerMask) | uint64_t(corner) : kNever;
}

/// Where the reflex corners are, as seen from the triangle.
SmallPolygon::Place SmallPolygon::obstaclesIn(int a, int b, int c) const
{
    for (uint32_t rest = reflex_ & ~(1u << a | 1u << c); rest != 0; rest &= rest - 1)
    {
        const int p = std::countr_zero(rest);
        const double deepest = std::min({side(c, a, p), side(a, b, p), side(b, c, p)});
        if (deepest > unclear_)
            return Place::kInside;
        if (!(deepest < -unclear_))
            return Place::kUnclear;
    }
    return Place::kOutside;
}

bool SmallPolygon::lookAgain(int corner)
{
    const double turn = side(prev_[corner], corner, next_[corner]);
    if (!(std::abs(turn) > unclear_))
        return false;
    const uint32_t bit = 1u << corner;
    reflex_ = turn < 0.0 ? reflex_ | bit : reflex_ & ~bit;
    blocked_ &= ~bit;
    rankEar(corner, turn);
    return true;
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
