#pragma once

#include <algorithm>
#include <span>

#include <host/elm/types.h>
#include <io/detail/RQGInput.h>

namespace rq::io
{
// The words of RQG files for numbers of the host; each one's place is its number.

inline constexpr const char *kRQGOwners[] = {"vertex", "point", "primitive", "detail"};
inline constexpr const char *kRQGScopes[] = {"public", "private", "group"};
inline constexpr const char *kRQGStorages[] = {"uint8",  "int8",   "int16",  "int32",  "int64",
                                               "real16", "real32", "real64", "string", "dict"};

/// Their numbers begin with -1.
inline constexpr const char *kRQGTypeInfos[] = {"none",   "point",      "hpoint",  "vector", "normal", "color",
                                                "matrix", "quaternion", "texture", "box2",   "box"};

/// Read a word; one that is absent leaves what is there.  False with a message when it is none of these.
template <class Number>
bool readRQGName(const RQGInput &input, JSONText word, std::span<const char *const> names, Number &number)
{
    if (!word)
        return true;
    const std::string text = word.isString() ? word.string() : std::string();
    const auto known = std::find(names.begin(), names.end(), text);
    if (known != names.end())
        return number = Number(known - names.begin()), true;
    std::string expected;
    for (const char *name : names)
        expected += fmt::format("{}\"{}\"", expected.empty() ? "" : ", ", name);
    return input.failAt(word, expected);
}
}  // namespace rq::io
