#pragma once

#include <host/bas/Vector.h>
#include <rq/data/Values.h>
#include <rq/surface/detail/sampledList.h>

namespace rq
{
/// "P" of one motion segment as curves are shaped by it: rational weights and homogeneous positions make one of both.
///
/// Failure  `isValid` is false where there are not as many positions as vertices
class CurvePositions
{
public:
    CurvePositions(const RQ_AttributeList &list, int segment, int64_t vertices)
    {
        const RQ_DataArrayHandle &positions = list.get("P", segment);
        if (!positions || positions->entries() < vertices || positions->getTupleSize() < 3)
            return;
        positions_ = Values<double>(positions);
        homogeneous_ = positions->getTypeInfo() == RQ_TYPE_HPOINT && positions->getTupleSize() > 3;
        single_ = positions->getStorage() == RQ_STORAGE_REAL32 || positions->getStorage() == RQ_STORAGE_REAL16;
        if (const RQ_DataArray *weights = rationalWeights(list, list.getIndex("P"), segment))
            weights_ = Values<double>(*weights);
    }

    bool isValid() const { return positions_.tupleSize() > 2; }

    /// Whether evaluated positions have the precision of 32-bit floats.
    bool isSingle() const { return single_; }

    /// A vertex as spans sum it up, and the point that such a sum is.
    BAS_Vec4d operator[](int64_t i) const
    {
        const BAS_Vec4d point(positions_(i, 0), positions_(i, 1), positions_(i, 2), homogeneous_ ? positions_(i, 3) : 1.0);
        return weights_.entries() > 0 ? point * weights_[i] : point;
    }
    BAS_Vec3d divided(const BAS_Vec4d &p) const
    {
        // Weights of the basis need not sum up to one: coefficients of polynomials are no points.
        const bool isRational = homogeneous_ || weights_.entries() > 0;
        return BAS_Vec3d(p.x, p.y, p.z) * (!isRational ? 1.0 : p.w == 0.0 ? 0.0 : 1.0 / p.w);
    }

private:
    Values<double> positions_;
    Values<double> weights_;
    bool homogeneous_ = false;
    bool single_ = false;
};
}  // namespace rq
