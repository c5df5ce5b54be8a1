#include <io/detail/GLTFMaterialList.h>

#include <algorithm>

#include <io/detail/JSONText.h>
#include <io/detail/screenColour.h>

namespace rq::io
{
int GLTFMaterialList::add(const std::string &name, const Material &material)
{
    const Named named{name, material};
    const auto known = std::ranges::find(all_, named);
    const int number = int(known - all_.begin());
    if (known == all_.end())
        all_.push_back(named);
    return number;
}

void GLTFMaterialList::write(BAS_JSONWriter &json) const
{
    if (all_.empty())
        return;
    json.key("materials");
    json.beginArray();
    for (const auto &[name, material] : all_)
    {
        json.beginMap();
        if (!name.empty())
            json.writeKeyString("name", toJSONText(name));
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
