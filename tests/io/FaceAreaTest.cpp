#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <numeric>

#include <gtest/gtest.h>

#include <host/bas/faceGeometry.h>
#include <host/bas/predicates.h>
#include <host/mod/DetailHandle.h>
#include <io/Reader.h>
#include <rq/data/Values.h>
#include <rq/prim/PrimCollect.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
// Why the triangles of a face need not add up to its area; the first that fits counts.
constexpr const char *kReasons[] = {
    "small",     // less than three corners
    "repeated",  // two corners in one place
    "no area",   // none at all, or no number
    "crossing",  // edges that are no neighbours meet, seen along the axis nearest to the normal
    "bent",      // some corner is off the plane by more than a millionth of the face's extent
    "leaning",   // so narrow that the millionth tilts its triangles: any cut is off by more than 1e-9 (up to 1.5e-9 here)
};

using Face = std::vector<BAS_Vec3d>;  // corners relative to the first one: subtracting 32-bit positions is exact enough
using Oddities = std::array<int64_t, std::size(kReasons)>;  // faces of each reason

BAS_Vec3d areaVector(const Face &face)
{
    return 0.5 * host::newellVector(int64_t(face.size()), [&](int64_t i) { return face[size_t(i)]; });
}

bool hasRepeatedCorner(const Face &face)
{
    for (size_t i = 0; i < face.size(); ++i)
        if (std::find(face.begin(), face.begin() + i, face[i]) != face.begin() + i)
            return true;
    return false;
}

// Leaving out a coordinate rounds nothing, and the signs are exact.
bool hasCrossingEdges(const Face &face, const BAS_Vec3d &normal)
{
    int axis = std::abs(normal.x) > std::abs(normal.y) ? 0 : 1;
    axis = std::abs(normal[axis]) > std::abs(normal.z) ? axis : 2;
    std::vector<BAS_Vec2d> flat;
    for (const BAS_Vec3d &p : face)
        flat.emplace_back(p[(axis + 1) % 3], p[(axis + 2) % 3]);
    flat.push_back(flat[0]);
    const auto apart = [](double a, double b, double c, double d) {
        return std::max(a, b) < std::min(c, d) || std::max(c, d) < std::min(a, b);
    };
    const auto oneSide = [](const BAS_Vec2d &a, const BAS_Vec2d &b, const BAS_Vec2d &p, const BAS_Vec2d &q) {
        const double left = host::orientation(a, b, p), right = host::orientation(a, b, q);
        return (left > 0.0 && right > 0.0) || (left < 0.0 && right < 0.0);
    };
    for (size_t i = 0; i < face.size(); ++i)
        for (size_t k = i + 2; k < face.size() - (i == 0); ++k)
        {
            const BAS_Vec2d &a = flat[i], &b = flat[i + 1], &c = flat[k], &d = flat[k + 1];
            if (!apart(a.x, b.x, c.x, d.x) && !apart(a.y, b.y, c.y, d.y) && !oneSide(a, b, c, d) && !oneSide(c, d, a, b))
                return true;
        }
    return false;
}

bool isBent(const Face &face, const BAS_Vec3d &normal)
{
    double extent = 0.0, height = 0.0;
    for (const BAS_Vec3d &p : face)
    {
        extent = std::max({extent, std::abs(p.x), std::abs(p.y), std::abs(p.z)});
        height = std::max(height, std::abs(p.dot(normal)));
    }
    return height > 1e-6 * extent;
}

// The least sum of areas of any triangles that close the outline, whether their sides lie within the face or not.
double leastArea(const Face &face)
{
    const size_t n = face.size();
    std::vector<std::vector<double>> least(n, std::vector<double>(n, 0.0));
    for (size_t length = 2; length < n; ++length)
        for (size_t a = 0, b = length; b < n; ++a, ++b)
        {
            least[a][b] = INFINITY;
            for (size_t tip = a + 1; tip < b; ++tip)
                least[a][b] = std::min(least[a][b],
                                       least[a][tip] + least[tip][b] + areaVector({face[a], face[tip], face[b]}).length());
        }
    return least[0][n - 1];
}

// The number of the first reason that fits; -1 for a face without any.
int oddityOf(const Face &face)
{
    const BAS_Vec3d normal = host::direction(areaVector(face));
    const bool odd[] = {face.size() < 3, hasRepeatedCorner(face), normal == BAS_Vec3d(0.0)};
    const auto first = std::find(std::begin(odd), std::end(odd), true);
    if (first != std::end(odd))
        return int(first - std::begin(odd));
    return hasCrossingEdges(face, normal) ? 3 : isBent(face, normal) ? 4 : -1;
}

