#pragma once

#include <rq/bridge/detail/BlobField.h>
#include <rq/prim/TransformArray.h>
#include <rq/surface/detail/isoSurface.h>

namespace rq
{
/// The positions of a surface's points in every motion segment: each goes along with the blobs around it, by the mean of
/// where they would take it, weighted by their fields.
///
/// `placements` has one entry for each blob of the field.  Where a blob is lost the point stays.  Runs in parallel.
std::vector<RQ_DataArrayHandle> moveWithBlobs(const BlobField &field, const IsoSurface &surface,
                                              const RQ_TransformArray &placements);
}  // namespace rq
