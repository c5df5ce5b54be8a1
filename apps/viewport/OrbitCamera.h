#pragma once

#include <host/bas/BoundingBox.h>
#include <host/bas/Vector.h>

namespace rq::viewport
{
enum class UpAxis
{
    Y,
    Z
};

/// A perspective camera that turns around a point.
///
/// Units    angles in degrees, lengths in those of the scene.  Azimuth 0 looks from the front, along -z (with z up along y),
///          and grows to the right; elevation 90 looks down
/// Failure  an empty or infinite box frames the unit sphere around the origin
class OrbitCamera
{
public:
    OrbitCamera();

    /// Turn by angles; elevation stops at the poles.
    void orbit(double azimuth, double elevation);
    void setAngles(double azimuth, double elevation);
    double azimuth() const { return azimuth_; }
    double elevation() const { return elevation_; }

    /// Move what is looked at across the picture, by parts of its height: +x moves the object to the right, +y up.
    void pan(double x, double y);

    /// Come closer by a factor above 1, go back by one below.
    void zoom(double factor);

    /// See all of a box from the present elevation, whatever the azimuth: an orbit keeps it in the picture.
    void frame(const BAS_BoundingBox &box, double aspect = 1.0);

    /// What near and far planes must enclose, without moving; `frame` on a part of a scene is followed by this.
    void setSceneBounds(const BAS_BoundingBox &box);

    UpAxis upAxis() const { return up_; }
    void setUpAxis(UpAxis up) { up_ = up; }

    const BAS_Vec3d &target() const { return target_; }
    double distance() const { return distance_; }

    /// From the scene to the space of the camera, which looks along -z with y up.  Row vectors.
    BAS_Mat4d view() const;

    /// From the space of the camera to clip space, as OpenGL has it.
    BAS_Mat4d projection(double aspect) const;

private:
    // Axes of the camera in the scene.
    struct Axes
    {
        BAS_Vec3d right, up, back;
    };
    Axes axes() const;

    BAS_Vec3d target_{0.0};
    BAS_Vec3d sceneCentre_{0.0};
    double sceneRadius_ = 1.0;
    double distance_ = 1.0;
    double azimuth_ = 33.0;
    double elevation_ = 21.0;
    UpAxis up_ = UpAxis::Y;
};

/// The axis that seems to point up: z for what lies flat in x and y, such as terrain, y else.
UpAxis likelyUpAxis(const BAS_BoundingBox &box);
}  // namespace rq::viewport
