#pragma once

#include <memory>

#include <rq/attrib/AttributeList.h>
#include <rq/surface/Basis.h>

namespace rq
{
struct SpanTables;
}

/// Evaluates curves of one basis and order at evenly spread parameters.
///
/// Shape      a curve of n vertices has `spanCount(n)` spans; the points at `segments` even steps of each, and for a curve
///            that is not periodic the end of the last
/// Failure    what cannot be is answered by false, 0 or null
/// Ownership  shares its tables with its copies
/// Threads    `setOrder` and `preCompute` belong to one thread; everything else is safe from any thread after them
class RQ_API RQ_CurveEval
{
public:
    /// The greatest order of a Bezier span.
    static constexpr int maximumBezierOrder = 31;

    /// Of the default order of the basis.  Nothing is evaluated before `preCompute`.
    RQ_CurveEval(RQ_Basis basis, bool periodic);

    /// The smallest and the greatest order that a basis takes; 0 and 0 for none.
    static void orderRange(RQ_Basis basis, int &smallest, int &greatest);

    /// 2 for linear curves, else that of cubic spans.
    static int defaultOrder(RQ_Basis basis) { return basis == RQ_BASIS_LINEAR ? 2 : 4; }

    RQ_Basis basis() const { return basis_; }
    bool periodic() const { return periodic_; }
    int order() const { return order_; }
    int step() const { return step_; }

    /// False, and nothing changed, outside the basis's range.
    bool setOrder(int order);

    /// Whether `vertices` make whole spans of `order`, at least one; of a periodic curve they may be one fewer than that.
    bool validCount(int64_t vertices, int order) const;

    /// The whole spans that `vertices` make.
    int64_t spanCount(int64_t vertices) const;

    /// Make the weights for `segments` steps a span, at least 1 and at most 16384.  False for a basis that is none.
    bool preCompute(int segments);
    int segments() const;

    /// The points that a curve of `vertices` gives.
    int64_t pointCount(int64_t vertices) const;

    /// Make an array of `entries` unset values for every attribute of a list, segment by segment, of its storage, size and
    /// type; null for text, dictionaries and arrays of arrays.
    static BAS_Array<RQ_DataArrayHandle> allocateNumericArrays(const RQ_AttributeList &list, int64_t entries);

    /// Evaluate the curve of the vertices [first, first + vertices) of `list` into `arrays`, made for the list, from entry
    /// `at` on.  False when `preCompute` was not called, when the list lacks these vertices, or when an array is of another
    /// form or lacks the room; arrays before it are written then.
    bool refineToNumeric(const RQ_AttributeList &list, int64_t first, int64_t vertices,
                         const BAS_Array<RQ_DataArrayHandle> &arrays, int64_t at) const;

    /// The evaluated curve as attributes: the arrays, and where these are null the values of the vertices with the greatest
    /// weight.  Null as `refineToNumeric` gives false.
    RQ_AttributeListHandle copyToAttributes(const RQ_AttributeList &list, int64_t first, int64_t vertices,
                                            const BAS_Array<RQ_DataArrayHandle> &arrays) const;

private:
    RQ_Basis basis_;
    int order_;
    int step_;
    bool periodic_;
    std::shared_ptr<const rq::SpanTables> tables_;
};
