#include <host/bas/quadSplits.h>

#include <algorithm>

#include <host/bas/clones.h>

namespace
{
constexpr int64_t kLanes = 64;

/// The corners of some quads, coordinate by coordinate.
struct Lanes
{
    alignas(64) float x[4][kLanes];
    alignas(64) float y[4][kLanes];
    alignas(64) float z[4][kLanes];
};

// The sums and products of `diagonalSplits`, in its order.
HOST_CLONES void splitLanes(const Lanes &lanes, double *sums)
{
    for (int64_t i = 0; i < kLanes; ++i)
    {
        const double aX = lanes.x[0][i], aY = lanes.y[0][i], aZ = lanes.z[0][i];
        const double bX = lanes.x[1][i] - aX, bY = lanes.y[1][i] - aY, bZ = lanes.z[1][i] - aZ;
        const double cX = lanes.x[2][i] - aX, cY = lanes.y[2][i] - aY, cZ = lanes.z[2][i] - aZ;
        const double dX = lanes.x[3][i] - aX, dY = lanes.y[3][i] - aY, dZ = lanes.z[3][i] - aZ;
        sums[i] = (bY * cZ - bZ * cY) * (cY * dZ - cZ * dY) + (bZ * cX - bX * cZ) * (cZ * dX - cX * dZ) +
                  (bX * cY - bY * cX) * (cX * dY - cY * dX);
    }
}

template <class Index>
void split(const float *positions, const Index *points, const int64_t *firsts, int64_t quads, uint8_t *splits)
{
    Lanes lanes = {};
    double sums[kLanes];
    for (int64_t begin = 0; begin < quads; begin += kLanes)
    {
        const int64_t count = std::min(quads - begin, kLanes);
        for (int64_t i = 0; i < count; ++i)
            for (int k = 0; k < 4; ++k)
            {
                const float *position = positions + 3 * int64_t(points[firsts[begin + i] + k]);
                lanes.x[k][i] = position[0];
                lanes.y[k][i] = position[1];
                lanes.z[k][i] = position[2];
            }
        splitLanes(lanes, sums);
        for (int64_t i = 0; i < count; ++i)
            splits[begin + i] = sums[i] > 0.0;
    }
}
}  // namespace

void host::splitQuads(const float *positions, const int32_t *points, const int64_t *firsts, int64_t quads, uint8_t *splits)
{
    split(positions, points, firsts, quads, splits);
}

void host::splitQuads(const float *positions, const int64_t *points, const int64_t *firsts, int64_t quads, uint8_t *splits)
{
    split(positions, points, firsts, quads, splits);
}
