#include <rq/surface/detail/CubeLoops.h>

#include <array>
#include <bit>

namespace
{
constexpr int kEdges = 24;
constexpr int kNone = -1;

/// The edge between two corners that differ in one axis.
constexpr int edgeBetween(int a, int b) { return 8 * std::countr_zero(unsigned(a ^ b)) + (a & b); }

/// The corners of a side, counter-clockwise seen from outside of the cube.
constexpr std::array<int, 4> sideCorners(int axis, bool isFar)
{
    const int base = int(isFar) << axis, b = 1 << (axis + 1) % 3, c = 1 << (axis + 2) % 3;
    if (isFar)
        return {base, base | b, base | b | c, base | c};
    return {base, base | c, base | b | c, base | b};
}

/// Going around a side, the surface leads from the edge where the inside is entered to the one where it is left.
constexpr void linkEdges(int inside, const std::array<int, 4> &side, std::array<int, kEdges> &next)
{
    const auto isInside = [&](int i) { return inside >> side[size_t(i % 4)] & 1; };
    for (int enter = 0; enter < 4; ++enter)
    {
        if (isInside(enter) || !isInside(enter + 1))
            continue;
        int leave = enter + 1;
        while (isInside(leave + 1))
            ++leave;
        const auto edge = [&](int i) { return edgeBetween(side[size_t(i % 4)], side[size_t((i + 1) % 4)]); };
        next[size_t(edge(enter))] = edge(leave);
    }
}

constexpr rq::CubeLoops loopsOf(int inside)
{
    std::array<int, kEdges> next{};
    next.fill(kNone);
    for (int axis = 0; axis < 3; ++axis)
        for (const bool isFar : {false, true})
            linkEdges(inside, sideCorners(axis, isFar), next);
    rq::CubeLoops found;
    for (int first = 0; first < kEdges; ++first)
    {
        const uint8_t before = found.corners;
        for (int edge = first; next[size_t(edge)] != kNone;)
        {
            found.edges[found.corners++] = uint8_t(edge);
            const int after = next[size_t(edge)];
            next[size_t(edge)] = kNone;
            edge = after;
        }
        if (found.corners > before)
            found.counts[found.loops++] = uint8_t(found.corners - before);
    }
    return found;
}

constexpr std::array<rq::CubeLoops, 256> allLoops()
{
    std::array<rq::CubeLoops, 256> all{};
    for (int inside = 0; inside < 256; ++inside)
        all[size_t(inside)] = loopsOf(inside);
    return all;
}

constexpr std::array<rq::CubeLoops, 256> kLoops = allLoops();
}  // namespace

const rq::CubeLoops *rq::cubeLoops() { return kLoops.data(); }
