#pragma once

#include <rq/surface/detail/TangentLanes.h>

namespace rq
{
/// Marks of a corner.  Those of several corners are joined bit by bit with "and": what is left holds for all.
enum TangentMark : uint32_t
{
    MARK_SIDES_U = TangentLanes::SIDES_U,  ///< sides of the directions of its triangles, but for free ones
    MARK_SIDES_V = TangentLanes::SIDES_V,
    MARK_PRESERVING = 1 << 12,  ///< its face is plain, and not mirrored
    MARK_MIRRORED = 1 << 13,    ///< its face is plain, and mirrored
    MARK_BOTH = 1 << 14,        ///< it lies on the diagonal that cuts its quad
};

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

    TangentFace() = default;
    explicit TangentFace(Cut cut) : bits_(cut) {}

    /// Which diagonal cuts a quad: the one that is shorter in the texture, or in space when both are equal there.
    static Cut shorterDiagonal(const TangentCorner *corners);

    /// Say what the lanes found of its triangles, the first of which is in lane `lane`.
    void describe(const TangentLanes &lanes, int64_t lane);

    Cut cut() const { return Cut(bits_ & 3); }
    int triangles() const { return kTriangles[cut()]; }

    /// Where a triangle's corner lies in the face, and where the face's corner lies in the triangle, -1 if it has none
    /// there.
    int corner(int triangle, int at) const { return kCorners[cut()][triangle][at]; }
    int find(int triangle, int corner) const { return kPlaces[cut()][triangle][corner]; }

    /// Whether a corner lies on the diagonal that cuts its quad, so that both halves have it.
    bool hasBoth(int64_t corner) const { return cut() == (corner & 1); }

    /// Whether none of its triangles, if it has some, is free or degenerate.
    bool isPlain() const { return cut() != NONE && !(bits_ & (3 << DEGENERATE | 3 << FREE)); }

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
    // Places of the bits of the first triangle; the second's are beside them.
    enum Flag
    {
        DEGENERATE = 2,
        PRESERVING = 4,
        FREE = 6,
        DECIDED = 8,
    };
    static constexpr int bitsOf(int32_t kind)
    {
        return (kind & TangentLanes::DEGENERATE ? 1 << DEGENERATE : 0) |
               (kind & TangentLanes::PRESERVING ? 1 << PRESERVING : 0) | (kind & TangentLanes::FREE ? 1 << FREE : 0);
    }
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

    uint16_t bits_ = NONE;
};

inline TangentFace::Cut TangentFace::shorterDiagonal(const TangentCorner *corners)
{
    const auto length = [](const float *a, const float *b, int axes) {
        float sum = 0.0f;
        for (int axis = 0; axis < axes; ++axis)
            sum += (b[axis] - a[axis]) * (b[axis] - a[axis]);
        return sum;
    };
    const float first = length(corners[0].texture, corners[2].texture, 2);
    const float second = length(corners[1].texture, corners[3].texture, 2);
    // Either diagonal is as likely as the other, so the choice is not a branch.
    const bool isSecondInSpace =
        length(corners[1].position, corners[3].position, 3) < length(corners[0].position, corners[2].position, 3);
    return (second < first) | (!(first < second) & isSecondInSpace) ? FROM_SECOND : FROM_FIRST;
}

inline void TangentFace::describe(const TangentLanes &lanes, int64_t lane)
{
    bits_ = uint16_t(bits_ | bitsOf(lanes.kind(lane)));
    if (triangles() < 2)
        return;
    bits_ = uint16_t(bits_ | bitsOf(lanes.kind(lane + 1)) << 1);
    if (isDegenerate(0) || isDegenerate(1))
        return;
    // Both halves of a quad are mirrored or neither: the one with the larger texture decides.
    const int decides = isFree(1) || lanes.area(lane) >= lanes.area(lane + 1) ? 0 : 1;
    set(PRESERVING, 1 - decides, isPreserving(decides));
}
}  // namespace rq
