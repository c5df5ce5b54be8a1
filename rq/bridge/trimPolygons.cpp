#include <rq/bridge/detail/trimPolygons.h>

#include <algorithm>
#include <cmath>

#include <host/bas/Diagnostics.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/surface/PrimCurveMesh.h>

namespace
{
template <class T> RQ_DataArrayHandle arrayOf(const std::vector<T> &values, int64_t size = 1)
{
    return new RQ_DANumeric<T>(values.data(), int64_t(values.size()) / size, size);
}

/// False for places that are no numbers, and for ones between which there is no way.
bool isPlace(const BAS_Vec2d &place)
{
    constexpr double kFarthest = 1e100;
    return std::abs(place.x) < kFarthest && std::abs(place.y) < kFarthest;
}

constexpr int64_t kMostPlaces = int64_t(1) << 25;

/// All curves in pieces, u, v and 0 being the places of their points.
RQ_CurveMeshHandle linearCurves(const MSH_TrimLoops &trims, int pieces)
{
    std::vector<double> places, weights;
    for (size_t i = 0; i + 2 < trims.points.size(); i += 3)
    {
        places.insert(places.end(), {trims.points[i], trims.points[i + 1], 0.0});
        weights.push_back(trims.points[i + 2]);
    }
    RQ_AttributeListHandle list(new RQ_AttributeList(nullptr));
    list = list->addAttribute("P", arrayOf(places, 3), false)->addAttribute("Pw", arrayOf(weights), false);
    const RQ_CurveMeshHandle curves(new RQ_PrimCurveMesh(RQ_BASIS_BSPLINE, arrayOf(trims.counts), list));
    // Straight curves have most of what is dropped again.
    const int64_t most = kMostPlaces / int64_t(weights.size() + 1);
    const bool fits = curves->setOrder(arrayOf(trims.orders)) && curves->setKnots(arrayOf(trims.knots));
    return fits ? curves->refineToLinear(nullptr, int(std::clamp<int64_t>(most, 1, pieces))) : nullptr;
}

/// Drop points that repeat, or lie straight between, their neighbours.
void simplify(std::vector<BAS_Vec2d> &loop)
{
    constexpr double kStraight = 1e-12;
    loop.erase(std::unique(loop.begin(), loop.end()), loop.end());
    while (loop.size() > 1 && loop.front() == loop.back())
        loop.pop_back();
    std::vector<BAS_Vec2d> kept;
    for (size_t i = 0; i < loop.size(); ++i)
    {
        const BAS_Vec2d before = loop[i] - (kept.empty() ? loop.back() : kept.back());
        const BAS_Vec2d behind = loop[(i + 1) % loop.size()] - loop[i];
        const bool goesOn =
            before.dot(behind) >= 0.0 && std::abs(before.cross(behind)) <= kStraight * (before.length2() + behind.length2());
        if (!goesOn)
            kept.push_back(loop[i]);
    }
    loop = std::move(kept);
}
}  // namespace

std::vector<std::vector<BAS_Vec2d>> rq::trimPolygons(const MSH_TrimLoops &trims, int pieces)
{
    std::vector<std::vector<BAS_Vec2d>> loops;
    const RQ_CurveMeshHandle curves = linearCurves(trims, pieces);
    if (!curves)
        return loops;
    const Values<double> places(curves->getVertex()->get("P"));
    int64_t curve = 0;
    for (size_t l = 0; l < trims.loopCurves.size(); ++l)
    {
        std::vector<BAS_Vec2d> loop;
        const int64_t first = curves->getVertexOffset(curve);
        curve += trims.loopCurves[l];
        const int64_t behind = curve < curves->getCurveCount() ? curves->getVertexOffset(curve) : places.entries();
        for (int64_t i = first; i < behind; ++i)
            loop.push_back({places(i, 0), places(i, 1)});
        if (!std::all_of(loop.begin(), loop.end(), isPlace))
        {
            BAS_Diagnostics::warn(1, "trim loop {} of a surface has places that are not finite: it is left out", l);
            continue;
        }
        simplify(loop);
        if (loop.size() > 2)
            loops.push_back(std::move(loop));
    }
    return loops;
}
