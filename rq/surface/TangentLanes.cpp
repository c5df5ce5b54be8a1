#include <rq/surface/detail/TangentLanes.h>

#include <cmath>
#include <limits>

#include <host/bas/clones.h>
#include <host/bas/faceGeometry.h>

namespace
{
struct Lane
{
    float *x, *y, *z;
};

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
HOST_CLONES void project(const Lane &vector, const Lane &normal, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
    {
        const float nx = normal.x[i], ny = normal.y[i], nz = normal.z[i];
        const float along = nx * vector.x[i] + ny * vector.y[i] + nz * vector.z[i];
        const float x = vector.x[i] - along * nx, y = vector.y[i] - along * ny, z = vector.z[i] - along * nz;
        const float scale = scaleTo(1.0f, x, y, z);
        vector.x[i] = scale * x;
        vector.y[i] = scale * y;
        vector.z[i] = scale * z;
    }
}

/// -1 where the texture is mirrored.
HOST_CLONES void signs(const float *u1, const float *v1, const float *u2, const float *v2, int64_t count, float *sign)
{
    for (int64_t i = 0; i < count; ++i)
        sign[i] = u1[i] * v2[i] - v1[i] * u2[i] > 0.0f ? 1.0f : -1.0f;
}

/// The direction of factor1 * edge1 - factor2 * edge2, or the opposite one.
HOST_CLONES void combine(const Lane &edge1, const float *factor1, const Lane &edge2, const float *factor2, const float *sign,
                         int64_t count, const Lane &result)
{
    for (int64_t i = 0; i < count; ++i)
    {
        const float x = factor1[i] * edge1.x[i] - factor2[i] * edge2.x[i];
        const float y = factor1[i] * edge1.y[i] - factor2[i] * edge2.y[i];
        const float z = factor1[i] * edge1.z[i] - factor2[i] * edge2.z[i];
        const float scale = scaleTo(sign[i], x, y, z);
        result.x[i] = scale * x;
        result.y[i] = scale * y;
        result.z[i] = scale * z;
    }
}

HOST_CLONES void cosines(const Lane &a, const Lane &b, int64_t count, float *cosine)
{
    for (int64_t i = 0; i < count; ++i)
    {
        const float value = a.x[i] * b.x[i] + a.y[i] * b.y[i] + a.z[i] * b.z[i];
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

HOST_CLONES void weigh(const Lane &vector, const float *weight, int64_t count, const Lane &result)
{
    for (int64_t i = 0; i < count; ++i)
    {
        result.x[i] = weight[i] * vector.x[i];
        result.y[i] = weight[i] * vector.y[i];
        result.z[i] = weight[i] * vector.z[i];
    }
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
    const auto lane = [this](int first) { return Lane{row(first), row(first + 1), row(first + 2)}; };
    const Lane edge1 = lane(EDGE1), edge2 = lane(EDGE2), normal = lane(NORMAL), next = lane(NEXT), previous = lane(PREVIOUS);
    const float *const u1 = row(TEXTURE), *const v1 = row(TEXTURE + 1), *const u2 = row(TEXTURE + 2),
                       *const v2 = row(TEXTURE + 3);
    float *const sign = row(SIGN);
    signs(u1, v1, u2, v2, count_, sign);
    combine(edge1, v2, edge2, v1, sign, count_, lane(ALONG_U));
    combine(edge2, u1, edge1, u2, sign, count_, lane(ALONG_V));
    for (const int projected : {int(ALONG_U), int(ALONG_V), int(NEXT), int(PREVIOUS)})
        project(lane(projected), normal, count_);
    cosines(previous, next, count_, row(COSINE));
    angles(row(COSINE), count_);
    weigh(lane(ALONG_U), row(COSINE), count_, lane(WEIGHTED));
}
}  // namespace rq
