#include <cmath>
#include <numeric>
#include <random>

#include <gtest/gtest.h>

#include <rq/surface/Convexer.h>
#include <tests/host/bas/polygons.h>
#include <tests/json.h>
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
    const RQ_DataArrayHandle flat = makeArray(std::vector<float>(10), 2);
    EXPECT_FALSE(RQ_PolygonHandle(new RQ_PrimPolygon(oneAttribute("P", flat), {}))->convex(3));
    RQ_Convexer convexer;
    EXPECT_FALSE(convexer.processFace(5, 0, 3, false));
    const RQ_DataArrayHandle points = positions(cube.positions);
    EXPECT_TRUE(convexer.processFace(points, 5, 0, {}, 3, false));
    for (const RQ_DataArrayHandle &none : {flat, RQ_DataArrayHandle()})
        EXPECT_FALSE(convexer.processFace(none, 5, 0, {}, 3, false));
    EXPECT_TRUE(convexer.processFace(points, 5, 0, {}, 3, false));
    convexer.setSource(rq::Positions(flat), {});
    EXPECT_TRUE(convexer.processFace(points, 5, 0, {}, 3, false)) << "another source was named in between";
}

TEST(Convex, OfAPolygonKeepsItsPlaceAndState)
{
    const RQ_PolygonHandle dart(new RQ_PrimPolygon(oneAttribute("P", positions(meshShape("dart").positions)), {}));
    const BAS_Mat4d twice(2.0);
    dart->setPrimitiveTransform(new RQ_Transform(&twice, 1));
    EXPECT_FALSE(dart->convex()->isFrameInfoAvailable());
    dart->setStaticGeometry(true);
    EXPECT_TRUE(dart->convex()->isStaticGeometry());
    EXPECT_EQ(dart->convex()->getPrimitiveTransform(), dart->getPrimitiveTransform());
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
    const RQ_DataArrayHandle doubles = makeArray(std::vector<double>(shape.positions.begin(), shape.positions.end()), 3);
    for (const RQ_DataArrayHandle &points : {positions(shape.positions), doubles})
        for (const int limit : {3, 6})
        {
            SCOPED_TRACE(limit);
            const RQ_PrimPolygonMesh mesh(integers(shape.counts), integers(shape.indices), oneAttribute("P", points));
            RQ_ConvexArrays arrays;
            ASSERT_TRUE(mesh.getConvexArrays(arrays, limit, limit == 3));
            std::vector<double> counts, corners, faces, whole;
            RQ_Convexer alone;
            for (int64_t face = 0; face < mesh.getFaceCount(); ++face)
            {
                const int64_t count = shape.counts[size_t(face)];
                alone.processFace(points, count, mesh.getVertexOffset(face), mesh.getVertexList(), limit, limit == 3);
                EXPECT_TRUE(limit > 3 || alone.getFaceCount() == std::max<int64_t>(count - 2, 0));
                for (int64_t piece = 0; piece < alone.getFaceCount(); ++piece)
                    counts.push_back(double(alone.getVertexCount(piece)));
                corners.insert(corners.end(), alone.getVertexList(0), alone.getVertexList(0) + alone.getVertexCount());
                faces.insert(faces.end(), size_t(alone.getFaceCount()), double(face));
                whole.insert(whole.end(), size_t(alone.getFaceCount()), alone.getVertexCount() == count);
            }
            EXPECT_EQ(valuesOf(arrays.counts), counts);
            EXPECT_EQ(valuesOf(arrays.sourceVertex), corners);
            EXPECT_EQ(valuesOf(arrays.sourceFace), faces);
            EXPECT_EQ(valuesOf(arrays.whole), whole);
            for (size_t i = 0; i < corners.size(); ++i)
                ASSERT_EQ(arrays.vertexList->getI64(int64_t(i)), shape.indices[size_t(corners[i])]) << "corner " << i;
        }
}

/// Generated faces, each in a plane of its own, of any size and somewhere.
struct TiltedFaces
{
    TiltedFaces()
    {
        for (unsigned face = 0; face < 3000; ++face)
        {
            Random random(face);
            Polygon polygon = face % 4 == 0   ? randomStar(random, 5 + int(random() % 40), 0.05)
                              : face % 4 == 1 ? keyhole(random, 5 + int(random() % 5))
                              : face % 4 == 2 ? withRepeats(random, tornPatch(random, 3, 3, 10, 0.2))
                                              : comb(random, 1 + int(random() % 4));
            if (random() % 2)
                std::reverse(polygon.begin(), polygon.end());
            const auto direction = [&random] {
                return BAS_Vec3d(uniform(random, -1, 1), uniform(random, -1, 1), uniform(random, -1, 1)).normalized();
            };
            const BAS_Vec3d x = direction(), y = (x % direction()).normalized();
            const double scale = std::pow(10.0, uniform(random, -6, 6));
            const BAS_Vec3d origin = direction() * (100.0 * scale);
            for (const BAS_Vec2d &p : polygon)
            {
                const BAS_Vec3d at = origin + (x * p.x + y * p.y) * scale;
                points.insert(points.end(), {at.x, at.y, at.z});
            }
            counts.push_back(int(polygon.size()));
        }
        std::vector<int> list(points.size() / 3);
        std::iota(list.begin(), list.end(), 0);
        mesh = new RQ_PrimPolygonMesh(integers(counts), integers(list), oneAttribute("P", makeArray(points, 3)));
    }

