#include <rq/surface/detail/tangentFan.h>

#include <algorithm>

namespace rq
{
namespace
{
enum Side
{
    NEXT,
    PREVIOUS,
};

void pair(std::span<FanTriangle> fan, int triangle, Side side, int other)
{
    fan[size_t(triangle)].across[side] = other;
    fan[size_t(other)].across[1 - side] = triangle;
}

/// Looks at all pairs, which is best for the few triangles that most vertices have.
void linkFew(std::span<FanTriangle> fan)
{
    for (size_t late = 1; late < fan.size(); ++late)
    {
        FanTriangle &b = fan[late];
        for (size_t early = 0; early < late; ++early)
        {
            const FanTriangle &a = fan[early];
            if (a.previous == b.next && a.across[PREVIOUS] < 0 && b.across[NEXT] < 0)
                pair(fan, int(late), NEXT, int(early));
            if (a.next == b.previous && a.across[NEXT] < 0 && b.across[PREVIOUS] < 0)
                pair(fan, int(late), PREVIOUS, int(early));
        }
    }
}

/// Sorts the edges by the vertex at their other end.
void linkMany(std::span<FanTriangle> fan)
{
    struct Edge
    {
        int64_t end;
        int triangle;
        Side side;
    };
    std::vector<Edge> edges;
    for (size_t i = 0; i < fan.size(); ++i)
    {
        edges.push_back({fan[i].next, int(i), NEXT});
        edges.push_back({fan[i].previous, int(i), PREVIOUS});
    }
    std::sort(edges.begin(), edges.end(), [](const Edge &a, const Edge &b) {
        return a.end != b.end ? a.end < b.end : a.triangle != b.triangle ? a.triangle < b.triangle : a.side < b.side;
    });
    // Edges that wait for an opposite one are all of one direction, so the first of them is the one to take.
    std::vector<Edge> waiting;
    size_t taken = 0;
    for (const Edge &edge : edges)
    {
        if (taken == waiting.size() || waiting[taken].end != edge.end)
        {
            waiting.clear();
            taken = 0;
        }
        if (taken < waiting.size() && waiting[taken].side != edge.side)
            pair(fan, edge.triangle, edge.side, waiting[taken++].triangle);
        else
            waiting.push_back(edge);
    }
}
}  // namespace

void linkFan(std::span<FanTriangle> fan)
{
    constexpr size_t kFew = 32;
    fan.size() <= kFew ? linkFew(fan) : linkMany(fan);
}

void groupFan(std::span<FanTriangle> fan, bool throughFree)
{
    for (size_t first = 0; first < fan.size(); ++first)
    {
        if (fan[first].isFree || fan[first].group >= 0)
            continue;
        const bool isPreserving = fan[first].isPreserving;
        fan[first].group = int(first);
        for (const Side side : {NEXT, PREVIOUS})
            for (int i = fan[first].across[side]; i >= 0; i = fan[size_t(i)].across[side])
            {
                FanTriangle &triangle = fan[size_t(i)];
                if (triangle.group >= 0 || triangle.isPreserving != isPreserving || (triangle.isFree && !throughFree))
                    break;
                triangle.group = int(first);
            }
    }
}
}  // namespace rq
