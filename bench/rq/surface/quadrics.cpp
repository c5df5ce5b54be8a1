#include <benchmark/benchmark.h>

#include <bench/spheres.h>
#include <rq/data/Values.h>
#include <rq/prim/CompactTransformArray.h>
#include <rq/prim/RefineCollect.h>
#include <rq/surface/PrimSphere.h>
#include <rq/surface/PrimSphereMesh.h>

namespace
{
constexpr int64_t kSpheres = 1'000'000;

/// A mesh and its texture coordinates in memory, which it computes when they are asked for.
struct Sphere
{
    RQ_PolygonMeshHandle mesh;
    rq::Values<float> uv;
};

Sphere makeSphere()
{
    RQ_RefineParms parms;
    parms.setQuadricDivs(bench::kSphereSamples);
    const RQ_PolygonMeshHandle mesh = RQ_PrimSphere::makePolygonMesh(&parms);
    return {mesh, rq::Values<float>(mesh->getShared()->get("uv"))};
}

void addSphere(int threads)
{
    bench::addSphere("ours", threads, [] {
        return bench::Work{[] { return bench::keep(makeSphere()); },
                           [] {
                               const rq::Values<float> points(makeSphere().mesh->getShared()->get("P"));
                               return bench::radiusError(points.data(), points.entries());
                           }};
    });
}

BAS_IntrusivePtr<RQ_PrimSphereMesh> manySpheres()
{
    std::vector<BAS_Mat4d> places;
    for (int64_t i = 0; i < kSpheres; ++i)
        places.push_back(BAS_Mat4d().setTranslation(BAS_Vec3d(double(i), 0.0, 0.0)));
    const BAS_IntrusivePtr<RQ_PrimSphereMesh> mesh(new RQ_PrimSphereMesh);
    mesh->init({}, {}, new RQ_CompactTransformArray(places.data(), kSpheres));
    return mesh;
}

double boundsError(const RQ_PrimSphereMesh &mesh)
{
    BAS_BoundingBox box;
    mesh.enlargeBounds(&box, 1);
    return std::abs(double(box.size().x) - double(kSpheres + 1));
}

void addMesh(int threads)
{
    bench::add({"quadric-mesh/bounds", "1M spheres", "ours", threads, double(kSpheres), 96.0 * kSpheres, false, [] {
                    const auto mesh = manySpheres();
                    return bench::Work{[mesh] {
                                           benchmark::DoNotOptimize(boundsError(*mesh));
                                           return std::shared_ptr<void>();
                                       },
                                       [mesh] { return boundsError(*mesh); }};
                }});
    bench::add({"quadric-mesh/refine", "1M spheres", "ours", threads, double(kSpheres), 0.0, false, [] {
                    const auto mesh = manySpheres();
                    const auto refine = [mesh] {
                        const auto sink = std::make_shared<RQ_RefineCollect>();
                        mesh->refine(*sink, nullptr);
                        return sink;
                    };
                    return bench::Work{refine, [=] { return double(kSpheres - refine()->entries()); }};
                }});
}

/// A small sphere over and over: what a scene of many is refined to in the end.
void addSmall()
{
    constexpr int64_t kSmall = 10'000;
    bench::add({"sphere", "10k of 20x20", "ours", 1, kSmall * 400.0, kSmall * 400.0 * 24.0, false, [] {
                    return bench::Work{[] {
                                           const auto meshes = std::make_shared<std::vector<RQ_PolygonMeshHandle>>();
                                           for (int64_t i = 0; i < kSmall; ++i)
                                               meshes->push_back(RQ_PrimSphere::makePolygonMesh(nullptr));
                                           return meshes;
                                       },
                                       {}};
                }});
}

const bool registered = [] {
    for (const int threads : {1, 2})
    {
        addSphere(threads);
        addMesh(threads);
    }
    addSmall();
    return true;
}();
}  // namespace
