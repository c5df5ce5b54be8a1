#include <apps/offline/Tracer.h>

#include <algorithm>
#include <cmath>

#include <apps/offline/Microfacet.h>
#include <apps/offline/Sky.h>

namespace rq::offline
{
namespace
{
const BAS_Vec3f kFloor(0.60f, 0.60f, 0.59f);
const BAS_Vec3f kInk(0.02f, 0.02f, 0.025f);

// How far rays start from a surface: the scene is a unit sphere, where hits are exact to some 1e-6.
constexpr float kLift = 5e-5f;

// The floor lies a little below what stands on it, and fades out at this distance.
constexpr float kFloorGap = 1e-3f;
constexpr float kFloorEnd = 7.0f;

// Outdoors a fifth bounce is not seen.
constexpr int kBounces = 4;

// How rough coats are at least where light comes from matt surfaces.
constexpr float kDull = 0.6f;

// Half the width of the lines of edges, in pixels.
constexpr float kLine = 0.65f;

// Uses of random numbers; every bounce has its own.
enum Use
{
    UsePixel,
    UseTime,
    UseFirst,
    UseSun = 0,
    UseDirection,
    UseLobe,
    UsesPerBounce
};

/// The offset of a tent filter, which reaches one pixel to each side.
float tent(float sample) { return sample < 0.5f ? std::sqrt(2.0f * sample) - 1.0f : 1.0f - std::sqrt(2.0f - 2.0f * sample); }

// A shading normal that turns away from the viewer shows the unlit back of a surface as black speckles.
void bend(Hit &hit, const BAS_Vec3f &direction)
{
    constexpr float kLeast = 0.02f;
    const float facing = -(hit.normal ^ direction);
    if (facing < kLeast)
        hit.normal = (hit.normal - direction * (kLeast - facing)).normalized();
}

/// A direction as the surface has it, with the normal along z.
BAS_Vec3f local(const BAS_Vec3f &normal, const BAS_Vec3f &direction)
{
    const BAS_Vec3f x = around(normal, {1, 0, 0}), y = around(normal, {0, 1, 0});
    return {x ^ direction, y ^ direction, normal ^ direction};
}

/// What of the light that gets below its surface a material throws back.
BAS_Vec3f scattered(const Material &material) { return material.colour * (1.0f - material.metalness); }

/// The part of light that gets below the surface.
BAS_Vec3f let(const Microfacet &coat, const BAS_Vec3f &out) { return BAS_Vec3f(1.0f) - coat.reflectance(out.z); }

/// How often a path follows what is mirrored: always where nothing is scattered.
float mirrorChance(const Material &material, const BAS_Vec3f &below)
{
    return material.metalness >= 1.0f ? 1.0f : std::clamp(1.0f - std::min({below.x, below.y, below.z}), 0.15f, 0.85f);
}

float brightness(const BAS_Vec3f &light) { return 0.2126f * light.x + 0.7152f * light.y + 0.0722f * light.z; }

/// Whether the mean of `count` values that look on a screen like this is known well enough.
bool isSettled(double sum, double squares, int count, float noise)
{
    const double mean = sum / count, variance = std::max(0.0, squares / count - mean * mean);
    return std::sqrt(variance / (count - 1)) < double(noise);
}
}  // namespace

struct Tracer::Path
{
    Ray ray;
    const Samples &samples;
    uint32_t index;
    int bounces = 0;
    BAS_Vec3f throughput{1.0f};
    float leastRoughness = 0.0f;

