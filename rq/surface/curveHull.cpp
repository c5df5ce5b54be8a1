#include <rq/surface/detail/curveHull.h>

#include <algorithm>
#include <vector>

#include <rq/surface/detail/boxInBlocks.h>

namespace
{
// A vertex costs 100 ns.
constexpr int64_t kCurvesPerBlock = 64;

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
