#include <rq/surface/detail/curveHull.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <host/bas/Parallel.h>
#include <rq/data/detail/clones.h>

namespace
{
// A vertex costs 100 ns here, and 1 ns where positions are packed.
constexpr int64_t kCurvesPerBlock = 64;
constexpr int64_t kPackedCurvesPerBlock = 2048;

/// What the vertices of a span count for in its Bezier vertices, row by row.
class HullWeights
{
public:
    void compute(const rq::SpanShapes &shapes, int64_t curve, int64_t span)
    {
        order_ = shapes.order(curve);
        values_.assign(size_t(order_) * size_t(order_), 0.0);
        if (shapes.basis() == RQ_BASIS_POWER)
            return computePower();
        // The Bezier vertices of a cubic from four of its points.
        double points[4][4];
        for (int i = 0; i < 4; ++i)
            shapes.weights(curve, span, i / 3.0, points[i]);
        for (int i = 0; i < 4; ++i)
        {
            const double a = points[0][i], b = points[1][i], c = points[2][i], d = points[3][i];
            values_[size_t(i)] = a;
            values_[size_t(4 + i)] = (-5.0 * a + 18.0 * b - 9.0 * c + 2.0 * d) / 6.0;
            values_[size_t(8 + i)] = (2.0 * a - 9.0 * b + 18.0 * c - 5.0 * d) / 6.0;
            values_[size_t(12 + i)] = d;
        }
    }

    int order() const { return order_; }
    const double *row(int i) const { return values_.data() + int64_t(i) * order_; }

private:
    // Vertex j has choose(j, i) / choose(degree, i) of coefficient i.
    void computePower()
    {
        for (int j = 0; j < order_; ++j)
        {
            double weight = 1.0;
            for (int i = 0; i <= j; ++i)
            {
                values_[size_t(j * order_ + i)] = weight;
                weight *= double(j - i) / double(std::max(1, order_ - 1 - i));
            }
        }
    }

    int order_ = 0;
    std::vector<double> values_;
};

template <class Add> void addInBlocks(BAS_BoundingBox &box, int64_t curves, int64_t block, Add &&add)
{
    box.enlarge(host::parallelReduce(
        curves, block, BAS_BoundingBox(),
        [&](int64_t begin, int64_t end) {
            BAS_BoundingBox part;
            add(part, begin, end);
            return part;
        },
        [](BAS_BoundingBox &into, const BAS_BoundingBox &from) { into.enlarge(from); }));
}

constexpr int kLanes = 12;  // whole registers and whole positions

/// Least and greatest of values moved both ways by a sixth of what lies between their neighbours' values.
RQ_CLONES void widenLanes(const float *values, int64_t count, float *low, float *high)
{
    for (int64_t first = 0; first + kLanes <= count; first += kLanes)
        for (int64_t lane = 0; lane < kLanes; ++lane)
        {
            const float value = values[first + lane];
            const float slope = std::abs(values[first + lane + 3] - values[first + lane - 3]) / 6.0f;
            low[lane] = value - slope < low[lane] ? value - slope : low[lane];
            high[lane] = value + slope > high[lane] ? value + slope : high[lane];
        }
}

/// The box of packed Catmull-Rom curves: around each vertex lie the Bezier vertices of the spans that it joins.
class PackedHull
{
public:
    explicit PackedHull(const float *positions) : positions_(positions)
    {
        std::fill_n(low_, kLanes, std::numeric_limits<float>::infinity());
        std::fill_n(high_, kLanes, -std::numeric_limits<float>::infinity());
    }

    void addOpen(int64_t first, int64_t count)
    {
        if (count < 4)
            return;
        addVertex(first, first + 1, first + 2, false, true);
        addVertex(first + count - 3, first + count - 2, first + count - 1, true, false);
        addRun(first + 2, count - 4);
    }

    void addClosed(int64_t first, int64_t count)
    {
        if (count < 3)
            return;
        addVertex(first + count - 1, first, first + 1, true, true);
        addVertex(first + count - 2, first + count - 1, first, true, true);
        addRun(first + 1, count - 2);
    }

    BAS_BoundingBox box() const
    {
        BAS_BoundingBox box;
        for (int lane = 0; lane < kLanes; lane += 3)
            if (low_[lane] <= high_[lane] && low_[lane + 1] <= high_[lane + 1] && low_[lane + 2] <= high_[lane + 2])
            {
                box.enlarge(BAS_Vec3f(low_[lane], low_[lane + 1], low_[lane + 2]));
                box.enlarge(BAS_Vec3f(high_[lane], high_[lane + 1], high_[lane + 2]));
            }
        return box;
    }

private:
    void addRun(int64_t first, int64_t count)
    {
        widenLanes(positions_ + 3 * first, 3 * count, low_, high_);
        for (int64_t i = count - count % (kLanes / 3); i < count; ++i)
            addVertex(first + i - 1, first + i, first + i + 1, true, true);
    }

    void addVertex(int64_t before, int64_t at, int64_t behind, bool in, bool out)
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            const float value = positions_[3 * at + axis];
            const float slope = (positions_[3 * behind + axis] - positions_[3 * before + axis]) / 6.0f;
            for (const float place : {value, in ? value - slope : value, out ? value + slope : value})
            {
                low_[axis] = place < low_[axis] ? place : low_[axis];
                high_[axis] = place > high_[axis] ? place : high_[axis];
            }
        }
    }

    const float *positions_;
    float low_[kLanes];
    float high_[kLanes];
};
}  // namespace

void rq::enlargeByHull(BAS_BoundingBox &box, const SpanShapes &shapes, const CurvePositions &positions,
                       const BAS_Mat4d *matrix)
{
    addInBlocks(box, shapes.curves(), kCurvesPerBlock, [&](BAS_BoundingBox &part, int64_t begin, int64_t end) {
        HullWeights hull;
        for (int64_t curve = begin; curve < end; ++curve)
            for (int64_t span = 0; span < shapes.spans(curve); ++span)
            {
                if (!shapes.alike() || hull.order() != shapes.order(curve))
                    hull.compute(shapes, curve, span);
                for (int row = 0; row < hull.order(); ++row)
                {
                    BAS_Vec4d sum(0.0);
                    for (int i = 0; i < hull.order(); ++i)
                        sum += positions[shapes.vertex(curve, span, i)] * hull.row(row)[i];
                    const BAS_Vec3d place = positions.divided(sum);
                    part.enlarge(BAS_Vec3f(matrix ? host::transformPoint(place, *matrix) : place));
                }
            }
    });
}

void rq::enlargeByHull(BAS_BoundingBox &box, const SpanShapes &shapes, const float *positions)
{
    addInBlocks(box, shapes.curves(), kPackedCurvesPerBlock, [&](BAS_BoundingBox &part, int64_t begin, int64_t end) {
        PackedHull hull(positions);
        for (int64_t curve = begin; curve < end; ++curve)
            if (shapes.wraps())
                hull.addClosed(shapes.firstVertex(curve), shapes.vertices(curve));
            else
                hull.addOpen(shapes.firstVertex(curve), shapes.vertices(curve));
        part = hull.box();
    });
}
