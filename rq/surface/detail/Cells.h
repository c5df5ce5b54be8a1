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

    Cells(const Point *points, int64_t count) : points_(points), count_(count) {}

    int64_t count() const { return count_; }
    const Point *corners(int64_t cell) const { return points_ + cell * kCorners; }

    /// Whether two corners of a cell are one point.
    static bool isCollapsed(const Point *cell)
    {
        bool repeats = false;
        for (int i = 1; i < kCorners; ++i)
            for (int j = 0; j < i; ++j)
                repeats |= cell[i] == cell[j];
        return repeats;
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

    /// Whether two faces have the same points, in whatever order.
    static bool areSame(const std::array<Point, kFaceCorners> &a, const std::array<Point, kFaceCorners> &b)
    {
        bool same = true;
        for (int i = 0; i < kFaceCorners; ++i)
        {
            bool inB = false, inA = false;
            for (int j = 0; j < kFaceCorners; ++j)
            {
                inB |= a[size_t(i)] == b[size_t(j)];
                inA |= b[size_t(i)] == a[size_t(j)];
            }
            same &= inB & inA;
        }
        return same;
    }

    /// Whether two cells have the same points, in whatever order.
    bool areSame(int64_t a, int64_t b) const
    {
        // Nearly all differ in their sums.
        uint64_t sumA = 0, sumB = 0;
        for (int i = 0; i < kCorners; ++i)
        {
            sumA += uint64_t(corners(a)[i]);
            sumB += uint64_t(corners(b)[i]);
        }
        return sumA == sumB && std::is_permutation(corners(a), corners(a) + kCorners, corners(b));
    }

private:
    const Point *points_;
    int64_t count_;
};
}  // namespace rq
