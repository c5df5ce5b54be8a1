#pragma once

#include <span>
#include <vector>

#include <host/bas/detail/EarCutter.h>

namespace host
{
/// Merge the triangles of one polygon into convex pieces.
///
/// Cuts are taken out again, the last (longest) first, wherever both of their ends stay convex and the piece keeps within
/// the limit; no cut that is left could be taken out.  Triangles without area stay as they are.
class PieceMerger
{
public:
    /// Merge the triangles that `EarCutter` made of a polygon of `count` corners.
    void merge(const BAS_Vec2d *points, int count, std::span<const EarCutter::Triangle> triangles, int limit);

    /// Call `emit(corners, count, forced)` for each piece until it answers false.
    template <class Emit> void forEachPiece(Emit &&emit);

private:
    struct Edge
    {
        int from;           // corner
        int prev, next;     // around the piece
        int twin = -1;      // the other side of a cut, -1 for an edge of the polygon
        bool gone = false;  // taken out or, while pieces are listed, seen
    };

    void connect(int count, std::span<const EarCutter::Triangle> triangles);
    void takeOut(const BAS_Vec2d *points, int edge, int limit);
    bool staysConvex(const BAS_Vec2d *points, int in, int out) const;
    int pieceOf(int edge);

    std::vector<Edge> edges_;  // three per triangle
    std::vector<int> outer_;   // per corner: the cut that is the edge of what is left of the polygon there
    std::vector<int> piece_;   // per triangle: one that it was merged with, itself for the first
    std::vector<int> sizes_;   // per piece: corners; 0 for a triangle that is not to be merged
    std::vector<uint8_t> forced_;
    std::vector<int> corners_;
};

template <class Emit> void PieceMerger::forEachPiece(Emit &&emit)
{
    for (size_t first = 0; first < edges_.size(); ++first)
    {
        if (edges_[first].gone)
            continue;
        corners_.clear();
        for (int edge = int(first); !edges_[edge].gone; edge = edges_[edge].next)
        {
            edges_[edge].gone = true;
            corners_.push_back(edges_[edge].from);
        }
        if (!emit(corners_.data(), int(corners_.size()), forced_[first / 3] != 0))
            return;
    }
}
}  // namespace host
