#include <host/bas/PointSums.h>

#include <algorithm>

#include <host/bas/clones.h>

namespace
{
using host::PointSumFaces;

template <int kCorners, bool isWeighted, bool keepsLeast, class Index>
HOST_CLONES void addEach(const PointSumFaces<Index> faces, const double *parts, int64_t firstPoint, uint64_t count,
                         double *sums, double *least)
{
    for (int64_t face = 0; face < faces.count; ++face)
    {
        const double x = parts[4 * face], y = parts[4 * face + 1], z = parts[4 * face + 2], w = parts[4 * face + 3];
        for (int k = 0; k < kCorners; ++k)
        {
            const int64_t corner = face * kCorners + k;
            const uint64_t at = uint64_t(int64_t(faces.points[corner]) - firstPoint);
            if (at >= count)
                continue;
            const double weight = isWeighted ? faces.weights[corner] : 1.0;
            if constexpr (keepsLeast)
                least[at] = std::min(least[at], isWeighted ? weight : w);
            double *const sum = sums + 4 * at;
            const double added[] = {sum[0] + x * weight, sum[1] + y * weight, sum[2] + z * weight, sum[3] + w * weight};
            for (int i = 0; i < 4; ++i)
                sum[i] = added[i];
        }
    }
}

template <int kCorners, class Index>
void add(const PointSumFaces<Index> &faces, const BAS_Vec4d *parts, const host::PointSumPlaces &places)
{
    const auto run = [&](auto function) {
        function(faces, &parts->x, places.first, uint64_t(places.count), &places.sums->x, places.least);
    };
    if (places.least)
        faces.weights ? run(addEach<kCorners, true, true, Index>) : run(addEach<kCorners, false, true, Index>);
    else
        faces.weights ? run(addEach<kCorners, true, false, Index>) : run(addEach<kCorners, false, false, Index>);
}

template <class Index>
void addSome(const PointSumFaces<Index> &faces, const BAS_Vec4d *parts, const host::PointSumPlaces &places)
{
    if (faces.corners == 4)
        add<4>(faces, parts, places);
    else
        add<3>(faces, parts, places);
}
}  // namespace

namespace host
{
void addParts(const PointSumFaces<int32_t> &faces, const BAS_Vec4d *parts, const PointSumPlaces &places)
{
    addSome(faces, parts, places);
}

void addParts(const PointSumFaces<int64_t> &faces, const BAS_Vec4d *parts, const PointSumPlaces &places)
{
    addSome(faces, parts, places);
}
}  // namespace host
