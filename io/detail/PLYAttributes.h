#pragma once

#include <io/detail/PLYBody.h>

namespace rq::io
{
/// An attribute that the properties of an element become.
struct PLYAttribute
{
    std::string name;
    ELM_Storage storage = ELM_STORAGE_INVALID;
    ELM_TypeInfo type = ELM_TYPE_NONE;
    std::vector<int> properties{};  ///< one per component, or a list
    bool color = false;             ///< whole numbers stand for fractions of their largest value
    int cornerSize = 0;             ///< numbers of a list for each corner; 0: lists are the primitive's
};

/// What the properties of an element become, in their order, all but the one that tells the corners (-1 when none does):
/// triples and pairs of well-known names "P", "N", "Cd", "Alpha" and "uv", every other property an attribute of its own name
/// and storage, with "_" behind a name that is taken.
std::vector<PLYAttribute> planPLYAttributes(const PLYElement &element, int corners);

/// Where the components of an attribute go; `values` is the first value of row 0.
std::vector<PLYTarget> targetsOf(const PLYAttribute &attribute, const PLYElement &element, void *values);
}  // namespace rq::io
