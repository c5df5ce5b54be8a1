#pragma once

#include <array>

#include <host/msh/Primitive.h>

/// A primitive seen as a hexahedron: vertices 0 to 3 around its bottom, 4 to 7 above them, counter-clockwise seen from
/// outside above the top.
class MSH_Hexa : public MSH_Primitive
{
public:
    explicit MSH_Hexa(const MSH_Primitive &primitive) : MSH_Primitive(primitive) {}
    MSH_Hexa(const MSH_Detail &detail, ELM_Offset offset) : MSH_Primitive(detail, offset) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return type() == ELM_PRIMITIVE_HEXAHEDRON; }

    /// The vertices of its faces, counter-clockwise seen from outside.
    static constexpr std::array<std::array<int, 4>, 6> kFaces = {
        {{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}}};
};
