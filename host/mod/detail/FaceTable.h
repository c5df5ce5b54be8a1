#pragma once

#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/msh/Detail.h>

namespace host
{
/// The faces of a detail, in offset order, as the normal kernel reads them: corners are numbered face after face.
template <class IndexType> class FaceTable
{
public:
    using Index = IndexType;

    explicit FaceTable(const MSH_Detail &detail);

    int64_t faces() const { return int64_t(starts_.size()) - 1; }
    int64_t begin(int64_t face) const { return starts_[size_t(face)]; }
    int64_t end(int64_t face) const { return starts_[size_t(face) + 1]; }
    int64_t corners() const { return int64_t(vertices_.size()); }
    int64_t vertex(int64_t corner) const { return vertices_[size_t(corner)]; }
    int64_t point(int64_t corner) const { return points_[size_t(corner)]; }

    /// True when a vertex may be the corner of several faces.
    bool sharesVertices() const { return sharesVertices_; }

private:
    using Row = std::vector<Index, BAS_BlockAllocator<Index>>;

    Row starts_, vertices_, points_;
    bool sharesVertices_ = false;
};
}  // namespace host
