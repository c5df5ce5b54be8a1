#include <filesystem>
#include <map>

#include <gtest/gtest.h>

#include <host/bas/predicates.h>
#include <host/mod/DetailHandle.h>
#include <io/Reader.h>
#include <rq/data/Values.h>
#include <rq/prim/PrimCollect.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
/// The faces of one model that nobody can promise areas for, by reason; the first that fits counts.
struct Odd
{
    int64_t fewCorners = 0;  // less than three
    int64_t repeated = 0;    // two corners in one place
    int64_t folded = 0;      // no area, or an edge that runs back along the one before
    int64_t bent = 0;        // some corner is off the plane by more than a millionth of the face's extent
    int64_t crossing = 0;    // an edge meets another one

    bool operator==(const Odd &) const = default;
};

std::ostream &operator<<(std::ostream &out, const Odd &odd)
{
    return out << '{' << odd.fewCorners << ", " << odd.repeated << ", " << odd.folded << ", " << odd.bent << ", "
               << odd.crossing << '}';
}

using Face = std::vector<BAS_Vec3d>;  // corners relative to the first one: subtracting 32-bit positions is exact enough

BAS_Vec3d newell(const Face &face)
{
    BAS_Vec3d sum(0.0);
    for (size_t i = 1; i + 1 < face.size(); ++i)
        sum += face[i].cross(face[i + 1]);
    return sum;
}

double extentOf(const Face &face)
{
    double extent = 0.0;
    for (const BAS_Vec3d &p : face)
        extent = std::max({extent, std::abs(p.x), std::abs(p.y), std::abs(p.z)});
    return extent;
}

/// The face seen along the axis that it is most square to.
std::vector<BAS_Vec2d> flattened(const Face &face, const BAS_Vec3d &normal)
{
    const BAS_Vec3d n(std::abs(normal.x), std::abs(normal.y), std::abs(normal.z));
    const int axis = n.x >= n.y && n.x >= n.z ? 0 : n.y >= n.z ? 1 : 2;
    std::vector<BAS_Vec2d> points;
    for (const BAS_Vec3d &p : face)
        points.emplace_back(p[(axis + 1) % 3], p[(axis + 2) % 3]);
    return points;
}

bool meet(const BAS_Vec2d &a, const BAS_Vec2d &b, const BAS_Vec2d &c, const BAS_Vec2d &d)
{
    const auto sign = [](double v) { return (v > 0.0) - (v < 0.0); };
    const auto overlap = [](double p, double q, double r, double s) {
        return std::max(std::min(p, q), std::min(r, s)) <= std::min(std::max(p, q), std::max(r, s));
    };
    return sign(host::orientation(a, b, c)) * sign(host::orientation(a, b, d)) <= 0 &&
           sign(host::orientation(c, d, a)) * sign(host::orientation(c, d, b)) <= 0 && overlap(a.x, b.x, c.x, d.x) &&
           overlap(a.y, b.y, c.y, d.y);
}

bool hasRepeatedCorner(const Face &face)
{
    for (size_t i = 0; i < face.size(); ++i)
        for (size_t k = 0; k < i; ++k)
            if (face[i] == face[k])
                return true;
    return false;
}

bool isFolded(const std::vector<BAS_Vec2d> &points)
{
    const size_t n = points.size();
    for (size_t i = 0; i < n; ++i)
    {
        const BAS_Vec2d &a = points[i], &b = points[(i + 1) % n], &c = points[(i + 2) % n];
        if (host::orientation(a, b, c) == 0.0 && (a - b).dot(c - b) >= 0.0)
            return true;
    }
    return false;
}

bool crossesItself(const std::vector<BAS_Vec2d> &points)
{
    const size_t n = points.size();
    for (size_t i = 0; i < n; ++i)
        for (size_t k = i + 2; k < n; ++k)
            if ((k + 1) % n != i && meet(points[i], points[i + 1], points[k], points[(k + 1) % n]))
                return true;
    return false;
}

/// True for a face whose area is beyond doubt; others are counted.
bool isProper(const Face &face, Odd &odd)
{
    if (face.size() < 3)
        return ++odd.fewCorners, false;
    if (hasRepeatedCorner(face))
        return ++odd.repeated, false;
    const BAS_Vec3d sum = newell(face);
    const double length = sum.length();
    if (!(length > 0.0) || isFolded(flattened(face, sum)))
        return ++odd.folded, false;
    const double extent = extentOf(face);
    for (const BAS_Vec3d &p : face)
        if (std::abs(p.dot(sum)) > 1e-6 * extent * length)
            return ++odd.bent, false;
    if (crossesItself(flattened(face, sum)))
        return ++odd.crossing, false;
    return true;
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
        if (isProper(face, odd))
        {
            ASSERT_NEAR(area, sum.length(), 1e-9 * area);
        }
    }
    EXPECT_EQ(piece, pieces.counts->entries());
}

