#include <io/detail/GLTFMaterials.h>

#include <algorithm>

#include <io/detail/rowReader.h>

namespace rq::io
{
namespace
{
using Color = std::array<float, 3>;

Color colorAt(const ELM_Attribute &colors, int64_t row)
{
    Color color;
    readRow(colors, row, color.data(), 3);
    return color;
}

bool hasOfAny(const MSH_Detail &detail, std::string_view name)
{
    return detail.find(ELM_OWNER_VERTEX, name) || detail.find(ELM_OWNER_POINT, name) ||
           detail.find(ELM_OWNER_PRIMITIVE, name);
}
}  // namespace

GLTFMaterials::GLTFMaterials(const MSH_Detail &detail, Leftovers &leftovers)
    : detail_(detail), hasNames_(hasOfAny(detail, "material")), hasColors_(hasOfAny(detail, "Cd"))
{
    const ELM_Attribute *names = detail.find(ELM_OWNER_PRIMITIVE, "material");
    if (names && names->strings() && names->tupleSize() == 1)
    {
        names_ = names->strings();
        leftovers.hold(names);
        if (const ELM_Attribute *told = findMaterials(detail))
        {
            told_ = told->dicts()->get(0);
            leftovers.hold(told);
        }
    }
    const ELM_Attribute *colors = detail.find(ELM_OWNER_PRIMITIVE, "Cd");
    if (colors && colors->storageClass() == ELM_STORAGE_CLASS_FLOAT && colors->tupleSize() == 3 &&
        detail.primitiveCount() > 0)
    {
        if (isOneEach(*colors))
            leftovers.hold(colors_ = colors);
        else
            otherColors_ = colors;
    }
    readAll();
}

bool GLTFMaterials::isOneEach(const ELM_Attribute &colors) const
{
    std::vector<std::optional<Color>> known(names_ ? names_->table().size() : 1);
    for (ELM_Offset primitive = 0; primitive < detail_.primitiveCount(); ++primitive)
    {
        const int material = names_ ? names_->index(primitive) : 0;
        const Color color = colorAt(colors, primitive);
        const bool allowed = std::ranges::all_of(color, [](float c) { return c >= 0.0f && c <= 1.0f; });
        if (material < 0 || !allowed || known[size_t(material)].value_or(color) != color)
            return false;
        known[size_t(material)] = color;
    }
    return true;
}

void GLTFMaterials::readAll()
{
    for (size_t i = 0; names_ && i < names_->table().size(); ++i)
        all_.emplace_back(names_->table()[i].view(), findMaterial(told_.options(), names_->table()[i]).value_or(Material{}));
    if (!names_ && colors_)
        all_.emplace_back();
    for (ELM_Offset primitive = 0; colors_ && primitive < detail_.primitiveCount(); ++primitive)
        std::ranges::copy(colorAt(*colors_, primitive), all_[size_t(of(primitive))].second.colour.begin());
}

void GLTFMaterials::list(GLTFMaterialList &file) const
{
    for (const auto &[name, material] : all_)
        file.add(name, material);
}

int GLTFMaterials::inFile(int material, const GLTFGiven &given, GLTFMaterialList &file) const
{
    const bool takesName = !hasNames_ && given.material, takesColour = !hasColors_ && given.colour;
    if (material < 0 && !takesName && !takesColour)
        return -1;
    auto [name, made] = material < 0 ? std::pair<std::string, Material>() : all_[size_t(material)];
    if (takesName)
    {
        // Colours of its own count more than what the name means.
        const auto colour = material < 0 ? given.told.colour : made.colour;
        name = *given.material;
        made = given.told;
        made.colour = colour;
    }
    if (takesColour)
        made.colour = *given.colour;
    return file.add(name, made);
}
}  // namespace rq::io
