#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

namespace rq
{
/// The corners of the faces of a tetrahedron a, b, c, d, counter-clockwise seen from outside where (b - a) x (c - a) . (d -
/// a) is positive.
struct TetShape
{
    static constexpr int kCorners = 4;
    static constexpr std::array<std::array<int, 3>, 4> kFaces = {{{0, 2, 1}, {0, 1, 3}, {1, 2, 3}, {2, 0, 3}}};
};

/// The same of a hexahedron: corners 0 to 3 around its bottom, 4 to 7 above them, counter-clockwise seen from above the top.
struct HexShape
{
    static constexpr int kCorners = 8;
    static constexpr std::array<std::array<int, 4>, 6> kFaces = {
        {{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}}};
};

/// Cells of one shape, each given by the points of its corners.
template <class Shape, class Index> class Cells
{
public:
    using Point = Index;

    static constexpr int kCorners = Shape::kCorners, kFaces = int(Shape::kFaces.size()),
                         kFaceCorners = int(Shape::kFaces[0].size());

    using Face = std::array<Point, kFaceCorners>;

    Cells(const Point *points, int64_t count) : points_(points), count_(count) {}

    int64_t count() const { return count_; }
    const Point *corners(int64_t cell) const { return points_ + cell * kCorners; }

    /// Whether two corners of a cell are one point.
    static bool isCollapsed(const Point *cell)
    {
        // In rounds of all corners at a time.
        std::array<Point, 2 * kCorners> twice;
        std::copy_n(cell, kCorners, std::copy_n(cell, kCorners, twice.begin()));
        int repeats = 0;
        for (int round = 1; round <= kCorners / 2; ++round)
            for (int i = 0; i < kCorners; ++i)
                repeats |= twice[size_t(i)] == twice[size_t(i + round)];
        return repeats != 0;
    }

    /// Of the values that the corners of a cell have, those of a face.
    template <class T> static std::array<T, kFaceCorners> face(const T *cell, int face)
    {
        std::array<T, kFaceCorners> values;
        for (int i = 0; i < kFaceCorners; ++i)
            values[size_t(i)] = cell[Shape::kFaces[size_t(face)][size_t(i)]];
        return values;
    }

    /// What is left of a face without the corners that repeat the one before: which corners of the cell.  Nothing of one
    /// that has no area whatever its points.
    struct Outline
    {
        std::array<int, kFaceCorners> corners;
        int count = 0;
    };
    static Outline outline(const Point *cell, int face)
    {
        Outline left;
        for (int i = 0, before = Shape::kFaces[size_t(face)].back(); i < kFaceCorners; ++i)
        {
            const int corner = Shape::kFaces[size_t(face)][size_t(i)];
            if (cell[corner] != cell[before])
                left.corners[size_t(left.count++)] = corner;
            before = corner;
        }
        const auto meets = [&](int i) {
            return cell[left.corners[size_t(i)]] == cell[left.corners[size_t((i + 2) % kFaceCorners)]];
        };
        if (left.count < 3 || (left.count == 4 && (meets(0) || meets(1))))
            left.count = 0;
        return left;
    }

    /// Whether two faces have the same points, in whatever order and however often.
    static bool areSame(const Face &a, const Face &b)
    {
        return sorted(a) == sorted(b) ||
               (areIn(a.data(), b.data(), kFaceCorners) && areIn(b.data(), a.data(), kFaceCorners));
    }

    /// Whether two cells have the same points, in whatever order and however often.
    bool areSame(int64_t a, int64_t b) const
    {
        // Nearly all differ in their lowest points, or the highest.
        const auto [lowA, highA] = std::minmax_element(corners(a), corners(a) + kCorners);
        const auto [lowB, highB] = std::minmax_element(corners(b), corners(b) + kCorners);
        return *lowA == *lowB && *highA == *highB && areIn(corners(a), corners(b), kCorners) &&
               areIn(corners(b), corners(a), kCorners);
    }

private:
    static bool areIn(const Point *some, const Point *others, int count)
    {
        return std::all_of(some, some + count,
                           [=](Point point) { return std::find(others, others + count, point) != others + count; });
    }

    static Face sorted(Face face)
    {
        const auto order = [&face](size_t i, size_t j) {
            const Point low = std::min(face[i], face[j]), high = std::max(face[i], face[j]);
            face[i] = low;
            face[j] = high;
        };
        order(0, 1);
        if constexpr (kFaceCorners == 4)
        {
            order(2, 3);
            order(0, 2);
            order(1, 3);
        }
        order(1, 2);
        if constexpr (kFaceCorners == 3)
            order(0, 1);
        return face;
    }

    const Point *points_;
    int64_t count_;
};
}  // namespace rq
