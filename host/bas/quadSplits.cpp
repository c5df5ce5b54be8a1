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

// The sums and products of `diagonalSplits`, in its order, for the diagonal from corner `a`.
HOST_CLONES void splitLanes(const Lanes &lanes, int a, double *sums)
{
    const int b = (a + 1) % 4, c = (a + 2) % 4, d = (a + 3) % 4;
    for (int64_t i = 0; i < kLanes; ++i)
    {
        const double aX = lanes.x[a][i], aY = lanes.y[a][i], aZ = lanes.z[a][i];
        const double bX = lanes.x[b][i] - aX, bY = lanes.y[b][i] - aY, bZ = lanes.z[b][i] - aZ;
        const double cX = lanes.x[c][i] - aX, cY = lanes.y[c][i] - aY, cZ = lanes.z[c][i] - aZ;
        const double dX = lanes.x[d][i] - aX, dY = lanes.y[d][i] - aY, dZ = lanes.z[d][i] - aZ;
        sums[i] = (bY * cZ - bZ * cY) * (cY * dZ - cZ * dY) + (bZ * cX - bX * cZ) * (cZ * dX - cX * dZ) +
                  (bX * cY - bY * cX) * (cX * dY - cY * dX);
    }
}

/// Whether all of the first `diagonals` diagonals serve.
template <class Index>
void split(const float *positions, const Index *points, const int64_t *firsts, int64_t quads, int diagonals, uint8_t *splits)
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
        std::fill_n(splits + begin, count, 1);
        for (int diagonal = 0; diagonal < diagonals; ++diagonal)
        {
            splitLanes(lanes, diagonal, sums);
            for (int64_t i = 0; i < count; ++i)
                splits[begin + i] &= uint8_t(sums[i] > 0.0);
        }
    }
}
}  // namespace

void host::splitQuads(const float *positions, const int32_t *points, const int64_t *firsts, int64_t quads, uint8_t *splits)
{
    split(positions, points, firsts, quads, 1, splits);
}

void host::splitQuads(const float *positions, const int64_t *points, const int64_t *firsts, int64_t quads, uint8_t *splits)
{
    split(positions, points, firsts, quads, 1, splits);
}

void host::convexQuads(const float *positions, const int32_t *points, const int64_t *firsts, int64_t quads, uint8_t *convex)
{
    split(positions, points, firsts, quads, 2, convex);
}

void host::convexQuads(const float *positions, const int64_t *points, const int64_t *firsts, int64_t quads, uint8_t *convex)
{
    split(positions, points, firsts, quads, 2, convex);
}
