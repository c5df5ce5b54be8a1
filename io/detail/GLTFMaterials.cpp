#include <io/detail/GLTFMaterials.h>

#include <algorithm>
#include <optional>

#include <io/detail/JSONText.h>
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
}  // namespace

GLTFMaterials::GLTFMaterials(const MSH_Detail &detail, Leftovers &leftovers) : detail_(detail)
{
    const ELM_Attribute *names = detail.find(ELM_OWNER_PRIMITIVE, "material");
    if (names && names->strings() && names->tupleSize() == 1)
    {
        names_ = names->strings();
        leftovers.hold(names);
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

void GLTFMaterials::write(BAS_JSONWriter &json) const
{
    if (count() == 0)
        return;
    std::vector<Color> colors(count(), Color{1.0f, 1.0f, 1.0f});
    for (ELM_Offset primitive = 0; colors_ && primitive < detail_.primitiveCount(); ++primitive)
        colors[size_t(of(primitive))] = colorAt(*colors_, primitive);
    json.key("materials");
    json.beginArray();
    for (size_t i = 0; i < colors.size(); ++i)
    {
        json.beginMap();
        if (names_)
            json.writeKeyString("name", toJSONText(names_->table()[i].view()));
        json.key("pbrMetallicRoughness");
        json.beginMap();
        json.key("baseColorFactor");
        const float factor[] = {colors[i][0], colors[i][1], colors[i][2], 1.0f};
        json.uniformArray(factor, 4);
        json.writeKeyInt("metallicFactor", 0);
        json.endMap();
        json.writeKeyBool("doubleSided", true);
        json.endMap();
    }
    json.endArray();
}
}  // namespace rq::io
