#pragma once

#include <host/bas/Vector.h>

namespace rq::offline
{
inline BAS_Vec3f times(const BAS_Vec3f &a, const BAS_Vec3f &b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }

/// Turn a direction around the z axis to one around `axis` (Duff et al., "Building an Orthonormal Basis, Revisited", 2017).
BAS_Vec3f around(const BAS_Vec3f &axis, const BAS_Vec3f &local);

/// The place of a disc that a sample picks, and the height above it.
BAS_Vec3f onDisc(const Imath::V2f &sample, float radius, float height);

/// The light of a clear sky without its sun.  What a white surface sends on of a light of 1 is 1.
BAS_Vec3f skyLight(const BAS_Vec3f &direction);

/// A sun from the left of the usual camera, so that shadows fall across the picture: the direction of a place on it, and
/// what a white surface that faces it sends on of its light.
BAS_Vec3f sunDirection(const Imath::V2f &sample);
BAS_Vec3f sunLight();
}  // namespace rq::offline
