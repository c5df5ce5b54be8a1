#pragma once

#include <host/bas/Vector.h>
#include <host/plt/types.h>

/// Cut one polygon into convex pieces.  The caller derives from it, hands out corners and takes pieces.
///
/// Shape    pieces name corners of the input, each in the input's direction
/// Failure  every input of n corners leaves as n - 2 triangles before merging, whatever its shape: self-crossing, folded or
///          zero-area faces are cut where it hurts least
/// Threads  one object per thread; buffers are kept from run to run
class HOST_API BAS_Convex
{
public:
    virtual ~BAS_Convex();

    /// Number of corners of the polygon.
    virtual int getPointCount() const = 0;

    /// Corner `i` in the plane of the polygon.
    virtual BAS_Vec2d getPoint(int i) const = 0;

    /// A piece of `corners` corners begins; its corners follow through `polyVertex`, then `endPolygon`.
    virtual void beginPolygon(int corners, bool flag) = 0;
    virtual void polyVertex(int corner) = 0;
    virtual void endPolygon();

    /// Polled between pieces; true stops the run.
    virtual bool earlyTermination();

    /// Cut into convex pieces of at most `limit` corners (at least 3).
    ///
    /// With `keepWhole` a convex polygon within the limit emits nothing and triangles are merged up to the limit; without it
    /// everything leaves as triangles.
    void run(int limit, bool keepWhole);

    /// True when the polygon of the last `run` has a reflex corner.
    bool isConcave() const { return concave_; }

    /// True when the diagonal a-c cuts the quad a, b, c, d into two triangles whose normals point to one side.
    static bool canSplitQuad02(const BAS_Vec3d &a, const BAS_Vec3d &b, const BAS_Vec3d &c, const BAS_Vec3d &d);

protected:
    BAS_Convex();
    BAS_Convex(const BAS_Convex &) = delete;
    BAS_Convex &operator=(const BAS_Convex &) = delete;

private:
    struct Work;
    Work *work_;
    bool concave_ = false;
};
