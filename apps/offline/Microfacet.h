#pragma once

#include <host/bas/Vector.h>

namespace rq::offline
{
/// How a rough clear coat, as of varnish, or a rough metal mirrors: countless small mirrors whose slopes have the
/// distribution GGX (Walter et al., "Microfacet Models for Refraction through Rough Surfaces", 2007), with the reflectance
/// of Schlick ("An Inexpensive BRDF Model for Physically-based Rendering", 1994): a coat's at a refractive index of 1.5, a
/// metal's of its colour.
///
/// Shape  directions are of length 1, lead away from the surface, and have its normal as their z axis
class Microfacet
{
public:
    /// `roughness` from 0, a mirror as far as that can be drawn, to 1; metalness from 0, a coat, to 1, a metal of a colour.
    Microfacet(float roughness, float metalness, const BAS_Vec3f &colour);

    /// The part of the light from `in` that leaves to `out`, times the cosine of `in`, times pi.
    BAS_Vec3f reflected(const BAS_Vec3f &in, const BAS_Vec3f &out) const;

    /// A direction that light may come from to leave to `out`, and how much of it does (Heitz, "Sampling the GGX
    /// Distribution of Visible Normals", 2018).
    BAS_Vec3f sample(const BAS_Vec3f &out, const Imath::V2f &sample, BAS_Vec3f &part) const;

    /// The part of light that is mirrored at this angle rather than let in.
    BAS_Vec3f reflectance(float cosine) const;

private:
    float distribution(const BAS_Vec3f &half) const;
    float masking(const BAS_Vec3f &direction) const;

    float width_;
    BAS_Vec3f headOn_;  // the reflectance of light that comes straight from above
};
}  // namespace rq::offline
