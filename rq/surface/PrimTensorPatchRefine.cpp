#include <algorithm>
#include <cmath>
#include <limits>

#include <rq/data/DANumeric.h>
#include <rq/prim/RefineParms.h>
#include <rq/surface/PrimTensorPatch.h>
#include <rq/surface/detail/GridTrimmer.h>
#include <rq/surface/detail/NetSampling.h>
#include <rq/surface/detail/gridFaces.h>
#include <rq/surface/detail/netDivisions.h>

namespace
{
// Of all spans of a direction together.
constexpr int64_t kMostDivisions = 16384;

// And so many in both together: their mesh takes some gigabytes.
constexpr double kMostPoints = 64e6;

// Trim curves are followed more closely than the grid, whose lines cut them anyway.
constexpr int kPiecesPerDivision = 2;

rq::NetSampling samplingOf(const rq::NetSpans &u, const rq::NetSpans &v, const std::vector<rq::NetPlace> &placesU,
                           const std::vector<rq::NetPlace> &placesV)
{
    rq::NetSampling sampling;
    sampling.vertices = u.vertices() * v.vertices();
    sampling.columns = u.vertices();
    sampling.u = rq::NetLines(u, placesU);
    sampling.v = rq::NetLines(v, placesV);
    const int64_t nu = int64_t(placesU.size());
    sampling.besideSum = [&, nu](int64_t sample, rq::NetSum &sum) {
        rq::tensorSum(u, v, beside(placesU[size_t(sample % nu)]), beside(placesV[size_t(sample / nu)]), sum);
    };
    return sampling;
}

/// The parameters of places that rise, and of the end that belongs to the first place where the direction wraps.
std::vector<double> linesOf(const rq::NetSpans &spans, const std::vector<rq::NetPlace> &places)
{
    std::vector<double> lines;
    for (const rq::NetPlace &place : places)
        lines.push_back(spans.at(place));
    if (spans.wraps())
        lines.push_back(spans.end(spans.spans() - 1));
    return lines;
}

void insertLines(const rq::NetSpans &spans, const std::vector<double> &parameters, std::vector<rq::NetPlace> &places)
{
    for (const double parameter : parameters)
        places.push_back(spans.find(parameter));
    const auto key = [](const rq::NetPlace &place) { return std::pair(place.span, place.t); };
    std::sort(places.begin(), places.end(), [&](const auto &a, const auto &b) { return key(a) < key(b); });
    places.erase(std::unique(places.begin(), places.end(), [&](const auto &a, const auto &b) { return key(a) == key(b); }),
                 places.end());
}

RQ_PolygonMeshHandle facesOf(const rq::TrimmedFaces &faces)
{
    const auto arrayOf = [](const auto &values) {
        using T = typename std::decay_t<decltype(values)>::value_type;
        return RQ_DataArrayHandle(new RQ_DANumeric<T>(values.data(), int64_t(values.size())));
    };
    const bool wide = !faces.corners.empty() &&
                      *std::max_element(faces.corners.begin(), faces.corners.end()) > std::numeric_limits<int32_t>::max();
    const RQ_DataArrayHandle corners =
        wide ? arrayOf(faces.corners) : arrayOf(std::vector<int32_t>(faces.corners.begin(), faces.corners.end()));
    return new RQ_PrimPolygonMesh(arrayOf(faces.counts), corners, {});
}
}  // namespace

int RQ_PrimTensorPatch::divisions(const RQ_NetDirection &direction, const RQ_RefineParms *parms, bool isU)
{
    const double level =
        RQ_RefineParms::getLOD(parms) * (isU ? RQ_RefineParms::getULOD(parms) : RQ_RefineParms::getVLOD(parms));
    return rq::netDivisions(direction.order, level, kMostDivisions / std::max<int64_t>(1, direction.vertices));
}

RQ_PolygonMeshHandle RQ_PrimTensorPatch::meshOf(const RQ_PolygonMeshHandle &faces,
                                                const RQ_AttributeListHandle &points) const
{
    return new RQ_PrimPolygonMesh(*faces, points, {}, {}, wholeAttributes());
}

RQ_PolygonMeshHandle RQ_PrimTensorPatch::refineToPolygonMesh(const RQ_RefineParms *parms) const
{
    if (!getVertex())
        return {};
    int divisionsU = divisions(u_, parms, true), divisionsV = divisions(v_, parms, false);
    const double points = double(u_.vertices) * divisionsU * double(v_.vertices) * divisionsV;
    if (const double share = std::sqrt(kMostPoints / points); share < 1.0)
    {
        divisionsU = std::max(1, int(divisionsU * share));
        divisionsV = std::max(1, int(divisionsV * share));
    }
    const rq::NetSpans u(u_), v(v_);
    const std::vector<rq::NetPlace> placesU = u.places(divisionsU), placesV = v.places(divisionsV);
    if (u.spans() == 0 || v.spans() == 0)
        return {};
    const Loops loops = trimLoops(kPiecesPerDivision * std::max(divisionsU, divisionsV));
    if (!loops.empty())
        return trimmedMesh(u, v, placesU, placesV, loops);
    // The corners of flat pieces are the control vertices as they are.
    const bool isHull = u_.basis == RQ_BASIS_LINEAR && v_.basis == RQ_BASIS_LINEAR && divisionsU == 1 && divisionsV == 1 &&
                        u_.knots.empty() && v_.knots.empty();
    return meshOf(rq::gridFaces(int64_t(placesU.size()), int64_t(placesV.size()), u.wraps(), v.wraps()),
                  isHull ? getVertex() : rq::sampledNet(samplingOf(u, v, placesU, placesV), *getVertex()));
}

RQ_PolygonMeshHandle RQ_PrimTensorPatch::trimmedMesh(const rq::NetSpans &u, const rq::NetSpans &v,
                                                     std::vector<rq::NetPlace> placesU,
                                                     const std::vector<rq::NetPlace> &placesV, const Loops &loops) const
{
    const std::vector<double> linesV = linesOf(v, placesV);
    insertLines(u, rq::GridTrimmer::missingLines(linesOf(u, placesU), linesV, loops), placesU);
    const rq::TrimmedFaces faces = rq::GridTrimmer(linesOf(u, placesU), linesV, u.wraps(), v.wraps()).trim(loops);
    rq::NetSampling sampling = samplingOf(u, v, placesU, placesV);
    sampling.others = int64_t(faces.nodes.size());
    sampling.otherSum = [&](int64_t node, rq::NetSum &sum) {
        rq::tensorSum(u, v, u.find(faces.nodes[size_t(node)].x), v.find(faces.nodes[size_t(node)].y), sum);
    };
    sampling.besideSum = [&, ofCrossing = sampling.besideSum](int64_t sample, rq::NetSum &sum) {
        if (sample < sampling.crossings())
            return ofCrossing(sample, sum);
        const BAS_Vec2d &node = faces.nodes[size_t(sample - sampling.crossings())];
        rq::tensorSum(u, v, beside(u.find(node.x)), beside(v.find(node.y)), sum);
    };
    return meshOf(facesOf(faces), rq::sampledNet(sampling, *getVertex()))->removeUnusedPoints();
}
