#pragma once

#include <boost/container/small_vector.hpp>

#include <rq/data/DataArray.h>

namespace rq
{
/// The base of arrays that read a snapshot of a host detail: who re-binds them learns whether that took.
class RQ_API HostBound : public RQ_DataArray
{
public:
    ~HostBound() override;

    /// True when it reads the very snapshot `detail`, or one with the same elements and faces.
    virtual bool isBoundTo(const MOD_ConstDetailHandle &detail) const = 0;
    virtual bool hasTopologyOf(const MOD_ConstDetailHandle &detail) const = 0;
};

using HostBoundArrays = boost::container::small_vector<const HostBound *, 16>;

/// Add to `found` what `array` reads of a host detail, itself or through the arrays that it views.
RQ_API void findHostBound(const RQ_DataArray &array, HostBoundArrays &found);
}  // namespace rq
