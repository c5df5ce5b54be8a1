#pragma once

#include <array>

#include <host/elm/PrimitiveFactory.h>
#include <host/msh/Meta.h>
#include <rq/bridge/detail/Extent.h>

namespace rq
{
/// One blob as a field in space: its weight times a kernel of how far a point is on the way from its middle, where the
/// kernel is 1, to the surface of its shape, from where on it is 0.
///
/// Shapes are measured by their gauge: the factor that a shape grows by, from its middle, to reach a point.  Capsules are
/// measured by the distance to the line in them instead, so that all of it is their middle.
class BlobShape
{
public:
    /// `placement` moves the unit shape to where the blob is.
    BlobShape(ELM_PrimitiveTypeId type, const MSH_BlobData &blob, const BAS_Mat4d &placement);

    /// False for blobs without a weight, and those whose placement is not finite or flattens them: their field is zero.
    bool isThere() const { return isThere_; }

    double weight() const { return blob_.weight; }

    /// Half of the box around the shape, around its middle.
    const BAS_Vec3d &middle() const { return middle_; }
    const BAS_Vec3d &halfSize() const { return halfSize_; }

    /// The shortest way through the parallelepiped around the shape.
    double thickness() const { return thickness_; }

    /// The field at a point, counted from the middle.
    double at(const BAS_Vec3d &offset) const;
    std::array<double, 4> at(const std::array<BAS_Vec3d, 4> &offsets) const;

    /// Add the field at `count` points of a row along x.
    void addRow(double *values, const double *x, int count, double y, double z) const;

    /// What the field can be within `radius` of a point.
    Extent within(const BAS_Vec3d &offset, double radius) const;

private:
    template <class Visit> auto visitGauge(Visit &&visit) const;
    template <class Visit> auto visitKernel(Visit &&visit) const;
    template <class Visit> auto visitField(Visit &&visit) const;
    bool invert(const BAS_Mat3d &matrix);
    double growth() const;

    ELM_PrimitiveTypeId type_;
    MSH_BlobData blob_;
    BAS_Vec3d middle_{0.0}, halfSize_{0.0};
    BAS_Mat3d inverse_;
    double thickness_ = 0.0;
    double growth_ = 0.0;  // of the gauge, at most, along a way in space
    bool isThere_ = false;
};
}  // namespace rq
