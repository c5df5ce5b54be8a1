#pragma once

#include <vector>

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

    // Rows of one block stay in the nearest cache.
    static constexpr int64_t kBlock = 128;
    struct Block
    {
        alignas(64) float rows[ROWS][kBlock];

        float *operator[](int row) { return rows[row]; }
        void put(int first, int64_t at, const BAS_Vec3f &v)
        {
            rows[first][at] = v.x;
            rows[first + 1][at] = v.y;
            rows[first + 2][at] = v.z;
        }
        void run(int64_t count);
    };

    BAS_Vec3f vector(int first, int64_t i) const
    {
        const auto &rows = blocks_[size_t(i / kBlock)].rows;
        const int64_t at = i % kBlock;
        return {rows[first][at], rows[first + 1][at], rows[first + 2][at]};
    }

    std::vector<Block> blocks_;
    int64_t count_ = 0;
};

inline void TangentLanes::add(const Corner &corner)
{
    const int64_t at = count_ % kBlock;
    if (count_ == int64_t(blocks_.size()) * kBlock)
        blocks_.emplace_back();
    Block &block = blocks_[size_t(count_ / kBlock)];
    block.put(EDGE1, at, corner.edge1);
    block.put(EDGE2, at, corner.edge2);
    block[TEXTURE][at] = corner.u1;
    block[TEXTURE + 1][at] = corner.v1;
    block[TEXTURE + 2][at] = corner.u2;
    block[TEXTURE + 3][at] = corner.v2;
    block.put(NEXT, at, corner.next);
    block.put(PREVIOUS, at, corner.previous);
    block.put(NORMAL, at, corner.normal);
    ++count_;
}
}  // namespace rq
