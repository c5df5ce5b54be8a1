#pragma once

#include <bench/faceJobs.h>

namespace bench
{
/// Enter rows of dropping unused points: where half of the faces are gone, and where every other point is unused.  Read and
/// written: the vertex list and the points that are left.
inline void addRemoveUnused(const std::string &job, std::initializer_list<const char *> meshes, const Doer &doer,
                            const FaceWork &prepare)
{
    const auto changed = [prepare](auto &&change) {
        return [=](const FaceMeshPtr &whole) {
            const auto mesh = std::make_shared<FaceMesh>(*whole);
            change(*mesh);
            return prepare(mesh);
        };
    };
    for (const char *mesh : meshes)
    {
        addFaceJob(
            job.c_str(), mesh, doer,
            [](const FaceMesh &whole) {
                return Traffic{0.5 * double(whole.corners.size()),
                               4.0 * double(whole.corners.size()) + 12.0 * double(whole.points())};
            },
            changed([](FaceMesh &half) { half.keepFaces(half.faces() / 2); }));
        addFaceJob((job + "-scattered").c_str(), mesh, doer,
                   [](const FaceMesh &whole) {
                       return Traffic{double(whole.corners.size()),
                                      8.0 * double(whole.corners.size()) + 24.0 * double(whole.points())};
                   },
                   changed([](FaceMesh &scattered) { scattered.scatterPoints(); }));
    }
}

/// How far the number of points that are left is from what it should be.
inline double unusedError(const FaceMesh &mesh, int64_t points)
{
    std::vector<bool> used(size_t(mesh.points()));
    for (const int32_t point : mesh.corners)
        used[size_t(point)] = true;
    return std::abs(double(points) / double(std::count(used.begin(), used.end(), true)) - 1.0);
}

/// Enter rows of cutting a mesh into pieces whose faces have points of their own.  Written: a vertex list for every piece.
inline void addPieces(const char *job, const Doer &doer, FaceWork prepare)
{
    addFaceJob(
        job, "quads1M", doer,
        [](const FaceMesh &mesh) {
            return Traffic{double(mesh.faces()), readOnce(mesh) + 4.0 * double(mesh.corners.size())};
        },
        std::move(prepare));
}

constexpr int64_t kFacesPerPiece = 65536;

/// A material for every face, in runs of up to 200 as if painted.
inline std::vector<int32_t> materialsOf(const FaceMesh &mesh, int kinds)
{
    Random random(11);
    std::vector<int32_t> materials;
    while (int64_t(materials.size()) < mesh.faces())
    {
        const int32_t material = int32_t(random.next() % uint64_t(kinds));
        materials.insert(materials.end(), 1 + random.next() % 200, material);
    }
    materials.resize(size_t(mesh.faces()));
    return materials;
}

/// How far pieces are from having all faces once; 1 when there are too few or too many pieces.
inline double piecesError(const FaceMesh &mesh, int64_t faces, int64_t pieces, int64_t expectedPieces)
{
    return pieces == expectedPieces ? std::abs(double(faces) / double(mesh.faces()) - 1.0) : 1.0;
}
}  // namespace bench
