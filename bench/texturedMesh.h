#pragma once

#include <bench/faceMeshes.h>
#include <bench/plainTangents.h>
#include <bench/rq/surface/faces.h>

namespace bench
{
/// Texture and normals of a mesh, one of each a face-vertex: ten shells side by side, every other one mirrored.
struct Textured
{
    std::vector<float> texture, normals;

    explicit Textured(const FaceMesh &mesh)
    {
        for (int64_t face = 0; face < mesh.faces(); ++face)
        {
            const int shell = int(10 * face / mesh.faces());
            for (const int32_t point : mesh.face(face))
            {
                const float *p = mesh.position(point);
                texture.insert(texture.end(), {(shell % 2 ? -p[0] : p[0]) * 1e-3f + float(shell), p[1] * 1e-3f});
                const float length = std::sqrt(0.01f * p[2] * p[2] + 1.0f);
                normals.insert(normals.end(), {0.1f * p[2] / length, 0.0f, 1.0f / length});
            }
        }
    }

    /// The corners as others take them.
    std::vector<PlainTangents::Corner> corners(const FaceMesh &mesh) const
    {
        std::vector<PlainTangents::Corner> made;
        for (size_t i = 0; i < mesh.corners.size(); ++i)
        {
            const float *p = mesh.position(mesh.corners[i]), *n = &normals[3 * i], *t = &texture[2 * i];
            made.push_back({{p[0], p[1], p[2], n[0], n[1], n[2], t[0], t[1]}});
        }
        return made;
    }
};

inline RQ_PolygonMeshHandle makeTextured(const FaceMesh &faces)
{
    const Textured textured(faces);
    const int64_t corners = int64_t(faces.corners.size());
    const RQ_PolygonMeshHandle mesh = makeMesh(faces);
    const RQ_AttributeListHandle vertex =
        RQ_AttributeListHandle(new RQ_AttributeList(new RQ_AttributeMap, 1))
            ->addAttribute("uv", new RQ_DANumeric<float>(textured.texture.data(), corners, 2), true)
            ->addAttribute("N", new RQ_DANumeric<float>(textured.normals.data(), corners, 3, RQ_TYPE_NORMAL), true);
    return new RQ_PrimPolygonMesh(mesh->getFaceCountArray(), mesh->getVertexList(), mesh->getShared(), vertex);
}
}  // namespace bench
