#pragma once

#include <optional>

#include <io/detail/GLTFMaterialList.h>
#include <io/detail/Leftovers.h>

namespace rq::io
{
/// What packed geometry has from those that place it.
struct GLTFGiven
{
    std::optional<std::string> object{};
    std::optional<std::string> material{};
    Material told{};  ///< what the name of the material means
    std::optional<std::array<double, 3>> colour{};
};

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

    /// Put all into the list of a file.
    void list(GLTFMaterialList &file) const;

    /// What a material becomes in a file, given what the detail has none of; -1 for none.
    int inFile(int material, const GLTFGiven &given, GLTFMaterialList &file) const;

private:
    bool isOneEach(const ELM_Attribute &colors) const;
    void readAll();

    const MSH_Detail &detail_;
    BAS_OptionsHolder told_;
    const ELM_StringTuple *names_ = nullptr;
    const ELM_Attribute *colors_ = nullptr;
    const ELM_Attribute *otherColors_ = nullptr;
    bool hasNames_, hasColors_;  // of any owner
    std::vector<std::pair<std::string, Material>> all_;
};
}  // namespace rq::io
