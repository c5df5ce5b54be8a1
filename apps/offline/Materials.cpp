#include <apps/offline/Materials.h>

#include <algorithm>

#include <apps/offline/Palette.h>
#include <host/bas/hashBytes.h>

namespace rq::offline
{
namespace
{
Material materialOf(const BAS_StringHolder &name, const BAS_Options &known)
{
    std::vector<double> values;
    if (!known.import(name, values) || values.size() < 3)
        return {Palette::distinct(host::hashBytes(name.view()))};
    const float roughness = values.size() > 3 ? std::clamp(float(values[3]), 0.0f, 1.0f) : -1.0f;
    return {toLight(BAS_Vec3f(BAS_Vec3d(values[0], values[1], values[2]))), roughness};
}
}  // namespace

Material clay() { return {toLight({0.66f, 0.63f, 0.585f})}; }

Materials::Materials(const RQ_Primitive &primitive)
{
    const RQ_DataArrayHandle &names = primitive.findAttribute("material", owner_, 0);
    if (!names || names->getStorage() != RQ_STORAGE_STRING)
        return;
    BAS_OptionsHolder known;
    RQ_Owner owner;
    if (const RQ_DataArrayHandle &told = primitive.findAttribute("materials", owner, 0);
        told && told->getStorage() == RQ_STORAGE_DICTIONARY && told->entries() > 0)
        known = told->getDict(0);

    BAS_Array<BAS_StringHolder> distinct;
    names->getStrings(distinct);
    for (const BAS_StringHolder &name : distinct)
        materials_.push_back(materialOf(name, known.options()));
    of_.reserve(size_t(names->entries()));
    for (int64_t i = 0; i < names->entries(); ++i)
    {
        const int64_t index = names->getStringIndex(i);
        of_.push_back(index >= 0 && index < int64_t(distinct.size()) ? int32_t(index + 1) : 0);
    }
}

const Material &Materials::at(const Element &element) const
{
    return materials_[of_.empty() ? 0 : size_t(of_[size_t(element.entry(owner_))])];
}
}  // namespace rq::offline
