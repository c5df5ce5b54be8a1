#pragma once

#include <host/bas/BoundingBox.h>
#include <host/bas/Vector.h>

namespace offline
{
/// A perspective camera that stands where it sees a whole box from three quarters, y up.
class Camera
{
public:
    /// Frame `box` in a picture of the given width over height.
    Camera(const BAS_BoundingBox &box, float aspect);

    const BAS_Vec3f &origin() const { return origin_; }

    /// The unit direction through a place in the picture: x from -1 (left) to 1, y from -1 (bottom) to 1.
    BAS_Vec3f direction(float x, float y) const
    {
        return (forward_ + right_ * (x * halfWidth_) + up_ * (y * halfHeight_)).normalized();
    }

private:
    BAS_Vec3f origin_;
    BAS_Vec3f forward_;
    BAS_Vec3f right_;
    BAS_Vec3f up_;
    float halfWidth_;
    float halfHeight_;
};
}  // namespace offline
