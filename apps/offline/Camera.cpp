#include <apps/offline/Camera.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>

namespace rq::offline
{
namespace
{
constexpr float kRadians = std::numbers::pi_v<float> / 180.0f;

// From the front, turned to the right, a little from above.
constexpr float kTurn = 33.0f * kRadians;
constexpr float kElevation = 21.0f * kRadians;

// The angle over the smaller side of the picture: long enough a lens to keep proportions.
constexpr float kAngle = 30.0f * kRadians;

// Part of the picture that the object fills.
constexpr float kFilled = 0.86f;

constexpr std::array<BAS_Vec3f, 6> kUnitPoints = {BAS_Vec3f(1, 0, 0),  BAS_Vec3f(-1, 0, 0), BAS_Vec3f(0, 1, 0),
                                                  BAS_Vec3f(0, -1, 0), BAS_Vec3f(0, 0, 1),  BAS_Vec3f(0, 0, -1)};
}  // namespace

Camera::Camera(std::span<const BAS_Vec3f> points, float aspect)
{
    if (points.empty())
        points = kUnitPoints;
    forward_ =
        -BAS_Vec3f(std::sin(kTurn) * std::cos(kElevation), std::sin(kElevation), std::cos(kTurn) * std::cos(kElevation));
    right_ = (forward_ % BAS_Vec3f(0.0f, 1.0f, 0.0f)).normalized();
    up_ = right_ % forward_;
    const float half = std::tan(0.5f * kAngle);
    halfHeight_ = aspect < 1.0f ? half / aspect : half;
    halfWidth_ = halfHeight_ * aspect;
    origin_ = BAS_Vec3f(0.0f);

    // Shifting to the middle changes how far back is enough, and the other way round: a few rounds settle both.
    for (int round = 0; round < 4; ++round)
    {
        float back = std::numeric_limits<float>::lowest();
        for (const BAS_Vec3f &point : points)
        {
            const BAS_Vec3f p = point - origin_;
            const float needed = std::max(std::abs(p ^ right_) / halfWidth_, std::abs(p ^ up_) / halfHeight_) / kFilled;
            back = std::max(back, needed - (p ^ forward_));
        }
        origin_ -= forward_ * (back + 1e-3f);
        centre(points);
    }
}

// Move sideways until the object's picture has equal room on both sides.
void Camera::centre(std::span<const BAS_Vec3f> points)
{
    float left = std::numeric_limits<float>::max(), right = -left, bottom = left, top = -left, nearest = left;
    for (const BAS_Vec3f &point : points)
    {
        const BAS_Vec3f p = point - origin_;
        const float depth = std::max(p ^ forward_, 1e-6f);
        left = std::min(left, (p ^ right_) / depth);
        right = std::max(right, (p ^ right_) / depth);
        bottom = std::min(bottom, (p ^ up_) / depth);
        top = std::max(top, (p ^ up_) / depth);
        nearest = std::min(nearest, depth);
    }
    origin_ += (right_ * (left + right) + up_ * (bottom + top)) * (0.5f * nearest);
}
}  // namespace rq::offline
