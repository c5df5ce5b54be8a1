#include <rq/surface/detail/curveHull.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <host/bas/Parallel.h>
#include <host/bas/clones.h>

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

// Whole registers, and whole positions; of fewer the compiler makes single values.
constexpr int kLanes = 24;

/// Consecutive packed positions that have neighbours on both sides.
struct Run
{
    const float *values;
    int64_t count;  // of positions, at least as many as the lanes hold
};

/// Least and greatest of positions moved both ways by a sixth of what lies between their neighbours.
HOST_CLONES void widenLanes(const Run *runs, int64_t count, float *__restrict lows, float *__restrict highs)
{
    float low[kLanes], high[kLanes];
    std::copy_n(lows, kLanes, low);
    std::copy_n(highs, kLanes, high);
    for (const Run *run = runs; run != runs + count; ++run)
    {
        const int64_t last = 3 * run->count - kLanes;
        for (int64_t first = 0; first < last + kLanes; first += kLanes)
        {
            // The last positions may be looked at twice.
            const float *at = run->values + std::min(first, last);
            for (int64_t lane = 0; lane < kLanes; ++lane)
            {
                const float slope = std::abs(at[lane + 3] - at[lane - 3]) * (1.0f / 6.0f);
                const float less = at[lane] - slope, more = at[lane] + slope;
                low[lane] = less < low[lane] ? less : low[lane];
                high[lane] = more > high[lane] ? more : high[lane];
            }
        }
    }
    std::copy_n(low, kLanes, lows);
    std::copy_n(high, kLanes, highs);
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
        const int64_t last = first + count - 1;
        addVertex(first, first + 1, first + 2, 0.0f, 1.0f);
        addVertex(last - 2, last - 1, last, 1.0f, 0.0f);
        addRun(first + 2, count - 4);
    }

    void addClosed(int64_t first, int64_t count)
    {
        if (count < 3)
            return;
        const int64_t last = first + count - 1;
        addVertex(last, first, first + 1, 1.0f, 1.0f);
        addVertex(last - 1, last, first, 1.0f, 1.0f);
        addRun(first + 1, count - 2);
    }

    BAS_BoundingBox box()
    {
        widenLanes(runs_.data(), int64_t(runs_.size()), low_, high_);
        runs_.clear();
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
        if (count >= kLanes / 3)
            runs_.push_back({positions_ + 3 * first, count});
        else
            for (int64_t i = first; i < first + count; ++i)
                addVertex(i - 1, i, i + 1, 1.0f, 1.0f);
    }

    /// `in` and `out` are 1 where a span ends and begins, 0 where none does.
    void addVertex(int64_t before, int64_t at, int64_t behind, float in, float out)
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            const float value = positions_[3 * at + axis];
            const float slope = (positions_[3 * behind + axis] - positions_[3 * before + axis]) * (1.0f / 6.0f);
            const float a = value - in * slope, b = value + out * slope;
            low_[axis] = std::min(low_[axis], std::min(a, b));
            high_[axis] = std::max(high_[axis], std::max(a, b));
        }
    }

    const float *positions_;
    float low_[kLanes];
    float high_[kLanes];
    std::vector<Run> runs_;
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
