#include <apps/offline/Sky.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rq::offline
{
namespace
{
const BAS_Vec3f kSunDirection = BAS_Vec3f(-0.64f, 0.70f, 0.36f).normalized();
const BAS_Vec3f kSunLight(1.12f, 1.05f, 0.93f);
const BAS_Vec3f kZenith(0.30f, 0.38f, 0.50f);
const BAS_Vec3f kHorizon(0.74f, 0.77f, 0.80f);

// Tangent of half the angle that the sun covers: shadows with a slightly soft edge.
constexpr float kSunRadius = 0.025f;
}  // namespace

BAS_Vec3f around(const BAS_Vec3f &axis, const BAS_Vec3f &local)
{
    const float sign = std::copysign(1.0f, axis.z);
    const float a = -1.0f / (sign + axis.z), b = axis.x * axis.y * a;
    const BAS_Vec3f x(1.0f + sign * axis.x * axis.x * a, sign * b, -sign * axis.x);
    const BAS_Vec3f y(b, sign + axis.y * axis.y * a, -axis.y);
    return x * local.x + y * local.y + axis * local.z;
}

BAS_Vec3f onDisc(const Imath::V2f &sample, float radius, float height)
{
    const float r = radius * std::sqrt(sample.x), turn = 2.0f * std::numbers::pi_v<float> * sample.y;
    return {r * std::cos(turn), r * std::sin(turn), height};
}

BAS_Vec3f skyLight(const BAS_Vec3f &direction)
{
    const float height = std::sqrt(std::max(0.0f, direction.y));
    return kHorizon + (kZenith - kHorizon) * height;
}

BAS_Vec3f sunDirection(const Imath::V2f &sample)
{
    return around(kSunDirection, onDisc(sample, kSunRadius, 1.0f)).normalized();
}

BAS_Vec3f sunLight() { return kSunLight; }
}  // namespace rq::offline
