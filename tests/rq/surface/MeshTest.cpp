#include <algorithm>

#include <gtest/gtest.h>

#include <host/bas/Parallel.h>
#include <host/bas/StringMMPattern.h>
#include <rq/prim/Transform.h>
#include <rq/surface/PrimPointMesh.h>
#include <tests/json.h>
#include <tests/rq/surface/Fixture.h>

using namespace tests;

TEST(UnusedPoints, AreDroppedInOrderWithARemap)
{
    for (const MeshShape &shape : meshShapes())
    {
        if (shape.pointCount() > 1000)
            continue;
        SCOPED_TRACE(shape.name);
        std::vector<double> used, remap;
        for (int point = 0; point < shape.pointCount(); ++point)
        {
            const bool isUsed = std::count(shape.indices.begin(), shape.indices.end(), point) > 0;
            remap.push_back(isUsed ? double(used.size()) : -1.0);
            if (isUsed)
                used.push_back(point);
        }
        const RQ_PolygonMeshHandle mesh = makeMesh(shape);
        EXPECT_EQ(valuesOf(mesh->getUsedPointList()), used);
        RQ_DataArrayHandle rows;
        const RQ_PolygonMeshHandle kept = mesh->removeUnusedPoints(&rows);
        EXPECT_EQ(valuesOf(rows), remap);
        EXPECT_EQ(kept == mesh, int(used.size()) == shape.pointCount());
        EXPECT_EQ(kept->getPointCount(), int64_t(used.size()));
        for (int64_t corner = 0; corner < kept->getVertexCount(); ++corner)
            for (int axis = 0; axis < 3; ++axis)
            {
                const double before = mesh->getShared()->get("P", 0)->getF64(mesh->getVertexList()->getI64(corner), axis);
                const double after = kept->getShared()->get("P", 0)->getF64(kept->getVertexList()->getI64(corner), axis);
                EXPECT_TRUE(before == after || (before != before && after != after)) << "corner " << corner;
            }
    }
}

TEST(UnusedPoints, AreFoundInListsOfAnyOrder)
{
    // More corners and points than one task takes.
    constexpr int kSide = 200, kFirst = 10;
    std::vector<int> quads, triangles;
    for (int face = 0; face < kSide * kSide; ++face)
    {
        const int a = kFirst + face / kSide * (kSide + 1) + face % kSide, b = a + 1, c = b + kSide + 1, d = c - 1;
        const bool turn = (face / kSide + face) % 2;
        quads.insert(quads.end(), {a, b, c, d});
        triangles.insert(triangles.end(), {a, b, turn ? d : c, turn ? b : a, c, d});
    }
    const auto changed = [](std::vector<int> list, auto &&change) {
        for (size_t i = 0; i < list.size(); ++i)
            list[i] = change(int(i), list[i]);
        return list;
    };
    const std::pair<const char *, std::vector<int>> cases[] = {
        {"rows of quads", quads},
        {"rows of triangles", triangles},
        {"every other point", changed(triangles, [](int, int point) { return 2 * point; })},
        {"every other point, and some between",
         changed(quads, [](int i, int point) { return i < kSide * kSide ? int(int64_t(i) * i % 20011) : 2 * point; })},
        {"backwards", {quads.rbegin(), quads.rend()}},
        {"one face again and again", changed(quads, [](int i, int) { return 3 * (i % 4); })},
        {"rows with gaps", changed(quads, [](int i, int point) { return i % 997 ? point : 7; })},
        {"rows with points of their own",
         changed(quads, [](int i, int point) { return i / (4 * kSide) % 2 || i < 600 * kSide ? point : point + 11000; })},
        {"far apart", changed(quads, [](int i, int) { return int(int64_t(i) * 7919 % 70001) + kFirst; })},
        {"in no order", changed(quads, [](int i, int) { return int(uint32_t(i) * 2654435761u >> 15) + kFirst; })},
    };
    for (const auto &[what, list] : cases)
        for (const int workers : {1, 2, 3, 8, 64})
        {
            SCOPED_TRACE(std::string(what) + ", workers " + std::to_string(workers));
            const BAS_Threads::Limit limit(workers);
            const int points = *std::max_element(list.begin(), list.end()) + 70;
            std::vector<double> remap(size_t(points), -1.0), used, renumbered;
            for (const int point : list)
                remap[size_t(point)] = 0.0;
            for (size_t point = 0; point < remap.size(); ++point)
                if (remap[point] == 0.0)
                {
                    remap[point] = double(used.size());
                    used.push_back(double(point));
                }
            for (const int point : list)
                renumbered.push_back(remap[size_t(point)]);
            const bool wide = workers == 2;
            const RQ_PrimPolygonMesh mesh(RQ_CountArray(int64_t(list.size()) / 4, 4),
                                          wide ? makeArray(std::vector<int64_t>(list.begin(), list.end())) : integers(list),
                                          oneAttribute("P", positions(std::vector<float>(3 * size_t(points)))));
            RQ_DataArrayHandle rows;
            const RQ_PolygonMeshHandle kept = mesh.removeUnusedPoints(&rows);
            EXPECT_TRUE(valuesOf(rows) == remap);
            EXPECT_TRUE(valuesOf(mesh.getUsedPointList()) == used);
            EXPECT_TRUE(valuesOf(kept->getVertexList()) == renumbered);
            EXPECT_EQ(kept->getPointCount(), int64_t(used.size()));
            const RQ_PolygonMeshHandle same =
                new RQ_PrimPolygonMesh(kept->getFaceCountArray(), kept->getVertexList(), kept->getShared());
            EXPECT_EQ(same->removeUnusedPoints(), same);
        }
}

