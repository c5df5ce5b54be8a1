#include <host/bas/CreaseLanes.h>

#include <host/bas/clones.h>
#include <host/bas/detail/LaneVector.h>

namespace
{
using host::CreaseLanes;

using Doubles = host::Lanes<double, CreaseLanes::kPoints>;
using Mask = host::Lanes<int64_t, CreaseLanes::kPoints>;
using Vectors = host::LaneVector<Doubles>;

HOST_LANES Doubles load(const double *values) { return host::lanesAt<CreaseLanes::kPoints>(values); }

HOST_CLONES void sumSides(const CreaseLanes &lanes, int64_t corners, double leastCosine, double *x, double *y, double *z)
{
    Vectors normals[CreaseLanes::kMostCorners], parts[CreaseLanes::kMostCorners];
    Mask near[CreaseLanes::kMostCorners][CreaseLanes::kMostCorners];
    for (int64_t own = 0; own < corners; ++own)
    {
        const auto &axes = lanes.normals[own];
        const Doubles weight = load(lanes.weights[own]);
        normals[own] = {load(axes[0]), load(axes[1]), load(axes[2])};
        parts[own] = {normals[own].x * weight, normals[own].y * weight, normals[own].z * weight};
        near[own][own] = Mask{} - 1;
        for (int64_t i = 0; i < own; ++i)
            near[own][i] = near[i][own] = dot(normals[i], normals[own]) >= leastCosine;
    }
    for (int64_t own = 0; own < corners; ++own)
    {
        Vectors sum = {};
        for (int64_t i = 0; i < corners; ++i)
        {
            const Mask isNear = near[own][i];
            sum.x += isNear ? parts[i].x : Doubles{};
            sum.y += isNear ? parts[i].y : Doubles{};
            sum.z += isNear ? parts[i].z : Doubles{};
        }
        host::putLanes(sum.x, x + own * CreaseLanes::kPoints);
        host::putLanes(sum.y, y + own * CreaseLanes::kPoints);
        host::putLanes(sum.z, z + own * CreaseLanes::kPoints);
    }
}
}  // namespace

namespace host
{
void CreaseLanes::separate(int64_t corners, double leastCosine, bool normalize, VectorLanes &sums) const
{
    static_assert(kPoints * kMostCorners <= VectorLanes::kCount);
    sumSides(*this, corners, leastCosine, sums.x, sums.y, sums.z);
    double lengths[VectorLanes::kCount];
    if (normalize)
        normalizeLanes(sums, corners * kPoints, lengths);
}
}  // namespace host
