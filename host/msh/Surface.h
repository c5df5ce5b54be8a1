#pragma once

#include <host/msh/Primitive.h>

/// The curves that cut a surface, in its parameter plane.
///
/// Shape  loop l has loopCurves[l] curves, each beginning where the one before ends; curve c is NURBS of orders[c] with
///        counts[c] control points and counts[c] + orders[c] knots; `points` holds u, v, weight of each control point.
///        What lies to the left of an outer loop is kept.
struct HOST_API MSH_TrimLoops
{
    std::vector<int32_t> loopCurves;
    std::vector<int32_t> orders;
    std::vector<int32_t> counts;
    std::vector<double> knots;
    std::vector<double> points;

    bool check(std::string &why) const;
};

/// What a surface's payload holds.
///
/// Shape  control vertices row by row, u along a row; knots as those of curves (see `MSH_CurveData`), in each direction
struct HOST_API MSH_SurfaceData
{
    int32_t rows = 0;
    int32_t columns = 0;
    int32_t orderU = 4;
    int32_t orderV = 4;
    std::vector<double> knotsU;
    std::vector<double> knotsV;
    bool wrapsU = false;
    bool wrapsV = false;
    bool isRational = false;
    MSH_TrimLoops trims;

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("rows", self.rows);
        visit("columns", self.columns);
        visit("order_u", self.orderU);
        visit("order_v", self.orderV);
        visit("knots_u", self.knotsU);
        visit("knots_v", self.knotsV);
        visit("wraps_u", self.wrapsU);
        visit("wraps_v", self.wrapsV);
        visit("rational", self.isRational);
        visit("trim_loops", self.trims.loopCurves);
        visit("trim_orders", self.trims.orders);
        visit("trim_counts", self.trims.counts);
        visit("trim_knots", self.trims.knots);
        visit("trim_points", self.trims.points);
    }
    bool check(const MSH_PayloadUse &use, std::string &why) const;
};

/// A primitive seen as a trimmed NURBS or Bezier surface.
class HOST_API MSH_Surface : public MSH_Primitive
{
public:
    explicit MSH_Surface(const MSH_Primitive &primitive) : MSH_Primitive(primitive) {}
    MSH_Surface(const MSH_Detail &detail, ELM_Offset offset) : MSH_Primitive(detail, offset) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return type() == ELM_PRIMITIVE_NURBS_SURFACE || isBezier(); }

    bool isBezier() const { return type() == ELM_PRIMITIVE_BEZIER_SURFACE; }
    int64_t rows() const { return data().rows; }
    int64_t columns() const { return data().columns; }
    int orderU() const { return data().orderU; }
    int orderV() const { return data().orderV; }
    bool wrapsU() const { return data().wrapsU; }
    bool wrapsV() const { return data().wrapsV; }
    bool isRational() const { return data().isRational; }
    const MSH_TrimLoops &trims() const { return data().trims; }

    /// The knots, or breakpoints, given or even ones.
    std::vector<double> knotsU() const;
    std::vector<double> knotsV() const;

    ELM_Offset vertexAt(int64_t row, int64_t column) const { return vertex(row * columns() + column); }

private:
    const MSH_SurfaceData &data() const { return payload<MSH_SurfaceData>(); }
};
