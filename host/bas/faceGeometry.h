#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>

#include <host/bas/Vector.h>

// The geometry of one face, for any reader of positions: `position(i)` gives corner i of the face as 64-bit floats.
// Sums are taken relative to the first corner, so that a face far from the origin loses nothing.

namespace host
{
/// The vector at right angles to a face whose length is twice the face's area (Newell's sums, as a fan of cross products).
///
/// Exact for any simple planar face, concave ones too; corners count counter-clockwise seen from its tip.
template <class Position> BAS_Vec3d newellVector(int64_t corners, Position &&position)
{
    BAS_Vec3d sum(0.0);
    if (corners < 3)
        return sum;
    if (corners == 4)
        return (position(2) - position(0)) % (position(3) - position(1));
    const BAS_Vec3d origin = position(0);
    if (corners == 3)
        return (position(1) - origin) % (position(2) - origin);
    BAS_Vec3d last = position(1) - origin;
    for (int64_t i = 2; i < corners; ++i)
    {
        const BAS_Vec3d next = position(i) - origin;
        sum += last % next;
        last = next;
    }
    return sum;
}

// Between these the squares of a vector's parts neither vanish nor overflow.
constexpr double kLeastPlainSquare = 1e-280;
constexpr double kGreatestPlainSquare = 1e280;

/// The direction of `v`; the zero vector when it has none (zero length, not finite).  A division costs as much as a root:
/// there is one, and three products.
inline BAS_Vec3d direction(const BAS_Vec3d &v)
{
    if (const double squared = v.dot(v); squared > kLeastPlainSquare && squared < kGreatestPlainSquare)
        return v * (1.0 / std::sqrt(squared));
    const double largest = std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)});
    if (!(largest > 0.0) || !std::isfinite(v.x + v.y + v.z))
        return BAS_Vec3d(0.0);
    const BAS_Vec3d scaled = v / largest;
    return scaled * (1.0 / std::sqrt(scaled.dot(scaled)));
}

/// Replace a vector by its direction; its length, 0 when it has no direction.
inline double normalize(BAS_Vec3d &v)
{
    const BAS_Vec3d unit = direction(v);
    const double length = unit == BAS_Vec3d(0.0) ? 0.0 : v.length();
    v = unit;
    return length;
}

/// The angle in radians, 0 to pi, whose sine and cosine are in the proportion of `across`, not negative, to `along`.
///
/// Within 1e-11, and the same on every machine: a polynomial through the Chebyshev nodes of the arc tangent of 0 to pi/8,
/// to which the rest of the circle is folded.  Its pairs of terms do not wait for each other.
inline double angleOf(double across, double along)
{
    constexpr double kCoefficients[] = {0.999999999978399, -0.33333332097613705, 0.19999883856762368, -0.1428158877682093,
                                        0.110404892674878, -0.08456193076995829, 0.047073484921487066};
    constexpr double kEighth = std::numbers::sqrt2 - 1.0;  // the tangent of pi/8
    const double length = std::abs(along);
    const double small = std::min(across, length), large = std::max(across, length);
    const bool isFolded = small > kEighth * large;
    const double sum = isFolded ? large + small : large;
    const bool isAngle = sum > 0.0;
    const double tangent = (isFolded ? small - large : small) / (isAngle ? sum : 1.0);
    const double square = tangent * tangent;
    const double fourth = square * square;
    const auto pair = [&](int i) { return kCoefficients[i] + kCoefficients[i + 1] * square; };
    const double series = (pair(0) + pair(2) * fourth) + (pair(4) + kCoefficients[6] * fourth) * (fourth * fourth);
    double angle = tangent * series + (isFolded ? 0.25 * std::numbers::pi : 0.0);
    angle = across > length ? 0.5 * std::numbers::pi - angle : angle;
    angle = along < 0.0 ? std::numbers::pi - angle : angle;
    return isAngle ? angle : 0.0;
}

/// Two unit axes at right angles to a face's Newell vector and to each other (Duff and others, "Building an orthonormal
/// basis, revisited", 2017); (1, 0, 0) and (0, 0, 1) where the vector has no direction.
inline void faceFrame(const BAS_Vec3d &newell, BAS_Vec3d &axisX, BAS_Vec3d &axisY)
{
    const BAS_Vec3d normal = direction(newell);
    if (normal == BAS_Vec3d(0.0))
    {
        axisX = BAS_Vec3d(1.0, 0.0, 0.0);
        axisY = BAS_Vec3d(0.0, 0.0, 1.0);
        return;
    }
    const double sign = std::copysign(1.0, normal.z);
    const double a = -1.0 / (sign + normal.z);
    const double b = normal.x * normal.y * a;
    axisX = BAS_Vec3d(1.0 + sign * normal.x * normal.x * a, sign * b, -sign * normal.x);
    axisY = BAS_Vec3d(b, sign + normal.y * normal.y * a, -normal.y);
}

// The cross product of two edges whose square is not above this is taken for that of three corners in a row.
constexpr double kLeastTrustedSquare = 1e-6;

/// A vector along a face's normal from its first three corners; from all of them where these are too small to trust.
template <class Position> BAS_Vec3d fastNormalVector(int64_t corners, Position &&position)
{
    if (corners < 3)
        return BAS_Vec3d(0.0, 0.0, 1.0);
    const BAS_Vec3d first = position(0);
    const BAS_Vec3d sum = (position(1) - first) % (position(2) - first);
    const double squared = sum.dot(sum);
    return squared > kLeastTrustedSquare && std::isfinite(squared) ? sum : newellVector(corners, position);
}

/// The unit normal of a face, from that vector.
template <class Position> BAS_Vec3d fastNormal(int64_t corners, Position &&position)
{
    return direction(fastNormalVector(corners, position));
}

/// The angle in radians at corner `at` of a face.  Neighbours that lie on the corner are passed over, so that a quad with
/// two corners in one place has the angles of the triangle that it is; 0 when all corners lie there.
template <class Position> double cornerAngle(int64_t corners, int64_t at, Position &&position)
{
    const BAS_Vec3d corner = position(at);
    const auto edge = [&](int64_t step) {
        BAS_Vec3d toNeighbour(0.0);
        for (int64_t i = 1; i < corners && toNeighbour == BAS_Vec3d(0.0); ++i)
            toNeighbour = position((at + i * step) % corners) - corner;
        return toNeighbour;
    };
    const BAS_Vec3d next = edge(1), previous = edge(corners - 1);
    const BAS_Vec3d across = next % previous;
    return angleOf(std::sqrt(across.dot(across)), next.dot(previous));
}

/// True when the diagonal a-c cuts the quad a, b, c, d into two triangles whose normals point to one side.
inline bool diagonalSplits(const BAS_Vec3d &a, const BAS_Vec3d &b, const BAS_Vec3d &c, const BAS_Vec3d &d)
{
    const BAS_Vec3d diagonal = c - a;
    return ((b - a) % diagonal).dot(diagonal % (d - a)) > 0.0;
}

/// The length of a closed face's outline.
template <class Position> double facePerimeter(int64_t corners, Position &&position)
{
    double sum = 0.0;
    for (int64_t i = 0; i < corners; ++i)
        sum += (position(i + 1 < corners ? i + 1 : 0) - position(i)).length();
    return sum;
}

/// The signed volume between a face, cut as a fan, and a reference point.
template <class Position> double faceVolume(int64_t corners, Position &&position, const BAS_Vec3d &reference)
{
    if (corners < 3)
        return 0.0;
    return (position(0) - reference).dot(newellVector(corners, position)) / 6.0;
}
}  // namespace host