Odd checkDetail(const MOD_ConstDetailHandle &detail)
{
    Odd odd;
    for (const RQ_PrimitiveHandle &primitive : refine(detail))
        if (const RQ_PrimitiveHandle child =
                as<RQ_PrimCollect>(primitive) ? as<RQ_PrimCollect>(primitive)->getPrim(0) : primitive)
            if (const auto *mesh = as<RQ_PrimPolygonMesh>(child))
                expectAreas(*mesh, odd);
    return odd;
}

const std::map<std::string, Odd> kOddShapes = {
    {"faces of no, one and two corners", {3, 0, 0, 0, 0}},
    {"all corners in one place", {0, 1, 0, 0, 0}},
    {"line", {0, 0, 1, 0, 0}},
    {"repeated points", {0, 1, 0, 0, 0}},
    {"bow tie", {0, 0, 1, 0, 0}},
    {"bow tie of eight corners", {0, 0, 0, 0, 1}},
    {"not a number", {0, 0, 1, 0, 0}},
    {"non-planar quad", {0, 0, 0, 1, 0}},
    {"pole", {0, 8, 0, 0, 0}},
    {"keyhole", {0, 1, 0, 0, 0}},
};

const std::map<std::string, Odd> kOddModels = {
    {"broken/deg_faces.obj", {0, 1, 0, 0, 0}},
    {"broken/degenerate_mesh.obj", {0, 1, 0, 0, 0}},
    {"broken/inf_nan.obj", {0, 0, 1, 0, 0}},
    {"broken/invalid-face-definition.obj", {2, 0, 0, 0, 0}},
    {"broken/malformed2.obj", {1, 0, 0, 0, 0}},
    {"broken/missing_material_file.obj", {0, 0, 0, 1, 0}},
    {"broken/notenoughindices.obj", {1, 0, 0, 0, 0}},
    {"broken/regr_3429812.obj", {0, 0, 0, 1, 0}},
    {"broken/test-nan.obj", {0, 0, 1, 1, 0}},
    {"materials/cornell_box.obj", {0, 0, 0, 1, 0}},
    {"materials/cornell_box_multimaterial.obj", {0, 0, 0, 1, 0}},
    {"materials/regr01.obj", {0, 0, 4, 0, 0}},
    {"materials/space_in_material_name.obj", {0, 1, 0, 0, 0}},
    {"materials/spider.obj", {0, 56, 0, 0, 0}},
    {"ngon/box_longline.obj", {0, 1, 0, 0, 0}},
    {"ngon/concave_polygon.obj", {0, 1, 0, 0, 0}},
    {"ngon/issue-319-002.obj", {0, 1, 0, 0, 0}},
    {"ngon/issue-319-003.obj", {0, 0, 0, 1, 0}},
    {"ngon/polygonfaces.obj", {0, 0, 1, 0, 0}},
    {"quad/fish_control_mesh.obj", {0, 0, 0, 104, 0}},
    {"quad/moebius.obj", {0, 0, 0, 224, 0}},
    {"quad/penguin_control_mesh.obj", {0, 0, 0, 156, 0}},
    {"quad/spot_control_mesh.obj", {0, 0, 0, 172, 0}},
    {"quad/sword-quad-dominant.obj", {0, 0, 0, 22109, 0}},
    {"quad/teapot.obj", {0, 0, 0, 2871, 0}},
    {"subdiv/bilinear_nonplanar.obj", {0, 0, 0, 2, 0}},
    {"subdiv/catmark_dart_edgecorner.obj", {0, 0, 0, 2, 0}},
    {"subdiv/catmark_dart_edgeonly.obj", {0, 0, 0, 2, 0}},
    {"subdiv/catmark_edgecorner.obj", {0, 0, 0, 4, 0}},
    {"subdiv/catmark_flap.obj", {0, 0, 0, 3, 0}},
    {"subdiv/catmark_fvar_bound0.obj", {0, 0, 0, 8, 0}},
    {"subdiv/catmark_fvar_bound1.obj", {0, 0, 0, 8, 0}},
    {"subdiv/catmark_fvar_bound3.obj", {0, 0, 0, 6, 0}},
    {"subdiv/catmark_fvar_bound4.obj", {0, 0, 0, 4, 0}},
    {"subdiv/catmark_fvar_project0.obj", {0, 0, 0, 4, 0}},
    {"subdiv/catmark_gregory_test0.obj", {0, 0, 0, 3, 0}},
    {"subdiv/catmark_gregory_test3.obj", {0, 0, 0, 4, 0}},
    {"subdiv/catmark_gregory_test6.obj", {0, 0, 0, 2, 0}},
    {"subdiv/catmark_gregory_test7.obj", {0, 0, 0, 2, 0}},
    {"subdiv/catmark_gregory_test8.obj", {0, 0, 0, 2, 0}},
    {"subdiv/catmark_hole_test2.obj", {0, 0, 0, 4, 0}},
    {"subdiv/catmark_inf_crease0.obj", {0, 0, 0, 16, 0}},
    {"subdiv/catmark_lefthanded.obj", {0, 0, 0, 165, 0}},
    {"subdiv/catmark_nonman_bareverts.obj", {0, 0, 0, 4, 0}},
    {"subdiv/catmark_nonman_edges.obj", {0, 14, 0, 36, 0}},
    {"subdiv/catmark_nonman_quadpole360.obj", {0, 360, 0, 322, 0}},
    {"subdiv/catmark_nonman_quadpole8.obj", {0, 8, 0, 8, 0}},
    {"subdiv/catmark_nonman_verts.obj", {0, 0, 0, 19, 0}},
    {"subdiv/catmark_nonquads.obj", {0, 0, 0, 3, 0}},
    {"subdiv/catmark_pole360.obj", {0, 0, 0, 322, 0}},
    {"subdiv/catmark_pole64.obj", {0, 0, 0, 56, 0}},
    {"subdiv/catmark_pole8.obj", {0, 0, 0, 8, 0}},
    {"subdiv/catmark_quadstrips.obj", {0, 0, 0, 4, 0}},
    {"subdiv/catmark_righthanded.obj", {0, 0, 0, 145, 0}},
    {"subdiv/catmark_single_crease.obj", {0, 0, 0, 20, 0}},
    {"subdiv/catmark_tent.obj", {0, 0, 0, 2, 0}},
    {"subdiv/catmark_tent_creases0.obj", {0, 0, 0, 2, 0}},
    {"subdiv/catmark_val2_interior.obj", {0, 0, 9, 9, 0}},
    {"subdiv/catmark_xord_boundary.obj", {0, 0, 0, 18, 0}},
    {"subdiv/loop_nonman_edges.obj", {0, 4, 0, 0, 0}},
    {"subdiv/refined/catmark_cube_corner2_level1.obj", {0, 0, 0, 96, 0}},
    {"subdiv/refined/catmark_cube_corner2_level2.obj", {0, 0, 0, 384, 0}},
    {"subdiv/refined/catmark_cube_creases0_level1.obj", {0, 0, 0, 93, 0}},
    {"subdiv/refined/catmark_cube_creases0_level2.obj", {0, 0, 0, 384, 0}},
    {"subdiv/refined/catmark_cube_level1.obj", {0, 0, 0, 96, 0}},
    {"subdiv/refined/catmark_cube_level2.obj", {0, 0, 0, 384, 0}},
    {"subdiv/refined/catmark_edgecorner_level1.obj", {0, 0, 0, 144, 0}},
    {"subdiv/refined/catmark_edgecorner_level2.obj", {0, 0, 0, 578, 0}},
    {"subdiv/refined/catmark_pyramid_creases1_level1.obj", {0, 0, 0, 48, 0}},
    {"subdiv/refined/catmark_pyramid_creases1_level2.obj", {0, 0, 0, 220, 0}},
    {"subdiv/refined/catmark_tent_creases0_level1.obj", {0, 0, 0, 110, 0}},
    {"subdiv/refined/catmark_tent_creases0_level2.obj", {0, 0, 0, 506, 0}},
};

TEST(FaceAreas, AddUpForEveryShape)
{
    for (const MeshShape &shape : meshShapes())
    {
        SCOPED_TRACE(shape.name);
        const auto odd = kOddShapes.find(shape.name);
        EXPECT_EQ(checkDetail(makeDetail(shape)), odd != kOddShapes.end() ? odd->second : Odd()) << shape.name;
    }
}

TEST(FaceAreas, AddUpForEveryModel)
{
    if (!std::filesystem::exists(RQ_DATA_DIR))
        GTEST_SKIP() << "no models in " RQ_DATA_DIR;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(RQ_DATA_DIR))
    {
        MOD_DetailHandle detail;
        rq::io::Messages messages;
        if (entry.path().extension() != ".obj" || !rq::io::load(entry.path().string(), detail, messages))
            continue;
        const std::string name = std::filesystem::relative(entry.path(), RQ_DATA_DIR).string();
        SCOPED_TRACE(name);
        const auto odd = kOddModels.find(name);
        EXPECT_EQ(checkDetail(detail.read()), odd != kOddModels.end() ? odd->second : Odd()) << name;
    }
}
}  // namespace
