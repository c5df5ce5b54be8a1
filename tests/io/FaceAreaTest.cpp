#include <array>
#include <filesystem>
#include <map>

#include <gtest/gtest.h>

#include <host/mod/DetailHandle.h>
#include <io/Reader.h>
#include <rq/data/Values.h>
#include <rq/prim/PrimCollect.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
/// Why nobody can promise the area of a face; the first that fits counts.
enum Oddity
{
    kFewCorners,  // less than three
    kRepeated,    // two corners in one place
    kNoArea,      // none at all, or no number
    kBent,        // some corner is off the plane by more than a millionth of the face's extent
    kProper,      // the area is beyond doubt, unless edges cross
};

using Odd = std::array<int64_t, kProper>;  // faces of each oddity

using Face = std::vector<BAS_Vec3d>;  // corners relative to the first one: subtracting 32-bit positions is exact enough

BAS_Vec3d newell(const Face &face)
{
    BAS_Vec3d sum(0.0);
    for (size_t i = 1; i + 1 < face.size(); ++i)
        sum += face[i].cross(face[i + 1]);
    return sum;
}

bool hasRepeatedCorner(const Face &face)
{
    for (size_t i = 0; i < face.size(); ++i)
        for (size_t k = 0; k < i; ++k)
            if (face[i] == face[k])
                return true;
    return false;
}

Oddity oddityOf(const Face &face)
{
    if (face.size() < 3)
        return kFewCorners;
    if (hasRepeatedCorner(face))
        return kRepeated;
    const BAS_Vec3d sum = newell(face);
    const double length = sum.length();
    if (!(length > 0.0))
        return kNoArea;
    double extent = 0.0, height = 0.0;
    for (const BAS_Vec3d &p : face)
    {
        extent = std::max({extent, std::abs(p.x), std::abs(p.y), std::abs(p.z)});
        height = std::max(height, std::abs(p.dot(sum)) / length);
    }
    return height > 1e-6 * extent ? kBent : kProper;
}

/// Cut a mesh into triangles and compare them with what the faces say.
void expectAreas(const RQ_PrimPolygonMesh &mesh, Odd &odd)
{
    RQ_ConvexArrays pieces;
    ASSERT_TRUE(mesh.getConvexArrays(pieces, 3));
    const rq::Values<double> positions(mesh.getShared()->get("P"));
    const auto cornerAt = [&](int64_t vertex) {
        const double *p = positions.data() + 3 * mesh.getVertexList()->getI64(vertex);
        return BAS_Vec3d(p[0], p[1], p[2]);
    };
    int64_t corner = 0, piece = 0;
    for (int64_t f = 0; f < mesh.getFaceCount(); ++f)
    {
        SCOPED_TRACE("face " + std::to_string(f));
        const int64_t first = mesh.getVertexOffset(f), count = mesh.getVertexOffset(f + 1) - first;
        Face face;
        for (int64_t i = 0; i < count; ++i)
            face.push_back(cornerAt(first + i) - cornerAt(first));
        // Along the normal: what a triangle gains by its own slant is not the cutter's.
        const BAS_Vec3d sum = newell(face), normal = sum / std::max(sum.length(), 1e-300);
        double area = 0.0;
        int64_t triangles = 0;
        for (; piece < pieces.counts->entries() && pieces.sourceFace->getI64(piece) == f; ++piece, corner += 3, ++triangles)
        {
            ASSERT_EQ(pieces.counts->getI64(piece), 3);
            BAS_Vec3d p[3];
            for (int i = 0; i < 3; ++i)
                p[i] = face[size_t(pieces.sourceVertex->getI64(corner + i) - first)];
            area += std::abs((p[1] - p[0]).cross(p[2] - p[0]).dot(normal));
        }
        ASSERT_EQ(triangles, std::max<int64_t>(0, count - 2));
        if (const Oddity oddity = oddityOf(face); oddity != kProper)
            ++odd[oddity];
        else
            ASSERT_NEAR(area, sum.length(), 1e-9 * area);
    }
    EXPECT_EQ(piece, pieces.counts->entries());
}

Odd checkDetail(const MOD_ConstDetailHandle &detail)
{
    Odd odd = {};
    for (const RQ_PrimitiveHandle &primitive : refine(detail))
        if (const RQ_PrimitiveHandle child =
                as<RQ_PrimCollect>(primitive) ? as<RQ_PrimCollect>(primitive)->getPrim(0) : primitive)
            if (const auto *mesh = as<RQ_PrimPolygonMesh>(child))
                expectAreas(*mesh, odd);
    return odd;
}

// Files, and folders of models whose faces bend for all files without a row.
const std::map<std::string, Odd> kOddModels = {
    {"broken/deg_faces.obj", {0, 1, 0, 0}},
    {"broken/degenerate_mesh.obj", {0, 1, 0, 0}},
    {"broken/inf_nan.obj", {0, 0, 1, 0}},
    {"broken/invalid-face-definition.obj", {2, 0, 0, 0}},
    {"broken/malformed2.obj", {1, 0, 0, 0}},
    {"broken/missing_material_file.obj", {0, 0, 0, 1}},
    {"broken/notenoughindices.obj", {1, 0, 0, 0}},
    {"broken/regr_3429812.obj", {0, 0, 0, 1}},
    {"broken/test-nan.obj", {0, 0, 1, 1}},
    {"materials/cornell_box.obj", {0, 0, 0, 1}},
    {"materials/cornell_box_multimaterial.obj", {0, 0, 0, 1}},
    {"materials/regr01.obj", {0, 0, 4, 0}},
    {"materials/space_in_material_name.obj", {0, 1, 0, 0}},
    {"materials/spider.obj", {0, 56, 0, 0}},
    {"ngon/box_longline.obj", {0, 1, 0, 0}},
    {"ngon/concave_polygon.obj", {0, 1, 0, 0}},
    {"ngon/issue-319-002.obj", {0, 1, 0, 0}},
    {"ngon/issue-319-003.obj", {0, 0, 0, 1}},
    {"ngon/polygonfaces.obj", {0, 0, 0, 1}},
    {"quad", {0, 0, 0, 25636}},
    {"subdiv", {0, 386, 0, 1228}},
    {"subdiv/refined", {0, 0, 0, 3043}},
};

TEST(FaceAreas, AddUpForEveryModel)
{
    if (!std::filesystem::exists(RQ_DATA_DIR))
        GTEST_SKIP() << "no models in " RQ_DATA_DIR;
    std::map<std::string, Odd> found;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(RQ_DATA_DIR))
    {
        MOD_DetailHandle detail;
        rq::io::Messages messages;
        if (entry.path().extension() != ".obj" || !rq::io::load(entry.path().string(), detail, messages))
            continue;
        const std::string name = entry.path().lexically_relative(RQ_DATA_DIR).string();
        SCOPED_TRACE(name);
        const Odd odd = checkDetail(detail.read());
        const std::string folder = entry.path().lexically_relative(RQ_DATA_DIR).parent_path().string();
        Odd &sum = found[kOddModels.contains(name) ? name : folder];
        for (size_t i = 0; i < odd.size(); ++i)
            sum[i] += odd[i];
    }
    std::erase_if(found, [](const auto &row) { return row.second == Odd(); });
    EXPECT_EQ(found, kOddModels);
}
}  // namespace
