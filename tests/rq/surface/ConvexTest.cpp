#include <gtest/gtest.h>

#include <set>

#include <host/bas/Parallel.h>
#include <host/bas/Progress.h>
#include <rq/surface/Convexer.h>
#include <tests/rq/surface/Fixture.h>

using namespace tests;

namespace
{
/// What one face leaves: the vector sum and the sum of lengths of its pieces' area vectors.
struct Areas
{
    BAS_Vec3d vector{0.0};
    double absolute = 0.0;
    int64_t pieces = 0;
};

BAS_Vec3d fanVector(const MeshShape &shape, const std::vector<int64_t> &corners)
{
    BAS_Vec3d sum(0.0);
    const BAS_Vec3d first = corners.empty() ? BAS_Vec3d(0.0) : pointOf(shape, shape.indices[size_t(corners[0])]);
    for (size_t i = 2; i < corners.size(); ++i)
        sum += (pointOf(shape, shape.indices[size_t(corners[i - 1])]) - first) %
               (pointOf(shape, shape.indices[size_t(corners[i])]) - first);
    return 0.5 * sum;
}

std::vector<Areas> areasByFace(const MeshShape &shape, const RQ_ConvexArrays &arrays)
{
    std::vector<Areas> areas(shape.counts.size());
    int64_t at = 0;
    for (int64_t piece = 0; piece < arrays.counts->entries(); ++piece)
    {
        std::vector<int64_t> corners;
        for (int64_t i = 0; i < arrays.counts->getI64(piece); ++i)
            corners.push_back(arrays.sourceVertex->getI64(at++));
        Areas &face = areas[size_t(arrays.sourceFace->getI64(piece))];
        const BAS_Vec3d vector = fanVector(shape, corners);
        face.vector += vector;
        face.absolute += vector.length();
        ++face.pieces;
    }
    return areas;
}

// Their outline crosses itself, folds, or does not lie in a plane: pieces cannot tile it, only their number is fixed.
const std::set<std::string> kNotSimple = {"faces of no, one and two corners", "line",         "bow tie",
                                          "bow tie of eight corners",         "not a number", "non-planar quad"};

bool sameValues(const RQ_DataArrayHandle &a, const RQ_DataArrayHandle &b) { return valuesOf(a) == valuesOf(b); }

class Interrupter : public BAS_ProgressHandler
{
public:
    bool update(const char *label, double) override
    {
        label_ = label;
        return true;
    }
    std::string label_;
};
}  // namespace

TEST(Convex, CutsEveryShapeIntoTrianglesThatTileItsFaces)
{
    for (const MeshShape &shape : meshShapes())
    {
        SCOPED_TRACE(shape.name);
        const RQ_PolygonMeshHandle mesh = makeMesh(shape);
        RQ_ConvexArrays arrays;
        ASSERT_TRUE(mesh->getConvexArrays(arrays, 3));
        ASSERT_EQ(arrays.vertexList->entries(), 3 * arrays.counts->entries());
        for (int64_t i = 0; i < arrays.vertexList->entries(); ++i)
            ASSERT_EQ(arrays.vertexList->getI64(i), shape.indices[size_t(arrays.sourceVertex->getI64(i))]) << "corner " << i;

        const std::vector<Areas> areas = areasByFace(shape, arrays);
        for (size_t face = 0; face < shape.counts.size(); ++face)
        {
            ASSERT_EQ(areas[face].pieces, std::max(0, shape.counts[face] - 2)) << "face " << face;
            if (kNotSimple.count(shape.name))
                continue;
            std::vector<int64_t> corners;
            for (int i = 0; i < shape.counts[face]; ++i)
                corners.push_back(mesh->getVertex(int64_t(face), i));
            const double whole = fanVector(shape, corners).length();
            ASSERT_NEAR(areas[face].absolute, whole, 1e-6 * whole) << "face " << face;
            ASSERT_NEAR((areas[face].vector - fanVector(shape, corners)).length(), 0.0, 1e-9 * areas[face].absolute);
        }
    }
}

TEST(Convex, GivesTheSameBitsForAnyNumberOfThreads)
{
    const RQ_PolygonMeshHandle mesh = makeMesh(meshShape("fan"));
    MeshShape mixed = stripShape(3000);
    mixed.addFace({0, 2, 4, 6, 7, 5, 3, 1});
    for (const MeshShape &shape : {mixed, poleShape()})
        for (const int limit : {3, 4, 8})
        {
            RQ_ConvexArrays one, many;
            {
                const BAS_Threads::Limit serial(1);
                ASSERT_TRUE(makeMesh(shape)->getConvexArrays(one, limit));
            }
            const BAS_Threads::Limit parallel(8);
            ASSERT_TRUE(makeMesh(shape)->getConvexArrays(many, limit));
            EXPECT_TRUE(sameValues(one.counts, many.counts)) << shape.name << " limit " << limit;
            EXPECT_TRUE(sameValues(one.vertexList, many.vertexList)) << shape.name << " limit " << limit;
            EXPECT_TRUE(sameValues(one.sourceVertex, many.sourceVertex)) << shape.name << " limit " << limit;
            EXPECT_TRUE(sameValues(one.sourceFace, many.sourceFace)) << shape.name << " limit " << limit;
            EXPECT_TRUE(sameValues(one.whole, many.whole)) << shape.name << " limit " << limit;
        }
}

