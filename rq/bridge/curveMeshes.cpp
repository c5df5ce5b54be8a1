#include <rq/bridge/detail/curveMeshes.h>

#include <rq/bridge/detail/FirstFit.h>
#include <rq/surface/PrimCurveMesh.h>

std::vector<rq::FaceLists> rq::limitVertices(const FaceLists &open, int64_t limit)
{
    if (open.faces() == 0)
        return {};
    if (limit < 0)
        return {open};
    std::vector<FaceLists> meshes;
    FirstFit bins(limit);
    const RQ_CountArray counts = open.counts();
    int64_t vertex = 0;
    for (int64_t i = 0; i < open.faces(); ++i)
    {
        const int64_t corners = counts.getCount(i);
        const size_t bin = size_t(bins.place(corners));
        if (bin == meshes.size())
            meshes.emplace_back();
        meshes[bin].append(open.primitives()[i], corners > 0 ? open.vertices()[vertex] : 0, corners);
        vertex += corners;
    }
    for (FaceLists &mesh : meshes)
        mesh.finish();
    return meshes;
}

RQ_PrimitiveHandle rq::makeCurveMesh(const RQ_MSHDetailList &details, const MeshAttributes &attributes,
                                     const FaceLists &open, int64_t faceSetMode)
{
    const RQ_CurveMeshHandle mesh(new RQ_PrimCurveMesh(RQ_BASIS_LINEAR, open.counts().extractCounts(),
                                                       attributes.ofVertices(open.vertices(), RQ_MSHIncludePoint::INCLUDE),
                                                       attributes.ofPrimitives(open.primitives()), attributes.ofDetail()));
    mesh->setFaceSetMap(details.buildFaceSets(open.primitives(), faceSetMode));
    return mesh;
}
