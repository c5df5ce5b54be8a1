#include <apps/viewport/MaterialColours.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <map>

#include <apps/SurfaceMaterials.h>
#include <host/bas/Parallel.h>
#include <host/bas/hashBytes.h>
#include <rq/data/DANumeric.h>

namespace rq::viewport
{
namespace
{
using Bytes = std::array<uint8_t, 3>;

constexpr const char *kMeanings = "materials";

// As what has no colour at all is drawn.
constexpr Bytes kClay = {184, 176, 163};

// An element costs about 1 ns.
constexpr int64_t kElementsPerTask = 16384;

/// Hues that are easy to tell apart.
BAS_Vec3f colourOfName(const BAS_StringHolder &name)
{
    const uint64_t hash = host::hashBytes(name.view());
    const float hue = float(hash >> 40) * 0x1p-24f * 6.0f, lightness = hash % 3 == 1 ? 0.78f : 0.95f;
    const BAS_Vec3f pure(std::abs(hue - 3.0f) - 1.0f, 2.0f - std::abs(hue - 2.0f), 2.0f - std::abs(hue - 4.0f));
    BAS_Vec3f colour;
    for (int c = 0; c < 3; ++c)
        colour[c] = (0.62f + 0.62f * (std::clamp(pure[c], 0.0f, 1.0f) - 0.62f)) * lightness;
    return colour;
}

Bytes bytesOf(const BAS_Vec3f &colour)
{
    Bytes bytes;
    for (int c = 0; c < 3; ++c)
        bytes[size_t(c)] = uint8_t(std::lround(255.0f * colour[c]));
    return bytes;
}

RQ_DataArrayHandle coloursOf(const app::SurfaceMaterials &materials, const std::vector<MaterialRow> &rows, uint64_t key)
{
    std::vector<Bytes> palette = {kClay};
    for (const MaterialRow &row : rows)
        palette.push_back(bytesOf(row.colour));
    const int64_t count = materials.entries();
    const BAS_IntrusivePtr<RQ_DANumeric<uint8_t>> colours(new RQ_DANumeric<uint8_t>(count, 3, RQ_TYPE_COLOR));
    host::parallelFor(count, kElementsPerTask,
                      [&](int64_t i) { std::ranges::copy(palette[size_t(materials.of(i) + 1)], colours->data() + 3 * i); });
    if (key != 0)
        colours->setDataId(int64_t(key >> 2 | uint64_t(1) << 62));
    return colours;
}
}  // namespace

uint64_t materialKey(const Item &item)
{
    uint64_t hash = 0x3A7E;
    bool isKnown = true;
    for (const char *name : {kMaterialName, kMeanings})
    {
        const Found found = findAttribute(item, name);
        isKnown = isKnown && (!found || found.array->getDataId() >= 0);
        hash = host::hashWord(hash, found ? uint64_t(found.array->getDataId()) : 0);
        hash = host::hashWord(hash, uint64_t(found.lookup));
    }
    hash = host::hashWord(hash, uint64_t(std::bit_cast<uintptr_t>(item.form->faceSetMap.get())));
    return isKnown ? hash | 1 : 0;
}

MaterialColoursHandle makeMaterialColours(const Item &item, uint64_t key)
{
    const Found names = findAttribute(item, kMaterialName);
    const bool ofCopies = names.lookup == Lookup::Copy;
    const auto materials = ofCopies ? app::SurfaceMaterials(names.array, findAttribute(item, kMeanings).array)
                                    : app::SurfaceMaterials(*item.primitive);
    if (materials.all().empty())
        return nullptr;
    const auto made = std::make_shared<MaterialColours>();
    made->key = key;
    for (const app::SurfaceMaterials::Named &named : materials.all())
    {
        made->rows.push_back({named.name.c_str(), named.isTold ? named.colour : colourOfName(named.name)});
        made->isTold = made->isTold || named.isTold;
    }
    made->found = {coloursOf(materials, made->rows, key), ofCopies ? Lookup::Copy : lookupOf(*item.form, materials.owner())};
    return made;
}

std::vector<MaterialRow> materialsOf(const Scene &scene)
{
    std::map<std::string, BAS_Vec3f> all;
    for (const Item &item : scene.items())
        if (item.materials)
            for (const MaterialRow &row : item.materials->rows)
                all.emplace(row.name, row.colour);
    std::vector<MaterialRow> rows;
    for (const auto &[name, colour] : all)
        rows.push_back({name, colour});
    return rows;
}
}  // namespace rq::viewport