// What a face is cut into must be n - 2 triangles that add up to it.
void expectArea(const Face &face, const std::vector<Face> &pieces, Oddities &odd)
{
    ASSERT_EQ(pieces.size(), face.size() < 3 ? 0 : face.size() - 2);
    double area = 0.0;
    BAS_Vec3d vector(0.0);
    for (const Face &piece : pieces)
    {
        ASSERT_EQ(piece.size(), 3u);
        area += areaVector(piece).length();
        vector += areaVector(piece);
    }
    const double whole = areaVector(face).length(), tolerance = 1e-9 * area;
    if (std::isfinite(area))
    {
        ASSERT_LE((vector - areaVector(face)).length(), tolerance) << "whatever is odd, directions add up";
    }
    if (const int oddity = oddityOf(face); oddity >= 0)
        ++odd[size_t(oddity)];
    else if (std::abs(area - whole) > tolerance)
    {
        ASSERT_GT(leastArea(face) - whole, 1e-9 * leastArea(face)) << "another cut adds up: " << area << " of " << whole;
        ++odd[std::size(kReasons) - 1];
    }
}

void expectAreas(const RQ_PrimPolygonMesh &mesh, Oddities &odd)
{
    RQ_ConvexArrays pieces;
    ASSERT_TRUE(mesh.getConvexArrays(pieces, 3));
    const RQ_DataArrayHandle points = mesh.getVertexList();
    const rq::Values<double> positions(mesh.getShared()->get("P"));
    const auto positionOf = [&](int64_t vertex) {
        const double *p = positions.data() + 3 * points->getI64(vertex);
        return BAS_Vec3d(p[0], p[1], p[2]);
    };
    int64_t corner = 0, piece = 0;
    for (int64_t f = 0; f < mesh.getFaceCount(); ++f)
    {
        SCOPED_TRACE("face " + std::to_string(f));
        const int64_t first = mesh.getVertexOffset(f), end = mesh.getVertexOffset(f + 1);
        Face face;
        for (int64_t vertex = first; vertex < end; ++vertex)
            face.push_back(positionOf(vertex) - positionOf(first));
        std::vector<Face> cut;
        for (; piece < pieces.counts->entries() && pieces.sourceFace->getI64(piece) == f; ++piece)
        {
            cut.emplace_back();
            for (int64_t i = 0; i < pieces.counts->getI64(piece); ++i, ++corner)
            {
                const int64_t vertex = pieces.sourceVertex->getI64(corner);
                ASSERT_EQ(pieces.vertexList->getI64(corner), points->getI64(vertex));
                cut.back().push_back(positionOf(vertex) - positionOf(first));
            }
        }
        ASSERT_NO_FATAL_FAILURE(expectArea(face, cut, odd));
    }
    EXPECT_EQ(piece, pieces.counts->entries());
}

/// Cut all meshes of a snapshot.  Gives a line of its odd faces, of which there should be none but those expected.
std::string oddFaces(const std::string &name, const MOD_ConstDetailHandle &detail)
{
    SCOPED_TRACE(name);
    Oddities odd = {};
    for (const RQ_PrimitiveHandle &primitive : refine(detail))
        if (const RQ_PrimitiveHandle child =
                as<RQ_PrimCollect>(primitive) ? as<RQ_PrimCollect>(primitive)->getPrim(0) : primitive)
            if (const auto *mesh = as<RQ_PrimPolygonMesh>(child))
                expectAreas(*mesh, odd);
    std::string line;
    for (size_t i = 0; i < odd.size(); ++i)
        if (odd[i] > 0)
            line += (line.empty() ? ": " : ", ") + std::to_string(odd[i]) + " " + kReasons[i];
    return line.empty() ? line : name + line + "\n";
}
}  // namespace

TEST(FaceAreas, AddUpForEveryShape)
{
    std::string found;
    for (const MeshShape &shape : meshShapes())
        found += oddFaces(shape.name, makeDetail(shape));
    EXPECT_EQ(found, "faces of no, one and two corners: 3 small\n"
                     "all corners in one place: 1 repeated\n"
                     "line: 1 no area\n"
                     "repeated points: 1 repeated\n"
                     "bow tie: 1 no area\n"
                     "bow tie of eight corners: 1 crossing\n"
                     "not a number: 1 no area\n"
                     "non-planar quad: 1 bent\n"
                     "pole: 8 repeated\n"
                     "keyhole: 1 repeated\n");
}

TEST(FaceAreas, AddUpForEveryModel)
{
    if (!std::filesystem::exists(RQ_DATA_DIR))
        GTEST_SKIP() << "no models in " RQ_DATA_DIR;
    std::vector<std::string> lines;
    for (const auto &entry : std::filesystem::recursive_directory_iterator(RQ_DATA_DIR))
    {
        MOD_DetailHandle detail;
        rq::io::Messages messages;
        if (entry.path().extension() == ".obj" && rq::io::load(entry.path().string(), detail, messages))
            lines.push_back(oddFaces(entry.path().lexically_relative(RQ_DATA_DIR).string(), detail.read()));
    }
    std::sort(lines.begin(), lines.end());
    std::ifstream list(RQ_ODD_FACES);
    const std::string expected{std::istreambuf_iterator<char>(list), {}};
    EXPECT_EQ(std::accumulate(lines.begin(), lines.end(), std::string()), expected);
}
