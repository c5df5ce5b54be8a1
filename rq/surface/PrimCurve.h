#pragma once

#include <rq/prim/Primitive.h>
#include <rq/surface/Basis.h>

class RQ_PrimCurve;
using RQ_CurveHandle = BAS_IntrusivePtr<RQ_PrimCurve>;

/// A single curve: what a linear curve mesh refines into.
///
/// Shape      vertex attributes have an entry per control vertex (positions under "P"), uniform attributes one
/// Ownership  shares its lists
/// Threads    immutable once shared, safe to read from any thread
class RQ_API RQ_PrimCurve final : public RQ_Primitive
{
public:
    RQ_PrimCurve();
    RQ_PrimCurve(const RQ_PrimCurve &other);
    ~RQ_PrimCurve() override;

    /// Replace basis and lists of a curve that is not yet shared.
    ///
    /// A curve without an attribute "uv" gets one: two components, (0, 0) at the first vertex to (1, 0) at the last.  False
    /// when there are no vertex attributes, when these differ in length, or when a uniform attribute has not just one entry.
    bool init(RQ_Basis basis, const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform = {},
              bool wrap = false);

    RQ_Basis getBasis() const { return basis_; }
    bool getWrap() const { return wrap_; }
    const RQ_AttributeListHandle &getVertex() const { return vertex_; }
    const RQ_AttributeListHandle &getUniform() const { return uniform_; }
    int64_t getVertexCount() const;

    /// Vertices that shape a span, 2 for linear curves and else 4 unless its maker says otherwise; and the knots of a
    /// B-spline, null where they are uniform.  Set by the maker of a curve that is not yet shared.
    int getOrder() const { return order_; }
    const RQ_DataArrayHandle &getKnots() const { return knots_; }
    void setOrder(int order) { order_ = order; }
    void setKnots(const RQ_DataArrayHandle &knots) { knots_ = knots; }

    /// Whether a Catmull-Rom curve has its breakpoints spread, and how; otherwise they are even.  Set as the order is.
    bool getUseBreakpoints() const { return useBreakpoints_; }
    RQ_Parameterization getBreakpointsParameterization() const { return parameterization_; }
    void setBreakpoints(bool use, RQ_Parameterization parameterization)
    {
        useBreakpoints_ = use;
        parameterization_ = parameterization;
    }

    /// The length of the curve after its transform.  A curve that is not linear is measured along 20 straight pieces a span.
    double curveLength(int segment = 0) const;

    const char *className() const override;
    int getPrimitiveType() const override;
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;

    /// Hand the same curve of straight pieces to the sink.  False for linear curves, which are leaves.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;
    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;
    const RQ_AttributeListHandle &getVertexAttributes() const override { return vertex_; }
    const RQ_AttributeListHandle &getUniformAttributes() const override { return uniform_; }
    bool save(BAS_JSONWriter &writer) const override;
    const RQ_ViewportRefineOptions &viewportRefineOptions() const override;
    double computePerimeter(int segment) const override { return curveLength(segment); }
    RQ_PrimitiveHandle doHarden() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

    /// The pattern for vertices and the one for points both choose vertex attributes, those for uniform and detail
    /// attributes the curve's own.
    RQ_PrimitiveHandle doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                        const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                        const BAS_StringMMPattern *detail) const override;

private:
    RQ_AttributeListHandle vertex_;
    RQ_AttributeListHandle uniform_;
    RQ_DataArrayHandle knots_;
    RQ_Basis basis_ = RQ_BASIS_LINEAR;
    RQ_Parameterization parameterization_ = RQ_PARAMETERIZATION_UNIFORM;
    int order_ = 2;
    bool wrap_ = false;
    bool useBreakpoints_ = false;
};