TEST(Convex, CarriesAttributesAlongAsViews)
{
    const RQ_PolygonMeshHandle mesh = makeMesh(keyholeShape());
    const RQ_PolygonMeshHandle cut = mesh->convex(3);
    ASSERT_TRUE(cut);
    EXPECT_TRUE(cut->isConvexed());
    EXPECT_EQ(cut->getShared(), mesh->getShared());
    ASSERT_EQ(cut->getFaceCount(), 8);
    for (int64_t corner = 0; corner < cut->getVertexCount(); ++corner)
    {
        const int64_t source = cut->getVertex()->get("corner", 0)->getI64(corner);
        EXPECT_EQ(cut->getVertexList()->getI64(corner), mesh->getVertexList()->getI64(source));
    }
    for (int64_t face = 0; face < cut->getFaceCount(); ++face)
        EXPECT_EQ(cut->getUniform()->get("face", 0)->getI64(face), 0);
    EXPECT_TRUE(cut->validate());
}

TEST(Convex, ReturnsTheMeshItselfOnlyWhenAllFacesAreTriangles)
{
    const RQ_PolygonMeshHandle triangles = makeMesh(meshShape("triangle"));
    EXPECT_EQ(triangles->convex(3), triangles);
    const RQ_PolygonMeshHandle nothing = makeMesh(meshShape("empty"));
    EXPECT_EQ(nothing->convex(3)->getFaceCount(), 0);
    const RQ_PolygonMeshHandle mixed = makeMesh(meshShape("faces of no, one and two corners"));
    EXPECT_EQ(mixed->convex(3)->getFaceCount(), 1);
}

TEST(Convex, FailsWithoutUsablePositionsAndWhenInterrupted)
{
    const MeshShape cube = cubeShape();
    const RQ_PolygonMeshHandle blind(new RQ_PrimPolygonMesh(integers(cube.counts), integers(cube.indices),
                                                            oneAttribute("Cd", positions(cube.positions))));
    EXPECT_FALSE(blind->convex(3));

    Interrupter interrupter;
    BAS_ProgressHandler *before = BAS_ProgressHandler::install(&interrupter);
    EXPECT_FALSE(makeMesh(cube)->convex(3));
    EXPECT_FALSE(makeMesh(cube)->convex(4));
    BAS_ProgressHandler::install(before);
    EXPECT_EQ(interrupter.label_, "Convexing display geometry");
    EXPECT_TRUE(makeMesh(cube)->convex(3));
}

TEST(Convexer, ChoosesTheDiagonalThatLiesInsideTheFace)
{
    struct Case
    {
        const char *what;
        std::vector<std::vector<float>> points;
        int limit;
        bool triangulate;
        std::vector<int> counts;
        std::vector<int> corners;
    };
    const Case cases[] = {
        {"two corners", {{0, 0}, {1, 0}}, 3, false, {}, {}},
        {"triangle", {{0, 0}, {1, 0}, {0, 1}}, 3, false, {3}, {0, 1, 2}},
        {"convex quad stays", {{0, 0}, {1, 0}, {1, 1}, {0, 1}}, 4, false, {4}, {0, 1, 2, 3}},
        {"convex quad to triangles", {{0, 0}, {1, 0}, {1, 1}, {0, 1}}, 3, false, {3, 3}, {0, 1, 2, 2, 3, 0}},
        {"first diagonal outside", {{0, 0}, {2, 1}, {0, 2}, {0.5f, 1}}, 4, false, {3, 3}, {0, 1, 3, 1, 2, 3}},
        {"corner on the first diagonal", {{0, 0}, {2, 0}, {2, 2}, {1, 1}}, 3, false, {3, 3}, {0, 1, 3, 1, 2, 3}},
        {"limit below three counts as three", {{0, 0}, {1, 0}, {1, 1}, {0, 1}}, 0, false, {3, 3}, {0, 1, 2, 2, 3, 0}},
        {"convex pentagon stays", {{0, 0}, {2, 0}, {3, 1}, {1, 2}, {-1, 1}}, 5, false, {5}, {0, 1, 2, 3, 4}},
    };
    for (const Case &c : cases)
    {
        SCOPED_TRACE(c.what);
        const MeshShape shape = faceShape(c.what, c.points);
        RQ_Convexer convexer;
        EXPECT_EQ(
            convexer.processFace(positions(shape.positions), int64_t(c.points.size()), 0, nullptr, c.limit, c.triangulate),
            c.points.size() >= 3);
        EXPECT_EQ(valuesOf(convexer.getPolyMeshFaceList()), std::vector<double>(c.counts.begin(), c.counts.end()));
        EXPECT_EQ(valuesOf(convexer.getPolyMeshVertexList()), std::vector<double>(c.corners.begin(), c.corners.end()));
    }
}
