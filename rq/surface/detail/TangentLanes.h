#pragma once

#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Vector.h>

namespace rq
{
/// The arithmetic of tangents at many corners of triangles at once: the directions in which u and v grow, in the plane of
/// the normal, and the first as long as the triangle's angle.
///
/// The order of the operations is part of the result: where directions nearly cancel each other, every bit counts.
class TangentLanes
{
public:
    struct Corner
    {
        BAS_Vec3f edge1, edge2;    ///< from the triangle's first corner to its second and third
        float u1, v1, u2, v2;      ///< the same in the texture
        BAS_Vec3f next, previous;  ///< from the corner itself to the two others
        BAS_Vec3f normal;
    };

    int64_t count() const { return count_; }
    int64_t capacity() const { return capacity_; }

    /// Make room for so many corners, which empties it.
    void reserve(int64_t corners);
    void clear() { count_ = 0; }

    void add(const Corner &corner);
    void run();

    /// What `run` left at corner `i`.
    BAS_Vec3f alongU(int64_t i) const { return vector(ALONG_U, i); }
    BAS_Vec3f alongV(int64_t i) const { return vector(ALONG_V, i); }
    BAS_Vec3f weighted(int64_t i) const { return vector(WEIGHTED, i); }

private:
    enum Row
    {
        EDGE1 = 0,
        EDGE2 = 3,
        TEXTURE = 6,
        NEXT = 10,
        PREVIOUS = 13,
        NORMAL = 16,
        SIGN = 19,
        ALONG_U = 20,
        ALONG_V = 23,
        WEIGHTED = 26,
        COSINE = 29,
        ROWS = 30,
    };

    float *row(int row) { return values_.data() + row * capacity_; }
    void put(int first, const BAS_Vec3f &v)
    {
        for (int axis = 0; axis < 3; ++axis)
            row(first + axis)[count_] = v[axis];
    }
    BAS_Vec3f vector(int first, int64_t i) const
    {
        const float *at = values_.data() + first * capacity_ + i;
        return {at[0], at[capacity_], at[2 * capacity_]};
    }

    std::vector<float, BAS_BlockAllocator<float>> values_;
    int64_t capacity_ = 0, count_ = 0;
};

inline void TangentLanes::add(const Corner &corner)
{
    put(EDGE1, corner.edge1);
    put(EDGE2, corner.edge2);
    row(TEXTURE)[count_] = corner.u1;
    row(TEXTURE + 1)[count_] = corner.v1;
    row(TEXTURE + 2)[count_] = corner.u2;
    row(TEXTURE + 3)[count_] = corner.v2;
    put(NEXT, corner.next);
    put(PREVIOUS, corner.previous);
    put(NORMAL, corner.normal);
    ++count_;
}
}  // namespace rq
