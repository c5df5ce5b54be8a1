#pragma once

#include <host/bas/Parallel.h>
#include <host/bas/Progress.h>
#include <host/msh/Detail.h>

namespace rq
{
/// True when a detail is large enough to be walked by several threads, and there are several.
inline bool walksInParallel(const MSH_Detail &detail)
{
    // Up to here a walk takes less than a millisecond.
    constexpr int64_t kMostElements = 20000;
    return detail.primitiveCount() > kMostElements && detail.pointCount() > kMostElements && BAS_Threads::enabled() &&
           BAS_Threads::processors() > 1;
}

/// A range cut into fixed pieces, so that what is made of each, merged in their order, has no trace of the threads.
class PieceWalk
{
public:
    PieceWalk(const MSH_Detail &detail, const ELM_Range &range, int64_t offsetsPerPiece)
        : range_(range), perPiece_(offsetsPerPiece), first_(range.begin() / offsetsPerPiece),
          end_((range.end() + offsetsPerPiece - 1) / offsetsPerPiece), parallel_(walksInParallel(detail))
    {}

    int64_t pieces() const { return end_ > first_ ? end_ - first_ : 0; }

    /// Call `visit(piece, part of the range)` for every piece; none any more once the progress is interrupted.
    template <class Visit> void run(BAS_Progress &progress, Visit &&visit) const
    {
        host::parallelForRange(pieces(), parallel_ ? 1 : pieces(), [&](int64_t begin, int64_t end) {
            for (int64_t piece = begin; piece < end; ++piece)
                if (!progress.interrupted(double(piece) / double(pieces())))
                    visit(piece, range_.slice((first_ + piece) * perPiece_, (first_ + piece + 1) * perPiece_));
        });
    }

private:
    ELM_Range range_;
    int64_t perPiece_, first_, end_;
    bool parallel_;
};
}  // namespace rq
