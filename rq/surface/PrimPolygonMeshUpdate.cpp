#include <algorithm>

#include <rq/data/HostBound.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace
{
std::vector<const rq::HostBound *> boundArrays(const RQ_PrimPolygonMesh &mesh)
{
    std::vector<const rq::HostBound *> found;
    found.reserve(16);
    for (const RQ_AttributeListHandle *list : {&mesh.getShared(), &mesh.getVertex(), &mesh.getUniform(), &mesh.getDetail()})
        for (int segment = 0; *list && segment < (*list)->getSegments(); ++segment)
            for (int i = 0; i < (*list)->entries(); ++i)
                if (const RQ_DataArrayHandle &array = (*list)->get(i, segment))
                    rq::findHostBound(*array, found);
    return found;
}
}  // namespace

bool RQ_PrimPolygonMesh::updateGeoPrim(const MOD_ConstDetailHandle &detail, const RQ_RefineParms &parms)
{
    const std::vector<const rq::HostBound *> arrays = boundArrays(*this);
    const bool hasSameFaces = std::all_of(arrays.begin(), arrays.end(),
                                          [&detail](const rq::HostBound *array) { return array->hasTopologyOf(detail); });
    if (arrays.empty() || !hasSameFaces)
        return false;
    int64_t versionBefore = -1, versionAfter = -1;
    getTopologyVersion(versionBefore);
    RQ_Primitive::updateGeoPrim(detail, parms);
    dropDataIdHash();
    getTopologyVersion(versionAfter);
    return versionBefore == versionAfter && std::all_of(arrays.begin(), arrays.end(), [&detail](const rq::HostBound *array) {
               return array->isBoundTo(detail);
           });
}
