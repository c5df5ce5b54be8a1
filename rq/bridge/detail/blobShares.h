#pragma once

#include <utility>
#include <vector>

#include <host/bas/Parallel.h>
#include <rq/bridge/detail/BlobField.h>
#include <rq/data/Values.h>
#include <rq/surface/detail/isoSurface.h>

namespace rq
{
/// The rows of some blobs and the shares that they have of a place, which sum up to one.
using BlobShares = std::vector<std::pair<int64_t, double>>;

/// Call `visit(point, place, shares)` for every point of a surface, in parallel: shares go by the fields of the blobs there.
/// Blobs that dig have none.
template <class Visit> void visitShares(const BlobField &field, const IsoSurface &surface, Visit &&visit)
{
    // A block has some seventy points, at a tenth of a microsecond for each blob around.
    constexpr int64_t kBlocksPerTask = 4;
    const Values<float> positions(surface.mesh->getShared()->get("P"));
    host::parallelFor(surface.blocks.size(), kBlocksPerTask, [&](int64_t block) {
        BlobShares shares;
        for (int64_t point = block > 0 ? surface.pointEnds[size_t(block - 1)] : 0; point < surface.pointEnds[size_t(block)];
             ++point)
        {
            const BAS_Vec3d at(positions[3 * point], positions[3 * point + 1], positions[3 * point + 2]);
            shares.clear();
            double sum = 0.0;
            field.visitBlobs(at - field.grid().origin, surface.blocks.partsOf(block), [&](int64_t blob, double value) {
                shares.emplace_back(blob, value);
                sum += value;
            });
            for (auto &[blob, share] : shares)
                share /= sum;
            visit(point, at, shares);
        }
    });
}
}  // namespace rq
