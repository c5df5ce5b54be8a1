#pragma once

#include <array>

#include <host/msh/Primitive.h>

/// A primitive seen as a tetrahedron a, b, c, d.
class MSH_Tetra : public MSH_Primitive
{
public:
    explicit MSH_Tetra(const MSH_Primitive &primitive) : MSH_Primitive(primitive) {}
    MSH_Tetra(const MSH_Detail &detail, ELM_Offset offset) : MSH_Primitive(detail, offset) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return type() == ELM_PRIMITIVE_TETRAHEDRON; }

    /// The vertices of its faces, counter-clockwise seen from outside when (b - a) x (c - a) . (d - a) is positive.
    static constexpr std::array<std::array<int, 3>, 4> kFaces = {{{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}}};
};
