#pragma once

#include <bench/faceMeshes.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace bench
{
inline RQ_DataArrayHandle makeIntegers(const std::vector<int32_t> &values)
{
    return new RQ_DANumeric<int32_t>(values.data(), int64_t(values.size()), 1, RQ_TYPE_NONE);
}

inline RQ_PolygonMeshHandle makeMesh(const FaceMesh &faces)
{
    const RQ_DataArrayHandle positions(new RQ_DANumeric<float>(faces.positions.data(), faces.points(), 3, RQ_TYPE_POINT));
    const RQ_AttributeListHandle none(new RQ_AttributeList(new RQ_AttributeMap, 1));
    std::vector<int32_t> counts;
    for (int64_t face = 0; face < faces.faces(); ++face)
        counts.push_back(int32_t(faces.count(face)));
    return new RQ_PrimPolygonMesh(makeIntegers(counts), makeIntegers(faces.corners),
                                  none->addAttribute("P", positions, true));
}
}  // namespace bench
