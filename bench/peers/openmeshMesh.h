#pragma once

#include <OpenMesh/Core/Mesh/PolyMesh_ArrayKernelT.hh>

#include <bench/faceJobs.h>

namespace bench
{
using OpenMeshMesh = OpenMesh::PolyMesh_ArrayKernelT<>;

inline OpenMeshMesh makeOpenMesh(const FaceMesh &faces)
{
    OpenMeshMesh mesh;
    for (int64_t i = 0; i < faces.points(); ++i)
        mesh.add_vertex(OpenMeshMesh::Point(faces.position(i)));
    std::vector<OpenMeshMesh::VertexHandle> corners;
    for (int64_t face = 0; face < faces.faces(); ++face)
    {
        corners.clear();
        for (const int32_t point : faces.face(face))
            corners.emplace_back(point);
        mesh.add_face(corners);
    }
    return mesh;
}
}  // namespace bench
