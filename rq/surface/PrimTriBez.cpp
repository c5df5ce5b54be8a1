#include <rq/surface/PrimTriBez.h>

#include <algorithm>

#include <host/bas/JSONWriter.h>
#include <rq/data/DANumeric.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/prim/RefineParms.h>
#include <rq/surface/detail/NetSampling.h>
#include <rq/surface/detail/lists.h>
#include <rq/surface/detail/netDivisions.h>

namespace
{
constexpr int64_t kMostDivisions = 1024;

/// Rows of n + 1, n, ... 1 places of a triangle.
struct TriangleRows
{
    int n;

    int64_t count() const { return first(n + 1); }
    int64_t first(int row) const { return int64_t(row) * (n + 1) - int64_t(row) * (row - 1) / 2; }
    int rowOf(int64_t place) const
    {
        int low = 0, high = n;
        while (low < high)
        {
            const int middle = (low + high + 1) / 2;
            if (first(middle) <= place)
                low = middle;
            else
                high = middle - 1;
        }
        return low;
    }
};

/// What the vertices count for at the place b of the way along a row and c of the way up.
void triangleSum(int degree, double b, double c, rq::NetSum &sum)
{
    const TriangleRows rows{degree};
    const size_t count = size_t(rows.count());
    sum.resize(count);
    std::vector<double> below(count, 0.0), &weights = sum.weights;
    std::fill(weights.begin(), weights.end(), 0.0);
    weights[0] = 1.0;
    // Each degree is made of the one below; the last step gives the slopes as well.
    for (int d = 1; d <= degree; ++d)
    {
        below.swap(weights);
        const auto at = [&](int row, int i) {
            return row < 0 || i < 0 || row + i >= d ? 0.0 : below[size_t(rows.first(row) + i)];
        };
        for (int row = 0; row <= d; ++row)
            for (int i = 0; i + row <= d; ++i)
            {
                const size_t term = size_t(rows.first(row) + i);
                const double stays = at(row, i), along = at(row, i - 1), up = at(row - 1, i);
                weights[term] = (1.0 - b - c) * stays + b * along + c * up;
                sum.alongU[term] = along - stays;
                sum.alongV[term] = up - stays;
            }
    }
    for (size_t i = 0; i < count; ++i)
        sum.vertices[i] = int64_t(i);
}

RQ_PolygonMeshHandle trianglesOf(const TriangleRows &rows, const RQ_AttributeListHandle &points,
                                 const RQ_AttributeListHandle &whole)
{
    const int64_t triangles = int64_t(rows.n) * rows.n;
    const BAS_IntrusivePtr<RQ_DANumeric<int32_t>> list(new RQ_DANumeric<int32_t>(3 * triangles));
    int32_t *out = list->data();
    const auto add = [&out](int64_t a, int64_t b, int64_t c) {
        for (const int64_t point : {a, b, c})
            *out++ = int32_t(point);
    };
    for (int row = 0; row < rows.n; ++row)
        for (int i = 0; i + row < rows.n; ++i)
        {
            const int64_t here = rows.first(row) + i, above = rows.first(row + 1) + i;
            add(here, here + 1, above);
            if (i + row + 1 < rows.n)
                add(here + 1, above + 1, above);
        }
    return new RQ_PrimPolygonMesh(RQ_CountArray(triangles, 3), list, points, {}, {}, whole);
}
}  // namespace

RQ_PrimTriBez::RQ_PrimTriBez() = default;
RQ_PrimTriBez::RQ_PrimTriBez(const RQ_PrimTriBez &other) = default;
RQ_PrimTriBez::~RQ_PrimTriBez() = default;

bool RQ_PrimTriBez::init(int degree, const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                         const RQ_AttributeListHandle &detail)
{
    if (degree < 1 || degree > kHighestDegree || !vertex ||
        !rq::checkLengths("vertex", vertex, TriangleRows{degree}.count()).empty() ||
        !rq::checkLengths("uniform", uniform, 1).empty())
        return false;
    degree_ = degree;
    setLists(vertex, uniform, detail);
    return true;
}

RQ_PolygonMeshHandle RQ_PrimTriBez::refineToPolygonMesh(const RQ_RefineParms *parms) const
{
    if (!getVertex())
        return {};
    const double level =
        RQ_RefineParms::getLOD(parms) * std::max(RQ_RefineParms::getULOD(parms), RQ_RefineParms::getVLOD(parms));
    const TriangleRows rows{rq::netDivisions(degree_ + 1, level, kMostDivisions)};
    rq::NetSampling sampling;
    sampling.vertices = TriangleRows{degree_}.count();
    sampling.others = rows.count();
    // `inside` moves the place towards the middle.
    const auto sumAt = [&rows, degree = degree_](int64_t place, double inside, rq::NetSum &sum) {
        const int row = rows.rowOf(place);
        const double b = double(place - rows.first(row)) / rows.n, c = double(row) / rows.n;
        triangleSum(degree, b + (1.0 / 3.0 - b) * inside, c + (1.0 / 3.0 - c) * inside, sum);
    };
    sampling.otherSum = [&](int64_t place, rq::NetSum &sum) { sumAt(place, 0.0, sum); };
    sampling.besideSum = [&](int64_t place, rq::NetSum &sum) { sumAt(place, 1.0 / 512.0 / rows.n, sum); };
    return trianglesOf(rows, rq::sampledNet(sampling, *getVertex()), wholeAttributes());
}

bool RQ_PrimTriBez::refine(RQ_Refine &sink, const RQ_RefineParms *parms) const
{
    return handOver(refineToPolygonMesh(parms), sink);
}

const char *RQ_PrimTriBez::className() const { return "RQ_PrimTriBez"; }
int RQ_PrimTriBez::getPrimitiveType() const { return RQ_PRIM_BEZIER_PATCH; }
RQ_PrimitiveHandle RQ_PrimTriBez::doSoftCopy() const { return new RQ_PrimTriBez(*this); }
bool RQ_PrimTriBez::saveShape(BAS_JSONWriter &writer) const { return writer.writeInt(degree_); }