TEST(UnusedPoints, LeaveAViewWhereTheUsedOnesAreARun)
{
    // All faces behind a number, and in front of it: the points of the others are at one end.
    const MeshShape strip = stripShape(10);
    const RQ_PolygonMeshHandle mesh = makeMesh(strip);
    for (const int gone : {0, 3})
    {
        MeshShape part;
        part.positions = strip.positions;
        for (int face = gone; face < gone + 5; ++face)
            part.addFace({strip.indices.begin() + 4 * face, strip.indices.begin() + 4 * face + 4});
        const RQ_PolygonMeshHandle kept = makeMesh(part)->removeUnusedPoints();
        EXPECT_EQ(kept->getPointCount(), 12);
        EXPECT_EQ(kept->getShared()->get("P", 0)->getBackingData() != nullptr, true);
        EXPECT_EQ(pointOf(strip, 2 * gone), vectorOf(*kept->getShared()->get("P", 0), 0));
        EXPECT_EQ(kept->getVertexList()->getI64(0), strip.indices[size_t(4 * gone)] - 2 * gone);
        EXPECT_EQ(kept->removeUnusedPoints(), kept);
    }
}

TEST(UnusedPoints, OfMeshesWithoutAListOrWithoutPoints)
{
    const RQ_AttributeListHandle shared = oneAttribute("P", positions({0, 0, 0, 1, 1, 1}));
    RQ_DataArrayHandle rows;
    const RQ_PolygonMeshHandle faceless(new RQ_PrimPolygonMesh(integers({0, 0}), nullptr, shared));
    EXPECT_EQ(faceless->removeUnusedPoints(&rows)->getPointCount(), 0);
    EXPECT_EQ(valuesOf(rows), (std::vector<double>{-1, -1}));
    EXPECT_EQ(faceless->getUsedPointList()->entries(), 0);

    const RQ_PolygonMeshHandle pointless(new RQ_PrimPolygonMesh(integers({3}), integers({7, 4, 900}), nullptr));
    EXPECT_EQ(pointless->removeUnusedPoints(&rows), pointless);
    EXPECT_EQ(rows->entries(), 0);
    EXPECT_EQ(valuesOf(pointless->getUsedPointList()), (std::vector<double>{4, 7, 900}));
    const RQ_PrimPolygonMesh far(integers({3}), makeArray(std::vector<int64_t>{-1, 5, int64_t(1) << 40}), nullptr);
    EXPECT_EQ(valuesOf(far.getUsedPointList()), (std::vector<double>{5, double(int64_t(1) << 40)}));

    const RQ_PolygonMeshHandle listless(new RQ_PrimPolygonMesh(integers({2}), nullptr, shared));
    EXPECT_EQ(listless->removeUnusedPoints(&rows), listless);
    EXPECT_EQ(valuesOf(rows), (std::vector<double>{0, 1}));
}

