#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include <rq/surface/Convexer.h>
#include <tests/rq/surface/Fixture.h>

using namespace tests;

TEST(Convex, CarriesAttributesAlongAsViews)
{
    const RQ_PolygonMeshHandle mesh = makeMesh(keyholeShape());
    const RQ_PolygonMeshHandle cut = mesh->convex(3);
    ASSERT_TRUE(cut);
    EXPECT_EQ(cut->getShared(), mesh->getShared());
    ASSERT_EQ(cut->getFaceCount(), 8);
    for (int64_t corner = 0; corner < cut->getVertexCount(); ++corner)
    {
        const int64_t source = cut->getVertex()->get("corner", 0)->getI64(corner);
        EXPECT_EQ(cut->getVertexList()->getI64(corner), mesh->getVertexList()->getI64(source));
    }
    EXPECT_EQ(valuesOf(cut->getUniform()->get("face", 0)), std::vector<double>(8));
    EXPECT_TRUE(cut->validate());
}

TEST(Convex, ReturnsTheMeshItselfOnlyWhenAllFacesAreTriangles)
{
    const RQ_PolygonMeshHandle triangles = makeMesh(meshShape("triangle"));
    EXPECT_EQ(triangles->convex(3), triangles);
    EXPECT_EQ(makeMesh(meshShape("empty"))->convex(3)->getFaceCount(), 0);
    EXPECT_EQ(makeMesh(meshShape("faces of no, one and two corners"))->convex(3)->getFaceCount(), 1);
}

TEST(Convex, FailsWithoutUsablePositions)
{
    const MeshShape cube = cubeShape();
    const RQ_PolygonMeshHandle blind(new RQ_PrimPolygonMesh(integers(cube.counts), integers(cube.indices),
                                                            oneAttribute("Cd", positions(cube.positions))));
    EXPECT_FALSE(blind->convex(3));
}

TEST(Convex, CutsAFaceOfAMeshAsIfItWereAlone)
{
    // More faces than are cut at a time; tilted, warped, some with corners in one place.
    std::mt19937 random(1);
    const auto number = [&random](float least, float most) {
        return least + (most - least) * float(random()) / 4294967296.0f;
    };
    MeshShape shape;
    for (int face = 0; face < 2000; ++face)
    {
        const int count = face % 3 ? 4 : int(random() % 22);
        const int same = random() % 8 ? -1 : int(random() % 22);
        std::vector<int> corners;
        for (int i = 0; i < count; ++i)
        {
            const float turn = 6.2831853f * (float(i) + number(0.0f, 0.9f)) / float(count), reach = number(0.1f, 1.0f);
            corners.push_back(i > 0 && i == same ? corners.back() : shape.pointCount());
            shape.addPoint(reach * std::cos(turn), reach * std::sin(turn), reach * std::cos(turn) + number(0.0f, 0.01f));
        }
        shape.addFace(corners);
    }
    for (const RQ_DataArrayHandle &points :
         {positions(shape.positions), makeArray(std::vector<double>(shape.positions.begin(), shape.positions.end()), 3)})
    {
        const RQ_PrimPolygonMesh mesh(integers(shape.counts), integers(shape.indices), oneAttribute("P", points));
        RQ_ConvexArrays arrays;
        ASSERT_TRUE(mesh.getConvexArrays(arrays, 3));
        std::vector<double> corners, faces, whole;
        RQ_Convexer alone;
        for (int64_t face = 0; face < mesh.getFaceCount(); ++face)
        {
            const int64_t count = shape.counts[size_t(face)];
            alone.processFace(points, count, mesh.getVertexOffset(face), mesh.getVertexList(), 3, true);
            EXPECT_EQ(alone.getFaceCount(), std::max<int64_t>(count - 2, 0));
            corners.insert(corners.end(), alone.getVertexList(0), alone.getVertexList(0) + alone.getVertexCount());
            faces.insert(faces.end(), size_t(alone.getFaceCount()), double(face));
            whole.insert(whole.end(), size_t(alone.getFaceCount()), count == 3);
        }
        EXPECT_EQ(valuesOf(arrays.sourceVertex), corners);
        EXPECT_EQ(valuesOf(arrays.sourceFace), faces);
        EXPECT_EQ(valuesOf(arrays.whole), whole);
        for (size_t i = 0; i < corners.size(); ++i)
            ASSERT_EQ(arrays.vertexList->getI64(int64_t(i)), shape.indices[size_t(corners[i])]) << "corner " << i;
    }
}

TEST(Convexer, ChoosesTheDiagonalThatLiesInsideTheFace)
{
    struct Case
    {
        const char *what;
        std::vector<std::vector<float>> points;
        int limit;
        std::vector<int> counts;
        std::vector<int> corners;
    };
    const Case cases[] = {
        {"two corners", {{0, 0}, {1, 0}}, 3, {}, {}},
        {"triangle", {{0, 0}, {1, 0}, {0, 1}}, 3, {3}, {0, 1, 2}},
        {"convex quad stays", {{0, 0}, {1, 0}, {1, 1}, {0, 1}}, 4, {4}, {0, 1, 2, 3}},
        {"convex quad to triangles", {{0, 0}, {1, 0}, {1, 1}, {0, 1}}, 3, {3, 3}, {0, 1, 2, 2, 3, 0}},
        {"first diagonal outside", {{0, 0}, {2, 1}, {0, 2}, {0.5f, 1}}, 4, {3, 3}, {0, 1, 3, 1, 2, 3}},
        {"corner on the first diagonal", {{0, 0}, {2, 0}, {2, 2}, {1, 1}}, 3, {3, 3}, {0, 1, 3, 1, 2, 3}},
        {"limit below three counts as three", {{0, 0}, {1, 0}, {1, 1}, {0, 1}}, 0, {3, 3}, {0, 1, 2, 2, 3, 0}},
        {"convex pentagon stays", {{0, 0}, {2, 0}, {3, 1}, {1, 2}, {-1, 1}}, 5, {5}, {0, 1, 2, 3, 4}},
    };
    for (const Case &c : cases)
    {
        SCOPED_TRACE(c.what);
        const MeshShape shape = faceShape(c.what, c.points);
        RQ_Convexer convexer;
        EXPECT_EQ(convexer.processFace(positions(shape.positions), int64_t(c.points.size()), 0, nullptr, c.limit, false),
                  c.points.size() >= 3);
        EXPECT_EQ(valuesOf(convexer.getPolyMeshFaceList()), std::vector<double>(c.counts.begin(), c.counts.end()));
        EXPECT_EQ(valuesOf(convexer.getPolyMeshVertexList()), std::vector<double>(c.corners.begin(), c.corners.end()));
    }
}
