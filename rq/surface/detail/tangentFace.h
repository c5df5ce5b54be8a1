#pragma once

#include <cmath>
#include <limits>

#include <rq/surface/detail/tangentInput.h>

namespace rq
{
/// The limit under which the method takes a length or an area for nothing.
constexpr float kNoLength = std::numeric_limits<float>::min();

/// What is known of the one or two triangles that a face is cut into.
class TangentFace
{
public:
    enum Cut : uint8_t
    {
        FROM_FIRST,   ///< a quad, from its first corner to its third
        FROM_SECOND,  ///< a quad, from its second corner to its fourth
        TRIANGLE,
        NONE,  ///< other faces, which have no tangents
    };

    /// Looks at a face of three or four corners, given by its first corner and its points.
    template <class Topology> static TangentFace make(const TangentInput &input, const Topology &topology, int64_t face);

    Cut cut() const { return Cut(bits_ & 3); }
    int triangles() const { return kTriangles[cut()]; }

    /// Where a triangle's corner lies in the face, and where the face's corner lies in the triangle, -1 if it has none
    /// there.
    int corner(int triangle, int at) const { return kCorners[cut()][triangle][at]; }
    int find(int triangle, int corner) const { return kPlaces[cut()][triangle][corner]; }

    /// Two of its positions are one.
    bool isDegenerate(int triangle) const { return has(DEGENERATE, triangle); }

    /// Its texture is not mirrored.
    bool isPreserving(int triangle) const { return has(PRESERVING, triangle); }

    /// Its texture has no direction: it goes with whatever triangles are around it.
    bool isFree(int triangle) const { return has(FREE, triangle); }

    /// A triangle that goes with others has been told by which way it is mirrored.
    bool isDecided(int triangle) const { return has(DECIDED, triangle); }
    void decide(int triangle, bool isPreserving)
    {
        set(PRESERVING, triangle, isPreserving);
        set(DECIDED, triangle, true);
    }

private:
    enum Flag
    {
        DEGENERATE = 2,
        PRESERVING = 4,
        FREE = 6,
        DECIDED = 8,
    };
    static constexpr int kTriangles[4] = {2, 2, 1, 0};
    static constexpr int kCorners[4][2][3] = {{{0, 1, 2}, {0, 2, 3}}, {{0, 1, 3}, {1, 2, 3}}, {{0, 1, 2}}, {}};
    static constexpr int kPlaces[3][2][4] = {
        {{0, 1, 2, -1}, {0, -1, 1, 2}}, {{0, 1, -1, 2}, {-1, 0, 1, 2}}, {{0, 1, 2, -1}, {-1, -1, -1, -1}}};

    bool has(Flag flag, int triangle) const { return bits_ >> (flag + triangle) & 1; }
    void set(Flag flag, int triangle, bool value)
    {
        const int bit = 1 << (flag + triangle);
        bits_ = uint16_t(value ? bits_ | bit : bits_ & ~bit);
    }

    struct Corner
    {
        BAS_Vec3f p;
        float u, v;
    };
    static Cut shorterDiagonal(const Corner *corners);
    float look(int triangle, const Corner &a, const Corner &b, const Corner &c);

    uint16_t bits_ = NONE;
};

inline TangentFace::Cut TangentFace::shorterDiagonal(const Corner *corners)
{
    const auto inTexture = [&](int a, int b) {
        const float u = corners[b].u - corners[a].u, v = corners[b].v - corners[a].v;
        return u * u + v * v;
    };
    const float first = inTexture(0, 2), second = inTexture(1, 3);
    if (first < second)
        return FROM_FIRST;
    if (second < first)
        return FROM_SECOND;
    return (corners[3].p - corners[1].p).length2() < (corners[2].p - corners[0].p).length2() ? FROM_SECOND : FROM_FIRST;
}

/// Sets a triangle's flags; returns the size of its texture.
inline float TangentFace::look(int triangle, const Corner &a, const Corner &b, const Corner &c)
{
    const float u1 = b.u - a.u, v1 = b.v - a.v, u2 = c.u - a.u, v2 = c.v - a.v;
    const BAS_Vec3f edge1 = b.p - a.p, edge2 = c.p - a.p;
    const float turn = u1 * v2 - v1 * u2, area = std::abs(turn);
    const float alongU = (edge1 * v2 - edge2 * v1).length2(), alongV = (edge2 * u1 - edge1 * u2).length2();
    // Far from the limits nothing needs be computed.
    constexpr float kSmall = 1e-30f, kLarge = 1e7f;
    const auto isSome = [&](float squared) { return squared > kSmall || std::sqrt(squared) / area > kNoLength; };
    const bool isPlain = alongU > kSmall && alongV > kSmall && area > kNoLength && area < kLarge;
    set(DEGENERATE, triangle, a.p == b.p || a.p == c.p || b.p == c.p);
    set(PRESERVING, triangle, turn > 0.0f);
    set(FREE, triangle, !isPlain && !(area > kNoLength && isSome(alongU) && isSome(alongV)));
    return area;
}

template <class Topology> TangentFace TangentFace::make(const TangentInput &input, const Topology &topology, int64_t face)
{
    TangentFace made;
    const int64_t begin = topology.begin(face), count = topology.end(face) - begin;
    if (count != 3 && count != 4)
        return made;
    Corner corners[4];
    for (int64_t i = 0; i < count; ++i)
    {
        const int64_t point = topology.point(begin + i);
        const float *texture = input.texture(begin + i, point);
        corners[i] = {input.position(point), texture[0], texture[1]};
    }
    made.bits_ = count == 3 ? TRIANGLE : shorterDiagonal(corners);
    float areas[2] = {};
    for (int t = 0; t < made.triangles(); ++t)
        areas[t] = made.look(t, corners[made.corner(t, 0)], corners[made.corner(t, 1)], corners[made.corner(t, 2)]);
    // Both halves of a quad are mirrored or neither: the one with the larger texture decides.
    if (count == 4 && !made.isDegenerate(0) && !made.isDegenerate(1))
    {
        const int decides = made.isFree(1) || areas[0] >= areas[1] ? 0 : 1;
        made.set(PRESERVING, 1 - decides, made.isPreserving(decides));
    }
    return made;
}
}  // namespace rq
