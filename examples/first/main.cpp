// Build a detail, refine it, and read triangles from the detail's own memory.

#include <algorithm>
#include <cstdio>

#include <host/mod/Edit.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/prim/RefineList.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace
{
/// A house front: one concave face of seven corners, with a notch in its roof.
bool buildFront(const MOD_DetailHandle &detail)
{
    const float positions[] = {0, 0, 0, 4, 0, 0, 4, 3, 0, 3, 4, 0, 2, 3, 0, 1, 4, 0, 0, 3, 0};
    const int32_t corners[] = {0, 1, 2, 3, 4, 5, 6};

    MOD_Edit edit(detail);
    if (!edit.appendPoints(7) || !edit.appendPolygons(7, corners, true))
    {
        std::fprintf(stderr, "%s\n", edit.message().c_str());
        return false;
    }
    float *written =
        edit.attribute(ELM_OWNER_POINT, ELM_POSITION_NAME, ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->writeAll<float>();
    std::copy(std::begin(positions), std::end(positions), written);
    edit.commit();
    return true;
}

void printTriangles(const RQ_PrimPolygonMesh &mesh)
{
    const RQ_PolygonMeshHandle triangles = mesh.convex(3);
    RQ_DataArrayHandle keepPoints, keepCorners;
    const float *points = triangles->getShared()->get("P")->getArray<float>(keepPoints);
    const int32_t *corners = triangles->getVertexList()->getArray<int32_t>(keepCorners);
    for (int64_t triangle = 0; triangle < triangles->getFaceCount(); ++triangle)
        for (int i = 0; i < 3; ++i)
        {
            const float *p = points + 3 * corners[3 * triangle + i];
            std::printf("(%g %g %g)%c", p[0], p[1], p[2], i < 2 ? ' ' : '\n');
        }
}
}  // namespace

int main()
{
    const MOD_DetailHandle detail;
    if (!buildFront(detail))
        return 1;
    RQ_RefineList primitives;
    primitives.refine(RQ_MSHDetail::makeDetail(detail.read()).get(), nullptr);
    for (int i = 0; i < primitives.entries(); ++i)
        if (const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(primitives.getPrimitive(i).get()))
            printTriangles(*mesh);
    return 0;
}
