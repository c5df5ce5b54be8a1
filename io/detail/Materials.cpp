#include <io/detail/Materials.h>

#include <algorithm>
#include <cmath>

namespace rq::io
{
namespace
{
constexpr const char *kName = "materials";
}  // namespace

void setMaterial(BAS_Options &materials, std::string_view name, const Material &material)
{
    std::vector<double> numbers(material.colour.begin(), material.colour.end());
    const bool isMetal = material.metalness > 0.0;
    if (material.roughness >= 0.0 || isMetal)
        numbers.push_back(material.roughness >= 0.0 ? material.roughness : 1.0);
    if (isMetal)
        numbers.push_back(material.metalness);
    materials.set(name, std::move(numbers));
}

std::optional<Material> findMaterial(const BAS_Options &materials, const BAS_StringHolder &name)
{
    std::vector<double> numbers;
    if (!materials.import(name, numbers) || numbers.size() < 3 ||
        !std::ranges::all_of(numbers, [](double number) { return std::isfinite(number); }))
        return std::nullopt;
    Material material;
    std::copy_n(numbers.begin(), 3, material.colour.begin());
    if (numbers.size() > 3)
        material.roughness = numbers[3];
    if (numbers.size() > 4)
        material.metalness = numbers[4];
    return material;
}

void writeMaterials(MOD_Edit &edit, BAS_Options materials)
{
    if (!materials.isEmpty())
        edit.dictAttribute(ELM_OWNER_DETAIL, kName)->dicts()->set(0, BAS_OptionsHolder(std::move(materials)));
}

const ELM_Attribute *findMaterials(const MSH_Detail &detail)
{
    const ELM_Attribute *found = detail.find(ELM_OWNER_DETAIL, kName);
    return found && found->dicts() && found->tupleSize() == 1 ? found : nullptr;
}
}  // namespace rq::io
