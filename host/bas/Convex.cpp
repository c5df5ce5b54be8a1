#include <host/bas/Convex.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <span>

#include <host/bas/detail/EarCutter.h>
#include <host/bas/detail/PieceMerger.h>
#include <host/bas/detail/SmallPolygon.h>

struct BAS_Convex::Work
{
    enum class Shape
    {
        kNowhere,  // not finite
        kConvex,
        kConcave,
    };

    Shape read(const BAS_Convex &polygon, int count);
    std::span<const host::EarCutter::Triangle> cut();
    bool normalize();
    bool isClockwise() const;
    bool isConcave();

    std::vector<BAS_Vec2d> points, distinct;
    host::SmallPolygon small;
    host::EarCutter::Triangle smallCuts[host::SmallPolygon::kMostCorners - 2];
    bool isSmall = false;   // `small` has taken the polygon
    bool isStrict = false;  // convex without straight corners and repeated points
    host::EarCutter ears;
    host::PieceMerger pieces;
    std::vector<int> ring, rest;
};

namespace
{
/// +1 for a step to the right or straight up, -1 for one to the left or straight down.
int headingOf(const BAS_Vec2d &a, const BAS_Vec2d &b)
{
    if (a.x != b.x)
        return a.x < b.x ? 1 : -1;
    return a.y < b.y ? 1 : -1;
}

/// True when a walk that never turns right closes after one turn: it then heads right once and left once.
bool windsOnce(const std::vector<BAS_Vec2d> &points)
{
    int changes = 0;
    int heading = headingOf(points.back(), points[0]);
    for (size_t i = 0; i + 1 < points.size(); ++i)
    {
        const int next = headingOf(points[i], points[i + 1]);
        changes += next != heading;
        heading = next;
    }
    return changes <= 2;
}

/// True when every corner turns left or goes straight on.
bool turnsLeft(const std::vector<BAS_Vec2d> &points)
{
    using host::EarCutter;
    const size_t count = points.size();
    for (size_t i = 0; i < count; ++i)
    {
        const EarCutter::Kind kind = EarCutter::kindOf(points[i], points[(i + 1) % count], points[(i + 2) % count]);
        if (kind == EarCutter::kReflex || kind == EarCutter::kFold)
            return false;
    }
    return true;
}
}  // namespace

BAS_Convex::Work::Shape BAS_Convex::Work::read(const BAS_Convex &polygon, int count)
{
    points.resize(count);
    for (int i = 0; i < count; ++i)
        points[i] = polygon.getPoint(i);
    isSmall = small.beginPlain(points.data(), count);
    if (!isSmall)
    {
        if (!normalize())
            return Shape::kNowhere;
        isSmall = small.begin(points.data(), count);
    }
    if (isSmall)
    {
        isStrict = !small.hasReflexCorner() && windsOnce(points);
        return isStrict ? Shape::kConvex : Shape::kConcave;
    }
    ears.begin(points.data(), count);
    const bool concave = isConcave();
    isStrict = !concave && ears.cornersOfKind(host::EarCutter::kConvex) == count;
    return concave ? Shape::kConcave : Shape::kConvex;
}

std::span<const host::EarCutter::Triangle> BAS_Convex::Work::cut()
{
    if (isSmall)
    {
        if (small.cut(smallCuts))
            return {smallCuts, points.size() - 2};
        ears.begin(points.data(), int(points.size()));
    }
    return ears.cut();
}

/// Bring the points into a range where products are safe, and make them counter-clockwise by a mirror if need be.  False
/// when one is not finite.
bool BAS_Convex::Work::normalize()
{
    double largest = 0.0;
    bool finite = true;
    for (const BAS_Vec2d &p : points)
    {
        largest = std::max({largest, std::abs(p.x), std::abs(p.y)});
        finite = finite && p.x - p.x == 0.0 && p.y - p.y == 0.0;
    }
    if (!finite)
        return false;
    if (largest > 0x1p100 || largest < 0x1p-100)
    {
        const int exponent = largest > 0.0 ? std::ilogb(largest) : 0;
        for (BAS_Vec2d &p : points)
            p = {std::scalbn(p.x, -exponent), std::scalbn(p.y, -exponent)};
    }
    if (isClockwise())
        for (BAS_Vec2d &p : points)
            p.x = -p.x;
    return true;
}

