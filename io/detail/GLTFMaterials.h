#pragma once

#include <host/bas/JSONWriter.h>
#include <io/detail/Leftovers.h>
#include <io/detail/Materials.h>

namespace rq::io
{
/// The materials of primitives: the texts of "material", as the dictionary "materials" tells them, with the colours "Cd" of
/// primitives instead where each has one only.
class GLTFMaterials
{
public:
    /// What they tell is noted as held.
    GLTFMaterials(const MSH_Detail &detail, Leftovers &leftovers);

    /// The number of a primitive's material, -1 without one.
    int of(ELM_Offset primitive) const { return names_ ? names_->index(primitive) : colors_ ? 0 : -1; }

    /// Colours of primitives that materials cannot tell; null when there are none.
    const ELM_Attribute *otherColors() const { return otherColors_; }

    /// Write the member "materials"; nothing without any.
    void write(BAS_JSONWriter &json) const;

private:
    bool isOneEach(const ELM_Attribute &colors) const;
    std::vector<Material> all() const;
    size_t count() const { return names_ ? names_->table().size() : colors_ ? 1 : 0; }

    const MSH_Detail &detail_;
    BAS_OptionsHolder told_;
    const ELM_StringTuple *names_ = nullptr;
    const ELM_Attribute *colors_ = nullptr;
    const ELM_Attribute *otherColors_ = nullptr;
};
}  // namespace rq::io
