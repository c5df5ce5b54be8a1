#include <apps/offline/Palette.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include <apps/offline/Image.h>
#include <host/bas/hashBytes.h>

namespace rq::offline
{
namespace
{
/// From blue over green and yellow to red, dark to bright to dark, so that it reads without colours too.
BAS_Vec3f ramp(float value)
{
    const BAS_Vec3f stops[] = {{0.16f, 0.19f, 0.52f}, {0.13f, 0.55f, 0.71f}, {0.47f, 0.78f, 0.50f},
                               {0.97f, 0.84f, 0.33f}, {0.90f, 0.45f, 0.20f}, {0.65f, 0.11f, 0.16f}};
    const float at = std::clamp(value, 0.0f, 1.0f) * float(std::size(stops) - 1);
    const size_t stop = std::min(size_t(at), std::size(stops) - 2);
    return stops[stop] + (stops[stop + 1] - stops[stop]) * (at - float(stop));
}

float part(float value) { return value - std::floor(value); }
}  // namespace

BAS_Vec3f toLight(const BAS_Vec3f &colour)
{
    BAS_Vec3f light;
    for (int channel = 0; channel < 3; ++channel)
        light[channel] = decodeSRGB(std::clamp(colour[channel], 0.0f, 1.0f));
    return light;
}

Palette::Palette(const Look &look)
    : shade_(look.shade), name_(look.shade == Look::Attribute ? look.attribute
                                : look.shade == Look::UV      ? "uv"
                                                              : "Cd"),
      components_(look.shade == Look::Attribute ? 1
                  : look.shade == Look::UV      ? 2
                                                : 3)
{
    if (shade_ == Look::Primitives)
        name_.clear();
}

void Palette::add(const RQ_Primitive &primitive)
{
    RQ_Owner owner;
    if (shade_ != Look::Attribute)
        return;
    const ElementValues values(primitive, {name()}, components_);
    const RQ_DataArrayHandle &array = primitive.findAttribute(name(), owner, 0);
    for (int64_t i = 0; values && i < array->entries(); ++i)
        range_.enlarge(values.tripleAt(Element{i, i, i}));
}

BAS_Vec3f Palette::colour(const BAS_Vec3f &value, int components) const
{
    if (shade_ == Look::UV)
        return toLight({part(value.x), part(value.y), 0.25f});
    if (shade_ != Look::Attribute)
        return toLight(value);
    BAS_Vec3f share;
    for (int i = 0; i < 3; ++i)
    {
        const float low = range_.minimum()[i], size = range_.maximum()[i] - low;
        share[i] = size > 0.0f ? (value[i] - low) / size : 0.5f;
    }
    return toLight(components == 1 ? ramp(share.x) : BAS_Vec3f(share.x, share.y, components > 2 ? share.z : 0.0f));
}

BAS_Vec3f Palette::distinct(uint64_t number)
{
    const uint64_t hash = host::hashWord(0xC0105, number);
    const float hue = float(hash >> 40) * 0x1p-24f * 6.0f, depth = 0.35f + 0.3f * float(hash & 0xFFFF) * 0x1p-16f;
    const auto channel = [&](float offset) {
        const float at = std::fmod(hue + offset, 6.0f);
        return 0.92f - depth * std::clamp(std::min(at, 4.0f - at), 0.0f, 1.0f);
    };
    return toLight({channel(5.0f), channel(3.0f), channel(1.0f)});
}
}  // namespace rq::offline
