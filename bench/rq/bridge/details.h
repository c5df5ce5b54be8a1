#pragma once

#include <numeric>

#include <bench/meshes.h>
#include <host/bas/CopyCounter.h>
#include <host/mod/Edit.h>
#include <rq/bridge/MSHDetail.h>

namespace bench
{
inline constexpr int kCells = 1000;  ///< a million quads

inline void addPositions(MOD_Edit &edit, const std::vector<float> &positions)
{
    edit.attribute(ELM_OWNER_POINT, ELM_POSITION_NAME, ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)
        ->write(0, edit.pointCount(), positions.data());
}

/// The detail of a mesh of quads, and what `change` does to it.
template <class Change>
MOD_ConstDetailHandle makeDetail(const QuadMesh &quads, Change &&change, const MOD_DetailHandle &geometry = {})
{
    MOD_Edit edit(geometry);
    if (!edit.appendPoints(quads.points()) || !edit.appendPolygons(4, quads.indices, true))
        return {};
    addPositions(edit, quads.positions);
    change(edit);
    return edit.commit();
}

inline MOD_ConstDetailHandle makeDetail(const QuadMesh &quads)
{
    return makeDetail(quads, [](MOD_Edit &) {});
}

inline int64_t copiedBytes()
{
    const BAS_CopyCounter::Totals totals = BAS_CopyCounter::totals();
    return std::accumulate(totals.begin(), totals.end(), int64_t(0));
}
}  // namespace bench
