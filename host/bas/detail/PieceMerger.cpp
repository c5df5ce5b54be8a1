#include <host/bas/detail/PieceMerger.h>

namespace host
{
void PieceMerger::merge(const BAS_Vec2d *points, int count, std::span<const EarCutter::Triangle> triangles, int limit)
{
    connect(count, triangles);
    const int pieces = int(triangles.size());
    piece_.resize(pieces);
    sizes_.resize(pieces);
    forced_.resize(pieces);
    for (int i = 0; i < pieces; ++i)
    {
        const EarCutter::Triangle &t = triangles[i];
        piece_[i] = i;
        sizes_[i] = orientation(points[t.a], points[t.b], points[t.c]) > 0.0 ? 3 : 0;
        forced_[i] = t.forced;
    }
    // The last triangle closes the polygon; every other one ends in a cut of its own.
    for (int i = pieces - 2; i >= 0; --i)
        takeOut(points, 3 * i + 2, limit);
}

/// Replay the cuts: each triangle meets, at its first two sides, what was cut off there before.
void PieceMerger::connect(int count, std::span<const EarCutter::Triangle> triangles)
{
    outer_.assign(count, -1);
    edges_.resize(3 * triangles.size());
    const auto meet = [this](int edge, int corner) {
        edges_[edge].twin = outer_[corner];
        if (outer_[corner] >= 0)
            edges_[outer_[corner]].twin = edge;
    };
    for (int i = 0; i < int(triangles.size()); ++i)
    {
        const EarCutter::Triangle &t = triangles[i];
        const int first = 3 * i;
        edges_[first] = {t.a, first + 2, first + 1};
        edges_[first + 1] = {t.b, first, first + 2};
        edges_[first + 2] = {t.c, first + 1, first};
        meet(first, t.a);
        meet(first + 1, t.b);
        outer_[t.a] = first + 2;
    }
    const int last = int(triangles.size()) - 1;
    meet(3 * last + 2, triangles[last].c);
}

/// Take one cut out if that is allowed.
void PieceMerger::takeOut(const BAS_Vec2d *points, int edge, int limit)
{
    const int twin = edges_[edge].twin;
    const int here = pieceOf(edge), there = pieceOf(twin);
    if (sizes_[here] == 0 || sizes_[there] == 0 || sizes_[here] + sizes_[there] - 2 > limit || forced_[here] ||
        forced_[there])
        return;
    Edge &e = edges_[edge], &t = edges_[twin];
    if (!staysConvex(points, e.prev, t.next) || !staysConvex(points, t.prev, e.next))
        return;
    edges_[e.prev].next = t.next;
    edges_[t.next].prev = e.prev;
    edges_[t.prev].next = e.next;
    edges_[e.next].prev = t.prev;
    e.gone = t.gone = true;
    piece_[there] = here;
    sizes_[here] += sizes_[there] - 2;
}

/// True when the edge `out` may follow the edge `in` around a convex piece.
bool PieceMerger::staysConvex(const BAS_Vec2d *points, int in, int out) const
{
    const BAS_Vec2d &a = points[edges_[in].from], &b = points[edges_[out].from], &c = points[edges_[edges_[out].next].from];
    return orientation(a, b, c) >= 0.0;
}

int PieceMerger::pieceOf(int edge)
{
    int piece = edge / 3;
    while (piece_[piece] != piece)
        piece = piece_[piece] = piece_[piece_[piece]];
    return piece;
}
}  // namespace host
