#include <apps/offline/Integrator.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <numbers>

#include <apps/offline/Samples.h>
#include <host/bas/Parallel.h>
#include <host/bas/Progress.h>

namespace rq::offline
{
namespace
{
// From the left of the camera, so that shadows fall across the picture.
const BAS_Vec3f kSunDirection = BAS_Vec3f(-0.64f, 0.70f, 0.36f).normalized();
const BAS_Vec3f kSunLight(1.12f, 1.05f, 0.93f);
const BAS_Vec3f kZenith(0.30f, 0.38f, 0.50f);
const BAS_Vec3f kHorizon(0.74f, 0.77f, 0.80f);
const BAS_Vec3f kFloor(0.60f, 0.60f, 0.59f);

// What a surface that hides the sky sends on of its own light, and the floor of what falls on it.
constexpr float kBounce = 0.16f;
constexpr float kFloorBounce = 0.55f;

// Tangent of half the angle that the sun covers: shadows with a slightly soft edge.
constexpr float kSunRadius = 0.025f;

// How far rays start from a surface: the scene is a unit sphere, where hits are exact to some 1e-6.
constexpr float kLift = 5e-5f;

// The floor lies a little below what stands on it, and fades out at this distance.
constexpr float kFloorGap = 1e-3f;
constexpr float kFloorEnd = 7.0f;

constexpr int kSkyRays = 2;
constexpr float kTurn = 2.0f * std::numbers::pi_v<float>;

enum Use
{
    UsePixel,
    UseSun,
    UseSky
};

BAS_Vec3f times(const BAS_Vec3f &a, const BAS_Vec3f &b) { return {a.x * b.x, a.y * b.y, a.z * b.z}; }

BAS_Vec3f skyLight(const BAS_Vec3f &direction)
{
    const float height = std::sqrt(std::max(0.0f, direction.y));
    return kHorizon + (kZenith - kHorizon) * height;
}

/// Turn a direction around the z axis to one around `axis` (Duff et al., "Building an Orthonormal Basis, Revisited", 2017).
BAS_Vec3f around(const BAS_Vec3f &axis, const BAS_Vec3f &local)
{
    const float sign = std::copysign(1.0f, axis.z);
    const float a = -1.0f / (sign + axis.z), b = axis.x * axis.y * a;
    const BAS_Vec3f x(1.0f + sign * axis.x * axis.x * a, sign * b, -sign * axis.x);
    const BAS_Vec3f y(b, sign + axis.y * axis.y * a, -axis.y);
    return x * local.x + y * local.y + axis * local.z;
}

BAS_Vec3f onDisc(const Imath::V2f &sample, float radius, float height)
{
    const float r = radius * std::sqrt(sample.x), turn = kTurn * sample.y;
    return {r * std::cos(turn), r * std::sin(turn), height};
}

/// The offset of a tent filter, which reaches one pixel to each side.
float tent(float sample) { return sample < 0.5f ? std::sqrt(2.0f * sample) - 1.0f : 1.0f - std::sqrt(2.0f - 2.0f * sample); }

class Tracer
{
public:
    Tracer(const Scene &scene, const Camera &camera, const Settings &settings)
        : scene_(scene), camera_(camera), settings_(settings), samples_(settings.samples),
          skySamples_(kSkyRays * settings.samples), floorHeight_(scene.outline().lowest() - kFloorGap)
    {}

    BAS_Vec3f pixel(int x, int y) const
    {
        const uint64_t seed = uint64_t(y) << 32 | uint64_t(x);
        BAS_Vec3f sum(0.0f);
        for (int sample = 0; sample < samples_.count(); ++sample)
        {
            const Imath::V2f at = samples_.at(seed, UsePixel, sample);
            const float px = 2.0f * (float(x) + 0.5f + tent(at.x)) / float(settings_.width) - 1.0f;
            const float py = 1.0f - 2.0f * (float(y) + 0.5f + tent(at.y)) / float(settings_.height);
            sum += trace(camera_.direction(px, py), seed, sample);
        }
        return sum / float(samples_.count());
    }

private:
    BAS_Vec3f trace(const BAS_Vec3f &direction, uint64_t seed, int sample) const
    {
        Hit hit;
        if (scene_.intersect(camera_.origin(), direction, hit))
        {
            bend(hit, direction);
            return times(hit.colour, light(hit, seed, sample));
        }
        const BAS_Vec3f background = skyLight(direction);
        const float distance = (floorHeight_ - camera_.origin().y) / direction.y;
        if (!settings_.ground || direction.y >= 0.0f || distance <= 0.0f)
            return background;

        hit.position = hit.shadowOrigin = camera_.origin() + direction * distance;
        hit.facetNormal = hit.normal = BAS_Vec3f(0.0f, 1.0f, 0.0f);
        const float away = std::sqrt(hit.position.x * hit.position.x + hit.position.z * hit.position.z) / kFloorEnd;
        if (away >= 1.0f)
            return background;
        const float fade = away * away * (3.0f - 2.0f * away);
        return times(kFloor, light(hit, seed, sample)) * (1.0f - fade) + background * fade;
    }

