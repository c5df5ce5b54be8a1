#include <cmath>

#include <rq/data/DANumeric.h>
#include <rq/surface/detail/evaluateCurves.h>
#include <rq/surface/detail/netKernel.h>
#include <rq/surface/detail/sampledList.h>

namespace
{
// A normal costs some 20 ns.
constexpr int64_t kNormalsPerTask = 2048;

/// A place of the surface and where it goes: x, y, z, and the weight where there is one.
struct Tangents
{
    const double *point, *alongU, *alongV;
};

/// The derivative of a quotient, but for its positive factor.
BAS_Vec3d tangent(const double *point, const double *along, bool isRational)
{
    const BAS_Vec3d direction(along[0], along[1], along[2]);
    return isRational ? direction * point[3] - BAS_Vec3d(point[0], point[1], point[2]) * along[3] : direction;
}

/// The unit normal; false where a direction, or the angle between them, vanishes.
bool findNormal(const Tangents &tangents, bool isRational, float *out)
{
    // What is left of a direction by rounding is no direction.
    constexpr double kVanishing = 1e-14;
    const BAS_Vec3d u = tangent(tangents.point, tangents.alongU, isRational);
    const BAS_Vec3d v = tangent(tangents.point, tangents.alongV, isRational);
    const BAS_Vec3d normal = u.cross(v);
    const double lengthU = u.length2(), lengthV = v.length2(), length = normal.length2();
    // The comparisons are false for values that are no numbers.
    const bool isFound = lengthU > kVanishing * lengthV && lengthV > kVanishing * lengthU &&
                         length > kVanishing * lengthU * lengthV && std::isfinite(length);
    const double factor = isFound ? 1.0 / std::sqrt(length) : 0.0;
    for (int axis = 0; axis < 3; ++axis)
        out[axis] = isFound ? float(normal[axis] * factor) : 0.0f;
    return isFound;
}

class Normals
{
public:
    Normals(const rq::NetSampling &sampling, const rq::NetValues<double> &net, float *out)
        : sampling_(sampling), net_(net), isRational_(net.width() > 3), out_(out), missing_(size_t(sampling.samples()), 0)
    {}

    void run()
    {
        if (sampling_.crossings() > 0)
            findCrossings();
        findOthers(
            sampling_.crossings(), sampling_.samples(), [](int64_t) { return true; },
            [&](int64_t sample, rq::NetSum &sum) { sampling_.otherSum(sample - sampling_.crossings(), sum); });
        // Poles have no normal, but close by there are some.
        findOthers(
            0, sampling_.samples(), [&](int64_t sample) { return missing_[size_t(sample)] != 0; },
            [&](int64_t sample, rq::NetSum &sum) { sampling_.besideSum(sample, sum); });
    }

private:
    void find(int64_t sample, const Tangents &tangents)
    {
        missing_[size_t(sample)] = !findNormal(tangents, isRational_, out_ + 3 * sample);
    }

    void findCrossings()
    {
        const rq::NetLines &lines = sampling_.v;
        const rq::NetRows<double> rows(sampling_, net_, [&](int64_t line) { return sampling_.u.weights(line); });
        const rq::NetRows<double> slopes(sampling_, net_, [&](int64_t line) { return sampling_.u.slopes(line); });
        const int64_t nu = sampling_.u.count();
        host::parallelForRange(lines.count(), kNormalsPerTask / nu + 1, [&](int64_t begin, int64_t end) {
            const size_t values = size_t(rows.values());
            std::vector<double> points(values), alongU(values), alongV(values);
            for (int64_t line = begin; line < end; ++line)
            {
                rows.sum(lines, line, lines.weights(line), points.data());
                slopes.sum(lines, line, lines.weights(line), alongU.data());
                rows.sum(lines, line, lines.slopes(line), alongV.data());
                for (int64_t i = 0; i < nu; ++i)
                {
                    const int64_t at = i * net_.width();
                    find(line * nu + i, {points.data() + at, alongU.data() + at, alongV.data() + at});
                }
            }
        });
    }

    template <class IsWanted, class SumOf> void findOthers(int64_t first, int64_t behind, IsWanted &&isWanted, SumOf &&sumOf)
    {
        host::parallelForRange(behind - first, kNormalsPerTask, [&](int64_t begin, int64_t end) {
            rq::NetSum sum;
            std::vector<double> values(size_t(3 * net_.width()));
            double *const point = values.data(), *const u = point + net_.width(), *const v = u + net_.width();
            for (int64_t sample = first + begin; sample < first + end; ++sample)
                if (isWanted(sample))
                {
                    sumOf(sample, sum);
                    rq::sumPlace(net_, sum.vertices, sum.weights, point);
                    rq::sumPlace(net_, sum.vertices, sum.alongU, u);
                    rq::sumPlace(net_, sum.vertices, sum.alongV, v);
                    find(sample, {point, u, v});
                }
        });
    }

    const rq::NetSampling &sampling_;
    const rq::NetValues<double> &net_;
    bool isRational_;
    float *out_;
    std::vector<uint8_t> missing_;
};
}  // namespace

RQ_DataArrayHandle rq::netNormals(const NetSampling &sampling, const RQ_AttributeList &vertex, int segment)
{
    const int place = vertex.getIndex("P");
    const RQ_DataArrayHandle &positions = vertex.get(place, segment);
    const bool isHomogeneous = positions && positions->getTypeInfo() == RQ_TYPE_HPOINT && positions->getTupleSize() == 4;
    if (!positions || positions->entries() < sampling.vertices || !isEvaluated(*positions) ||
        (positions->getTupleSize() != 3 && !isHomogeneous))
        return {};
    const BAS_IntrusivePtr<RQ_DANumeric<float>> normals(new RQ_DANumeric<float>(sampling.samples(), 3, RQ_TYPE_NORMAL));
    const NetValues<double> net(*positions, isHomogeneous ? nullptr : rationalWeights(vertex, place, segment));
    Normals(sampling, net, normals->data()).run();
    return normals;
}
