#include <apps/subdivide.h>

#include <rq/subd/SubdTopology.h>

namespace rq::app
{
namespace
{
RQ_AttributeListHandle withoutNormals(const RQ_AttributeListHandle &list)
{
    return list ? list->removeAttribute("N") : nullptr;
}
}  // namespace

RQ_PolygonMeshHandle subdivide(const RQ_PrimSubdivisionMesh &cage, int level, std::vector<std::string> &complaints)
{
    const RQ_SubdivisionMeshHandle bare(new RQ_PrimSubdivisionMesh(cage));
    bare->overrideAttributes(withoutNormals(cage.surfaceShared()), withoutNormals(cage.surfaceVertex()));
    RQ_SubdFaults faults;
    const RQ_SubdTopologyHandle topology = RQ_SubdTopology::create(*bare, &faults);
    for (const RQ_SubdFault &fault : faults)
        complaints.push_back(fault.message);
    if (!topology)
        return nullptr;
    std::string why;
    const RQ_PolygonMeshHandle mesh = topology->refine(*bare, level, &why);
    if (!mesh)
        complaints.push_back(why);
    return mesh;
}

int smoothLevel(const RQ_PrimSubdivisionMesh &cage)
{
    constexpr int kStandard = 3;
    constexpr int64_t kMostFaces = 4000000;
    int level = kStandard;
    while (level > 1 && cage.getVertexCount() << (2 * (level - 1)) > kMostFaces)
        --level;
    return level;
}
}  // namespace rq::app
