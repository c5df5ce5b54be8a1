#include <rq/surface/detail/TangentLanes.h>

#include <host/bas/clones.h>

namespace
{
using Lanes = rq::TangentLanes;
using Corner = Lanes::Corner;
using Directions = Lanes::Directions;
using Row = Lanes::Row;
using Shapes = Lanes::Shapes;
using rq::kNoLength;

inline BAS_Vec3f vector(const Row (&rows)[3], int64_t i) { return {rows[0][i], rows[1][i], rows[2][i]}; }

inline void put(const BAS_Vec3f &v, int64_t i, Row (&rows)[3])
{
    rows[0][i] = v.x;
    rows[1][i] = v.y;
    rows[2][i] = v.z;
}

inline float larger(float a, float b) { return a > b ? a : b; }

/// The vector scaled to a length; as it is when it is too short to have a direction.
inline BAS_Vec3f scaledTo(float length, const BAS_Vec3f &v, float squared)
{
    const float largest = larger(std::abs(v.x), larger(std::abs(v.y), std::abs(v.z)));
    const bool hasDirection = (largest > kNoLength) & (squared > 0.0f);
    return v * (hasDirection ? length / std::sqrt(hasDirection ? squared : 1.0f) : 1.0f);
}

/// The direction of what is left of a vector in the plane of a normal.
inline BAS_Vec3f projected(const BAS_Vec3f &v, const BAS_Vec3f &normal)
{
    const BAS_Vec3f flat = v - normal * normal.dot(v);
    return scaledTo(1.0f, flat, flat.dot(flat));
}

inline bool areEqual(const BAS_Vec3f &a, const BAS_Vec3f &b) { return (a.x == b.x) & (a.y == b.y) & (a.z == b.z); }

inline int32_t sidesOf(const BAS_Vec3f &v)
{
    // A direction follows or runs against some axis by more than this; two that do so together are far from opposite.
    constexpr float kClear = 0.3f;
    return (v.x > kClear ? 1 : 0) | (v.x < -kClear ? 2 : 0) | (v.y > kClear ? 4 : 0) | (v.y < -kClear ? 8 : 0) |
           (v.z > kClear ? 16 : 0) | (v.z < -kClear ? 32 : 0);
}

// Rows never overlap, which the compiler must know to take several values at a time.

/// Whether no normal needs be made one of unit length.
HOST_CLONES bool areUnit(const Corner *__restrict corner, int64_t count)
{
    int32_t others = 0;
    for (int64_t i = 0; i < count; ++i)
    {
        const BAS_Vec3f normal = vector(corner->normal, i);
        others += rq::isUnit(normal) ? 0 : 1;
    }
    return others == 0;
}

HOST_CLONES void measure(const Corner *__restrict a, const Corner *__restrict b, const Corner *__restrict c,
                         Shapes *__restrict shapes, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
    {
        const BAS_Vec3f pA = vector(a->position, i), pB = vector(b->position, i), pC = vector(c->position, i);
        const BAS_Vec3f edge1 = pB - pA, edge2 = pC - pA;
        const float u1 = b->texture[0][i] - a->texture[0][i], v1 = b->texture[1][i] - a->texture[1][i];
        const float u2 = c->texture[0][i] - a->texture[0][i], v2 = c->texture[1][i] - a->texture[1][i];
        const float turn = u1 * v2 - v1 * u2, sign = turn > 0.0f ? 1.0f : -1.0f;
        const BAS_Vec3f alongU = edge1 * v2 - edge2 * v1, alongV = edge2 * u1 - edge1 * u2;
        const float squareU = alongU.dot(alongU), squareV = alongV.dot(alongV);
        put(scaledTo(sign, alongU, squareU), i, shapes->alongU);
        put(scaledTo(sign, alongV, squareV), i, shapes->alongV);
        const float area = std::abs(turn);
        const bool isDirected =
            (area > kNoLength) & (std::sqrt(squareU) / area > kNoLength) & (std::sqrt(squareV) / area > kNoLength);
        shapes->area[i] = area;
        shapes->kind[i] = (areEqual(pA, pB) | areEqual(pA, pC) | areEqual(pB, pC) ? Lanes::DEGENERATE : 0) |
                          (turn > 0.0f ? Lanes::PRESERVING : 0) | (isDirected ? 0 : Lanes::FREE);
    }
}

/// Writes cosines in place of weighted directions.
HOST_CLONES void project(const Shapes *__restrict shapes, const Corner *__restrict corner, const Corner *__restrict next,
                         const Corner *__restrict previous, Directions *__restrict directions, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
    {
        const BAS_Vec3f normal = vector(corner->normal, i), position = vector(corner->position, i);
        const BAS_Vec3f u = projected(vector(shapes->alongU, i), normal);
        const BAS_Vec3f v = projected(vector(shapes->alongV, i), normal);
        const BAS_Vec3f after = projected(vector(next->position, i) - position, normal);
        const BAS_Vec3f before = projected(vector(previous->position, i) - position, normal);
        const float cosine = before.dot(after);
        put(u, i, directions->u);
        put(v, i, directions->v);
        directions->weighted[0][i] = cosine > 1.0f ? 1.0f : cosine < -1.0f ? -1.0f : cosine;
        directions->sides[i] = sidesOf(u) | sidesOf(v) << 6;
    }
}

HOST_CLONES void weigh(Directions *__restrict directions, int64_t count)
{
    for (int64_t i = 0; i < count; ++i)
    {
        const double along = double(directions->weighted[0][i]);
        const float angle = float(host::angleOf(std::sqrt((1.0 - along) * (1.0 + along)), along));
        for (int axis = 0; axis < 3; ++axis)
            directions->weighted[axis][i] = angle * directions->u[axis][i];
    }
}
}  // namespace

namespace rq
{
void TangentLanes::run(int64_t count)
{
    for (Corner &corner : corners_)
        if (!areUnit(&corner, count))
            for (int64_t i = 0; i < count; ++i)
                put(unitNormal(vector(corner.normal, i)), i, corner.normal);
    measure(&corners_[0], &corners_[1], &corners_[2], &shapes_, count);
    for (int k = 0; k < 3; ++k)
    {
        project(&shapes_, &corners_[k], &corners_[k < 2 ? k + 1 : 0], &corners_[k > 0 ? k - 1 : 2], &directions_[k], count);
        weigh(&directions_[k], count);
    }
}
}  // namespace rq