    // A shading normal that turns away from the viewer shows the unlit back of a surface as black speckles.
    static void bend(Hit &hit, const BAS_Vec3f &direction)
    {
        constexpr float kLeast = 0.02f;
        const float facing = -(hit.normal ^ direction);
        if (facing < kLeast)
            hit.normal = (hit.normal - direction * (kLeast - facing)).normalized();
    }

    /// The light that falls on a surface and leaves it towards the viewer, before its own colour.
    BAS_Vec3f light(const Hit &hit, uint64_t seed, int sample) const
    {
        const BAS_Vec3f origin = hit.shadowOrigin + hit.facetNormal * kLift;
        const BAS_Vec3f sun =
            around(kSunDirection, onDisc(samples_.at(seed, UseSun, sample), kSunRadius, 1.0f)).normalized();
        BAS_Vec3f sum(0.0f);
        if (const float facing = hit.normal ^ sun; facing > 0.0f && !scene_.occluded(origin, sun))
            sum += kSunLight * facing;
        for (int ray = 0; ray < kSkyRays; ++ray)
            sum += sky(hit, origin, skySamples_.at(seed, UseSky, kSkyRays * sample + ray)) / float(kSkyRays);
        return sum;
    }

    BAS_Vec3f sky(const Hit &hit, const BAS_Vec3f &origin, const Imath::V2f &sample) const
    {
        const float height = std::sqrt(std::max(0.0f, 1.0f - sample.x));
        BAS_Vec3f direction = around(hit.normal, onDisc(sample, 1.0f, height));
        // What would leave through the facet leaves mirrored instead: half the sky must not turn black near silhouettes.
        if (const float through = direction ^ hit.facetNormal; through < 0.0f)
            direction -= hit.facetNormal * (2.0f * through);
        if (scene_.occluded(origin, direction))
            return kHorizon * kBounce;
        return settings_.ground && direction.y < 0.0f ? kFloor * kFloorBounce : skyLight(direction);
    }

    const Scene &scene_;
    const Camera &camera_;
    const Settings &settings_;
    Samples samples_;
    Samples skySamples_;
    float floorHeight_;
};
}  // namespace

std::unique_ptr<Image> render(const Scene &scene, const Camera &camera, const Settings &settings)
{
    // A tile of 16 x 16 pixels with 16 samples is some 5 ms of work: enough tasks to share a picture evenly.
    constexpr int kTile = 16;
    const Tracer tracer(scene, camera, settings);
    auto image = std::make_unique<Image>(settings.width, settings.height);
    const int64_t across = (settings.width + kTile - 1) / kTile, down = (settings.height + kTile - 1) / kTile;
    BAS_Progress progress("Rendering");
    std::atomic<int64_t> finished{0};
    std::atomic<bool> stopped{false};
    host::parallelFor(across * down, 1, [&](int64_t tile) {
        if (stopped.load(std::memory_order_relaxed))
            return;
        const int left = int(tile % across) * kTile, top = int(tile / across) * kTile;
        for (int y = top; y < std::min(top + kTile, settings.height); ++y)
            for (int x = left; x < std::min(left + kTile, settings.width); ++x)
                image->at(x, y) = tracer.pixel(x, y);
        if (progress.interrupted(double(++finished) / double(across * down)))
            stopped = true;
    });
    if (stopped)
        image.reset();
    return image;
}
}  // namespace rq::offline
