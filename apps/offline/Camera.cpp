#include <apps/offline/Camera.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>

#include <host/bas/BoundingBox.h>

namespace rq::offline
{
namespace
{
constexpr double kRadians = std::numbers::pi / 180.0;

// From the front, turned to the right, a little from above.
constexpr double kAzimuth = 33.0;
constexpr double kElevation = 21.0;

// The angle over the smaller side of the picture: long enough a lens to keep proportions.
constexpr double kAngle = 30.0;

// Part of the picture that the object fills.
constexpr float kFilled = 0.86f;

constexpr std::array<BAS_Vec3f, 6> kUnitPoints = {BAS_Vec3f(1, 0, 0),  BAS_Vec3f(-1, 0, 0), BAS_Vec3f(0, 1, 0),
                                                  BAS_Vec3f(0, -1, 0), BAS_Vec3f(0, 0, 1),  BAS_Vec3f(0, 0, -1)};
}  // namespace

void View::merge(const View &other)
{
    const auto take = [](auto &mine, const auto &given) { mine = mine ? mine : given; };
    take(eye, other.eye);
    take(look, other.look);
    take(azimuth, other.azimuth);
    take(elevation, other.elevation);
    take(fov, other.fov);
}

bool View::isWithinReach(const Affine &fromFile) const
{
    constexpr double kReach = 1e15;
    const auto isNear = [&fromFile](const std::optional<BAS_Vec3d> &place) {
        return !place || fromFile.point(*place).length() <= kReach;
    };
    return isNear(eye) && isNear(look);
}

Camera::Camera(std::span<const BAS_Vec3f> points, float aspect, const View &view, const Affine &fromFile)
{
    if (points.empty())
        points = kUnitPoints;
    const float half = float(std::tan(0.5 * kRadians * view.fov.value_or(kAngle)));
    halfHeight_ = aspect < 1.0f ? half / aspect : half;
    halfWidth_ = halfHeight_ * aspect;

    const double azimuth = kRadians * view.azimuth.value_or(kAzimuth),
                 elevation = kRadians * view.elevation.value_or(kElevation);
    turn(-BAS_Vec3f(
        BAS_Vec3d(std::sin(azimuth) * std::cos(elevation), std::sin(elevation), std::cos(azimuth) * std::cos(elevation))));
    frame(points);
    if (view.eye)
    {
        origin_ = BAS_Vec3f(fromFile.point(*view.eye));
        BAS_BoundingBox box;
        for (const BAS_Vec3f &point : points)
            box.enlarge(point);
        turn(view.look ? BAS_Vec3f(fromFile.point(*view.look)) - origin_ : box.centre() - origin_);
    }
    else if (view.look)
        // As far away as all of it would be seen from.
        origin_ = BAS_Vec3f(fromFile.point(*view.look)) - forward_ * origin_.length();
}

// What looks straight up or down has the far side, or the near one, at the top of the picture.
void Camera::turn(const BAS_Vec3f &forward)
{
    forward_ = forward.length2() > 0.0f ? forward.normalized() : BAS_Vec3f(0.0f, 0.0f, -1.0f);
    const BAS_Vec3f across = forward_ % BAS_Vec3f(0.0f, 1.0f, 0.0f);
    right_ = across.length() > 1e-6f ? across.normalized() : BAS_Vec3f(1.0f, 0.0f, 0.0f);
    up_ = right_ % forward_;
}

void Camera::frame(std::span<const BAS_Vec3f> points)
{
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
