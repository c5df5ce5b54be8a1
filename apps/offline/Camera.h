#pragma once

#include <optional>
#include <span>

#include <apps/offline/Affine.h>

namespace rq::offline
{
/// What is known of where a camera stands; what is not, is chosen so that it sees all.
struct View
{
    std::optional<BAS_Vec3d> eye;     ///< where it stands, in the file's space
    std::optional<BAS_Vec3d> look;    ///< what it looks at, in the file's space; the middle of all unless told
    std::optional<double> azimuth;    ///< degrees from the front to the right, around what is up
    std::optional<double> elevation;  ///< degrees above the horizon, -90 to 90
    std::optional<double> fov;        ///< degrees over the smaller side of the picture, above 0 and below 180

    /// What `other` knows and this does not.
    void merge(const View &other);

    /// Whether rays can be told apart where it stands and looks, when `fromFile` makes the scene's radius 1.
    bool isWithinReach(const Affine &fromFile) const;
};

/// A perspective camera.  The y axis points up.
class Camera
{
public:
    /// Stand as the view says, or else where all of the points are in the picture, of the given width over height, from
    /// three quarters.  Without points: the unit sphere around the origin.  The view is placed by `fromFile` first.
    Camera(std::span<const BAS_Vec3f> points, float aspect, const View &view = {}, const Affine &fromFile = {});

    const BAS_Vec3f &origin() const { return origin_; }

    /// The unit direction through a place in the picture: x from -1 (left) to 1, y from -1 (bottom) to 1.
    BAS_Vec3f direction(float x, float y) const
    {
        return (forward_ + right_ * (x * halfWidth_) + up_ * (y * halfHeight_)).normalized();
    }

    /// How wide a pixel is at distance 1, in a picture of this height.
    float pixel(int height) const { return 2.0f * halfHeight_ / float(height); }

private:
    void turn(const BAS_Vec3f &forward);
    void frame(std::span<const BAS_Vec3f> points);
    void centre(std::span<const BAS_Vec3f> points);

    BAS_Vec3f origin_{0.0f};
    BAS_Vec3f forward_;
    BAS_Vec3f right_;
    BAS_Vec3f up_;
    float halfWidth_;  // of the picture at distance 1
    float halfHeight_;
};
}  // namespace rq::offline
