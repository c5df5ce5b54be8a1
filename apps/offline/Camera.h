#pragma once

#include <span>

#include <host/bas/Vector.h>

namespace rq::offline
{
/// A perspective camera that stands where it sees all of an object from three quarters.  The y axis points up.
class Camera
{
public:
    /// Frame the points in a picture of the given width over height.  Without points: the unit sphere around the origin.
    Camera(std::span<const BAS_Vec3f> points, float aspect);

    const BAS_Vec3f &origin() const { return origin_; }

    /// The unit direction through a place in the picture: x from -1 (left) to 1, y from -1 (bottom) to 1.
    BAS_Vec3f direction(float x, float y) const
    {
        return (forward_ + right_ * (x * halfWidth_) + up_ * (y * halfHeight_)).normalized();
    }

private:
    void centre(std::span<const BAS_Vec3f> points);

    BAS_Vec3f origin_;
    BAS_Vec3f forward_;
    BAS_Vec3f right_;
    BAS_Vec3f up_;
    float halfWidth_;  // of the picture at distance 1
    float halfHeight_;
};
}  // namespace rq::offline
