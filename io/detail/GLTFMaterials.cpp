#include <io/detail/GLTFMaterials.h>

#include <algorithm>
#include <optional>

#include <io/detail/JSONText.h>
#include <io/detail/rowReader.h>
#include <io/detail/screenColour.h>

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
}  // namespace

GLTFMaterials::GLTFMaterials(const MSH_Detail &detail, Leftovers &leftovers) : detail_(detail)
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
    if (!colors || colors->storageClass() != ELM_STORAGE_CLASS_FLOAT || colors->tupleSize() != 3 ||
        detail.primitiveCount() == 0)
        return;
    if (isOneEach(*colors))
        leftovers.hold(colors_ = colors);
    else
        otherColors_ = colors;
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

std::vector<Material> GLTFMaterials::all() const
{
    std::vector<Material> materials(count());
    for (size_t i = 0; names_ && i < materials.size(); ++i)
        if (const auto found = findMaterial(told_.options(), names_->table()[i]))
            materials[i] = *found;
    for (ELM_Offset primitive = 0; colors_ && primitive < detail_.primitiveCount(); ++primitive)
        std::ranges::copy(colorAt(*colors_, primitive), materials[size_t(of(primitive))].colour.begin());
    return materials;
}

void GLTFMaterials::write(BAS_JSONWriter &json) const
{
    if (count() == 0)
        return;
    json.key("materials");
    json.beginArray();
    const std::vector<Material> materials = all();
    for (size_t i = 0; i < materials.size(); ++i)
    {
        const Material &material = materials[i];
        json.beginMap();
        if (names_)
            json.writeKeyString("name", toJSONText(names_->table()[i].view()));
        json.key("pbrMetallicRoughness");
        json.beginMap();
        json.key("baseColorFactor");
        double factor[] = {0.0, 0.0, 0.0, 1.0};
        std::ranges::transform(material.colour, factor, toLight);
        json.uniformArray(factor, 4);
        json.writeKeyReal("metallicFactor", std::clamp(material.metalness, 0.0, 1.0));
        if (material.roughness >= 0.0)
            json.writeKeyReal("roughnessFactor", std::min(material.roughness, 1.0));
        json.endMap();
        json.writeKeyBool("doubleSided", true);
        json.endMap();
    }
    json.endArray();
}
}  // namespace rq::io
