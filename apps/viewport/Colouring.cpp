#include <apps/viewport/Colouring.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <apps/viewport/MaterialColours.h>
#include <host/bas/Parallel.h>
#include <rq/data/Values.h>

namespace rq::viewport
{
namespace
{
// A value costs about 1 ns.
constexpr int64_t kEntriesPerBlock = 16384;

ItemColour asColour(const Found &found)
{
    // Bytes count to 255, all else to 1.
    const float scale = found.array->getStorage() == RQ_STORAGE_UINT8 ? 1.0f / 255.0f : 1.0f;
    return {ColourMode::AsItIs, found, Seen::Numbers, 0, scale};
}

ItemColour byAttribute(const Found &found, int component)
{
    const RQ_DataArray &array = *found.array;
    if (array.getStorage() == RQ_STORAGE_STRING && !array.hasArrayEntries() && array.getTupleSize() == 1)
        return {ColourMode::Distinct, found, Seen::Texts, 0, 1.0f};
    if (!RQisNumeric(array.getStorage()) || array.hasArrayEntries() || component >= array.getTupleSize())
        return {};
    if (component == kAsColour && array.getTupleSize() >= 3)
        return asColour(found);
    if (component == kMagnitude && array.getTupleSize() > 1)
        return {ColourMode::Magnitude, found, Seen::Numbers, 0, 1.0f};
    return {ColourMode::Component, found, Seen::Numbers, std::max(component, 0), 1.0f};
}
}  // namespace

ItemColour colourOf(const Item &item, const ColourSource &source)
{
    if (source.by == ColourBy::FaceSet && item.form->faceSets)
        return {ColourMode::Distinct, {item.form->faceSets, Lookup::Face}, Seen::Numbers, 0, 1.0f};
    if (source.by == ColourBy::Own)
    {
        const Found found = findAttribute(item, "Cd");
        const bool fits = found && RQisNumeric(found.array->getStorage()) && !found.array->hasArrayEntries() &&
                          found.array->getTupleSize() >= 3;
        if (fits)
            return asColour(found);
        return item.materials && item.materials->isTold ? asColour(item.materials->found) : ItemColour();
    }
    if (source.isByMaterial() && item.materials &&
        (source.owner == RQ_OWNER_INVALID || lookupOf(*item.form, source.owner) == item.materials->found.lookup))
        return asColour(item.materials->found);
    if (source.by == ColourBy::Attribute)
        if (const Found found = findAttribute(item, BAS_StringHolder(source.name), source.owner))
            return byAttribute(found, source.component);
    return {};
}

ColourRanges::Range ColourRanges::rangeOf(const RQ_DataArray &array, int component) const
{
    const Values<float> values(array);
    const int64_t size = values.tupleSize();
    const auto number = [&](int64_t entry) {
        if (component != kMagnitude)
            return double(values(entry, component));
        double sum = 0.0;
        for (int64_t c = 0; c < size; ++c)
            sum += double(values(entry, c)) * double(values(entry, c));
        return std::sqrt(sum);
    };
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    return host::parallelReduce(
        values.entries(), kEntriesPerBlock, Range{kInfinity, -kInfinity},
        [&](int64_t begin, int64_t end) {
            Range range{kInfinity, -kInfinity};
            for (int64_t i = begin; i < end; ++i)
                if (const double value = number(i); std::isfinite(value))
                    range = {std::min(range.minimum, value), std::max(range.maximum, value)};
            return range;
        },
        [](Range &into, const Range &from) {
            into = {std::min(into.minimum, from.minimum), std::max(into.maximum, from.maximum)};
        });
}

bool ColourRanges::find(const Scene &scene, const ColourSource &source, double &minimum, double &maximum)
{
    Range all{std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity()};
    bool mapped = false;
    std::map<Key, Range> known;
    for (const Item &item : scene.items())
    {
        const ItemColour colour = colourOf(item, source);
        if (colour.mode != ColourMode::Component && colour.mode != ColourMode::Magnitude)
            continue;
        mapped = true;
        if (!source.autoRange)
            break;
        const int component = colour.mode == ColourMode::Magnitude ? kMagnitude : colour.component;
        const Key key(colour.found.array->getDataId(), component);
        const auto before = known_.find(key);
        const Range range = before != known_.end() ? before->second : rangeOf(*colour.found.array, component);
        if (key.first >= 0)
            known.emplace(key, range);
        all = {std::min(all.minimum, range.minimum), std::max(all.maximum, range.maximum)};
    }
    known_ = std::move(known);
    const bool given = !source.autoRange || all.minimum > all.maximum;
    minimum = given ? source.minimum : all.minimum;
    maximum = given ? source.maximum : all.maximum;
    return mapped;
}

std::string titleOf(const ColourSource &source)
{
    if (source.component == kMagnitude || source.component == kAsColour)
        return source.name;
    return source.name + "[" + std::to_string(source.component) + "]";
}
}  // namespace rq::viewport
