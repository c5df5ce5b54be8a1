#pragma once

#include <memory>
#include <vector>

#include <host/mod/DetailHandle.h>
#include <rq/bridge/MSHOffsetList.h>

namespace rq
{
/// How points move from segment to segment where the samples are not the same elements over and over: the first sample is
/// what is there, and its points are found in the others by "id", or follow their velocity "v" (and "accel").
///
/// Threads  immutable, safe to read from any thread
class PointMotion
{
public:
    /// The motion of samples that are `seconds` apart, matched by "id"; null when some have none.
    static std::shared_ptr<const PointMotion> byId(const std::vector<MOD_ConstDetailHandle> &samples, double seconds);

    /// The motion of one sample by its velocity; null when it has none that moves its positions.
    static std::shared_ptr<const PointMotion> byVelocity(const MOD_ConstDetailHandle &sample, double seconds);

    /// The array of a later segment in place of `first`, the one that the rows of `rowOwner` have of a point attribute of
    /// the first sample; `first` itself when it does not change.
    RQ_DataArrayHandle arrayOf(const ELM_Attribute &attribute, const RQ_DataArrayHandle &first, const RQ_MSHOffsetList &rows,
                               ELM_Owner rowOwner, int segment) const;

private:
    struct Sample
    {
        MOD_ConstDetailHandle detail;
        std::vector<ELM_Offset> points;  // where each of the first sample's is; -1: gone
    };

    RQ_DataArrayHandle matched(const ELM_Attribute &attribute, const RQ_DataArrayHandle &first, const RQ_MSHOffsetList &rows,
                               ELM_Owner rowOwner, int segment) const;
    RQ_DataArrayHandle moved(const RQ_DataArrayHandle &positions, const RQ_MSHOffsetList &rows, ELM_Owner rowOwner,
                             double seconds) const;

    std::vector<Sample> samples_;  // empty: velocity alone
    MOD_ConstDetailHandle first_;
    double seconds_ = 0.0;
};
}  // namespace rq
