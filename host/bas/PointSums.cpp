#include <host/bas/PointSums.h>

#include <host/bas/clones.h>

namespace
{
using host::PointSumFaces;

template <int kCorners, bool isWeighted, class Index>
HOST_CLONES void addEach(const PointSumFaces<Index> faces, const double *parts, int64_t firstPoint, double *sums,
                         uint64_t count)
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
            double *const sum = sums + 4 * at;
            const double added[] = {sum[0] + x * weight, sum[1] + y * weight, sum[2] + z * weight, sum[3] + w * weight};
            for (int i = 0; i < 4; ++i)
                sum[i] = added[i];
        }
    }
}

template <class Index>
void add(const PointSumFaces<Index> &faces, const BAS_Vec4d *parts, int64_t firstPoint, BAS_Vec4d *sums, int64_t count)
{
    const auto run = [&](auto function) { function(faces, &parts->x, firstPoint, &sums->x, uint64_t(count)); };
    if (faces.corners == 4)
        faces.weights ? run(addEach<4, true, Index>) : run(addEach<4, false, Index>);
    else
        faces.weights ? run(addEach<3, true, Index>) : run(addEach<3, false, Index>);
}
}  // namespace

namespace host
{
void addParts(const PointSumFaces<int32_t> &faces, const BAS_Vec4d *parts, int64_t firstPoint, BAS_Vec4d *sums,
              int64_t count)
{
    add(faces, parts, firstPoint, sums, count);
}

void addParts(const PointSumFaces<int64_t> &faces, const BAS_Vec4d *parts, int64_t firstPoint, BAS_Vec4d *sums,
              int64_t count)
{
    add(faces, parts, firstPoint, sums, count);
}
}  // namespace host
