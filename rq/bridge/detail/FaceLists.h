#pragma once

#include <rq/bridge/detail/RunList.h>
#include <rq/data/CountArray.h>
#include <rq/data/DANumeric.h>

namespace rq
{
/// Faces (or polylines) of a detail in order: the primitive of each, its number of corners, and the vertices of all of them.
///
/// Threads  belongs to one thread while it grows
/// Cost     nothing is stored for consecutive primitives, consecutive vertices and equal counts; else 4 bytes an entry,
///          8 for offsets of 2^30 and above
class FaceLists
{
public:
    using Counts = BAS_IntrusivePtr<RQ_DANumeric<int32_t>>;

    FaceLists() = default;

    /// Finished lists of `primitives.entries()` faces, with `counts` null when all have `most` corners.
    FaceLists(const RQ_MSHOffsetList &primitives, const RQ_MSHOffsetList &vertices, const Counts &counts, int64_t least,
              int64_t most);

    /// Append one face of `corners` vertices from `vertex` on.
    void append(ELM_Offset primitive, ELM_Offset vertex, int64_t corners);

    /// Append the faces of another list, which must be finished.
    void append(const FaceLists &following);

    /// Store what was appended; to be called before the rest.
    void finish();

    int64_t faces() const { return faces_; }
    const RQ_MSHOffsetList &primitives() const { return primitives_.list(); }
    const RQ_MSHOffsetList &vertices() const { return vertices_.list(); }
    RQ_CountArray counts() const;

private:
    void noteCounts(int64_t faces, int64_t least, int64_t most);
    void storeCounts(int64_t faces, int64_t corners);

    RunList primitives_;
    RunList vertices_;
    Counts counts_;  // null while all faces have the same number of corners
    int64_t faces_ = 0;
    int64_t least_ = 0;  // corners of a face
    int64_t most_ = 0;
};
}  // namespace rq
