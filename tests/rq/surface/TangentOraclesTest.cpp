#include <gtest/gtest.h>

#include <fmt/format.h>

#include <bench/Oracle.h>
#include <tests/rq/surface/tangentMeshes.h>

using namespace tests;

// What others compute on the same meshes.  `scripts/setup --oracles` installs them.

namespace
{
struct Difference
{
    double worst = 0.0;
    int directions = 0, signs = 0;  ///< how many are off
    std::string first;
};

/// Compare with tangents and signs of an oracle, `stride` floats a corner of which tangent and sign begin at `first`.
Difference compare(const TexturedMesh &mesh, const std::vector<float> &theirs, size_t stride, size_t first, double tolerance)
{
    const MadeTangents made(mesh.make());
    Difference difference;
    for (size_t i = 0; i < mesh.indices.size(); ++i)
    {
        const float *t = &theirs[stride * i + first];
        const BAS_Vec3f normal = MadeTangents::vector(mesh.normals, i), own = made.tangent(i);
        const double length = (own - BAS_Vec3f(t[0], t[1], t[2])).length();
        const bool isOff = length > tolerance;
        difference.worst = std::max(difference.worst, length);
        difference.directions += isOff;
        // A tangent along the normal, or none, leaves no second one that would tell the sign.
        const bool isSignOff = (normal % own).length() > 0.5f && made.isPreserving(i, normal) != (t[3] > 0.0f);
        difference.signs += isSignOff;
        if ((isOff || isSignOff) && difference.first.empty())
            difference.first = fmt::format("corner {}: ({}, {}, {}) against ({}, {}, {}, {})", i, own.x, own.y, own.z, t[0],
                                           t[1], t[2], t[3]);
    }
    return difference;
}

/// The reference leaves the edges of the last vertex it numbers unsorted, so which of several faces on such an edge are
/// neighbours is chance there.  A triangle away from all others takes that place.
void addLoneTriangle(TexturedMesh &mesh)
{
    const int point = int(mesh.points.size() / 3);
    mesh.points.insert(mesh.points.end(), {100, 100, 0, 101, 100, 0, 100, 101, 0});
    mesh.addFace({point, point + 1, point + 2}, {0, 0, 1});
    mesh.texture.insert(mesh.texture.end(), {0, 0, 1, 0, 0, 1});
}
}  // namespace

TEST(TangentOracles, PackageOfTheReference)
{
    const std::filesystem::path package = bench::oracleFolder() / "node_modules" / "mikktspace";
    if (!std::filesystem::exists(package) || !bench::hasProgram("node"))
        GTEST_SKIP() << "node and the package mikktspace are not there (scripts/setup --oracles)";
    std::vector<TexturedMesh> meshes{shellMesh(40, false, false), shellMesh(40, false, true)};
    for (int seed = 0; seed < 6; ++seed)
    {
        meshes.push_back(latticeMesh(seed, false, 400));
        addLoneTriangle(meshes.back());
    }
    for (size_t i = 0; i < meshes.size(); ++i)
    {
        SCOPED_TRACE(i);
        bench::Oracle oracle("node " RQ_ORACLES "/npmTangents.js " + package.string());
        oracle.write(meshes[i].corners());
        const std::vector<float> theirs = oracle.run();
        ASSERT_EQ(theirs.size(), 4 * meshes[i].indices.size());
        const Difference difference = compare(meshes[i], theirs, 4, 0, 1e-5);
        EXPECT_EQ(difference.directions, 0) << difference.first << ", at worst " << difference.worst;
        EXPECT_EQ(difference.signs, 0) << difference.first;
    }
}

TEST(TangentOracles, Blender)
{
    if (!bench::hasProgram("blender"))
        GTEST_SKIP() << "blender is not there (scripts/setup --oracles)";
    for (const bool isUgly : {false, true})
        for (const bool hasQuads : {false, true})
        {
            SCOPED_TRACE(fmt::format("ugly {}, quads {}", isUgly, hasQuads));
            TexturedMesh mesh = shellMesh(40, hasQuads, isUgly);
            bench::Oracle oracle("blender -b --factory-startup --python " RQ_ORACLES "/blenderTangents.py --");
            oracle.write(std::vector<int>{int(mesh.points.size() / 3), int(mesh.counts.size()), int(mesh.indices.size())});
            oracle.write(mesh.points);
            oracle.write(mesh.counts);
            oracle.write(mesh.indices);
            oracle.write(mesh.texture);
            const std::vector<float> theirs = oracle.run();
            ASSERT_EQ(theirs.size(), 7 * mesh.indices.size());
            for (size_t i = 0; i < mesh.indices.size(); ++i)
                std::copy_n(&theirs[7 * i], 3, &mesh.normals[3 * i]);
            const Difference difference = compare(mesh, theirs, 7, 3, 1e-4);
            EXPECT_EQ(difference.directions, 0) << difference.first << ", at worst " << difference.worst;
            EXPECT_EQ(difference.signs, 0) << difference.first;
        }
}
