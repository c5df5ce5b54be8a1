#pragma once

#include <initializer_list>

#include <rq/data/Values.h>
#include <rq/prim/Primitive.h>

namespace rq::offline
{
/// An element of a primitive, by its entry in the lists of each owner.
struct Element
{
    int64_t vertex = 0;
    int64_t point = 0;
    int64_t uniform = 0;

    int64_t entry(RQ_Owner owner) const
    {
        return owner == RQ_OWNER_VERTEX ? vertex : owner == RQ_OWNER_POINT ? point : owner == RQ_OWNER_UNIFORM ? uniform : 0;
    }
};

/// A place on a surface: up to four elements around it, and how much each counts there.
struct Place
{
    Element elements[4];
    float weights[4] = {1.0f, 0.0f, 0.0f, 0.0f};
    int count = 1;
};

/// An attribute as floats, whatever owner it has.
class ElementValues
{
public:
    ElementValues() = default;

    /// The first attribute of these names; nothing when the primitive has none of `components` or more.
    ElementValues(const RQ_Primitive &primitive, std::initializer_list<const char *> names, int components, int segment = 0);

    explicit operator bool() const { return values_.entries() > 0; }
    int components() const { return int(values_.tupleSize()); }
    RQ_Owner owner() const { return owner_; }
    float at(const Element &element) const { return values_(element.entry(owner_), 0); }

    /// The first three components; 0 for those that there are not.
    BAS_Vec3f tripleAt(const Element &element) const;
    BAS_Vec3f tripleAt(const Place &place) const;

private:
    Values<float> values_;
    RQ_Owner owner_ = RQ_OWNER_INVALID;
};
}  // namespace rq::offline
