#include <algorithm>

#include <rq/data/HostBound.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace
{
/// What a mesh reads of a detail.
struct Bound
{
    rq::HostBoundArrays arrays;
    bool isOneSample = true;  // and not of several, nor are positions, or what follows from them, the mesh's own
};

bool followsFromPositions(const BAS_StringHolder &name)
{
    return name == "P" || name == "N" || name == "tangentu" || name == "tangentv";
}

Bound findBound(const RQ_PrimPolygonMesh &mesh)
{
    Bound found;
    for (const RQ_AttributeListHandle *list : {&mesh.getShared(), &mesh.getVertex(), &mesh.getUniform(), &mesh.getDetail()})
        for (int segment = 0; *list && segment < (*list)->getSegments(); ++segment)
            for (int i = 0; i < (*list)->entries(); ++i)
            {
                const RQ_DataArrayHandle &array = (*list)->get(i, segment);
                const size_t before = found.arrays.size();
                if (array)
                    rq::findHostBound(*array, found.arrays);
                const bool isBound = found.arrays.size() > before;
                if (array && (isBound ? array != (*list)->get(i, 0) : followsFromPositions((*list)->getMap()->getName(i))))
                    found.isOneSample = false;
            }
    return found;
}
}  // namespace

bool RQ_PrimPolygonMesh::updateGeoPrim(const MOD_ConstDetailHandle &detail, const RQ_RefineParms &parms)
{
    const auto [arrays, isOneSample] = findBound(*this);
    const bool hasSameFaces = std::all_of(arrays.begin(), arrays.end(),
                                          [&detail](const rq::HostBound *array) { return array->hasTopologyOf(detail); });
    if (arrays.empty() || !isOneSample || !hasSameFaces)
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
