#include <io/detail/materialColours.h>

#include <algorithm>
#include <cmath>

#include <io/detail/Materials.h>

namespace rq::io
{
namespace
{
using Colour = std::array<float, 3>;

constexpr int32_t kNone = -1, kUnused = -2, kSeveral = -3;

Colour inBytes(const Material &material)
{
    Colour colour;
    std::ranges::transform(material.colour, colour.begin(),
                           [](double channel) { return float(std::round(std::clamp(channel, 0.0, 1.0) * 255.0) / 255.0); });
    return colour;
}

/// The material of all primitives that use each point.
std::vector<int32_t> materialsOfPoints(const MSH_Detail &detail, const ELM_StringTuple &names)
{
    std::vector<int32_t> of(size_t(detail.pointCount()), kUnused);
    for (ELM_Offset primitive = 0; primitive < detail.primitiveCount(); ++primitive)
    {
        const auto [start, count] = detail.vertexRun(primitive);
        for (ELM_Offset vertex = start; vertex < start + count; ++vertex)
            if (const ELM_Offset point = detail.vertexPoint(vertex); point >= 0)
            {
                int32_t &known = of[size_t(point)];
                const int32_t material = names.index(primitive);
                known = known == kUnused || known == material ? material : kSeveral;
            }
    }
    return of;
}
}  // namespace

MOD_ConstDetailHandle withMaterialColours(const MOD_ConstDetailHandle &detail)
{
    const MSH_Detail &d = *detail.readLock();
    const ELM_Attribute *names = d.find(ELM_OWNER_PRIMITIVE, "material"), *told = findMaterials(d);
    const bool hasColours =
        std::ranges::any_of(std::array{ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE, ELM_OWNER_DETAIL},
                            [&](ELM_Owner owner) { return d.find(owner, "Cd"); });
    if (hasColours || !told || !names || !names->strings() || names->tupleSize() != 1)
        return detail;

    const ELM_StringTuple &strings = *names->strings();
    std::vector<Colour> colours;
    bool tells = false;
    for (const BAS_StringHolder &name : strings.table())
    {
        const auto material = findMaterial(told->dicts()->get(0).options(), name);
        tells = tells || material;
        colours.push_back(inBytes(material.value_or(Material{})));
    }
    if (!tells)
        return detail;

    std::vector<int32_t> of = materialsOfPoints(d, strings);
    const bool areOfPoints = std::ranges::find(of, kSeveral) == of.end();
    if (!areOfPoints)
    {
        of.clear();
        for (ELM_Offset primitive = 0; primitive < d.primitiveCount(); ++primitive)
            of.push_back(strings.index(primitive));
    }
    MOD_DetailHandle coloured(detail);
    MOD_Edit edit(coloured);
    ELM_Attribute *made =
        edit.attribute(areOfPoints ? ELM_OWNER_POINT : ELM_OWNER_PRIMITIVE, "Cd", ELM_STORAGE_REAL32, 3, ELM_TYPE_COLOR);
    if (!made)
        throw std::bad_alloc();
    float *rows = made->writeAll<float>();
    for (const int32_t material : of)
        rows = std::ranges::copy(material > kNone ? colours[size_t(material)] : inBytes({}), rows).out;
    return edit.commit();
}
}  // namespace rq::io
