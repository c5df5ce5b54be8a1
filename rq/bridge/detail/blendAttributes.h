#pragma once

#include <rq/bridge/detail/BlobField.h>
#include <rq/surface/detail/isoSurface.h>

namespace rq
{
/// Attributes for the points of a surface: each the mean of those of the blobs there, weighted by their fields.  Blobs that
/// dig take no part.
///
/// `blobs` has one entry for each blob of the field and may be null.  Numbers with a fraction are taken, in 32 bits; null
/// without any.  Runs in parallel.
RQ_AttributeListHandle blendAttributes(const BlobField &field, const IsoSurface &surface,
                                       const RQ_AttributeListHandle &blobs);
}  // namespace rq