TEST(Measures, FollowTheTransform)
{
    const RQ_PolygonMeshHandle mesh = makeMesh(cubeShape());
    EXPECT_DOUBLE_EQ(mesh->computeSurfaceArea(0), 6.0);
    EXPECT_DOUBLE_EQ(mesh->computePerimeter(0), 24.0);
    EXPECT_DOUBLE_EQ(mesh->computeVolume(BAS_Vec3f(9.0f, 5.0f, 7.0f), 0), 1.0);
    EXPECT_DOUBLE_EQ(makeMesh(meshShape("mirrored cube"))->computeVolume(BAS_Vec3f(0.0f), 0), -1.0);
    EXPECT_DOUBLE_EQ(makeMesh(meshShape("dart"))->computeSurfaceArea(0), 1.5);
    EXPECT_EQ(makeMesh(meshShape("empty"))->computeSurfaceArea(0), 0.0);

    BAS_Mat4d matrix;
    matrix.setScale(BAS_Vec3d(2.0, 3.0, 4.0));
    matrix[3][0] = 10.0;
    mesh->setPrimitiveTransform(new RQ_Transform(&matrix, 1));
    EXPECT_DOUBLE_EQ(mesh->computeSurfaceArea(0), 2.0 * (6.0 + 8.0 + 12.0));
    EXPECT_DOUBLE_EQ(mesh->computeVolume(BAS_Vec3f(0.0f), 0), 24.0);
    BAS_BoundingBox box;
    mesh->enlargeBounds(&box, 1);
    EXPECT_EQ(box, BAS_BoundingBox(BAS_Vec3f(9.0f, -1.5f, -2.0f), BAS_Vec3f(11.0f, 1.5f, 2.0f)));
}

TEST(Mesh, ValidateNamesWhatDoesNotFit)
{
    const MeshShape cube = cubeShape();
    const RQ_AttributeListHandle shared = oneAttribute("P", positions(cube.positions));
    std::vector<int> outside = cube.indices, negative = cube.indices;
    outside[5] = 8;
    negative[7] = -1;
    struct Case
    {
        const char *what;
        RQ_PolygonMeshHandle mesh;
        const char *message;
    };
    const Case cases[] = {
        {"sound", makeMesh(cube), ""},
        {"empty", new RQ_PrimPolygonMesh, ""},
        {"first array missing",
         new RQ_PrimPolygonMesh(integers(cube.counts), integers(cube.indices),
                                oneAttribute("Cd", {})->addAttribute("P", positions(cube.positions), false)),
         ""},
        {"point beyond the last", new RQ_PrimPolygonMesh(integers(cube.counts), integers(outside), shared),
         "corner 5 uses point 8"},
        {"negative point", new RQ_PrimPolygonMesh(integers(cube.counts), integers(negative), shared),
         "corner 7 uses point -1"},
        {"list too short", new RQ_PrimPolygonMesh(integers(cube.counts), integers({0, 1, 2}), shared), "vertex list has 3"},
        {"list missing", new RQ_PrimPolygonMesh(integers(cube.counts), nullptr, shared), "vertex list has 0"},
        {"vertex data too short",
         new RQ_PrimPolygonMesh(integers(cube.counts), integers(cube.indices), shared, oneAttribute("uv", integers({1}))),
         "vertex attribute uv has 1 entries, expected 24"},
        {"uniform data too long",
         new RQ_PrimPolygonMesh(integers(cube.counts), integers(cube.indices), shared, {},
                                oneAttribute("id", integers({1}))),
         "uniform attribute id has 1 entries, expected 6"},
    };
    for (const Case &c : cases)
    {
        SCOPED_TRACE(c.what);
        std::string why;
        EXPECT_EQ(c.mesh->validate(&why), *c.message == '\0') << why;
        EXPECT_EQ(why.substr(0, std::string(c.message).size()), c.message);
    }
}

TEST(Mesh, HasAVertexListOfTheWidthAskedFor)
{
    const int64_t far = int64_t(1) << 40;
    const RQ_DataArrayHandle narrow = integers({0, 1, 2}), wide = makeArray(std::vector<int64_t>{0, 1, 2}),
                             huge = makeArray(std::vector<int64_t>{0, 1, far});
    const auto listOf = [](const RQ_DataArrayHandle &list, RQ_IndexingMode mode) {
        return RQ_PrimPolygonMesh(integers({3}), list, {}, {}, {}, {}, mode).getVertexList();
    };
    for (const RQ_DataArrayHandle &list : {narrow, wide, huge})
        EXPECT_EQ(listOf(list, RQ_INDEXING_AUTO), list);
    EXPECT_EQ(listOf(narrow, RQ_INDEXING_64)->getStorage(), RQ_STORAGE_INT64);
    EXPECT_EQ(listOf(narrow, RQ_INDEXING_64)->getDataId(), listOf(narrow, RQ_INDEXING_64)->getDataId()) << "made again";
    EXPECT_EQ(listOf(wide, RQ_INDEXING_32)->getStorage(), RQ_STORAGE_INT32);
    EXPECT_EQ(listOf(huge, RQ_INDEXING_32), huge) << "points are not lost";
}

