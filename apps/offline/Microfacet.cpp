#include <apps/offline/Microfacet.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace rq::offline
{
namespace
{
constexpr float kPi = std::numbers::pi_v<float>;

// Highlights that are sharper than this are missed by most rays.
constexpr float kLeastWidth = 0.02f;

// What a coat mirrors of light that comes straight from above.
constexpr float kCoat = 0.04f;

float square(float value) { return value * value; }
}  // namespace

Microfacet::Microfacet(float roughness, float metalness, const BAS_Vec3f &colour)
    : width_(std::max(kLeastWidth, square(roughness))), headOn_(BAS_Vec3f(kCoat) * (1.0f - metalness) + colour * metalness)
{}

BAS_Vec3f Microfacet::reflectance(float cosine) const
{
    const float grazing = 1.0f - std::clamp(cosine, 0.0f, 1.0f);
    return headOn_ + (BAS_Vec3f(1.0f) - headOn_) * (square(square(grazing)) * grazing);
}

float Microfacet::distribution(const BAS_Vec3f &half) const
{
    return 1.0f / (kPi * square(width_) * square(square(half.x / width_) + square(half.y / width_) + square(half.z)));
}

float Microfacet::masking(const BAS_Vec3f &d) const
{
    const float slope = square(width_) * (square(d.x) + square(d.y)) / std::max(1e-12f, square(d.z));
    return 2.0f / (1.0f + std::sqrt(1.0f + slope));
}

BAS_Vec3f Microfacet::reflected(const BAS_Vec3f &in, const BAS_Vec3f &out) const
{
    if (in.z <= 0.0f || out.z <= 0.0f)
        return BAS_Vec3f(0.0f);
    const BAS_Vec3f half = (in + out).normalized();
    return reflectance(half ^ out) * (kPi * distribution(half) * masking(in) * masking(out) / (4.0f * out.z));
}

BAS_Vec3f Microfacet::sample(const BAS_Vec3f &out, const Imath::V2f &sample, BAS_Vec3f &part) const
{
    // Stretched, the slopes are those of a hemisphere, of which `out` sees one half disc whole and one foreshortened.
    const BAS_Vec3f view = BAS_Vec3f(width_ * out.x, width_ * out.y, out.z).normalized();
    const float across = square(view.x) + square(view.y);
    const BAS_Vec3f side = across > 0.0f ? BAS_Vec3f(-view.y, view.x, 0.0f) / std::sqrt(across) : BAS_Vec3f(1, 0, 0);
    const BAS_Vec3f up = view % side;
    const float r = std::sqrt(sample.x), turn = 2.0f * kPi * sample.y, seen = 0.5f * (1.0f + view.z);
    const float a = r * std::cos(turn);
    const float b = (1.0f - seen) * std::sqrt(std::max(0.0f, 1.0f - square(a))) + seen * r * std::sin(turn);
    const BAS_Vec3f hemisphere = side * a + up * b + view * std::sqrt(std::max(0.0f, 1.0f - square(a) - square(b)));
    const BAS_Vec3f half =
        BAS_Vec3f(width_ * hemisphere.x, width_ * hemisphere.y, std::max(1e-6f, hemisphere.z)).normalized();

    const BAS_Vec3f in = half * (2.0f * (half ^ out)) - out;
    part = in.z > 0.0f ? reflectance(half ^ out) * masking(in) : BAS_Vec3f(0.0f);
    return in;
}
}  // namespace rq::offline
