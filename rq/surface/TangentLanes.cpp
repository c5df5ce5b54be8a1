#include <rq/surface/detail/TangentLanes.h>

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
void TangentLanes::reserve(int64_t corners)
{
    values_.resize(size_t(corners * ROWS));
    capacity_ = corners;
    count_ = 0;
}

void TangentLanes::run()
{
    const float *const u1 = row(TEXTURE), *const v1 = row(TEXTURE + 1), *const u2 = row(TEXTURE + 2),
                       *const v2 = row(TEXTURE + 3);
    signs(u1, v1, u2, v2, count_, row(SIGN));
    for (int axis = 0; axis < 3; ++axis)
    {
        combine(row(EDGE1 + axis), v2, row(EDGE2 + axis), v1, count_, row(ALONG_U + axis));
        combine(row(EDGE2 + axis), u1, row(EDGE1 + axis), u2, count_, row(ALONG_V + axis));
    }
    for (const int first : {int(ALONG_U), int(ALONG_V)})
        orient(row(first), row(first + 1), row(first + 2), row(SIGN), count_);
    for (const int first : {int(ALONG_U), int(ALONG_V), int(NEXT), int(PREVIOUS)})
        project(row(first), row(first + 1), row(first + 2), row(NORMAL), row(NORMAL + 1), row(NORMAL + 2), count_);
    cosines(row(PREVIOUS), row(PREVIOUS + 1), row(PREVIOUS + 2), row(NEXT), row(NEXT + 1), row(NEXT + 2), count_,
            row(COSINE));
    angles(row(COSINE), count_);
    for (int axis = 0; axis < 3; ++axis)
        weigh(row(ALONG_U + axis), row(COSINE), count_, row(WEIGHTED + axis));
}
}  // namespace rq
