#include <apps/SurfaceMaterials.h>

#include <algorithm>
#include <cmath>

#include <host/bas/Parallel.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq::app
{
namespace
{
constexpr int32_t kNone = -1;

// The call for a text's number costs about 20 ns.
constexpr int64_t kTextsPerTask = 4096;

SurfaceMaterials::Named meaningOf(const BAS_StringHolder &name, const BAS_Options &told)
{
    SurfaceMaterials::Named named;
    named.name = name;
    std::vector<double> numbers;
    named.isTold = told.import(name, numbers) && numbers.size() >= 3 &&
                   std::ranges::all_of(numbers, [](double number) { return std::isfinite(number); });
    if (!named.isTold)
        return named;
    const auto part = [&](size_t i) { return float(std::clamp(numbers[i], 0.0, 1.0)); };
    named.colour = {part(0), part(1), part(2)};
    named.roughness = numbers.size() > 3 ? part(3) : named.roughness;
    named.metalness = numbers.size() > 4 ? part(4) : named.metalness;
    return named;
}

BAS_OptionsHolder dictionaryOf(const RQ_DataArrayHandle &array)
{
    const bool isOne = array && array->getStorage() == RQ_STORAGE_DICTIONARY && !array->hasArrayEntries();
    return isOne && array->entries() > 0 ? array->getDict(0) : BAS_OptionsHolder::empty();
}
}  // namespace

SurfaceMaterials::SurfaceMaterials(const RQ_Primitive &primitive)
{
    RQ_Owner owner;
    const BAS_OptionsHolder told = dictionaryOf(primitive.findAttribute("materials", owner, 0));
    if (const RQ_DataArrayHandle &names = primitive.findAttribute("material", owner, 0); readNames(names, told.options()))
        owner_ = owner;
    if (owner_ == RQ_OWNER_INVALID || owner_ == RQ_OWNER_UNIFORM)
        readFaceSets(primitive, told.options());
}

SurfaceMaterials::SurfaceMaterials(const RQ_DataArrayHandle &names, const RQ_DataArrayHandle &told)
{
    readNames(names, dictionaryOf(told).options());
}

int32_t SurfaceMaterials::add(const BAS_StringHolder &name, const BAS_Options &told)
{
    const auto [known, isNew] = numbers_.try_emplace(name, int32_t(named_.size()));
    if (isNew)
        named_.push_back(meaningOf(name, told));
    return known->second;
}

bool SurfaceMaterials::readNames(const RQ_DataArrayHandle &names, const BAS_Options &told)
{
    if (!names || names->getStorage() != RQ_STORAGE_STRING || names->hasArrayEntries() || names->entries() < 1)
        return false;
    of_.resize(size_t(names->entries()), kNone);
    if (names->getStringIndexCount() < 0)
    {
        for (size_t i = 0; i < of_.size(); ++i)
            if (const BAS_StringHolder name = names->getS(int64_t(i)); !name.view().empty())
                of_[i] = add(name, told);
        return true;
    }
    BAS_Array<BAS_StringHolder> distinct;
    names->getStrings(distinct);
    std::vector<int32_t> numbers;
    for (const BAS_StringHolder &name : distinct)
        numbers.push_back(name.view().empty() ? kNone : add(name, told));
    host::parallelFor(names->entries(), kTextsPerTask, [&](int64_t i) {
        const int64_t index = names->getStringIndex(i);
        of_[size_t(i)] = index >= 0 && index < std::ssize(numbers) ? numbers[size_t(index)] : kNone;
    });
    return true;
}

void SurfaceMaterials::readFaceSets(const RQ_Primitive &primitive, const BAS_Options &told)
{
    const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(&primitive);
    if (!mesh || !mesh->faceSetMap())
        return;
    std::vector<std::pair<BAS_StringHolder, RQ_FaceSetHandle>> sets;
    for (auto set = mesh->faceSetMap()->begin(); !set.atEnd(); set.advance())
        if (told.has(set.name()))
            sets.emplace_back(set.name(), set.faceSet());
    if (sets.empty())
        return;
    std::ranges::sort(sets, [](const auto &a, const auto &b) { return a.first < b.first; });
    owner_ = RQ_OWNER_UNIFORM;
    of_.resize(size_t(mesh->getFaceCount()), kNone);
    for (const auto &[name, set] : sets)
    {
        const int32_t number = add(name, told);
        for (const int64_t face : *set)
            if (face < std::ssize(of_) && of_[size_t(face)] == kNone)
                of_[size_t(face)] = number;
    }
}
}  // namespace rq::app
