#pragma once

#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/msh/Detail.h>

namespace host
{
/// How many faces a detail has before each page of primitives, and their corners; the last entry has all.
///
/// Faces are closed polygons, and those of fans, strips, soups and grids, if every corner has a point.
struct FaceCounts
{
    struct Totals
    {
        int64_t faces = 0;
        int64_t corners = 0;
    };

    explicit FaceCounts(const MSH_Detail &detail);

    std::vector<Totals> beforePage;
};

/// The faces of a detail, in offset order, as the normal kernel reads them: corners are numbered face after face.
template <class IndexType> class FaceTable
{
public:
    using Index = IndexType;

    /// `Index` must hold the number of corners, of vertices and of points.
    FaceTable(const MSH_Detail &detail, const FaceCounts &counts);

    /// The faces for loops over them; valid as long as the table.
    struct Topology
    {
        using Index = IndexType;

        const Index *starts, *points;
        int64_t count;

        int64_t faces() const { return count; }
        int64_t begin(int64_t face) const { return starts[face]; }
        int64_t end(int64_t face) const { return starts[face + 1]; }
        int64_t point(int64_t corner) const { return points[corner]; }

        /// The number of corners that faces [first, last) have each; 0 when it differs.
        int64_t cornersOfEach(int64_t first, int64_t last) const
        {
            const int64_t corners = end(first) - begin(first);
            for (int64_t face = first + 1; face < last; ++face)
                if (end(face) - begin(face) != corners)
                    return 0;
            return corners;
        }
    };
    Topology topology() const { return {starts_.data(), points_.data(), int64_t(starts_.size()) - 1}; }

    int64_t corners() const { return int64_t(vertices_.size()); }
    int64_t vertex(int64_t corner) const { return vertices_[size_t(corner)]; }
    int64_t memoryUsage() const { return int64_t((starts_.size() + vertices_.size() + points_.size()) * sizeof(Index)); }

private:
    using Row = std::vector<Index, BAS_BlockAllocator<Index>>;

    Row starts_, vertices_, points_;
};
}  // namespace host
