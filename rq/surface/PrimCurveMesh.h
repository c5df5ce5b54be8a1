#pragma once

#include <string>

#include <host/bas/Published.h>
#include <rq/attrib/AttributeList.h>
#include <rq/data/CountArray.h>
#include <rq/prim/Primitive.h>
#include <rq/surface/FaceSetMap.h>
#include <rq/surface/PrimCurve.h>

namespace rq
{
class CurveSampling;
}

class RQ_PrimCurveMesh;
using RQ_CurveMeshHandle = BAS_IntrusivePtr<RQ_PrimCurveMesh>;

/// Many curves of one basis.
///
/// Shape      curve i has the vertices offset(i) .. offset(i) + count(i) - 1; vertex attributes have one entry per vertex,
///            uniform ones one per curve, detail ones one.  All curves are closed or all are open.  A curve of order k has
///            vertices + k knots, a closed one vertices + 2k - 1: its first k - 1 vertices count again at the end.  A
///            vertex attribute "Pw" of one component holds rational weights, which shape all attributes but a homogeneous
///            "P".  Face sets name curves.
/// Failure    constructors trust what they are given; `validate` tells whether it holds together.  Vertices that make no
///            whole span are passed over
/// Ownership  arrays are shared, never copied; operations return a new mesh, or this one when nothing changes
/// Threads    immutable once built, safe to read from any thread; operations run in parallel and give the same bits for
///            any number of threads
class RQ_API RQ_PrimCurveMesh : public RQ_Primitive
{
public:
    RQ_PrimCurveMesh();

    /// `counts` holds the vertices of each curve; the mode is a wish only, totals are as wide as they must be.  With
    /// `useBreakpoints` Catmull-Rom curves have their breakpoints spread by `parameterization` instead of evenly.  `pinned`
    /// tells that end vertices are repeated so that curves end in them, as `pinCurves` does.
    RQ_PrimCurveMesh(RQ_Basis basis, const RQ_DataArrayHandle &counts, const RQ_AttributeListHandle &vertex,
                     const RQ_AttributeListHandle &uniform = {}, const RQ_AttributeListHandle &detail = {},
                     bool wrap = false, RQ_IndexingMode mode = RQ_INDEXING_AUTO, bool useBreakpoints = false,
                     bool pinned = false, RQ_Parameterization parameterization = RQ_PARAMETERIZATION_UNIFORM);

    /// A mesh of one curve; the curve's uniform attributes become uniform ones here.
    explicit RQ_PrimCurveMesh(const RQ_PrimCurve &curve);

    /// The topology and state of `other` with other attributes.
    RQ_PrimCurveMesh(const RQ_PrimCurveMesh &other, const RQ_AttributeListHandle &vertex,
                     const RQ_AttributeListHandle &uniform, const RQ_AttributeListHandle &detail);

    /// Other curves in the place and state of `other`, of the basis's own order and without knots.
    RQ_PrimCurveMesh(const RQ_PrimCurveMesh &other, RQ_Basis basis, const RQ_CountArray &counts,
                     const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                     const RQ_AttributeListHandle &detail, bool wrap, const RQ_FaceSetMapHandle &faceSets);

    RQ_PrimCurveMesh(const RQ_PrimCurveMesh &other);
    ~RQ_PrimCurveMesh() override;

    /// Replace everything in a mesh that is not yet shared.
    void init(RQ_Basis basis, const RQ_DataArrayHandle &counts, const RQ_AttributeListHandle &vertex,
              const RQ_AttributeListHandle &uniform = {}, const RQ_AttributeListHandle &detail = {}, bool wrap = false,
              RQ_IndexingMode mode = RQ_INDEXING_AUTO, bool useBreakpoints = false, bool pinned = false,
              RQ_Parameterization parameterization = RQ_PARAMETERIZATION_UNIFORM);

    /// Check that counts, orders, knots and attribute lengths fit together.  False with the reason.
    bool validate(std::string *why = nullptr) const;

    int64_t getCurveCount() const { return counts_.entries(); }
    const RQ_CountArray &getCurveCountArray() const { return counts_; }

