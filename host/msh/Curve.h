#pragma once

#include <host/msh/Primitive.h>

/// What a curve's payload holds.
///
/// Shape  of n control vertices and degree d = order - 1, a curve of type
///        NURBS: n + order knots that never fall, wrapping n + 2 * order - 1 (its first d vertices count again at the end);
///        Bezier: a breakpoint before, between and behind spans of d edges; n is a multiple of d, plus 1 unless it wraps.
///        No knots stand for even ones from 0 to 1: clamped to the end points when the curve does not wrap.
///        Rational weights are the public point attribute "Pw", 1 where there is none.
struct HOST_API MSH_CurveData
{
    int32_t order = 4;
    std::vector<double> knots;
    bool isRational = false;
    bool wraps = false;

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("order", self.order);
        visit("knots", self.knots);
        visit("rational", self.isRational);
        visit("wraps", self.wraps);
    }
    bool check(const MSH_PayloadUse &use, std::string &why) const;
};

/// A primitive seen as a NURBS or Bezier curve.
class HOST_API MSH_Curve : public MSH_Primitive
{
public:
    explicit MSH_Curve(const MSH_Primitive &primitive) : MSH_Primitive(primitive) {}
    MSH_Curve(const MSH_Detail &detail, ELM_Offset offset) : MSH_Primitive(detail, offset) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return type() == ELM_PRIMITIVE_NURBS_CURVE || isBezier(); }

    bool isBezier() const { return type() == ELM_PRIMITIVE_BEZIER_CURVE; }
    int order() const { return data().order; }
    bool isRational() const { return data().isRational; }
    bool wraps() const { return data().wraps; }

    /// The knots, or breakpoints, given or even ones.
    std::vector<double> knots() const;

private:
    const MSH_CurveData &data() const { return payload<MSH_CurveData>(); }
};