bool BAS_Convex::Work::isClockwise() const
{
    const BAS_Vec2d origin = points[0];
    double area = 0.0, magnitude = 0.0;
    BAS_Vec2d from = points.back() - origin;
    for (const BAS_Vec2d &p : points)
    {
        const BAS_Vec2d to = p - origin;
        const double left = from.x * to.y, right = from.y * to.x;
        area += left - right;
        magnitude += std::abs(left) + std::abs(right);
        from = to;
    }
    if (std::abs(area) > 4e-16 * double(points.size() + 4) * magnitude)
        return area < 0.0;

    host::ExactSum exact;
    for (size_t i = 0, last = points.size() - 1; i < points.size(); last = i++)
    {
        exact.addProduct(points[last].x, points[i].y);
        exact.addProduct(-points[last].y, points[i].x);
    }
    return exact.leading() < 0.0;
}

bool BAS_Convex::Work::isConcave()
{
    using host::EarCutter;
    if (ears.cornersOfKind(EarCutter::kReflex) + ears.cornersOfKind(EarCutter::kSlit) > 0)
        return true;
    if (ears.cornersOfKind(EarCutter::kFold) == 0)
        return !windsOnce(points);

    // Repeated points hide what the polygon does there.
    distinct.clear();
    for (const BAS_Vec2d &p : points)
        if (distinct.empty() || p != distinct.back())
            distinct.push_back(p);
    while (distinct.size() > 1 && distinct.back() == distinct.front())
        distinct.pop_back();
    return distinct.size() > 1 && !(turnsLeft(distinct) && windsOnce(distinct));
}

BAS_Convex::BAS_Convex() : work_(new Work) {}

BAS_Convex::~BAS_Convex() = default;

void BAS_Convex::endPolygon() {}

bool BAS_Convex::earlyTermination() { return false; }

void BAS_Convex::run(int limit, bool keepWhole)
{
    concave_ = false;
    const int count = getPointCount();
    limit = std::max(limit, 3);
    if (count < 3)
        return;
    const Work::Shape shape = work_->read(*this, count);
    if (shape == Work::Shape::kNowhere)
        return emitFan(count);

    concave_ = shape == Work::Shape::kConcave;
    if (keepWhole && !concave_ && count <= limit)
        return;
    if (!keepWhole || limit == 3)
        emitTriangles();
    else if (work_->isStrict)
        emitRuns(limit);
    else
        emitMerged(limit);
}

/// Hand out one piece.  False when the caller wants no more.
bool BAS_Convex::emit(const int *corners, int count, bool forced)
{
    beginPolygon(count, forced);
    for (int i = 0; i < count; ++i)
        polyVertex(corners[i]);
    endPolygon();
    return !earlyTermination();
}

void BAS_Convex::emitTriangles()
{
    for (const host::EarCutter::Triangle &t : work_->cut())
    {
        const int corners[3] = {t.a, t.b, t.c};
        if (!emit(corners, 3, t.forced))
            return;
    }
}

void BAS_Convex::emitMerged(int limit)
{
    host::PieceMerger &pieces = work_->pieces;
    pieces.merge(work_->points.data(), int(work_->points.size()), work_->cut(), limit);
    pieces.forEachPiece([this](const int *corners, int count, bool forced) { return emit(corners, count, forced); });
}

/// Cut a convex polygon into as few pieces as possible: runs of `limit` corners all around, then around what is left.
void BAS_Convex::emitRuns(int limit)
{
    std::vector<int> &ring = work_->ring, &rest = work_->rest;
    ring.resize(work_->points.size());
    std::iota(ring.begin(), ring.end(), 0);
    while (int(ring.size()) > limit)
    {
        rest.clear();
        const int size = int(ring.size());
        ring.push_back(ring[0]);
        int begin = 0;
        for (int left = size; left > limit && begin + limit <= size + 1; left -= limit - 2, begin += limit - 1)
        {
            if (!emit(&ring[begin], limit, false))
                return;
            rest.push_back(ring[begin]);
        }
        rest.insert(rest.end(), ring.begin() + begin, ring.begin() + std::max(begin, size));
        ring.swap(rest);
    }
    emit(ring.data(), int(ring.size()), false);
}

/// What is left to do when the corners are nowhere.
void BAS_Convex::emitFan(int count)
{
    for (int i = 1; i + 1 < count; ++i)
    {
        const int corners[3] = {0, i, i + 1};
        if (!emit(corners, 3, true))
            return;
    }
}

bool BAS_Convex::canSplitQuad02(const BAS_Vec3d &a, const BAS_Vec3d &b, const BAS_Vec3d &c, const BAS_Vec3d &d)
{
    const BAS_Vec3d diagonal = c - a;
    return (b - a).cross(diagonal).dot(diagonal.cross(d - a)) > 0.0;
}