    /// The vertices of each curve as an array of the width asked for.
    RQ_DataArrayHandle getCurveCounts(RQ_IndexingMode mode = RQ_INDEXING_AUTO) const;

    /// The vertices of all curves, those of one, and the first of one.  Not checked.
    int64_t getVertexCount() const { return counts_.sumCounts(); }
    int64_t getVertexCount(int64_t curve) const { return counts_.getCount(curve); }
    int64_t getVertexOffset(int64_t curve) const { return counts_.getOffset(curve); }

    const RQ_AttributeListHandle &getVertex() const { return vertex_; }
    const RQ_AttributeListHandle &getUniform() const { return uniform_; }
    const RQ_AttributeListHandle &getDetail() const { return detail_; }

    RQ_Basis getBasis() const { return basis_; }
    bool getWrap() const { return wrap_; }
    bool getClosed() const { return wrap_; }

    /// The vertices that shape a span of a curve: the order of all curves when that is set, else the curve's own.
    int getOrder(int64_t curve) const { return isUniformOrder() ? uniformOrder_ : varyingOrders_->getI32(curve); }
    int uniformOrder() const { return uniformOrder_; }
    bool isUniformOrder() const { return uniformOrder_ > 0; }
    const RQ_DataArrayHandle &varyingOrders() const { return varyingOrders_; }

    /// The knots of all curves end to end, null without, and where those of a curve begin.
    const RQ_DataArrayHandle &knots() const { return knots_; }
    int64_t knotOffset(int64_t curve) const;

    /// The knots of each curve when orders vary, empty otherwise.
    const RQ_CountArray &getKnotCountArray() const { return knotCounts_; }

    bool getUseBreakpoints() const { return useBreakpoints_; }
    RQ_Parameterization getBreakpointsParameterization() const { return parameterization_; }
    bool isPinned() const { return pinned_; }

    /// \name Changes by the maker of a mesh that is not yet shared
    ///
    /// False, and nothing changed, for an order outside the basis's range (see `RQ_CurveEval::orderRange`), for orders that
    /// are not one integer a curve, and for knots that are missing, of another number than the curves want, or that fall.
    /// Knots that no longer fit the orders are dropped.
    ///@{
    bool setBasis(RQ_Basis basis, int order);
    bool setBasis(RQ_Basis basis, const RQ_DataArrayHandle &orders);
    bool setOrder(int order) { return setBasis(basis_, order); }
    bool setOrder(const RQ_DataArrayHandle &orders) { return setBasis(basis_, orders); }
    bool setKnots(const RQ_DataArrayHandle &knots);

    void setFaceSetMap(const RQ_FaceSetMapHandle &sets) { faceSets_ = sets; }

    /// Store a set under a name, in a map that is made when there is none; one of that name is replaced.
    void addFaceSet(const BAS_StringHolder &name, const RQ_FaceSetHandle &set);
    ///@}

    /// The named face sets, null when there are none.
    const RQ_FaceSetMapHandle &faceSetMap() const { return faceSets_; }

    /// A curve on its own, whose arrays are views of this mesh's: its uniform attributes are the uniform and the detail
    /// ones.  Not checked.
    RQ_CurveHandle getCurve(int64_t curve) const;

    /// Linear curves through points of these, `lod` times the option "lod" of them, rounded up, for every span: at most
    /// 16384, and beyond 20 no more than make some hundred million points in all.
    ///
    /// Every attribute is shaped by the basis: integers are rounded to the nearest, text and arrays of arrays are those of
    /// the vertex that has the greatest weight.  Neighbouring spans share a point, open curves end in one of their own.
    /// Returns this mesh when it is linear, null without curves or a basis.
    RQ_CurveMeshHandle refineToLinear(const RQ_RefineParms *parms, double lod) const;

    /// Linear curves no point of which is further than `distance` from the straight pieces, measured in the space of "P",
    /// in all motion segments.
    ///
    /// Every span, at most 65536 times, is cut evenly into the fewest pieces that stay within the distance; between spans
    /// curves are taken to be in one piece.  A distance below the precision of the positions counts as that.  Null also when
    /// `distance` is not above 0 or "P" is missing.
    RQ_CurveMeshHandle refineToDistance(double distance) const;

