#include <charconv>

#include <fmt/format.h>

#include <apps/viewport/view.h>

namespace rq::app
{
namespace
{
viewport::Shading shadingOf(const std::string &name)
{
    return name == "smooth" ? viewport::Shading::Smooth
           : name == "cusp" ? viewport::Shading::Cusp
           : name == "flat" ? viewport::Shading::Flat
                            : viewport::Shading::Auto;
}

// [OWNER:]NAME[.COMPONENT]
bool readColour(std::string text, viewport::ColourSource &colour, std::string &error)
{
    if (const size_t colon = text.find(':'); colon != text.npos)
    {
        colour.owner = RQowner(text.substr(0, colon).c_str());
        if (colour.owner == RQ_OWNER_INVALID)
        {
            error = fmt::format("--colour {}: expected vertex, point, uniform or detail before the colon", text);
            return false;
        }
        text = text.substr(colon + 1);
    }
    if (const size_t dot = text.rfind('.'); dot != text.npos)
    {
        const char *const end = text.data() + text.size();
        int component = 0;
        const auto [last, failure] = std::from_chars(text.data() + dot + 1, end, component);
        if (failure != std::errc() || last != end || component < 0)
        {
            error = fmt::format("--colour {}: expected a component's number after the dot", text);
            return false;
        }
        colour.component = component;
        text.resize(dot);
    }
    colour.by = viewport::ColourBy::Attribute;
    colour.name = text;
    if (text == "Cd" && colour.component < 0)
        colour.component = viewport::kAsColour;
    return true;
}
}  // namespace

bool readStyle(const ViewOptions &options, viewport::DrawStyle &style, viewport::Preparation &preparation,
               std::string &error)
{
    style.faces = !options.noFaces;
    style.wire = options.wire;
    style.points = options.points;
    style.normals = options.normals;
    style.backFaceTint = !options.noTint;
    preparation.shading = shadingOf(options.shading);
    preparation.cuspDegrees = options.cuspAngle;
    viewport::ColourSource &colour = style.colour;
    viewport::findColourMap(options.map, colour.map);
    if (!options.range.empty())
    {
        colour.autoRange = false;
        colour.minimum = options.range.front();
        colour.maximum = options.range.back();
    }
    if (options.colour.empty())
        return true;
    if (options.colour == "none" || options.colour == "facesets")
    {
        colour.by = options.colour == "none" ? viewport::ColourBy::Plain : viewport::ColourBy::FaceSet;
        return true;
    }
    return readColour(options.colour, colour, error);
}
}  // namespace rq::app
