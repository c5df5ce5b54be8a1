#pragma once

#include <unordered_map>
#include <vector>

#include <host/bas/OptionsHolder.h>
#include <rq/prim/Primitive.h>

namespace rq::app
{
/// The materials that the elements of a primitive are of.
///
/// Shape    the string attribute "material" names them; a face that it does not name is of the first face set, by name, that
///          is called like a material.  What names mean tells the dictionary "materials" of the detail: red, green, blue,
///          and perhaps roughness, and perhaps metalness
/// Threads  immutable once built
class SurfaceMaterials
{
public:
    struct Named
    {
        BAS_StringHolder name;
        bool isTold = false;      ///< by the dictionary; else all below are as they stand here
        BAS_Vec3f colour{0.0f};   ///< as it looks on a screen, 0 to 1
        float roughness = -1.0f;  ///< 0 to 1, negative for a matt surface
        float metalness = 0.0f;   ///< 0 to 1
    };

    SurfaceMaterials() = default;
    explicit SurfaceMaterials(const RQ_Primitive &primitive);

    /// The same of what is not an owner's: `names` has one for each of any elements, and `told` the dictionary, or is null.
    SurfaceMaterials(const RQ_DataArrayHandle &names, const RQ_DataArrayHandle &told);

    /// All that are named.
    const std::vector<Named> &all() const { return named_; }

    /// Whose elements have materials: one number for each, or none.
    RQ_Owner owner() const { return owner_; }
    int64_t entries() const { return int64_t(of_.size()); }

    /// Which of `all` an element is of; -1 for none.
    int32_t of(int64_t entry) const { return of_[size_t(entry)]; }

private:
    bool readNames(const RQ_DataArrayHandle &names, const BAS_Options &told);
    void readFaceSets(const RQ_Primitive &primitive, const BAS_Options &told);
    int32_t add(const BAS_StringHolder &name, const BAS_Options &told);

    std::vector<Named> named_;
    std::unordered_map<BAS_StringHolder, int32_t> numbers_;  // of the names
    std::vector<int32_t> of_;
    RQ_Owner owner_ = RQ_OWNER_INVALID;
};
}  // namespace rq::app
