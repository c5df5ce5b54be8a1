#pragma once

#include <cstdint>
#include <vector>

#include <host/bas/detail/EarObstacles.h>
#include <host/bas/detail/EarQueue.h>

namespace host
{
/// Cut a counter-clockwise polygon into triangles, best ear first.
///
/// Shape    n corners give n - 2 triangles whose signed areas add up to the polygon's.  When the polygon does not cross
///          itself none of them is clockwise, even where it touches itself or walks an edge twice; triangles without area
///          appear only where repeated points, spikes or points on a diagonal leave no choice
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
    bool isReady(int ear);
    void cutOff(int ear, bool forced);
    void release(int corner, int list);
    void removeObstacle(int corner);

    // In EarVerdict.cpp.
    Verdict test(int ear, bool strict);
    bool testCorner(int ear, int corner, bool strict, Verdict &verdict);
    bool isWayBack(int ear, int corner) const;
    bool isInsideLeftOf(int from, int to, bool ifTooMuchWork);

    // Up to here corners are searched one by one instead of through a heap and a tree.
    static constexpr int kSmall = 48;

    const BAS_Vec2d *points_ = nullptr;
    int count_ = 0;
    int kinds_[5] = {};
    int64_t testsLeft_ = 0;
    int64_t windingWork_ = 0;  // edges that may still be walked to tell slits from spikes
    std::vector<Corner> corners_;
    std::vector<Waiting> waiting_;
    EarQueue queue_;
    EarObstacles obstacles_;
    std::vector<Triangle> triangles_;
};
}  // namespace host
