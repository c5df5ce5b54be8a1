#pragma once

#include <host/msh/Primitive.h>

/// What a triangular patch's payload holds.
struct HOST_API MSH_Patch3Data
{
    int32_t degree = 3;

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit) { visit("degree", self.degree); }
    bool check(const MSH_PayloadUse &use, std::string &why) const;
};

/// A primitive seen as a triangular Bezier patch: rows of degree + 1, degree, ... 1 control vertices.
class MSH_Patch3 : public MSH_Primitive
{
public:
    explicit MSH_Patch3(const MSH_Primitive &primitive) : MSH_Primitive(primitive) {}
    MSH_Patch3(const MSH_Detail &detail, ELM_Offset offset) : MSH_Primitive(detail, offset) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return type() == ELM_PRIMITIVE_TRIANGULAR_PATCH; }

    int64_t degree() const { return payload<MSH_Patch3Data>().degree; }

    /// Vertex `i` of row `row`, which has degree + 1 - row of them.
    ELM_Offset vertexAt(int64_t row, int64_t i) const { return vertex(row * (degree() + 1) - row * (row - 1) / 2 + i); }
};