    /// The curves that can be drawn: for linear ones at least 2 vertices, 3 when closed; for Bezier ones at least 3 and as
    /// many as cubic spans want; for all others 4.  Whatever the order.
    RQ_CurveMeshHandle removeDegenerate() const;

    /// Open B-splines and Catmull-Rom curves with their end vertices (and the end knots) repeated so that they end in them;
    /// and those without the repeated ones, from the same arrays as before.
    RQ_CurveMeshHandle pinCurves() const;
    RQ_CurveMeshHandle unpinCurves() const;

    /// The uniform attributes as vertex attributes, unless vertices have one of that name.
    RQ_CurveMeshHandle expandUniformVarying() const;

    const char *className() const override;
    int getPrimitiveType() const override;

    /// What the curves cover, and around it the largest "width" or "pscale" where there is one.
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override;

    /// Hand the curves of a linear mesh to the sink, in parallel and in no order where that allows threads; of any other the
    /// linear mesh of 20 pieces a span (times the option "lod").  False without curves.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;
    int getMotionSegments() const override;
    int64_t getMemoryUsage() const override;
    const RQ_AttributeListHandle &getVertexAttributes() const override { return vertex_; }
    const RQ_AttributeListHandle &getUniformAttributes() const override { return uniform_; }
    const RQ_AttributeListHandle &getDetailAttributes() const override { return detail_; }
    bool save(BAS_JSONWriter &writer) const override;
    const RQ_ViewportRefineOptions &viewportRefineOptions() const override;
    RQ_PrimitiveHandle doHarden() const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

    /// Each pattern chooses attributes for the list of its name; the one for points chooses vertex attributes too.
    RQ_PrimitiveHandle doAttributeMerge(const RQ_Primitive &source, const BAS_StringMMPattern *vertex,
                                        const BAS_StringMMPattern *point, const BAS_StringMMPattern *uniform,
                                        const BAS_StringMMPattern *detail) const override;

    using RQ_Primitive::clone;

protected:
    /// Whether curves of this class may be of a basis.
    virtual bool canHaveBasis(RQ_Basis) const { return true; }

    /// These curves with other attributes, as a mesh of the class that this one is of.
    virtual RQ_CurveMeshHandle clone(const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform,
                                     const RQ_AttributeListHandle &detail) const;

private:
    int64_t knotCount(int64_t curve) const { return getVertexCount(curve) + getOrder(curve) * (wrap_ ? 2 : 1) - wrap_; }
    int64_t knotCount() const { return getCurveCount() > 0 ? knotOffset(getCurveCount()) : 0; }
    RQ_CurveMeshHandle selectCurves(const RQ_DataArrayHandle &curves) const;
    RQ_CurveMeshHandle stretched(bool pin) const;
    void enlargeByHull(BAS_BoundingBox *boxes, int segments) const;
    bool canBeSampled() const;
    RQ_CurveMeshHandle sampled(const rq::CurveSampling &sampling) const;

    struct CurveMerges;
    const CurveMerges &curveMerges() const;
    RQ_CurveHandle makeCurve(const CurveMerges &merges, int64_t curve) const;

    RQ_CountArray counts_;
    RQ_DataArrayHandle knots_;
    RQ_DataArrayHandle varyingOrders_;
    RQ_AttributeListHandle vertex_;
    RQ_AttributeListHandle uniform_;
    RQ_AttributeListHandle detail_;
    RQ_FaceSetMapHandle faceSets_;
    host::Published<CurveMerges> merges_;
    RQ_CountArray knotCounts_;  // with varying orders
    RQ_Basis basis_ = RQ_BASIS_LINEAR;
    int32_t uniformOrder_ = 2;
    bool wrap_ = false;
    bool useBreakpoints_ = false;
    bool pinned_ = false;
    RQ_Parameterization parameterization_ = RQ_PARAMETERIZATION_UNIFORM;
};
