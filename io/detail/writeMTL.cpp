#include <io/detail/writeMTL.h>

#include <fmt/format.h>

#include <io/detail/Materials.h>
#include <io/detail/OBJNames.h>

namespace rq::io
{
std::string writeMTL(const BAS_Options &materials)
{
    std::string text;
    for (const auto &[name, numbers] : materials)
    {
        const std::optional<Material> material = findMaterial(materials, name);
        if (!material || !isTellable(name.view()))
            continue;
        const auto &[red, green, blue] = material->colour;
        text += fmt::format("newmtl {}\nKd {} {} {}\n", name.view(), red, green, blue);
        if (material->roughness >= 0.0)
            text += fmt::format("Pr {}\n", material->roughness);
        if (material->metalness > 0.0)
            text += fmt::format("Pm {}\n", material->metalness);
    }
    return text;
}
}  // namespace rq::io
