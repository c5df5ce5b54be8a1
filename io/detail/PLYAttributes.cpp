#include <io/detail/PLYAttributes.h>

#include <algorithm>
#include <limits>

#include <io/detail/PLYRoles.h>
#include <io/detail/PLYValues.h>

namespace rq::io
{
namespace
{
/// The components of an attribute that a note tells; nothing when they are not all there, single and of one type.
std::vector<int> componentsOf(const PLYNote &note, const PLYElement &element)
{
    std::vector<int> found;
    for (int c = 0; c < note.size; ++c)
    {
        const int p = element.find(note.size > 1 ? fmt::format("{}_{}", note.name, c) : std::string(note.name));
        if (p < 0 || element.properties[size_t(p)].isList() ||
            (c > 0 && element.properties[size_t(p)].type != element.properties[size_t(found[0])].type))
            return {};
        found.push_back(p);
    }
    return found;
}

void planNoted(const PLYElement &element, std::vector<PLYAttribute> &plan)
{
    for (const PLYNote &note : element.notes)
    {
        const int list = note.ofCorners ? element.find(note.name) : -1;
        const bool isList = list >= 0 && element.properties[size_t(list)].isList();
        const std::vector<int> properties = !note.ofCorners ? componentsOf(note, element)
                                            : isList        ? std::vector<int>{list}
                                                            : std::vector<int>();
        if (!properties.empty())
            plan.push_back({std::string(note.name), storageOf(element.properties[size_t(properties[0])].type), note.type,
                            properties, false, note.ofCorners ? note.size : 0});
    }
}

bool hasName(const std::vector<PLYAttribute> &attributes, std::string_view name)
{
    return std::any_of(attributes.begin(), attributes.end(), [&](const PLYAttribute &a) { return a.name == name; });
}

// 32-bit whole numbers need the precision of 64-bit floats.
ELM_Storage realStorageOf(const PLYElement &element, const std::vector<int> &properties)
{
    const bool wide = std::any_of(properties.begin(), properties.end(), [&](int p) {
        const PLYType type = element.properties[size_t(p)].type;
        return type == PLYType::Real64 || type == PLYType::Int32 || type == PLYType::UInt32;
    });
    return wide ? ELM_STORAGE_REAL64 : ELM_STORAGE_REAL32;
}

// The properties that a role takes; none when one is missing.
std::vector<int> propertiesOf(const PLYRole &role, const PLYElement &element)
{
    std::vector<int> found;
    for (const std::string_view name : role.properties)
    {
        const int property = element.find(name);
        if (property < 0 || element.properties[size_t(property)].isList())
            return {};
        found.push_back(property);
    }
    return found;
}
}  // namespace

std::vector<PLYAttribute> planPLYAttributes(const PLYElement &element, int corners)
{
    std::vector<PLYAttribute> plan;
    for (const PLYRole &role : kPLYRoles)
    {
        const std::vector<int> properties = propertiesOf(role, element);
        // An alpha without colours means something else.
        const bool stray = role.attribute == std::string_view("Alpha") && !hasName(plan, "Cd");
        if (properties.empty() || stray || hasName(plan, role.attribute))
            continue;
        const ELM_Storage storage = role.isColor() ? ELM_STORAGE_REAL32 : realStorageOf(element, properties);
        plan.push_back({role.attribute, storage, role.type, properties, role.isColor()});
    }
    planNoted(element, plan);
    for (int p = 0; p < int(element.properties.size()); ++p)
    {
        const PLYProperty &property = element.properties[size_t(p)];
        const bool taken = std::any_of(plan.begin(), plan.end(), [&](const PLYAttribute &attribute) {
            return std::find(attribute.properties.begin(), attribute.properties.end(), p) != attribute.properties.end();
        });
        if (taken || p == corners)
            continue;
        std::string name(property.name);
        while (hasName(plan, name))
            name += '_';
        plan.push_back({std::move(name), storageOf(property.type), ELM_TYPE_NONE, {p}});
    }
    std::stable_sort(plan.begin(), plan.end(), [](const PLYAttribute &a, const PLYAttribute &b) {
        return a.properties.front() < b.properties.front();
    });
    return plan;
}

std::vector<PLYTarget> targetsOf(const PLYAttribute &attribute, const PLYElement &element, void *values)
{
    std::vector<PLYTarget> targets;
    for (size_t c = 0; c < attribute.properties.size(); ++c)
    {
        const int property = attribute.properties[c];
        const PLYType type = element.properties[size_t(property)].type;
        PLYTarget *last = targets.empty() ? nullptr : &targets.back();
        if (last && last->property + last->components == property && element.properties[size_t(last->property)].type == type)
        {
            ++last->components;
            continue;
        }
        const size_t size = visitPLYConversion(type, attribute.storage, [](auto, auto to) { return sizeof(to); });
        const double largest = visitPLYType(type, [](auto value) {
            return std::is_integral_v<decltype(value)> ? double(std::numeric_limits<decltype(value)>::max()) : 1.0;
        });
        targets.push_back({.property = property,
                           .components = 1,
                           .storage = attribute.storage,
                           .values = static_cast<char *>(values) + c * size,
                           .stride = int64_t(attribute.properties.size()),
                           .divisor = attribute.color ? largest : 1.0});
    }
    return targets;
}
}  // namespace rq::io