TEST(Mesh, EdgesLeadBackToTheFirstCorner)
{
    const RQ_PolygonMeshHandle mesh = makeMesh(cubeShape());
    int64_t from = -1, to = -1;
    mesh->getEdgePoints(1, 3, from, to);
    EXPECT_EQ(std::make_pair(from, to), std::make_pair(int64_t(6), int64_t(4)));
}

TEST(Mesh, HardCopiesOwnTheirArraysAndSoftCopiesShareThem)
{
    const RQ_PolygonMeshHandle mesh = makeMesh(cubeShape())->removeUnusedPoints();
    const auto soft = boost::dynamic_pointer_cast<RQ_PrimPolygonMesh>(mesh->RQ_Primitive::clone());
    const auto hard = boost::dynamic_pointer_cast<RQ_PrimPolygonMesh>(mesh->harden());
    EXPECT_EQ(soft->getShared(), mesh->getShared());
    EXPECT_NE(hard->getShared()->get("P", 0), mesh->getShared()->get("P", 0));
    EXPECT_EQ(hard->getShared()->get("P", 0)->getDataId(), mesh->getShared()->get("P", 0)->getDataId());
    EXPECT_DOUBLE_EQ(hard->computeVolume(BAS_Vec3f(0.0f), 0), 1.0);
    EXPECT_TRUE(hard->validate());
}

TEST(Mesh, TakesOverAttributesByOwnerAndIsSavedWithThem)
{
    const MeshShape shape = meshShape("triangle");
    const RQ_AttributeListHandle detail = oneAttribute("id", integers({7}));
    const RQ_PolygonMeshHandle mesh(new RQ_PrimPolygonMesh(integers(shape.counts), integers(shape.indices),
                                                           oneAttribute("P", positions(shape.positions)), {}, {}, detail));
    const RQ_FaceSetHandle all(new RQ_FaceSet);
    all->addFace(0);
    mesh->addFaceSet("all", all);
    const RQ_PolygonMeshHandle source = makeMesh(shape);
    const BAS_StringMMPattern anything("*"), nothing("x*");
    EXPECT_EQ(mesh->attributeMerge(*source, &nothing, nullptr, nullptr, &anything), mesh);
    const RQ_PrimitiveHandle merged = mesh->attributeMerge(*source, &nothing, nullptr, &anything, &anything);
    const auto &result = dynamic_cast<const RQ_PrimPolygonMesh &>(*merged);
    EXPECT_FALSE(result.getVertex() && result.getVertex()->get("corner"));
    EXPECT_EQ(result.getShared(), mesh->getShared());
    EXPECT_EQ(valuesOf(result.getUniform()->get("face")), std::vector<double>{0});

    // Of three points, though the first array is missing; the source has an array of one.
    const RQ_PolygonMeshHandle holey(new RQ_PrimPolygonMesh(
        *mesh, oneAttribute("Cd", {})->addAttribute("P", positions(shape.positions), false), {}, {}, {}));
    const RQ_PolygonMeshHandle other(new RQ_PrimPolygonMesh(*mesh, oneAttribute("a", integers({1})), {}, {}, {}));
    EXPECT_EQ(holey->attributeMerge(*other, nullptr, &anything, nullptr, nullptr), holey);

    const std::string text = jsonOf(result);
    for (const char *part : {"\"PolygonMesh\"", "[0,1,2]", "\"P\"", "\"face\"", "\"id\"", "\"facesets\":{\"all\":[0]}"})
        EXPECT_NE(text.find(part), std::string::npos) << part << " in " << text;
}

TEST(PointMesh, BoundsGrowByTheLargestWidth)
{
    const RQ_AttributeListHandle points = oneAttribute("P", positions({0, 0, 0, 1, 2, 3}));
    const float widths[] = {0.25f, -0.5f};
    const RQ_AttributeListHandle wide =
        points->addAttribute("width", RQ_DataArrayHandle(new RQ_DANumeric<float>(widths, 2)), true);
    BAS_BoundingBox box(BAS_Vec3f(-9.0f), BAS_Vec3f(-8.0f));
    RQ_PrimitiveHandle(new RQ_PrimPointMesh(wide))->enlargeBounds(&box, 1);
    EXPECT_EQ(box, BAS_BoundingBox(BAS_Vec3f(-9.0f), BAS_Vec3f(1.5f, 2.5f, 3.5f)));
}
