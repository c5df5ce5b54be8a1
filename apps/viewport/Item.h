#pragma once

#include <memory>

#include <apps/viewport/Form.h>

namespace rq::viewport
{
/// Where copies of a shape stand in the scene.
struct Placements
{
    std::vector<BAS_Mat4d> matrices;
    RQ_AttributeListHandle attributes;  ///< one entry a copy, null without
};

struct MaterialColours;

/// A shape of a scene, with all its copies: what one call draws.
struct Item
{
    std::shared_ptr<const Form> form;
    RQ_PrimitiveHandle primitive;                      ///< whose attributes colour it
    std::shared_ptr<const MaterialColours> materials;  ///< null without
    Placements placements;
    size_t shown = 0;  ///< entry of the shown primitives that it comes from
    BAS_BoundingBox bounds;
    RQ_DataArrayHandle matrices;  ///< the placements from the scene's middle, 16 floats each; of the same id when the same

    int64_t copies() const { return int64_t(placements.matrices.size()); }
};

/// What an attribute has one value per, when seen from an item.
enum class Lookup
{
    None,
    Corner,
    Point,
    Face,
    Detail,
    Copy
};

/// An attribute of an item.
struct Found
{
    RQ_DataArrayHandle array;
    Lookup lookup = Lookup::None;

    explicit operator bool() const { return array != nullptr; }
};

/// How an item's shape finds the element of an owner.
Lookup lookupOf(const Form &form, RQ_Owner owner);

/// Look for an attribute of an owner, or, when that is invalid, of any.  Attributes of copies count as uniform ones.
Found findAttribute(const Item &item, const BAS_StringHolder &name, RQ_Owner owner = RQ_OWNER_INVALID);
}  // namespace rq::viewport
