#include <host/bas/detail/EarCutter.h>

// Whether an ear of an `EarCutter` may be cut, exact and whatever the polygon looks like.

namespace host
{
/// Look for what makes an ear bad: something in it, or (enough for `strict`) a corner on its cut.
EarCutter::Verdict EarCutter::test(int ear, bool strict)
{
    Verdict verdict;
    const Corner &corner = corners_[ear];
    obstacles_.visitNear(points_[corner.prev], points_[ear], points_[corner.next],
                         [&](int obstacle) { return testCorner(ear, obstacle, strict, verdict); });
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
}  // namespace host
