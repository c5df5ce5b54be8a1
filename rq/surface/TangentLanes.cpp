#include <rq/surface/detail/TangentLanes.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <host/bas/clones.h>
#include <host/bas/faceGeometry.h>

namespace
{
// Rows never overlap, which the compiler must know to take several values at a time.
using Row = const float *__restrict;

inline float larger(float a, float b) { return a > b ? a : b; }

/// What scales a vector to the given length; 1 for one that is too short to have a direction.
inline float scaleTo(float length, float x, float y, float z)
{
    const float squared = x * x + y * y + z * z;
    const float largest = larger(std::abs(x), larger(std::abs(y), std::abs(z)));
    const bool hasDirection = (largest > std::numeric_limits<float>::min()) & (squared > 0.0f);
    return hasDirection ? length / std::sqrt(hasDirection ? squared : 1.0f) : 1.0f;
}

/// Replaces vectors by the direction of what is left of them in the plane of the normal.
HOST_CLONES void project(float *__restrict vx, float *__restrict vy, float *__restrict vz, Row normalX, Row normalY,
                         Row normalZ, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
    {
        const float nx = normalX[i], ny = normalY[i], nz = normalZ[i];
        const float along = nx * vx[i] + ny * vy[i] + nz * vz[i];
        const float x = vx[i] - along * nx, y = vy[i] - along * ny, z = vz[i] - along * nz;
        const float scale = scaleTo(1.0f, x, y, z);
        vx[i] = scale * x;
        vy[i] = scale * y;
        vz[i] = scale * z;
    }
}

/// One axis of factor1 * edge1 - factor2 * edge2.
HOST_CLONES void combine(Row edge1, Row factor1, Row edge2, Row factor2, int64_t count, float *__restrict result)
{
    for (int64_t i = 0; i < count; ++i)
        result[i] = factor1[i] * edge1[i] - factor2[i] * edge2[i];
}

/// The direction of vectors whose texture is not mirrored, the opposite one of others.
HOST_CLONES void orient(float *__restrict x, float *__restrict y, float *__restrict z, Row sign, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
    {
        const float scale = scaleTo(sign[i], x[i], y[i], z[i]);
        x[i] *= scale;
        y[i] *= scale;
        z[i] *= scale;
    }
}

/// -1 where the texture is mirrored.
HOST_CLONES void signs(Row u1, Row v1, Row u2, Row v2, int64_t count, float *__restrict sign)
{
    for (int64_t i = 0; i < count; ++i)
        sign[i] = u1[i] * v2[i] - v1[i] * u2[i] > 0.0f ? 1.0f : -1.0f;
}

HOST_CLONES void cosines(Row ax, Row ay, Row az, Row bx, Row by, Row bz, int64_t count, float *__restrict cosine)
{
    for (int64_t i = 0; i < count; ++i)
    {
        const float value = ax[i] * bx[i] + ay[i] * by[i] + az[i] * bz[i];
        cosine[i] = value > 1.0f ? 1.0f : value < -1.0f ? -1.0f : value;
    }
}

/// Replaces cosines by their angles.
HOST_CLONES void angles(float *cosine, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
    {
        const double along = double(cosine[i]);
        cosine[i] = float(host::angleOf(std::sqrt((1.0 - along) * (1.0 + along)), along));
    }
}

HOST_CLONES void weigh(Row vector, Row weight, int64_t count, float *__restrict result)
{
    for (int64_t i = 0; i < count; ++i)
        result[i] = weight[i] * vector[i];
}
}  // namespace

namespace rq
{
void TangentLanes::Block::run(int64_t count)
{
    const float *const u1 = rows[TEXTURE], *const v1 = rows[TEXTURE + 1], *const u2 = rows[TEXTURE + 2],
                       *const v2 = rows[TEXTURE + 3];
    signs(u1, v1, u2, v2, count, rows[SIGN]);
    for (int axis = 0; axis < 3; ++axis)
    {
        combine(rows[EDGE1 + axis], v2, rows[EDGE2 + axis], v1, count, rows[ALONG_U + axis]);
        combine(rows[EDGE2 + axis], u1, rows[EDGE1 + axis], u2, count, rows[ALONG_V + axis]);
    }
    for (const int first : {int(ALONG_U), int(ALONG_V)})
        orient(rows[first], rows[first + 1], rows[first + 2], rows[SIGN], count);
    for (const int first : {int(ALONG_U), int(ALONG_V), int(NEXT), int(PREVIOUS)})
        project(rows[first], rows[first + 1], rows[first + 2], rows[NORMAL], rows[NORMAL + 1], rows[NORMAL + 2], count);
    cosines(rows[PREVIOUS], rows[PREVIOUS + 1], rows[PREVIOUS + 2], rows[NEXT], rows[NEXT + 1], rows[NEXT + 2], count,
            rows[COSINE]);
    angles(rows[COSINE], count);
    for (int axis = 0; axis < 3; ++axis)
        weigh(rows[ALONG_U + axis], rows[COSINE], count, rows[WEIGHTED + axis]);
}

void TangentLanes::run()
{
    for (int64_t begin = 0; begin < count_; begin += kBlock)
        blocks_[size_t(begin / kBlock)].run(std::min(kBlock, count_ - begin));
}
}  // namespace rq
