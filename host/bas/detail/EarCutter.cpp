#include <host/bas/detail/EarCutter.h>

#include <algorithm>
#include <limits>

namespace host
{
namespace
{
// A fold that is not looked into is taken for a spike, which is never wrong but may spend triangles without area.  The limit
// holds the time that polygons of nothing but folds can take to a fraction of a second.
constexpr int64_t kMostWindingWork = 50'000'000;

// Polygons that do not cross themselves take one to sixty tests a corner.  Others, with thousands of corners in few places,
// could take as many as they have corners: beyond the limit all ears count as blocked.
constexpr int64_t kMostTestsPerCorner = 256;

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
    queue_.begin(count);
    if (corners_.size() < size_t(count))
        corners_.resize(count);
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
        queue_.put(corner, EarQueue::kEar, std::min(key, std::numeric_limits<double>::max()));
    }
    else if (kind == kReflex)
        queue_.put(corner, EarQueue::kReflex, -side);
    else
        queue_.put(corner, kind == kFold ? EarQueue::kFold : EarQueue::kStraight, (c - a).length2());
}

const std::vector<EarCutter::Triangle> &EarCutter::cut()
{
    triangles_.clear();
    waiting_.clear();
    const bool isLarge = count_ > kSmall;
    if (isLarge)
        queue_.makeHeap();
    obstacles_.begin(points_, count_, isLarge);
    for (int i = 0; i < count_; ++i)
        if (corners_[i].kind != kConvex)
            obstacles_.add(i);

    int last = 0;
    for (int left = count_; left > 3; --left)
    {
        int ear = queue_.best();
        while (!isReady(ear))
            ear = queue_.best();
        last = corners_[ear].next;
        cutOff(ear, queue_.tierOf(ear) >= EarQueue::kBlocked);
    }
    if (count_ >= 3)
        triangles_.push_back({corners_[last].prev, last, corners_[last].next, queue_.tierOf(last) >= EarQueue::kBlocked});
    return triangles_;
}

/// True when the corner may be cut now.  A blocked ear goes back into the order, to wait for its blocker.
bool EarCutter::isReady(int ear)
{
    const EarQueue::Tier tier = queue_.tierOf(ear);
    if (obstacles_.empty() || (tier != EarQueue::kEar && tier != EarQueue::kTouched))
        return true;
    const Verdict verdict = test(ear, tier == EarQueue::kEar);
    if (verdict.blocker < 0 || (!verdict.inside && tier == EarQueue::kTouched))
        return true;
    int &list = corners_[verdict.blocker].waiting[verdict.byEdges];
    waiting_.push_back({ear, list});
    list = int(waiting_.size()) - 1;
    corners_[ear].blocker = verdict.blocker;
    queue_.changeTier(ear, verdict.inside ? EarQueue::kBlocked : EarQueue::kTouched);
    return false;
}

void EarCutter::cutOff(int ear, bool forced)
{
    const Corner corner = corners_[ear];
    triangles_.push_back({corner.prev, ear, corner.next, forced});
    corners_[corner.prev].next = corner.next;
    corners_[corner.next].prev = corner.prev;
    queue_.remove(ear);
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
    const bool isObstacle = corners_[corner].kind != kConvex;
    if (wasObstacle && !isObstacle)
        removeObstacle(corner);
    else if (isObstacle && !wasObstacle)
        obstacles_.add(corner);
    else if (isObstacle)
        release(corner, 1);
}

void EarCutter::removeObstacle(int corner)
{
    obstacles_.remove(corner);
    release(corner, 0);
    release(corner, 1);
}

/// Put the ears that wait for the corner back among those to be tested.
void EarCutter::release(int corner, int list)
{
    for (int i = corners_[corner].waiting[list]; i >= 0; i = waiting_[i].next)
    {
        const int ear = waiting_[i].ear;
        if (corners_[ear].blocker != corner || queue_.isGone(ear))
            continue;
        corners_[ear].blocker = -1;
        queue_.changeTier(ear, EarQueue::kEar);
    }
    corners_[corner].waiting[list] = -1;
}
}  // namespace host
