#pragma once

#include <memory>

#include <host/bas/Vector.h>
#include <host/plt/types.h>

/// Cut one polygon into convex pieces.  The caller derives from it, hands out corners and takes pieces.
///
/// Shape    a polygon of n corners leaves as n - 2 triangles, or as fewer, merged pieces.  Pieces name corners of the input,
///          each in the input's direction.  When the polygon does not cross itself (it may touch itself, walk an edge twice
///          to reach a hole, repeat points and run straight) no piece is turned over and their areas add up; triangles
///          without area appear only where repeated points, spikes or points on a diagonal leave no choice
/// Failure  a polygon that crosses itself, is folded or has no area is cut where it hurts least, still into n - 2 triangles
///          of the same signed area; so is one with coordinates that are not finite.  Fewer than three corners give nothing
/// Threads  one object per thread; buffers are kept from run to run
/// Cost     about n log n; short cuts and well-shaped triangles are preferred, so slivers are rare.  The result does not
///          change when all coordinates are scaled by a power of two
class HOST_API BAS_Convex
{
public:
    virtual ~BAS_Convex();

    /// Number of corners of the polygon.
    virtual int getPointCount() const = 0;

    /// Corner `i` in the plane of the polygon.  Clockwise is as good as counter-clockwise.
    virtual BAS_Vec2d getPoint(int i) const = 0;

    /// A piece of `corners` corners begins; its corners follow through `polyVertex`, then `endPolygon`.
    ///
    /// `forced` tells that no proper cut was left here because the polygon crosses itself: the piece may overlap others.
    virtual void beginPolygon(int corners, bool forced) = 0;
    virtual void polyVertex(int corner) = 0;
    virtual void endPolygon();

    /// Polled between pieces; true stops the run.
    virtual bool earlyTermination();

    /// Cut into convex pieces of at most `limit` corners (at least 3).
    ///
    /// With `keepWhole` a convex polygon within the limit emits nothing and triangles are merged up to the limit; without it
    /// everything leaves as triangles.
    void run(int limit, bool keepWhole);

    /// True when the polygon of the last `run` is not convex: it has a reflex corner or a spike, or winds around more than
    /// once.
    bool isConcave() const { return concave_; }

    /// True when the diagonal a-c cuts the quad a, b, c, d into two triangles whose normals point to one side.  A triangle
    /// without area has no side.
    static bool canSplitQuad02(const BAS_Vec3d &a, const BAS_Vec3d &b, const BAS_Vec3d &c, const BAS_Vec3d &d);

protected:
    BAS_Convex();
    BAS_Convex(const BAS_Convex &) = delete;
    BAS_Convex &operator=(const BAS_Convex &) = delete;

private:
    struct Work;

    bool emit(const int *corners, int count, bool forced);
    void emitTriangles();
    void emitMerged(int limit);
    void emitRuns(int limit);
    void emitFan(int count);

    std::unique_ptr<Work> work_;
    bool concave_ = false;
};
