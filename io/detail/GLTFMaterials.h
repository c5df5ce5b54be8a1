#pragma once

#include <array>
#include <vector>

#include <host/bas/JSONWriter.h>
#include <host/msh/Detail.h>
#include <io/detail/Leftovers.h>

namespace rq::io
{
/// The materials of primitives: the texts of "material", with the colours "Cd" of primitives where each has one only.
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
    size_t count() const { return names_ ? names_->table().size() : colors_ ? 1 : 0; }

    const MSH_Detail &detail_;
    const ELM_StringTuple *names_ = nullptr;
    const ELM_Attribute *colors_ = nullptr;
    const ELM_Attribute *otherColors_ = nullptr;
};
}  // namespace rq::io
