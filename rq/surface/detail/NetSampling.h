#pragma once

#include <functional>

#include <rq/attrib/AttributeList.h>
#include <rq/surface/detail/NetSpans.h>

namespace rq
{
/// A place on a surface as a sum of control vertices, with what they count for and how fast that changes along u and v.
struct NetSum
{
    std::vector<int64_t> vertices;
    std::vector<double> weights, alongU, alongV;

    void resize(size_t terms)
    {
        vertices.resize(terms);
        for (std::vector<double> *values : {&weights, &alongU, &alongV})
            values->resize(terms);
    }
};

/// Places along one direction of a net, with the vertices that shape each.
class NetLines
{
public:
    NetLines() = default;
    NetLines(const NetSpans &spans, const std::vector<NetPlace> &places);

    int order() const { return order_; }
    int64_t count() const { return order_ > 0 ? int64_t(vertices_.size()) / order_ : 0; }

    // `order` of each line, line after line.
    const int64_t *vertices(int64_t line) const { return vertices_.data() + line * order_; }
    const double *weights(int64_t line) const { return weights_.data() + line * order_; }
    const double *slopes(int64_t line) const { return slopes_.data() + line * order_; }

private:
    int order_ = 0;
    std::vector<int64_t> vertices_;
    std::vector<double> weights_, slopes_;
};

/// Where a surface is sampled: at the crossings of lines, row by row, u along a row, and behind these at any other places.
///
/// Threads  safe to read, and its functions to call, from any thread
struct NetSampling
{
    int64_t vertices = 0;  ///< of the net
    int64_t columns = 0;   ///< of each of its rows; row r begins at vertex r * columns
    NetLines u, v;
    int64_t others = 0;
    std::function<void(int64_t other, NetSum &sum)> otherSum;

    /// A place a little further inside than a sample, for what has no value in corners.
    std::function<void(int64_t sample, NetSum &sum)> besideSum;

    int64_t crossings() const { return u.count() * v.count(); }
    int64_t samples() const { return crossings() + others; }
};

/// The tensor product at a place.
void tensorSum(const NetSpans &u, const NetSpans &v, const NetPlace &atU, const NetPlace &atV, NetSum &sum);

/// The place, a fraction of its span nearer to the middle.
inline NetPlace beside(const NetPlace &place) { return {place.span, place.t + (0.5 - place.t) / 512.0}; }

/// Write the values of an array that `isEvaluated` at all samples into an array of `makeLike`.
///
/// Shape    as for curves (see `evaluateCurves`)
/// Threads  runs in parallel over samples; the result does not depend on the number of threads
void evaluateNet(const NetSampling &sampling, const RQ_DataArray &vertices, const RQ_DataArray *weights,
                 RQ_DataArray &target);

/// Unit normals at all samples, du x dv, as 32-bit floats; zero where the surface has none.  Null without positions.
RQ_DataArrayHandle netNormals(const NetSampling &sampling, const RQ_AttributeList &vertex, int segment);

/// The vertex attributes at all samples, and "N" unless they have it.
RQ_AttributeListHandle sampledNet(const NetSampling &sampling, const RQ_AttributeList &vertex);
}  // namespace rq
