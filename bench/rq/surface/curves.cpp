#include <algorithm>
#include <memory>

#include <benchmark/benchmark.h>

#include <bench/curves.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/surface/PrimCurveMesh.h>

namespace
{
using Positions = BAS_IntrusivePtr<RQ_DANumeric<float>>;

/// Hair with "P" and, with `attributes`, the widths and texture coordinates that come with it: 3 or 6 values a vertex.
RQ_CurveMeshHandle makeHair(RQ_Basis basis, int64_t hairs, bool attributes)
{
    const std::vector<float> positions = bench::hairPositions(hairs);
    const int64_t vertices = hairs * bench::kHairVertices;
    RQ_AttributeListHandle list(new RQ_AttributeList(nullptr));
    list = list->addAttribute("P", new RQ_DANumeric<float>(positions.data(), vertices, 3, RQ_TYPE_POINT), false);
    if (attributes)
    {
        list = list->addAttribute("width", new RQ_DANumeric<float>(positions.data(), vertices, 1), false);
        list = list->addAttribute("uv", new RQ_DANumeric<float>(positions.data(), vertices, 2), false);
    }
    const std::vector<int32_t> counts(size_t(hairs), int32_t(bench::kHairVertices));
    const RQ_DataArrayHandle countArray(new RQ_DANumeric<int32_t>(counts.data(), hairs));
    return new RQ_PrimCurveMesh(basis, countArray, list);
}

using Weights = std::vector<float>;  // four a step

Weights weightsOf(RQ_Basis basis)
{
    Weights weights;
    for (int step = 0; step < bench::kHairSegments; ++step)
    {
        const float t = float(step) / float(bench::kHairSegments), t2 = t * t, t3 = t2 * t;
        if (basis == RQ_BASIS_BSPLINE)
            weights.insert(weights.end(), {(1 - t) * (1 - t) * (1 - t) / 6, (3 * t3 - 6 * t2 + 4) / 6,
                                           (-3 * t3 + 3 * t2 + 3 * t + 1) / 6, t3 / 6});
        else
            weights.insert(weights.end(),
                           {(-t3 + 2 * t2 - t) / 2, (3 * t3 - 5 * t2 + 2) / 2, (-3 * t3 + 4 * t2 + t) / 2, (t3 - t2) / 2});
    }
    return weights;
}

/// The plain loop: the steps of all spans, without the end of the last.
void evaluatePlainly(const Weights &weights, const float *vertices, float *out)
{
    for (int64_t hair = 0; hair < bench::kHairs; ++hair)
        for (int64_t span = 0; span < bench::kHairSpans; ++span)
        {
            const float *v = vertices + 3 * (hair * bench::kHairVertices + span);
            for (int64_t step = 0; step < bench::kHairSegments; ++step, out += 3)
            {
                const float *w = weights.data() + 4 * step;
                for (int axis = 0; axis < 3; ++axis)
                    out[axis] = w[0] * v[axis] + w[1] * v[3 + axis] + w[2] * v[6 + axis] + w[3] * v[9 + axis];
            }
        }
}

bench::Work preparePlain(RQ_Basis basis)
{
    const auto positions = std::make_shared<std::vector<float>>(bench::hairPositions(bench::kHairs));
    const Positions out(new RQ_DANumeric<float>(bench::kHairs * (bench::kHairPoints - 1), 3));
    const Weights weights = weightsOf(basis);
    return {[=] {
                evaluatePlainly(weights, positions->data(), out->data());
                return std::shared_ptr<void>();
            },
            [] { return 0.0; }};
}

/// How far refined positions are from those of the plain loop.
double errorOf(const RQ_PrimCurveMesh &mesh)
{
    const Positions plain(new RQ_DANumeric<float>(bench::kHairs * (bench::kHairPoints - 1), 3));
    evaluatePlainly(weightsOf(mesh.getBasis()), rq::Values<float>(mesh.getVertex()->get("P")).data(), plain->data());
    const rq::Values<float> found(mesh.refineToLinear(nullptr, double(bench::kHairSegments))->getVertex()->get("P"));
    double error = found.entries() == bench::kHairs * bench::kHairPoints ? 0.0 : 1.0;
    for (int64_t hair = 0; hair < bench::kHairs && error < 1.0; ++hair)
        for (int64_t i = 0; i < 3 * (bench::kHairPoints - 1); ++i)
            error = std::max(error, double(std::abs(found[hair * bench::kHairPoints * 3 + i] -
                                                    plain->data()[hair * (bench::kHairPoints - 1) * 3 + i])));
    return error;
}

void addLinear(const char *mesh, RQ_Basis basis, bool attributes)
{
    for (const int threads : {1, 2})
        bench::addHair("curves-to-linear", mesh, "ours", threads, bench::kHairs, bench::kHairPoints, attributes ? 6 : 3,
                       [=] {
                           const RQ_CurveMeshHandle hair = makeHair(basis, bench::kHairs, attributes);
                           return bench::Work{
                               [hair] { return bench::keep(hair->refineToLinear(nullptr, double(bench::kHairSegments))); },
                               [hair] { return errorOf(*hair); }};
                       });
    if (!attributes)
        bench::addHair("curves-to-linear", mesh, "prototype", 1, bench::kHairs, bench::kHairPoints, 3,
                       [basis] { return preparePlain(basis); });
}

void addBounds(const char *mesh, RQ_Basis basis)
{
    for (const int threads : {1, 2})
        bench::addHair("curve-bounds", mesh, "ours", threads, bench::kHairs, 0, 3, [basis] {
            const RQ_CurveMeshHandle hair = makeHair(basis, bench::kHairs, false);
            return bench::Work{[hair] {
                                   BAS_BoundingBox box;
                                   hair->enlargeBounds(&box, 1);
                                   benchmark::DoNotOptimize(box);
                                   return std::shared_ptr<void>();
                               },
                               [hair] {
                                   BAS_BoundingBox hull, points;
                                   hair->enlargeBounds(&hull, 1);
                                   hair->refineToLinear(nullptr, 4.0)->enlargeBounds(&points, 1);
                                   points.enlarge(hull);
                                   return points == hull ? 0.0 : 1.0;
                               }};
        });
}

const bool registered = [] {
    addLinear("hair100k-bspline", RQ_BASIS_BSPLINE, false);
    addLinear("hair100k-catmullrom", RQ_BASIS_CATMULLROM, false);
    addLinear("hair100k-bspline-6values", RQ_BASIS_BSPLINE, true);
    addBounds("hair100k-bspline", RQ_BASIS_BSPLINE);
    addBounds("hair100k-catmullrom", RQ_BASIS_CATMULLROM);
    return true;
}();
}  // namespace
