#pragma once

#include <algorithm>
#include <cmath>
#include <random>

#include <bench/plainTangents.h>
#include <tests/rq/surface/Fixture.h>

namespace tests
{
/// A mesh with texture coordinates and normals of its corners.
struct TexturedMesh
{
    std::vector<int> counts, indices;
    std::vector<float> points, normals, texture;

    void addFace(const std::vector<int> &corners, const BAS_Vec3f &normal)
    {
        counts.push_back(int(corners.size()));
        for (const int point : corners)
        {
            indices.push_back(point);
            normals.insert(normals.end(), {normal.x, normal.y, normal.z});
        }
    }

    /// The mesh, with a vertex list of integers of type `Index`.
    template <class Index = int> RQ_PolygonMeshHandle make() const
    {
        const RQ_AttributeListHandle vertex = oneAttribute("uv", makeArray(texture, 2));
        return new RQ_PrimPolygonMesh(integers(counts), makeArray(std::vector<Index>(indices.begin(), indices.end())),
                                      oneAttribute("P", positions(points)),
                                      vertex->addAttribute("N", makeArray(normals, 3), false));
    }

    std::vector<bench::PlainTangents::Corner> corners() const
    {
        std::vector<bench::PlainTangents::Corner> made;
        for (size_t i = 0; i < indices.size(); ++i)
        {
            const float *p = &points[3 * size_t(indices[i])], *n = &normals[3 * i], *t = &texture[2 * i];
            made.push_back({{p[0], p[1], p[2], n[0], n[1], n[2], t[0], t[1]}});
        }
        return made;
    }
};

/// Faces between any points of a small lattice, with texture and normals from as few values: edges of many faces, triangles
/// without area here or there, textures that grow in exactly opposite ways.
inline TexturedMesh latticeMesh(int seed, bool hasQuads, int faces = 40)
{
    std::mt19937 random{unsigned(seed)};
    const auto below = [&](int end) { return int(random() % unsigned(end)); };
    TexturedMesh mesh;
    for (int i = 0; i < 24; ++i)
        for (int axis = 0; axis < 3; ++axis)
            mesh.points.push_back(float(below(3)) - (axis == 2 ? 0.1f * float(below(3)) : 0.0f));
    const BAS_Vec3f normals[] = {{0, 0, 1}, {0, 0, 1}, {0, 0, 1}, {0.6f, 0, 0.8f}};
    while (int(mesh.counts.size()) < faces)
    {
        std::vector<int> corners(hasQuads && below(2) ? 4 : 3);
        for (int &corner : corners)
            corner = below(24);
        mesh.addFace(corners, normals[below(4)]);
    }
    for (const int point : mesh.indices)
        for (int axis = 0; axis < 2; ++axis)
            mesh.texture.push_back(below(8) ? mesh.points[3 * size_t(point) + size_t(axis)] : float(below(3)));
    return mesh;
}

/// Two rings of triangles and quads around one point, with gaps, edges of many faces and faces in any order: the ways that
/// lead around a vertex.  Each face has a texture of its own direction.
inline TexturedMesh ringsMesh(int seed)
{
    std::mt19937 random{unsigned(seed)};
    const auto below = [&](int end) { return int(random() % unsigned(end)); };
    constexpr int kSteps = 4, kRing = 2 * kSteps;  // every other point of a ring lies outside, for quads
    TexturedMesh mesh;
    mesh.points = {0, 0, 0};
    for (int i = 0; i < 2 * kRing; ++i)
    {
        const double angle = 2.0 * M_PI * (i % kRing) / kRing, radius = i % 2 ? 1.5 : 1.0;
        mesh.points.insert(mesh.points.end(), {float(radius * std::cos(angle)), float(radius * std::sin(angle)), 0.0f});
    }
    std::vector<std::vector<int>> faces;
    for (int i = 0; i < 2 * kRing; i += 2)
        for (int copies = below(8) ? (below(10) ? 1 : 2) : 0; copies > 0; --copies)
        {
            const int ring = 1 + i / kRing * kRing, first = i % kRing, last = below(12) ? first + 2 : first + 4;
            faces.push_back({0, ring + first, ring + first + 1, ring + last % kRing});
            if (below(2))
                faces.back().erase(faces.back().begin() + 2);
            std::rotate(faces.back().begin(), faces.back().begin() + below(3), faces.back().end());
        }
    std::shuffle(faces.begin(), faces.end(), random);
    for (const std::vector<int> &face : faces)
        mesh.addFace(face, {0, 0, 1});
    std::vector<float> shifts;
    for (size_t i = 0; i < mesh.points.size(); ++i)
        shifts.push_back(0.02f * float(below(10)));
    for (const int point : mesh.indices)
        for (size_t at = 3 * size_t(point); at < 3 * size_t(point) + 2; ++at)
            mesh.texture.push_back(mesh.points[at] + shifts[at]);
    return mesh;
}

/// Rows of a wavy sheet in shells side by side, every other one mirrored; a seventh of the faces have no texture, some
/// points lie on others.
inline TexturedMesh shellMesh(int cells, bool hasQuads, bool isUgly)
{
    TexturedMesh mesh;
    for (int j = 0; j <= cells; ++j)
        for (int i = 0; i <= cells; ++i)
        {
            const int x = isUgly && (i + 3 * j) % 11 == 5 ? i - 1 : i;
            mesh.points.insert(mesh.points.end(), {float(x), float(j), float(std::sin(0.7 * x) * std::cos(0.9 * j))});
        }
    for (int j = 0; j < cells; ++j)
        for (int i = 0; i < cells; ++i)
        {
            const int a = j * (cells + 1) + i, above = a + cells + 1;
            if (hasQuads)
                mesh.addFace({a, a + 1, above + 1, above}, {0, 0, 1});
            else
            {
                mesh.addFace({a, a + 1, above + 1}, {0, 0, 1});
                mesh.addFace({a, above + 1, above}, {0, 0, 1});
            }
            for (size_t corner = mesh.texture.size() / 2; corner < mesh.indices.size(); ++corner)
            {
                const float *p = &mesh.points[3 * size_t(mesh.indices[corner])];
                const bool isFlat = isUgly && (i * 5 + j) % 7 == 0;
                const float shell = float(i / 6), u = 0.1f * (int(shell) % 2 ? -p[0] : p[0]) + shell;
                mesh.texture.insert(mesh.texture.end(), {isFlat ? 0.0f : u, isFlat ? 0.0f : 0.1f * p[1] + 0.01f * p[0]});
            }
        }
    return mesh;
}

/// The tangents of a mesh, and how many corners differ from others by more than 1e-5 or in the sign.
struct MadeTangents
{
    std::vector<float> u, v;

    explicit MadeTangents(const RQ_PolygonMeshHandle &mesh)
    {
        RQ_DataArrayHandle alongU, alongV;
        EXPECT_TRUE(mesh->createFastTangents(alongU, alongV));
        u = valuesOf<float>(alongU);
        v = valuesOf<float>(alongV);
    }

    bool operator==(const MadeTangents &) const = default;

    bool isPreserving(size_t corner, const BAS_Vec3f &normal) const
    {
        return (normal % vector(u, corner)).dot(vector(v, corner)) > 0.0f;
    }
    BAS_Vec3f tangent(size_t corner) const { return vector(u, corner); }

    static BAS_Vec3f vector(const std::vector<float> &values, size_t i)
    {
        return {values[3 * i], values[3 * i + 1], values[3 * i + 2]};
    }
};
}  // namespace tests
