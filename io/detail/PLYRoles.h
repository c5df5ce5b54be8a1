#pragma once

#include <string_view>
#include <vector>

#include <host/elm/types.h>

namespace rq::io
{
/// Properties that everybody knows, and the attribute that they are together.
struct PLYRole
{
    const char *attribute;
    ELM_TypeInfo type;
    std::vector<std::string_view> properties;

    bool isColor() const { return type == ELM_TYPE_COLOR || attribute == std::string_view("Alpha"); }
};

/// Where an attribute has several spellings, the first is the one to write.
inline const PLYRole kPLYRoles[] = {
    {ELM_POSITION_NAME, ELM_TYPE_POINT, {"x", "y", "z"}},
    {"N", ELM_TYPE_NORMAL, {"nx", "ny", "nz"}},
    {"Cd", ELM_TYPE_COLOR, {"red", "green", "blue"}},
    {"Alpha", ELM_TYPE_NONE, {"alpha"}},
    {"uv", ELM_TYPE_TEXTURE, {"s", "t"}},
    {"uv", ELM_TYPE_TEXTURE, {"u", "v"}},
};
}  // namespace rq::io
