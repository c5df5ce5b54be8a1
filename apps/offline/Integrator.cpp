#include <apps/offline/Integrator.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <host/bas/Parallel.h>

namespace
{
using offline::Hit;

const BAS_Vec3f kSunDirection = BAS_Vec3f(0.55f, 0.75f, 0.45f).normalized();
const BAS_Vec3f kSunLight(1.05f, 0.98f, 0.86f);
const BAS_Vec3f kZenith(0.42f, 0.5f, 0.62f);
const BAS_Vec3f kHorizon(0.78f, 0.8f, 0.82f);
const BAS_Vec3f kFloor(0.72f, 0.72f, 0.71f);

// Half the sun's width as a fraction of the unit sphere's radius: shadows with a slightly soft edge.
constexpr float kSunRadius = 0.02f;

/// A small counter-based generator: the numbers of a pixel depend on the pixel alone (Jarzynski and Olano, "Hash functions
/// for GPU rendering", 2020: PCG).
class Random
{
public:
    Random(uint32_t x, uint32_t y, uint32_t sample) : state_(mix(x + mix(y + mix(sample)))) {}

    float next()
    {
        state_ = mix(state_);
        return float(state_ >> 8) * (1.0f / 16777216.0f);
    }

private:
    static uint32_t mix(uint32_t value)
    {
        const uint32_t state = value * 747796405u + 2891336453u;
        const uint32_t word = ((state >> ((state >> 28u) + 4u)) ^ state) * 277803737u;
        return (word >> 22u) ^ word;
    }

    uint32_t state_;
};

BAS_Vec3f sky(const BAS_Vec3f &direction)
{
    const float height = std::clamp(0.5f + 0.5f * direction.y, 0.0f, 1.0f);
    return kHorizon + (kZenith - kHorizon) * height;
}

/// Turn a direction around the z axis to one around `normal`.
BAS_Vec3f around(const BAS_Vec3f &normal, const BAS_Vec3f &local)
{
    const BAS_Vec3f side = std::abs(normal.x) > 0.5f ? BAS_Vec3f(0.0f, 1.0f, 0.0f) : BAS_Vec3f(1.0f, 0.0f, 0.0f);
    const BAS_Vec3f x = (side % normal).normalized(), y = normal % x;
    return x * local.x + y * local.y + normal * local.z;
}

BAS_Vec3f cosineDirection(float u, float v)
{
    const float radius = std::sqrt(u), turn = 2.0f * float(M_PI) * v;
    return {radius * std::cos(turn), radius * std::sin(turn), std::sqrt(std::max(0.0f, 1.0f - u))};
}

BAS_Vec3f times(const BAS_Vec3f &a, const BAS_Vec3f &b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }

class Tracer
{
public:
    Tracer(const offline::Scene &scene, const offline::Camera &camera, const offline::Settings &settings)
        : scene_(scene), camera_(camera), settings_(settings)
    {
        const BAS_BoundingBox &box = scene.bounds();
        const float diagonal = box.isEmpty() ? 1.0f : box.size().length();
        floorHeight_ = box.minimum().y;
        floorCentre_ = box.centre();
        floorRadius_ = 2.5f * diagonal;
        // Far enough from a surface that a ray does not hit it again, near enough not to be seen.
        lift_ = 2e-5f * diagonal + 4e-7f * std::max(box.minimum().length(), box.maximum().length());
    }

    BAS_Vec3f pixel(int x, int y) const
    {
        // Samples lie in the cells of a square pattern, jittered.
        const int across = std::max(1, int(std::sqrt(float(settings_.samples))));
        BAS_Vec3f sum(0.0f);
        for (int sample = 0; sample < settings_.samples; ++sample)
        {
            Random random{uint32_t(x), uint32_t(y), uint32_t(sample)};
            const float u = (float(sample % across) + random.next()) / float(across);
            const int down = (settings_.samples + across - 1) / across;
            const float v = (float(sample / across) + random.next()) / float(down);
            const float px = 2.0f * (float(x) + u) / float(settings_.width) - 1.0f;
            const float py = 1.0f - 2.0f * (float(y) + v) / float(settings_.height);
            sum += trace(camera_.direction(px, py), random);
        }
        return sum / float(settings_.samples);
    }

private:
    BAS_Vec3f trace(const BAS_Vec3f &direction, Random &random) const
    {
        Hit hit;
        if (scene_.intersect(camera_.origin(), direction, hit))
            return times(hit.colour, light(hit, random));
        const BAS_Vec3f background = sky(direction);
        if (!settings_.ground || direction.y >= 0.0f)
            return background;

        // The floor fades into the horizon, so that it has no edge.
        const float distance = (floorHeight_ - camera_.origin().y) / direction.y;
        hit.position = hit.shadowOrigin = camera_.origin() + direction * distance;
        hit.facetNormal = hit.normal = BAS_Vec3f(0.0f, 1.0f, 0.0f);
        const float away = (hit.position - BAS_Vec3f(floorCentre_.x, floorHeight_, floorCentre_.z)).length() / floorRadius_;
        if (distance <= 0.0f || away >= 1.0f)
            return background;
        const float fade = away * away * (3.0f - 2.0f * away);
        return times(kFloor, light(hit, random)) * (1.0f - fade) + background * fade;
    }

    /// The light that falls on a point: the sun where nothing stands before it, and one direction of the sky.
    BAS_Vec3f light(const Hit &hit, Random &random) const
    {
        const BAS_Vec3f origin = hit.shadowOrigin + hit.facetNormal * lift_;
        BAS_Vec3f sum(0.0f);

        const float turn = 2.0f * float(M_PI) * random.next(), radius = kSunRadius * std::sqrt(random.next());
        const BAS_Vec3f sun =
            around(kSunDirection, {radius * std::cos(turn), radius * std::sin(turn), 1.0f}).normalized();
        const float facing = hit.normal ^ sun;
        if (facing > 0.0f && (hit.facetNormal ^ sun) > -0.2f && !scene_.occluded(origin, sun))
            sum += kSunLight * facing;

        const float u = random.next(), v = random.next();
        BAS_Vec3f up = around(hit.normal, cosineDirection(u, v));
        if ((up ^ hit.facetNormal) < 0.0f)
            up -= hit.facetNormal * (2.0f * (up ^ hit.facetNormal));
        if (!scene_.occluded(origin, up))
            sum += sky(up) * (settings_.ground && up.y < 0.0f ? 0.6f : 1.0f);
        return sum;
    }

    const offline::Scene &scene_;
    const offline::Camera &camera_;
    const offline::Settings &settings_;
    BAS_Vec3f floorCentre_;
    float floorHeight_;
    float floorRadius_;
    float lift_;
};
}  // namespace

offline::Image offline::render(const Scene &scene, const Camera &camera, const Settings &settings)
{
    // A tile of 16 x 16 pixels with 16 samples is some 5 ms of work: enough tasks to share a picture evenly.
    constexpr int kTile = 16;
    const Tracer tracer(scene, camera, settings);
    Image image(settings.width, settings.height);
    const int across = (settings.width + kTile - 1) / kTile, down = (settings.height + kTile - 1) / kTile;
    host::parallelFor(int64_t(across) * down, 1, [&](int64_t tile) {
        const int left = int(tile % across) * kTile, top = int(tile / across) * kTile;
        for (int y = top; y < std::min(top + kTile, settings.height); ++y)
            for (int x = left; x < std::min(left + kTile, settings.width); ++x)
                image.at(x, y) = tracer.pixel(x, y);
    });
    return image;
}
