#include <host/bas/detail/EarCutter.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <limits>

namespace host
{
namespace
{
// The order in which corners are cut: first by tier, then by key, then by number.
enum Tier : uint64_t
{
    kTierFold,      // spikes and repeated points have no area; without them the tests of ears need not know of them
    kTierEar,       // not yet tested, or tested again because something changed
    kTierTouched,   // a good ear, but a corner lies on its diagonal, so a triangle without area will follow
    kTierStraight,  // no area, always safe
    kTierBlocked,   // from here on only polygons that cross themselves arrive
    kTierReflex,
};

constexpr int kTierShift = 61;
constexpr uint64_t kKeyMask = (uint64_t(1) << kTierShift) - 1;
// A fold that is not looked into is taken for a spike, which is never wrong but may spend triangles without area.  The limit
// holds the time that polygons of nothing but folds can take to a fraction of a second.
constexpr int64_t kMostWindingWork = 50'000'000;

// Polygons that do not cross themselves take one to sixty tests a corner.  Others, with thousands of corners in few places,
// could take as many as they have corners: beyond the limit all ears count as blocked.
constexpr int64_t kMostTestsPerCorner = 256;

constexpr uint64_t kGone = std::numeric_limits<uint64_t>::max();

/// Positive doubles order like their bits; the lowest four make room for the tier.
uint64_t rankOf(Tier tier, double key) { return uint64_t(tier) << kTierShift | std::bit_cast<uint64_t>(key) >> 4; }

Tier tierOf(uint64_t rank) { return Tier(rank >> kTierShift); }

/// True for a point on the line through a and b that lies between them.
bool isBetween(const BAS_Vec2d &a, const BAS_Vec2d &p, const BAS_Vec2d &b)
{
    if (a.x != b.x)
        return a.x < b.x ? a.x < p.x && p.x < b.x : b.x < p.x && p.x < a.x;
    return a.y < b.y ? a.y < p.y && p.y < b.y : b.y < p.y && p.y < a.y;
}

EarCutter::Kind kindOfSide(double side, const BAS_Vec2d &a, const BAS_Vec2d &b, const BAS_Vec2d &c)
{
    if (side != 0.0)
        return side > 0.0 ? EarCutter::kConvex : EarCutter::kReflex;
    return isBetween(a, b, c) ? EarCutter::kStraight : EarCutter::kFold;
}
}  // namespace

void EarCutter::begin(const BAS_Vec2d *points, int count)
{
    points_ = points;
    count_ = count;
    std::fill(std::begin(kinds_), std::end(kinds_), 0);
    if (corners_.size() < size_t(count))
    {
        corners_.resize(count);
        ranks_.resize(count);
    }
    for (int i = 0; i < count; ++i)
        corners_[i] = {i > 0 ? i - 1 : count - 1, i + 1 < count ? i + 1 : 0, -1, {-1, -1}, kConvex};
    for (int i = 0; i < count; ++i)
    {
        look(i, false);
        ++kinds_[corners_[i].kind];
    }
    testsLeft_ = kMostTestsPerCorner * count;
    windingWork_ = kinds_[kConvex] > 0 ? kMostWindingWork : 0;
    if (kinds_[kFold] > 0)
        findSlits();
}

void EarCutter::findSlits()
{
    for (int i = 0; i < count_; ++i)
        if (corners_[i].kind == kFold)
        {
            look(i, true);
            --kinds_[kFold];
            ++kinds_[corners_[i].kind];
        }
}

EarCutter::Kind EarCutter::kindOf(const BAS_Vec2d &a, const BAS_Vec2d &b, const BAS_Vec2d &c)
{
    return kindOfSide(orientation(a, b, c), a, b, c);
}

/// Find the corner's kind and its place in the order of cuts.
void EarCutter::look(int corner, bool mayBeSlit)
{
    const BAS_Vec2d &a = points_[corners_[corner].prev], &b = points_[corner], &c = points_[corners_[corner].next];
    const double side = orientation(a, b, c);
    Kind kind = kindOfSide(side, a, b, c);
    if (kind == kFold && mayBeSlit && a != b && b != c && isInsideLeftOf(corner, corners_[corner].next, false))
        kind = kSlit;
    corners_[corner].kind = kind;
    if (kind == kConvex)
    {
        // Short cuts first, and among those the ones with well-shaped triangles: squared length times squared sides by area.
        const double cut = (c - a).length2();
        const double key = cut * ((cut + (b - a).length2() + (c - b).length2()) / side);
        ranks_[corner] = rankOf(kTierEar, std::min(key, std::numeric_limits<double>::max()));
    }
    else if (kind == kReflex)
        ranks_[corner] = rankOf(kTierReflex, -side);
    else
        ranks_[corner] = rankOf(kind == kFold ? kTierFold : kTierStraight, (c - a).length2());
}

/// True when the inside lies on the left of the edge, where it begins.
///
/// Counts how often the outline winds around a point just beside the edge, a little (but less) before its beginning: a ray
/// along the edge meets what crosses the edge's line beyond the beginning.  Exact, whatever else lies there.
bool EarCutter::isInsideLeftOf(int from, int to, bool ifTooMuchWork)
{
    const BAS_Vec2d &p = points_[from], &q = points_[to];
    int winding = 0;
    int corner = from;
    bool wasLeft = false;
    do
    {
        if (--windingWork_ < 0)
            return ifTooMuchWork;
        const int next = corners_[corner].next;
        const bool isLeft = orientation(p, q, points_[next]) > 0.0;
        if (isLeft != wasLeft)
        {
            const double side = orientation(points_[corner], points_[next], p);
            winding += isLeft && side > 0.0 ? 1 : !isLeft && side < 0.0 ? -1 : 0;
        }
        wasLeft = isLeft;
        corner = next;
    } while (corner != from);
    return winding > 0;
}

const std::vector<EarCutter::Triangle> &EarCutter::cut()
{
    triangles_.clear();
    waiting_.clear();
    queue_.clear();
    obstacleList_.clear();
    obstacles_ = 0;
    if (large())
    {
        tree_.build(points_, count_);
        for (int i = 0; i < count_; ++i)
            queue_.emplace_back(ranks_[i], i);
        std::make_heap(queue_.begin(), queue_.end(), std::greater<>());
    }
    else if (placeInList_.size() < size_t(count_))
        placeInList_.resize(count_);
    for (int i = 0; i < count_; ++i)
        if (corners_[i].kind != kConvex)
            addObstacle(i);

    int last = 0;
    for (int left = count_; left > 3; --left)
    {
        int ear = best();
        while (!isReady(ear))
            ear = best();
        last = corners_[ear].next;
        cutOff(ear, tierOf(ranks_[ear]) >= kTierBlocked);
    }
    if (count_ >= 3)
        triangles_.push_back({corners_[last].prev, last, corners_[last].next, tierOf(ranks_[last]) >= kTierBlocked});
    return triangles_;
}

/// The corner with the lowest rank.
int EarCutter::best()
{
    if (!large())
        return int(std::min_element(ranks_.begin(), ranks_.begin() + count_) - ranks_.begin());
    while (true)
    {
        const auto [rank, corner] = queue_.front();
        std::pop_heap(queue_.begin(), queue_.end(), std::greater<>());
        queue_.pop_back();
        if (rank == ranks_[corner])
            return corner;
    }
}

void EarCutter::setRank(int corner, uint64_t rank)
{
    ranks_[corner] = rank;
    if (large())
    {
        queue_.emplace_back(rank, corner);
        std::push_heap(queue_.begin(), queue_.end(), std::greater<>());
    }
}

/// True when the corner may be cut now.  A blocked ear goes back into the order, to wait for its blocker.
bool EarCutter::isReady(int ear)
{
    const Tier tier = tierOf(ranks_[ear]);
    if (obstacles_ == 0 || (tier != kTierEar && tier != kTierTouched))
        return true;
    const Verdict verdict = test(ear, tier == kTierEar);
    if (verdict.blocker < 0 || (!verdict.inside && tier == kTierTouched))
        return true;
    int &list = corners_[verdict.blocker].waiting[verdict.byEdges];
    waiting_.push_back({ear, list});
    list = int(waiting_.size()) - 1;
    corners_[ear].blocker = verdict.blocker;
    setRank(ear, (ranks_[ear] & kKeyMask) | uint64_t(verdict.inside ? kTierBlocked : kTierTouched) << kTierShift);
    return false;
}

/// Look for what makes an ear bad: something in it, or (enough for `strict`) a corner on its cut.
EarCutter::Verdict EarCutter::test(int ear, bool strict)
{
    Verdict verdict;
    if (large())
    {
        const Corner &corner = corners_[ear];
        tree_.visitNear(points_[corner.prev], points_[ear], points_[corner.next],
                        [&](int obstacle) { return testCorner(ear, obstacle, strict, verdict); });
        return verdict;
    }
    for (const int obstacle : obstacleList_)
        if (!testCorner(ear, obstacle, strict, verdict))
            break;
    return verdict;
}

/// Note in the verdict what one obstacle means for the ear.  False when no other can change it.
bool EarCutter::testCorner(int ear, int corner, bool strict, Verdict &verdict)
{
    if (--testsLeft_ < 0)
    {
        verdict = {corner, true, false};
        return false;
    }
    const int from = corners_[ear].prev, to = corners_[ear].next;
    const BAS_Vec2d &a = points_[from], &b = points_[ear], &c = points_[to], &p = points_[corner];
    const double acrossCut = orientation(c, a, p);
    if (acrossCut < 0.0 || corner == from || corner == to || corner == ear)
        return true;
    const double left = orientation(a, b, p);
    if (left < 0.0)
        return true;
    const double right = orientation(b, c, p);
    if (right < 0.0)
        return true;
    if (acrossCut > 0.0 && left > 0.0 && right > 0.0)
    {
        verdict = {corner, true, false};
        return false;
    }

    // On the border: what counts is whether one of its edges runs into the ear.
    for (const int end : {corners_[corner].prev, corners_[corner].next})
    {
        const BAS_Vec2d &q = points_[end];
        if ((acrossCut > 0.0 || orientation(c, a, q) > 0.0) && (left > 0.0 || orientation(a, b, q) > 0.0) &&
            (right > 0.0 || orientation(b, c, q) > 0.0))
        {
            verdict = {corner, true, true};
            return false;
        }
    }
    if (acrossCut == 0.0 && left > 0.0 && right > 0.0)
    {
        verdict = {corner, false, true};
        return !strict;
    }
    if (left == 0.0 && right == 0.0 && isWayBack(ear, corner) && !isInsideLeftOf(ear, to, true))
    {
        verdict = {corner, true, true};
        return false;
    }
    return true;
}

/// True when the outline passes the ear's tip again, backwards along both of its edges: around a neighbour on the outside,
/// or along a passage without width, where the ear would lie outside of the polygon.
bool EarCutter::isWayBack(int ear, int corner) const
{
    const BAS_Vec2d &a = points_[corners_[ear].prev], &b = points_[ear], &c = points_[corners_[ear].next];
    return orientation(b, c, points_[corners_[corner].prev]) == 0.0 &&
           orientation(a, b, points_[corners_[corner].next]) == 0.0;
}

void EarCutter::cutOff(int ear, bool forced)
{
    const Corner corner = corners_[ear];
    triangles_.push_back({corner.prev, ear, corner.next, forced});
    corners_[corner.prev].next = corner.next;
    corners_[corner.next].prev = corner.prev;
    ranks_[ear] = kGone;
    if (corner.kind != kConvex)
        removeObstacle(ear);
    lookAgain(corner.prev, corner.kind != kConvex);
    lookAgain(corner.next, corner.kind != kConvex);
}

/// An edge of the corner has changed.
///
/// An ear takes some of the angle, so what folds afterwards is a spike; a straight corner takes none, so a slit stays one.
void EarCutter::lookAgain(int corner, bool mayBeSlit)
{
    const bool wasObstacle = corners_[corner].kind != kConvex;
    look(corner, mayBeSlit);
    corners_[corner].blocker = -1;
    setRank(corner, ranks_[corner]);
    const bool isObstacle = corners_[corner].kind != kConvex;
    if (wasObstacle && !isObstacle)
        removeObstacle(corner);
    else if (isObstacle && !wasObstacle)
        addObstacle(corner);
    else if (isObstacle)
        release(corner, 1);
}

void EarCutter::addObstacle(int corner)
{
    ++obstacles_;
    if (large())
        tree_.insert(corner);
    else
    {
        placeInList_[corner] = int(obstacleList_.size());
        obstacleList_.push_back(corner);
    }
}

void EarCutter::removeObstacle(int corner)
{
    --obstacles_;
    if (large())
        tree_.remove(corner);
    else
    {
        const int place = placeInList_[corner], moved = obstacleList_.back();
        obstacleList_[place] = moved;
        placeInList_[moved] = place;
        obstacleList_.pop_back();
    }
    release(corner, 0);
    release(corner, 1);
}

/// Put the ears that wait for the corner back among those to be tested.
void EarCutter::release(int corner, int list)
{
    for (int i = corners_[corner].waiting[list]; i >= 0; i = waiting_[i].next)
    {
        const int ear = waiting_[i].ear;
        if (corners_[ear].blocker != corner || ranks_[ear] == kGone)
            continue;
        corners_[ear].blocker = -1;
        setRank(ear, (ranks_[ear] & kKeyMask) | uint64_t(kTierEar) << kTierShift);
    }
    corners_[corner].waiting[list] = -1;
}
}  // namespace host
