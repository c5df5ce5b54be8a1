#include <apps/offline/Camera.h>

#include <algorithm>
#include <cmath>

offline::Camera::Camera(const BAS_BoundingBox &box, float aspect)
{
    // From the front, a little from the right and above; 35 degrees over the picture's smaller side.
    const float halfAngle = std::tan(0.5f * 35.0f * float(M_PI) / 180.0f);
    forward_ = BAS_Vec3f(-0.48f, -0.42f, -0.77f).normalized();
    right_ = (forward_ % BAS_Vec3f(0.0f, 1.0f, 0.0f)).normalized();
    up_ = right_ % forward_;
    halfHeight_ = aspect < 1.0f ? halfAngle / aspect : halfAngle;
    halfWidth_ = halfHeight_ * aspect;

    // Far enough back that every corner of the box lies inside all four sides, with some air around.
    constexpr float kAir = 1.08f;
    const BAS_Vec3f centre = box.centre();
    float distance = 0.0f;
    for (int corner = 0; corner < 8; ++corner)
    {
        const BAS_Vec3f offset(corner & 1 ? box.maximum().x : box.minimum().x, corner & 2 ? box.maximum().y : box.minimum().y,
                               corner & 4 ? box.maximum().z : box.minimum().z);
        const BAS_Vec3f p = offset - centre;
        const float sideways = kAir * std::max(std::abs(p ^ right_) / halfWidth_, std::abs(p ^ up_) / halfHeight_);
        distance = std::max(distance, sideways - (p ^ forward_));
    }
    origin_ = centre - forward_ * std::max(distance, 1e-6f);
}
