#include <host/bas/detail/PieceMerger.h>

namespace host
{
void PieceMerger::merge(const BAS_Vec2d *points, int count, std::span<const EarCutter::Triangle> triangles, int limit)
{
    connect(count, triangles);
    nodes_.clear();
    pieces_.clear();
    // Beyond a triangle's cut lies one that came later, so that backwards each meets pieces that are done up to there.
    for (int i = int(triangles.size()) - 1; i >= 0; --i)
    {
        const EarCutter::Triangle &t = triangles[i];
        const bool isProper = !t.forced && orientation(points[t.a], points[t.b], points[t.c]) > 0.0;
        if (!isProper || !join(points, t, places_[i]))
            begin(t, places_[i], isProper ? limit - 3 : 0);
    }
}

/// Replay the cuts: each triangle meets, at its first two sides, what was cut off there before; the last one at all three.
void PieceMerger::connect(int count, std::span<const EarCutter::Triangle> triangles)
{
    cutAt_.assign(count, -1);
    places_.resize(triangles.size());
    const auto meet = [this](int corner, int side) {
        if (cutAt_[corner] >= 0)
            places_[cutAt_[corner]].outer = side;
    };
    for (int i = 0; i < int(triangles.size()); ++i)
    {
        const EarCutter::Triangle &t = triangles[i];
        meet(t.a, 3 * i);
        meet(t.b, 3 * i + 1);
        cutAt_[t.a] = i;
        places_[i].outer = -1;
    }
    const int last = int(triangles.size()) - 1;
    meet(triangles[last].c, 3 * last + 2);
}

/// Take a triangle's cut out if that is allowed: the piece beyond it gets one more corner.
bool PieceMerger::join(const BAS_Vec2d *points, const EarCutter::Triangle &triangle, Place &place)
{
    if (place.outer < 0)
        return false;
    const Place &beyond = places_[place.outer / 3];
    if (pieces_[beyond.piece].room == 0)
        return false;
    const int a = beyond.nodes[place.outer % 3], c = nodes_[a].next;
    const BAS_Vec2d &b = points[triangle.b];
    if (orientation(points[nodes_[nodes_[a].prev].corner], points[triangle.a], b) < 0.0 ||
        orientation(b, points[triangle.c], points[nodes_[nodes_[c].next].corner]) < 0.0)
        return false;
    const int added = int(nodes_.size());
    nodes_.push_back({triangle.b, a, c});
    nodes_[a].next = nodes_[c].prev = added;
    --pieces_[beyond.piece].room;
    place = {place.outer, beyond.piece, {a, added, -1}};
    return true;
}

void PieceMerger::begin(const EarCutter::Triangle &triangle, Place &place, int room)
{
    const int first = int(nodes_.size());
    nodes_.push_back({triangle.a, first + 2, first + 1});
    nodes_.push_back({triangle.b, first, first + 2});
    nodes_.push_back({triangle.c, first + 1, first});
    place = {place.outer, int(pieces_.size()), {first, first + 1, first + 2}};
    pieces_.push_back({first, room, triangle.forced});
}
}  // namespace host
