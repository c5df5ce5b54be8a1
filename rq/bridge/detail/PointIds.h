#pragma once

#include <vector>

#include <host/mod/DetailHandle.h>
#include <rq/data/DataArray.h>

namespace rq
{
/// The points of a detail by the whole number that each has as its "id".
///
/// Shape    negative numbers name nothing; of points of one number the first counts
/// Threads  immutable, safe to read from any thread
/// Cost     a sort, none when numbers rise along the points
class PointIds
{
public:
    /// Not valid when there is no attribute "id" of one whole number a point.
    explicit PointIds(const MOD_ConstDetailHandle &detail);

    bool isValid() const { return isValid_; }

    /// The number of a point, -1 without one.
    int64_t idOf(ELM_Offset point) const { return ids_[size_t(point)]; }

    /// The point of a number, -1 when there is none.
    ELM_Offset find(int64_t id) const;

    /// True when the same points have the same numbers.
    bool operator==(const PointIds &other) const { return isValid_ == other.isValid_ && ids_ == other.ids_; }

private:
    std::vector<int64_t> ids_;  // of each offset
    std::vector<std::pair<int64_t, ELM_Offset>> sorted_;
    bool isValid_ = false;
};
}  // namespace rq
