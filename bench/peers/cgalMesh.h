#pragma once

#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>

#include <bench/faceJobs.h>

namespace bench
{
using CGALPoint = CGAL::Simple_cartesian<double>::Point_3;
using CGALMesh = CGAL::Surface_mesh<CGALPoint>;

inline CGALMesh makeCGALMesh(const FaceMesh &faces)
{
    CGALMesh mesh;
    std::vector<CGALMesh::Vertex_index> points, corners;
    for (int64_t i = 0; i < faces.points(); ++i)
        points.push_back(mesh.add_vertex({faces.position(i)[0], faces.position(i)[1], faces.position(i)[2]}));
    for (int64_t face = 0; face < faces.faces(); ++face)
    {
        corners.clear();
        for (const int32_t point : faces.face(face))
            corners.push_back(points[size_t(point)]);
        mesh.add_face(corners);
    }
    return mesh;
}
}  // namespace bench
