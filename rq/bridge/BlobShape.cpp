#include <rq/bridge/detail/BlobShape.h>

#include <limits>

#include <rq/bridge/detail/blobGauges.h>

namespace
{
// Beyond these, rounding would show; no surface is found in what is so thin.
constexpr double kThinnest = 1e-6;
constexpr double kFarthest = 1e30;

// Rounding must not make a bound of the field sharper than the field is.
constexpr double kSlack = 1e-6;

/// The shape as a box and all that lies within `radius` of it.
struct Solid
{
    BAS_Vec3d box;
    double radius;
};

Solid solidOf(ELM_PrimitiveTypeId type, const MSH_BlobData &blob)
{
    if (type == ELM_PRIMITIVE_BLOB_CAPSULE)
        return {BAS_Vec3d(0.0, 0.0, 0.5 * blob.length), 1.0};
    if (type == ELM_PRIMITIVE_BLOB_BOX)
        return {BAS_Vec3d(1.0 - blob.rounding), blob.rounding};
    return type == ELM_PRIMITIVE_BLOB_QUADRIC ? Solid{BAS_Vec3d(1.0), 0.0} : Solid{BAS_Vec3d(0.0), 1.0};
}

BAS_Vec3d row(const BAS_Mat3d &matrix, int i) { return {matrix[i][0], matrix[i][1], matrix[i][2]}; }
BAS_Vec3d column(const BAS_Mat3d &matrix, int i) { return {matrix[0][i], matrix[1][i], matrix[2][i]}; }

/// At least how much longer a matrix can make a vector.
double mostStretch(const BAS_Mat3d &matrix)
{
    double most = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        double sum = 0.0;
        for (int j = 0; j < 3; ++j)
            sum += std::abs(row(matrix, i).dot(row(matrix, j)));
        most = std::max(most, sum);
    }
    return std::sqrt(most);
}
}  // namespace

rq::BlobShape::BlobShape(ELM_PrimitiveTypeId type, const MSH_BlobData &blob, const BAS_Mat4d &placement)
    : type_(type), blob_(blob), middle_(placement.translation())
{
    const BAS_Mat3d matrix(placement[0][0], placement[0][1], placement[0][2], placement[1][0], placement[1][1],
                           placement[1][2], placement[2][0], placement[2][1], placement[2][2]);
    const Solid solid = solidOf(type, blob);
    double farthest = 0.0;
    for (int axis = 0; axis < 3; ++axis)
    {
        const BAS_Vec3d to = column(matrix, axis);
        halfSize_[axis] = solid.radius * to.length();
        for (int i = 0; i < 3; ++i)
            halfSize_[axis] += solid.box[i] * std::abs(to[i]);
        farthest = std::max(farthest, halfSize_[axis]);
        if (!(std::abs(middle_[axis]) + halfSize_[axis] < kFarthest))
            return;
    }
    if (blob.weight == 0.0 || !invert(matrix))
        return;
    thickness_ = std::numeric_limits<double>::infinity();
    for (int i = 0; i < 3; ++i)
        thickness_ = std::min(thickness_, 2.0 * (solid.box[i] + solid.radius) / column(inverse_, i).length());
    growth_ = growth() * mostStretch(inverse_);
    isThere_ = thickness_ > kThinnest * farthest && std::isfinite(thickness_);
}

// By cofactors of the matrix divided by its size, which neither overflow nor vanish.
bool rq::BlobShape::invert(const BAS_Mat3d &matrix)
{
    double size = 0.0;
    for (int i = 0; i < 9; ++i)
        size = std::max(size, std::abs(matrix[i / 3][i % 3]));
    if (!(size > std::numeric_limits<double>::min() && size < kFarthest))
        return false;
    const BAS_Mat3d scaled = matrix * (1.0 / size);
    const BAS_Vec3d across[] = {row(scaled, 1).cross(row(scaled, 2)), row(scaled, 2).cross(row(scaled, 0)),
                                row(scaled, 0).cross(row(scaled, 1))};
    const double volume = row(scaled, 0).dot(across[0]);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            inverse_[j][i] = across[i][j] / volume / size;
    return volume != 0.0;
}

/// How fast the gauge of the unit shape can grow: shapes around the unit ball that are convex grow by 1.
double rq::BlobShape::growth() const
{
    if (type_ != ELM_PRIMITIVE_BLOB_QUADRIC)
        return 1.0;
    const double most = std::max(blob_.exponentXY, blob_.exponentZ);
    return most <= 1.0 ? 1.0 : most <= 2.0 ? std::sqrt(3.0) : std::numeric_limits<double>::infinity();
}

template <class Visit> auto rq::BlobShape::visitGauge(Visit &&visit) const
{
    if (type_ == ELM_PRIMITIVE_BLOB_QUADRIC)
        return visit(SuperquadricGauge{blob_.exponentXY, blob_.exponentZ});
    if (type_ == ELM_PRIMITIVE_BLOB_CAPSULE)
        return visit(CapsuleGauge{0.5 * blob_.length});
    if (type_ == ELM_PRIMITIVE_BLOB_BOX)
        return visit(RoundedBoxGauge{blob_.rounding});
    return visit(BallGauge());
}

template <class Visit> auto rq::BlobShape::visitKernel(Visit &&visit) const
{
    const auto power = [&](auto &&ofLeft) {
        return visit([ofLeft, weight = blob_.weight](double squared) {
            const double left = 1.0 - squared;
            return weight * ofLeft(left > 0.0 ? left : 0.0);
        });
    };
    if (blob_.kernel == MSH_KERNEL_QUADRATIC)
        return power([](double left) { return left * left; });
    if (blob_.kernel == MSH_KERNEL_CUBIC)
        return power([](double left) { return left * left * left; });
    return power([](double left) { return (left * left) * (left * left); });
}

// The field has copies of all that it needs, so that loops over it keep them in registers.
template <class Visit> auto rq::BlobShape::visitField(Visit &&visit) const
{
    return visitGauge([&](const auto &gauge) {
        return visitKernel([&](const auto &kernel) {
            return visit(
                [gauge, kernel, toShape = inverse_](const BAS_Vec3d &offset) { return kernel(gauge(offset * toShape)); });
        });
    });
}

double rq::BlobShape::at(const BAS_Vec3d &offset) const
{
    return visitField([&](const auto &field) { return field(offset); });
}

std::array<double, 4> rq::BlobShape::at(const std::array<BAS_Vec3d, 4> &offsets) const
{
    return visitField([&](const auto &field) {
        return std::array{field(offsets[0]), field(offsets[1]), field(offsets[2]), field(offsets[3])};
    });
}

void rq::BlobShape::addRow(double *values, const double *x, int count, double y, double z) const
{
    visitField([&](const auto &field) {
        for (int i = 0; i < count; ++i)
            values[i] += field({x[i], y, z});
    });
}

rq::Extent rq::BlobShape::within(const BAS_Vec3d &offset, double radius) const
{
    const double reach = visitGauge([&](const auto &gauge) { return std::sqrt(gauge(offset * inverse_)); });
    // An infinite reach less an infinite growth says nothing: `max` keeps what it is given first.
    const double nearest = std::max(0.0, reach - growth_ * radius), farthest = reach + growth_ * radius;
    const auto [a, b] =
        visitKernel([&](const auto &kernel) { return std::pair(kernel(nearest * nearest), kernel(farthest * farthest)); });
    const double slack = kSlack * std::abs(blob_.weight);
    return {std::min(a, b) - slack, std::max(a, b) + slack};
}
