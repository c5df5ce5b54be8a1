#include <apps/offline/readSettings.h>

#include <fmt/format.h>

#include <apps/readPair.h>
#include <apps/readSize.h>

namespace rq::app
{
namespace
{
std::optional<BAS_Vec3d> place(const std::vector<double> &values)
{
    return values.size() == 3 ? std::optional(BAS_Vec3d(values[0], values[1], values[2])) : std::nullopt;
}
}  // namespace

bool readSettings(const RenderOptions &options, offline::Settings &settings, std::string &error)
{
    settings.samples = options.samples;
    settings.noise = float(options.adaptive);
    settings.ground = options.ground;
    readSize(options.size, settings.width, settings.height, error);
    const bool inOrder = readPair(options.shutter, ':', settings.shutterOpen, settings.shutterClose) &&
                         settings.shutterOpen >= 0.0f && settings.shutterClose >= settings.shutterOpen &&
                         settings.shutterClose <= 1.0f;
    if (!inOrder)
        error = fmt::format("--shutter {}: expected FROM:TO, two numbers from 0 to 1 in their order", options.shutter);
    if (!options.output.ends_with(".png") && !options.output.ends_with(".exr"))
        error = fmt::format("--output {}: expected a file whose name ends with .png or .exr", options.output);
    return error.empty();
}

bool readLook(const RenderOptions &options, offline::Look &look, std::string &error)
{
    using offline::Look;
    constexpr std::string_view kAttribute = "attribute:";
    if (options.shade.starts_with(kAttribute) && options.shade.size() > kAttribute.size())
    {
        look = {Look::Attribute, options.shade.substr(kAttribute.size())};
        return true;
    }
    for (const auto &[name, shade] :
         {std::pair("beauty", Look::Beauty), std::pair("wire", Look::Wires), std::pair("normals", Look::Normals),
          std::pair("uv", Look::UV), std::pair("primitive", Look::Primitives)})
        if (options.shade == name)
        {
            look.shade = shade;
            return true;
        }
    error = fmt::format("--shade {}: expected beauty, wire, normals, uv, primitive or attribute:NAME", options.shade);
    return false;
}

offline::View viewOf(const RenderOptions &options)
{
    return {place(options.eye), place(options.look), options.azimuth, options.elevation, options.fov};
}

offline::View viewOf(const RQ_Primitive &primitive)
{
    RQ_Owner owner;
    const RQ_DataArrayHandle &camera = primitive.findAttribute("camera", owner, 0);
    if (!camera || camera->getStorage() != RQ_STORAGE_DICTIONARY || camera->entries() == 0)
        return {};
    const BAS_OptionsHolder dictionary = camera->getDict(0);
    const auto number = [&](const char *name, double least, double most) {
        double value;
        const bool good = dictionary.options().import(name, value) && value >= least && value <= most;
        return good ? std::optional(value) : std::nullopt;
    };
    const auto point = [&](const char *name) {
        std::vector<double> values;
        dictionary.options().import(name, values);
        return place(values);
    };
    return {point("eye"), point("look"), number("azimuth", -36000.0, 36000.0), number("elevation", -90.0, 90.0),
            number("fov", 0.1, 170.0)};
}
}  // namespace rq::app
