#pragma once

#include <cstdint>
#include <utility>
#include <vector>

#include <host/bas/detail/CornerTree.h>

namespace host
{
/// Cut a counter-clockwise polygon into triangles, best ear first.
///
/// Shape    n corners give n - 2 triangles whose signed areas add up to the polygon's.  When the polygon does not cross
/// itself
///          none of them is clockwise, even where it touches itself or walks an edge twice; triangles without area appear
///          only where repeated points, spikes or points on a diagonal leave no choice
/// Failure  where no ear is left (the polygon crosses itself) the smallest convex corner is cut: `forced`
/// Cost     about n log n for n corners; buffers are kept from run to run
class EarCutter
{
public:
    struct Triangle
    {
        int a, b, c;  // corners in the polygon's direction; the cut runs from c to a
        bool forced;
    };

    /// What the two edges at a corner do.
    enum Kind : uint8_t
    {
        kConvex,
        kStraight,
        kReflex,
        kFold,  // back along the same line with the outside around it, or a repeated point
        kSlit,  // back along the same line with the inside around it
    };

    /// What a corner b between a and c does; a slit counts as a fold.
    static Kind kindOf(const BAS_Vec2d &a, const BAS_Vec2d &b, const BAS_Vec2d &c);

    /// Take the polygon over and look at its corners.  The points must be finite, and stay until the triangles are cut.
    void begin(const BAS_Vec2d *points, int count);

    int cornersOfKind(Kind kind) const { return kinds_[kind]; }

    /// Cut.  Once after each `begin`.
    const std::vector<Triangle> &cut();

private:
    struct Corner
    {
        int prev, next;
        int blocker;     // the corner whose change may make this blocked ear good, -1 for none
        int waiting[2];  // first of the ears that wait for this corner to go away [0], or for its edges to change [1]
        Kind kind;
    };

    struct Waiting
    {
        int ear;
        int next;
    };

    struct Verdict
    {
        int blocker = -1;
        bool inside = false;   // a corner or an edge lies in the ear: it must not be cut
        bool byEdges = false;  // ... which may change when the blocker's edges do
    };

    void findSlits();
    void look(int corner, bool mayBeSlit);
    void lookAgain(int corner, bool mayBeSlit);
    bool isInsideLeftOf(int from, int to, bool ifTooMuchWork);
    int best();
    bool isReady(int ear);
    Verdict test(int ear, bool strict);
    bool testCorner(int ear, int corner, bool strict, Verdict &verdict);
    bool isWayBack(int ear, int corner) const;
    void cutOff(int ear, bool forced);
    void setRank(int corner, uint64_t rank);
    void release(int corner, int list);
    void addObstacle(int corner);
    void removeObstacle(int corner);
    bool large() const { return count_ > kSmall; }

    // Up to here the corners are searched one by one instead of through the queue and the tree.
    static constexpr int kSmall = 48;

    const BAS_Vec2d *points_ = nullptr;
    int count_ = 0;
    int kinds_[5] = {};
    int64_t testsLeft_ = 0;
    int64_t windingWork_ = 0;  // edges that may still be walked to tell slits from spikes
    int obstacles_ = 0;        // corners that are not convex: what may lie in an ear
    std::vector<Corner> corners_;
    std::vector<uint64_t> ranks_;
    std::vector<Waiting> waiting_;
    std::vector<int> obstacleList_, placeInList_;  // small polygons
    std::vector<std::pair<uint64_t, int>> queue_;  // large polygons; an entry with an outdated rank is void
    CornerTree tree_;                              // large polygons
    std::vector<Triangle> triangles_;
};
}  // namespace host
