#include <random>

#include <bench/Job.h>
#include <host/mod/Edit.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/prim/RefineCollect.h>
#include <rq/surface/PrimSphereMesh.h>

namespace
{
constexpr int64_t kSpheres = 1'000'000;

MOD_ConstDetailHandle manySpheres()
{
    std::vector<int32_t> points(size_t{kSpheres});
    std::vector<BAS_Mat3f> matrices(size_t{kSpheres});
    std::mt19937 random(1);
    for (size_t i = 0; i < points.size(); ++i)
    {
        points[i] = int32_t(i);
        matrices[i] *= 0.1f + 1e-9f * float(random());
    }
    MOD_Edit edit{MOD_DetailHandle()};
    if (!edit.appendPoints(kSpheres) || !edit.appendSpheres(points, matrices))
        return {};
    return edit.commit();
}

BAS_IntrusivePtr<RQ_PrimSphereMesh> collected(const MOD_ConstDetailHandle &detail)
{
    RQ_RefineCollect collect;
    RQ_MSHDetail::makeDetail(detail)->refine(collect, nullptr);
    return dynamic_cast<RQ_PrimSphereMesh *>(collect.getPrim(0).get());
}

/// From the host to one mesh.  Read: a point and a 3 x 3 matrix each.  Written: a transform.
const bool registered = [] {
    for (const int threads : {1, 2})
        bench::add(
            {"collect/spheres", "1M spheres", "ours", threads, double(kSpheres), kSpheres * (12.0 + 36.0 + 96.0), false, [] {
                 const MOD_ConstDetailHandle detail = manySpheres();
                 return bench::Work{[detail] { return bench::keep(collected(detail)); },
                                    [detail] {
                                        const auto mesh = collected(detail);
                                        return double(mesh ? kSpheres - mesh->getQuadricCount() : kSpheres);
                                    }};
             }});
    return true;
}();
}  // namespace
