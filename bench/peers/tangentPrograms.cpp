#include <algorithm>

#include <bench/Oracle.h>
#include <bench/faceJobs.h>
#include <bench/texturedMesh.h>
#include <rq/data/Values.h>

// Tangents by other programs.  They time themselves: neither their start nor the reading of the mesh counts.

namespace
{
bench::Traffic traffic(const bench::FaceMesh &mesh)
{
    const double corners = double(mesh.corners.size());
    return {corners, bench::readOnce(mesh) + corners * (20.0 + 16.0)};
}

/// How far a program's tangents, `stride` floats a corner, are from ours at worst.
double errorOf(const bench::FaceMesh &mesh, const std::vector<float> &theirs, size_t stride)
{
    RQ_DataArrayHandle tangentU, tangentV;
    bench::makeTextured(mesh)->createFastTangents(tangentU, tangentV);
    const rq::Values<float> ours(tangentU);
    double worst = theirs.size() == stride * mesh.corners.size() ? 0.0 : 1.0;
    for (size_t i = 0; i < theirs.size() / stride; ++i)
        for (size_t axis = 0; axis < 3; ++axis)
            worst = std::max(worst, double(std::abs(theirs[stride * i + axis] - ours.data()[3 * i + axis])));
    return worst;
}

/// The package mikktspace of node, which carries the reference code, takes triangles only.
bench::Work preparePackage(const bench::FaceMeshPtr &mesh)
{
    const auto package = bench::oracleFolder() / "node_modules" / "mikktspace";
    const auto oracle = std::make_shared<bench::Oracle>("node " RQ_ORACLES "/npmTangents.js " + package.string());
    oracle->write(bench::Textured(*mesh).corners(*mesh));
    bench::Work work;
    work.check = [=] { return errorOf(*mesh, oracle->run(), 4); };
    work.time = [=] { return oracle->seconds(); };
    return work;
}

/// Blender makes normals of its own, so its results are compared by tests only.
bench::Work prepareBlender(const bench::FaceMeshPtr &mesh)
{
    const auto oracle =
        std::make_shared<bench::Oracle>("blender -b --factory-startup --python " RQ_ORACLES "/blenderTangents.py --");
    std::vector<int> sizes{int(mesh->points()), int(mesh->faces()), int(mesh->corners.size())}, counts;
    for (int64_t face = 0; face < mesh->faces(); ++face)
        counts.push_back(int(mesh->count(face)));
    oracle->write(sizes);
    oracle->write(mesh->positions);
    oracle->write(counts);
    oracle->write(mesh->corners);
    oracle->write(bench::Textured(*mesh).texture);
    bench::Work work;
    work.time = [=] { return oracle->run().empty() ? 0.0 : oracle->seconds(); };
    return work;
}

const bool registered = [] {
    if (bench::hasProgram("node") && std::filesystem::exists(bench::oracleFolder() / "node_modules" / "mikktspace"))
        bench::addFaceJob("tangents", "tris2M", {"npm package"}, traffic, preparePackage);
    for (const char *mesh : {"quads1M", "tris2M"})
        if (bench::hasProgram("blender"))
            bench::addFaceJob("tangents", mesh, {"blender"}, traffic, prepareBlender);
    return true;
}();
}  // namespace
