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
    /// A corner of a piece.
    struct Node
    {
        int corner;
        int prev, next;
    };

    struct Piece
    {
        int first;
        int room;  // corners that may be added
        bool forced;
    };

    /// Of one triangle, once it belongs to a piece.
    struct Place
    {
        int outer;  // the side that its cut is of another triangle, -1 for the last triangle
        int piece;
        int nodes[3];  // where its sides begin
    };

    void connect(int count, std::span<const EarCutter::Triangle> triangles);
    bool join(const BAS_Vec2d *points, const EarCutter::Triangle &triangle, Place &place);
    void begin(const EarCutter::Triangle &triangle, Place &place, int room);

    std::vector<Node> nodes_;
    std::vector<Piece> pieces_;
    std::vector<Place> places_;  // per triangle
    std::vector<int> cutAt_;     // per corner: the triangle whose cut is the edge of what is left of the polygon there
    std::vector<int> corners_;
};

template <class Emit> void PieceMerger::forEachPiece(Emit &&emit)
{
    for (const Piece &piece : pieces_)
    {
        corners_.clear();
        int node = piece.first;
        do
        {
            corners_.push_back(nodes_[node].corner);
            node = nodes_[node].next;
        } while (node != piece.first);
        if (!emit(corners_.data(), int(corners_.size()), piece.forced))
            return;
    }
}
}  // namespace host
