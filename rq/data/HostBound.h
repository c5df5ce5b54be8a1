#pragma once

#include <vector>

#include <rq/data/DataArray.h>

namespace rq
{
/// What an array is too that reads a snapshot of a host detail: who re-binds it learns whether that took.
class RQ_API HostBound
{
public:
    /// The snapshot that the array reads from.
    virtual const MOD_ConstDetailHandle &getGeoDetail() const = 0;

protected:
    ~HostBound() = default;
};

/// Add to `found` what `array` reads of a host detail, itself or through the arrays that it views.
RQ_API void findHostBound(const RQ_DataArray &array, std::vector<const HostBound *> &found);
}  // namespace rq
