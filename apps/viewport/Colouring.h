#pragma once

#include <map>

#include <apps/viewport/Buffers.h>
#include <apps/viewport/Item.h>

namespace rq::viewport
{
/// What becomes of an attribute's values; the shaders know the numbers.
enum class ColourMode
{
    Plain,
    AsItIs,
    Component,
    Magnitude,
    Distinct
};

/// What colours an item.
struct ItemColour
{
    ColourMode mode = ColourMode::Plain;
    Found found;
    Seen seen = Seen::Numbers;
    int component = 0;
    float scale = 1.0f;  ///< after that of the buffer
};
ItemColour colourOf(const Item &item, const ColourSource &source);

/// Least and greatest values of arrays, each looked for once.
class ColourRanges
{
public:
    /// Over everything in the scene that the source colours by a number; false when there is nothing.
    bool find(const Scene &scene, const ColourSource &source, double &minimum, double &maximum);

private:
    struct Range
    {
        double minimum, maximum;
    };
    using Key = std::pair<int64_t, int>;

    Range rangeOf(const RQ_DataArray &array, int component) const;

    std::map<Key, Range> known_;
};

/// A title for people: the name, and which part of it.
std::string titleOf(const ColourSource &source);
}  // namespace rq::viewport