    /// Coats look duller by light that a matt surface sends on: the spots that polished ones throw back would be met by few
    /// rays, as noise (Kaplanyan and Dachsbacher, "Path Space Regularization", 2013).
    Microfacet coat(const Material &material) const
    {
        return {std::max(material.roughness, leastRoughness), material.metalness, material.colour};
    }
    Imath::V2f random(int use) const { return samples.at(UseFirst + UsesPerBounce * bounces + use, index); }
};

Tracer::Tracer(const Scene &scene, const Camera &camera, const Settings &settings)
    : scene_(scene), camera_(camera), settings_(settings), floorHeight_(scene.outline().lowest() - kFloorGap),
      toFile_(scene.fromFile().inverse())
{}

Pixel Tracer::pixel(int x, int y) const
{
    // Noise is judged whenever their number has doubled: the sequence is even then.
    constexpr int kFirstLook = 16;
    const Samples samples(uint64_t(y) << 32 | uint64_t(x));
    Pixel sum;
    double seen = 0.0, squares = 0.0, depth = 0.0;
    int look = kFirstLook, met = 0;
    while (sum.samples < settings_.samples)
    {
        const Pixel one = sample(x, y, samples, uint32_t(sum.samples++));
        sum.beauty += one.beauty;
        sum.albedo += one.albedo;
        sum.normal += one.normal;
        sum.coverage += one.coverage;
        if (std::isfinite(one.depth))
        {
            depth += double(one.depth);
            ++met;
        }
        const double value = double(encodeSRGB(std::clamp(brightness(one.beauty), 0.0f, 1.0f)));
        seen += value;
        squares += value * value;
        if (settings_.noise > 0.0f && sum.samples == look && isSettled(seen, squares, look, settings_.noise))
            break;
        look = sum.samples == look ? 2 * look : look;
    }
    const float part = 1.0f / float(sum.samples);
    sum.beauty *= part;
    sum.albedo *= part;
    sum.normal *= part;
    sum.coverage *= part;
    sum.depth = met > 0 ? float(depth / met) : std::numeric_limits<float>::infinity();
    return sum;
}

Pixel Tracer::sample(int x, int y, const Samples &samples, uint32_t index) const
{
    const Imath::V2f at = samples.at(UsePixel, index);
    const float px = 2.0f * (float(x) + 0.5f + tent(at.x)) / float(settings_.width) - 1.0f;
    const float py = 1.0f - 2.0f * (float(y) + 0.5f + tent(at.y)) / float(settings_.height);
    const float open = settings_.shutterOpen, part = samples.at(UseTime, index).x;
    Pixel pixel;
    pixel.depth = std::numeric_limits<float>::infinity();
    pixel.beauty = follow(
        {{camera_.origin(), camera_.direction(px, py), open + (settings_.shutterClose - open) * part}, samples, index},
        pixel);
    return pixel;
}

BAS_Vec3f Tracer::follow(Path path, Pixel &first) const
{
    BAS_Vec3f sum(0.0f);
    for (; path.bounces <= kBounces; ++path.bounces)
    {
        const Ray &ray = path.ray;
        Hit hit;
        float fade = 0.0f;
        const bool isObject = scene_.intersect(ray, hit);
        if (!isObject && !meetsFloor(ray, hit, fade))
            return sum + times(path.throughput, skyLight(ray.direction));
        if (path.bounces == 0)
            note(hit, hit.distance, !isObject, first);
        bend(hit, ray.direction);
        if (isObject && path.bounces == 0)
            if (const BAS_Vec3f plain = shown(hit, ray); plain.x >= 0.0f)
                return plain;

        // The floor ends in the sky.
        sum += times(path.throughput, skyLight(ray.direction)) * fade;
        path.throughput *= 1.0f - fade;
        const BAS_Vec3f out = local(hit.normal, -ray.direction);
        sum += times(path.throughput, sunOn(hit, out, path));
        if (!bounce(hit, out, path))
            break;
    }
    return sum;
}

bool Tracer::meetsFloor(const Ray &ray, Hit &hit, float &fade) const
{
    hit.distance = (floorHeight_ - ray.origin.y) / ray.direction.y;
    if (!settings_.ground || ray.direction.y >= 0.0f || !(hit.distance > 0.0f))
        return false;
    hit.position = hit.shadowOrigin = ray.origin + ray.direction * hit.distance;
    hit.facetNormal = hit.normal = BAS_Vec3f(0.0f, 1.0f, 0.0f);
    hit.material = {kFloor};
    hit.time = ray.time;
    const float away = std::hypot(hit.position.x, hit.position.z) / kFloorEnd;
    fade = away * away * (3.0f - 2.0f * away);
    return away < 1.0f;
}

void Tracer::note(const Hit &hit, float distance, bool isFloor, Pixel &pixel) const
{
    pixel.albedo = hit.material.colour;
    pixel.normal = toFile_.normal(hit.normal);
    pixel.depth = distance * float(toFile_.scale());
    pixel.coverage = isFloor ? 0.0f : 1.0f;
}

/// What is shown without light, negative where light decides.
BAS_Vec3f Tracer::shown(const Hit &hit, const Ray &ray) const
{
    if (scene_.shade() == Look::Normals)
        return toLight(toFile_.normal(hit.normal) * 0.5f + BAS_Vec3f(0.5f));
    if (hit.edge < kLine * camera_.pixel(settings_.height) * hit.distance * ray.direction.length())
        return kInk;
    return BAS_Vec3f(-1.0f);
}

BAS_Vec3f Tracer::sunOn(const Hit &hit, const BAS_Vec3f &out, const Path &path) const
{
    const BAS_Vec3f sun = sunDirection(path.random(UseSun));
    const float facing = hit.normal ^ sun;
    if (facing <= 0.0f || scene_.occluded({hit.shadowOrigin + hit.facetNormal * kLift, sun, path.ray.time}))
        return BAS_Vec3f(0.0f);
    if (hit.material.roughness < 0.0f)
        return times(hit.material.colour, sunLight()) * facing;
    const Microfacet coat = path.coat(hit.material);
    return times(times(scattered(hit.material), sunLight()), let(coat, out) * facing) +
           times(sunLight(), coat.reflected(local(hit.normal, sun), out));
}

// Either the coat mirrors or what lies under it scatters; which one is a matter of chance.
bool Tracer::bounce(const Hit &hit, const BAS_Vec3f &out, Path &path) const
{
    const Imath::V2f sample = path.random(UseDirection);
    BAS_Vec3f in = onDisc(sample, 1.0f, std::sqrt(std::max(0.0f, 1.0f - sample.x)));
    const bool isCoated = hit.material.roughness >= 0.0f;
    const Microfacet coat = path.coat(hit.material);
    const BAS_Vec3f below = isCoated ? let(coat, out) : BAS_Vec3f(1.0f);
    const float chance = isCoated ? mirrorChance(hit.material, below) : 0.0f;
    if (path.random(UseLobe).x < chance)
    {
        BAS_Vec3f part;
        in = coat.sample(out, sample, part);
        path.throughput = times(path.throughput, part / chance);
    }
    else
    {
        path.throughput = times(times(path.throughput, scattered(hit.material)), below / (1.0f - chance));
        path.leastRoughness = kDull;
    }

    BAS_Vec3f direction = around(hit.normal, in);
    // What would leave through the facet leaves mirrored instead: half the sky must not turn black near silhouettes.
    if (const float through = direction ^ hit.facetNormal; through < 0.0f)
        direction -= hit.facetNormal * (2.0f * through);
    path.ray = {hit.shadowOrigin + hit.facetNormal * kLift, direction, path.ray.time};
    return brightness(path.throughput) > 0.0f;
}
}  // namespace rq::offline
