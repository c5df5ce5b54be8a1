#pragma once

#include <string>
#include <vector>

#include <rq/surface/Basis.h>

class BAS_JSONWriter;

/// One direction of a net of control vertices: how its rows, or its columns, make a surface.
///
/// Shape    linear, Bezier and B-spline bases.  Of n vertices and order k, B-splines (linear ones too) have n + k knots;
///          when they wrap n + 2k - 1, their first k - 1 vertices counting again at the end.  Bezier spans have a breakpoint
///          before, between and behind them.  No knots stand for 0, 1, 2, ...
/// Failure  `check` tells what does not fit together; nothing else looks
struct RQ_API RQ_NetDirection
{
    RQ_Basis basis = RQ_BASIS_LINEAR;
    int order = 2;
    bool wraps = false;  ///< the last vertex connects to the first
    int64_t vertices = 0;
    std::vector<double> knots;

    /// False with the reason.
    bool check(std::string &why) const;

    /// The knots that the form asks for.
    int64_t knotCount() const;

    bool save(BAS_JSONWriter &writer) const;
};
