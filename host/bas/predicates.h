#pragma once

#include <cmath>

#include <boost/container/small_vector.hpp>

#include <host/bas/Vector.h>
#include <host/plt/types.h>

namespace host
{
/// A sum of doubles without any rounding: components of rising magnitude whose bits do not overlap.
///
/// Failure  exact as long as no product or sum leaves the range of doubles; meaningless with infinities and NaN
/// Cost     linear in the number of components, which stays small for numbers of similar magnitude
class HOST_API ExactSum
{
public:
    void add(double value);
    void addProduct(double a, double b);

    /// The largest component: it has the sign of the whole sum, and is the sum up to the last place.
    double leading() const { return parts_.empty() ? 0.0 : parts_.back(); }

private:
    boost::container::small_vector<double, 16> parts_;
};

/// `orientation` without the quick test.
HOST_API double exactOrientation(const BAS_Vec2d &a, const BAS_Vec2d &b, const BAS_Vec2d &c);

/// Tell on which side of the line from `a` to `b` the point `c` lies.
///
/// Positive on the left (a, b, c turn counter-clockwise), negative on the right, zero exactly on the line.  The sign is
/// exact; the value is twice the triangle's area up to rounding.
/// Failure  NaN in, NaN or any value out; the sign may be lost when products of coordinates overflow or underflow
inline double orientation(const BAS_Vec2d &a, const BAS_Vec2d &b, const BAS_Vec2d &c)
{
    const double left = (a.x - c.x) * (b.y - c.y);
    const double right = (a.y - c.y) * (b.x - c.x);
    const double det = left - right;
    // Each difference and product errs by at most u = 2^-53 of itself, and the last subtraction by u of its result:
    // together below (3 + 16 u) u times the sum of the magnitudes.
    constexpr double kBound = 3.330669073875472e-16;
    if (std::abs(det) > kBound * (std::abs(left) + std::abs(right)))
        return det;
    return exactOrientation(a, b, c);
}
}  // namespace host
