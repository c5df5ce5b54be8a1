#pragma once

#include <vector>

#include <rq/data/DataArray.h>

namespace rq
{
/// What an array is too that reads a snapshot of a host detail: who re-binds it learns whether that took.
class RQ_API HostBound
{
public:
    /// True when it reads the very snapshot `detail`, or one with the same elements and faces.
    virtual bool isBoundTo(const MOD_ConstDetailHandle &detail) const = 0;
    virtual bool hasTopologyOf(const MOD_ConstDetailHandle &detail) const = 0;

protected:
    ~HostBound() = default;
};

/// Add to `found` what `array` reads of a host detail, itself or through the arrays that it views.
RQ_API void findHostBound(const RQ_DataArray &array, std::vector<const HostBound *> &found);
}  // namespace rq