    /// Twice the area of a face or a piece, along its normal.
    template <class Corner> static BAS_Vec3d area(int64_t count, Corner &&corner)
    {
        BAS_Vec3d sum(0.0);
        for (int64_t i = 1; i + 1 < count; ++i)
            sum += (corner(i) - corner(0)) % (corner(i + 1) - corner(0));
        return sum;
    }

    std::vector<double> points;
    std::vector<int> counts;
    RQ_PolygonMeshHandle mesh;
};

TEST(Convex, CoversTiltedFacesOnceByPiecesOnTheirSide)
{
    const TiltedFaces faces;
    const auto at = [&](int64_t corner) {
        const double *p = faces.points.data() + 3 * corner;
        return BAS_Vec3d(p[0], p[1], p[2]);
    };
    RQ_ConvexArrays arrays;
    for (const int limit : {3, 6})
    {
        ASSERT_TRUE(faces.mesh->getConvexArrays(arrays, limit));
        const RQ_CountArray pieces(arrays.counts);
        std::vector<double> areas(faces.counts.size());
        std::vector<int64_t> triangles(faces.counts.size());
        for (int64_t piece = 0; piece < pieces.entries(); ++piece)
        {
            const auto [begin, count] = pieces.getOffsetCount(piece);
            EXPECT_LE(count, limit);
            const size_t face = size_t(arrays.sourceFace->getI64(piece));
            areas[face] += TiltedFaces::area(count, [&, first = begin](int64_t i) {
                               return at(arrays.sourceVertex->getI64(first + i));
                           }).length();
            triangles[face] += count - 2;
        }
        for (size_t face = 0; face < areas.size(); ++face)
        {
            const int64_t first = faces.mesh->getVertexOffset(int64_t(face));
            const double whole = TiltedFaces::area(faces.counts[face], [&](int64_t i) { return at(first + i); }).length();
            ASSERT_NEAR(areas[face], whole, 1e-9 * whole) << "face " << face << ", limit " << limit;
            ASSERT_EQ(triangles[face], faces.counts[face] - 2) << "face " << face << ", limit " << limit;
        }
    }
    // Every edge of every face is an edge of one piece.
    const std::vector<double> edges = valuesOf(faces.mesh->convex(3, false, true)->getVertex()->get("__edge"));
    EXPECT_EQ(std::accumulate(edges.begin(), edges.end(), 0.0), double(faces.mesh->getVertexCount()));
}

TEST(Convex, AppliesToOtherMeshesOfTheSameFaces)
{
    MeshShape shape = keyholeShape();
    shape.addFace({0, 1, 2, 3});
    const RQ_PolygonMeshHandle mesh = makeMesh(shape), other = makeMesh(shape.scaled("twice as large", 2.0f, 2.0f, 2.0f));
    RQ_ConvexArrays arrays;
    for (const int limit : {3, 5, 3})  // into what an earlier one left
    {
        ASSERT_TRUE(mesh->getConvexArrays(arrays, limit));
        EXPECT_EQ(jsonOf(*other->adoptConvexing(arrays)), jsonOf(*other->convex(limit)));
    }
}

TEST(Convexer, CountsThePiecesOfFacesThatCrossThemselves)
{
    const RQ_DataArrayHandle points = positions({0, 3, 0, -2, -3, 0, 3, 1, 0, -3, 1, 0, 2, -3, 0});
    RQ_Convexer convexer;
    for (const bool isPentagon : {false, true, false})
    {
        const RQ_DataArrayHandle list =
            integers(isPentagon ? std::vector<int>{0, 3, 1, 4, 2} : std::vector<int>{0, 1, 2, 3, 4});
        convexer.processFace(points, 5, 0, list, 3, true);
        EXPECT_EQ(convexer.getFaceCount(), 3);
        EXPECT_EQ(convexer.getForcedCount() == 0, isPentagon);
        for (const int limit : {3, 4})
        {
            const RQ_AttributeListHandle shared =
                RQ_AttributeListHandle(new RQ_AttributeList(nullptr))->addAttribute("P", points, true);
            RQ_ConvexArrays arrays;
            ASSERT_TRUE(RQ_PrimPolygonMesh(integers({5}), list, shared).getConvexArrays(arrays, limit));
            EXPECT_EQ(arrays.forcedCount, convexer.getForcedCount()) << limit;
        }
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
