#include <apps/viewport/OrbitCamera.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rq::viewport
{
namespace
{
constexpr double kRadians = std::numbers::pi / 180.0;

// Half the angle over the height of the picture: long enough a lens to keep proportions.
const double kHalfHeight = std::tan(15.0 * kRadians);

// Part of the picture that a framed box fills at most.
constexpr double kFilled = 0.92;

bool isFinite(const BAS_Vec3d &v) { return std::isfinite(v.x + v.y + v.z); }

// The ball around a box; the unit ball around the origin for one that has none.
double ballAround(const BAS_BoundingBox &box, BAS_Vec3d &centre)
{
    centre = (BAS_Vec3d(box.minimum()) + BAS_Vec3d(box.maximum())) * 0.5;
    const double radius = 0.5 * (BAS_Vec3d(box.maximum()) - BAS_Vec3d(box.minimum())).length();
    if (!box.isEmpty() && isFinite(centre) && std::isfinite(radius))
        return radius > 0.0 ? radius : std::max(1e-6, 1e-3 * centre.length());
    centre = BAS_Vec3d(0.0);
    return 1.0;
}
}  // namespace

OrbitCamera::OrbitCamera() { frame(BAS_BoundingBox()); }

void OrbitCamera::orbit(double azimuth, double elevation) { setAngles(azimuth_ + azimuth, elevation_ + elevation); }

void OrbitCamera::setAngles(double azimuth, double elevation)
{
    azimuth_ = std::remainder(azimuth, 360.0);
    elevation_ = std::clamp(elevation, -90.0, 90.0);
}

void OrbitCamera::pan(double x, double y)
{
    const Axes axes = this->axes();
    target_ -= (axes.right * x + axes.up * y) * (2.0 * kHalfHeight * distance_);
}

void OrbitCamera::zoom(double factor)
{
    // Neither into the target nor so far that nothing is left to see.
    distance_ = std::clamp(distance_ / factor, 1e-5 * sceneRadius_, 1e5 * sceneRadius_);
}

void OrbitCamera::frame(const BAS_BoundingBox &box, double aspect)
{
    setSceneBounds(box);
    target_ = sceneCentre_;
    // What the box covers when it is turned around the axis that points up: a drum, by some points of its rims.
    BAS_Vec3d half = (BAS_Vec3d(box.maximum()) - BAS_Vec3d(box.minimum())) * 0.5;
    if (box.isEmpty() || !(half.length() > 0.0) || !std::isfinite(half.length()))
        half = BAS_Vec3d(sceneRadius_ / std::sqrt(3.0));
    const double height = up_ == UpAxis::Y ? half.y : half.z;
    const double across = std::hypot(half.x, up_ == UpAxis::Y ? half.z : half.y);
    const double sine = std::sin(elevation_ * kRadians), cosine = std::cos(elevation_ * kRadians);
    constexpr int kPoints = 64;
    distance_ = 0.0;
    for (int i = 0; i < 2 * kPoints; ++i)
    {
        const double turn = i * 2.0 * std::numbers::pi / kPoints, y = i < kPoints ? height : -height;
        const double z = across * std::sin(turn), nearer = y * sine + z * cosine;
        const double up = std::abs(y * cosine - z * sine) / (kHalfHeight * kFilled);
        const double right = std::abs(across * std::cos(turn)) / (kHalfHeight * aspect * kFilled);
        distance_ = std::max(distance_, nearer + std::max(up, right));
    }
}

void OrbitCamera::setSceneBounds(const BAS_BoundingBox &box) { sceneRadius_ = ballAround(box, sceneCentre_); }

OrbitCamera::Axes OrbitCamera::axes() const
{
    const double a = azimuth_ * kRadians, e = elevation_ * kRadians;
    Axes axes;
    axes.right = BAS_Vec3d(std::cos(a), 0.0, -std::sin(a));
    axes.back = BAS_Vec3d(std::sin(a) * std::cos(e), std::sin(e), std::cos(a) * std::cos(e));
    if (up_ == UpAxis::Z)
        for (BAS_Vec3d *axis : {&axes.right, &axes.back})
            *axis = BAS_Vec3d(axis->x, -axis->z, axis->y);
    axes.up = axes.back % axes.right;
    return axes;
}

BAS_Mat4d OrbitCamera::view() const
{
    const Axes axes = this->axes();
    BAS_Mat4d view;
    for (int row = 0; row < 3; ++row)
    {
        view[row][0] = axes.right[row];
        view[row][1] = axes.up[row];
        view[row][2] = axes.back[row];
    }
    const BAS_Vec3d eye = target_ + axes.back * distance_;
    view[3][0] = -(eye ^ axes.right);
    view[3][1] = -(eye ^ axes.up);
    view[3][2] = -(eye ^ axes.back);
    return view;
}

BAS_Mat4d OrbitCamera::projection(double aspect) const
{
    const Axes axes = this->axes();
    const double depth = (target_ + axes.back * distance_ - sceneCentre_) ^ axes.back;  // of the scene's centre
    const double farPlane = std::max(depth + 1.05 * sceneRadius_, 2e-3 * distance_);
    const double nearPlane = std::max({depth - 1.05 * sceneRadius_, 1e-3 * distance_, 1e-5 * farPlane});
    const double range = std::max(farPlane - nearPlane, 1e-6 * nearPlane);
    BAS_Mat4d projection;
    projection[0][0] = 1.0 / (kHalfHeight * aspect);
    projection[1][1] = 1.0 / kHalfHeight;
    projection[2][2] = -(farPlane + nearPlane) / range;
    projection[2][3] = -1.0;
    projection[3][2] = -2.0 * farPlane * nearPlane / range;
    projection[3][3] = 0.0;
    return projection;
}

UpAxis likelyUpAxis(const BAS_BoundingBox &box)
{
    constexpr float kFlat = 0.2f;
    const BAS_Vec3f size = box.isEmpty() ? BAS_Vec3f(0.0f) : box.size();
    return size.z < kFlat * std::min(size.x, size.y) ? UpAxis::Z : UpAxis::Y;
}
}  // namespace rq::viewport
