#pragma once

#include <array>

#include <io/detail/PackedParts.h>

namespace rq::io
{
/// A part where packed geometry places it.
struct PackedCopy
{
    size_t part;
    BAS_Mat4d matrix;              ///< for row vectors
    int64_t outer = -1;            ///< the copy that it lies in
    ELM_Offset placing = -1;       ///< the primitive there that places it
    std::array<int64_t, 3> first;  ///< of its elements of each owner, among those of all

    bool isMoved() const { return matrix != BAS_Mat4d(); }
    bool isMirrored() const { return matrix.determinant() < 0.0; }
};

/// All copies, each before those that lie in it; the first one is the root, where it is.
class PackedCopies
{
public:
    explicit PackedCopies(const PackedParts &parts);

    const PackedParts &parts() const { return parts_; }
    std::vector<PackedCopy> all;

    /// The primitive that places a copy, which is not the first.
    MOD_PrimPacked placing(const PackedCopy &copy) const
    {
        return MOD_PrimPacked(*parts_.all()[all[size_t(copy.outer)].part].whole.readLock(), copy.placing);
    }

    /// What a copy has from those that place it, of an attribute that it lacks: the innermost counts.
    const ELM_Attribute *inherited(const PackedCopy &copy, std::string_view name, int64_t &row) const;

private:
    void add(size_t part, const BAS_Mat4d &matrix, int64_t outer, ELM_Offset placing);

    const PackedParts &parts_;
};
}  // namespace rq::io
