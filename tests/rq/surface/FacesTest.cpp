#include <gtest/gtest.h>

#include <cmath>

#include <host/bas/Parallel.h>
#include <rq/data/DAInherit.h>
#include <rq/prim/RefineList.h>
#include <rq/surface/PrimitiveBuilder.h>
#include <tests/rq/surface/Fixture.h>

using namespace tests;

namespace
{
/// A cube whose vertex, point, uniform and detail attributes clash in one name each.
RQ_PolygonMeshHandle rich()
{
    const MeshShape cube = cubeShape();
    std::vector<int> corners(24), points(8), faces(6);
    for (int i = 0; i < 24; ++i)
    {
        corners[size_t(i)] = 100 + i;
        points[size_t(i) % 8] = 200 + i % 8;
        faces[size_t(i) % 6] = 300 + i % 6;
    }
    const RQ_AttributeListHandle shared = oneAttribute("P", positions(cube.positions))
                                              ->addAttribute("both", integers(points), true)
                                              ->addAttribute("point", integers(points), true);
    const RQ_AttributeListHandle detail = oneAttribute("name", integers({7}))->addAttribute("whole", integers({8}), true);
    return new RQ_PrimPolygonMesh(integers(cube.counts), integers(cube.indices), shared,
                                  oneAttribute("both", integers(corners)), oneAttribute("name", integers(faces)), detail);
}

std::vector<int64_t> membersOf(const RQ_FaceSet &set) { return {set.begin(), set.end()}; }

const RQ_PrimPolygonMesh &meshOf(const RQ_PrimitiveHandle &primitive)
{
    return dynamic_cast<const RQ_PrimPolygonMesh &>(*primitive);
}
}  // namespace

TEST(Faces, HaveTheAttributesOfTheirCornersAndOfTheWhole)
{
    const RQ_PolygonMeshHandle mesh = rich();
    for (int64_t face = 0; face < 6; ++face)
    {
        SCOPED_TRACE(face);
        const RQ_PolygonHandle polygon = mesh->getFace(face);
        ASSERT_EQ(polygon->getVertexCount(), 4);
        for (int64_t i = 0; i < 4; ++i)
        {
            const int64_t point = mesh->getPoint(face, i);
            EXPECT_EQ(polygon->getVertex()->get("both")->getI64(i), 100 + 4 * face + i);
            EXPECT_EQ(polygon->getVertex()->get("point")->getI64(i), 200 + point);
            EXPECT_EQ(vectorOf(*polygon->getVertex()->get("P"), i), vectorOf(*mesh->getShared()->get("P"), point));
        }
        EXPECT_EQ(polygon->getUniform()->get("name")->getI64(0), 300 + face);
        EXPECT_EQ(polygon->getUniform()->get("whole")->getI64(0), 8);
        EXPECT_NEAR(polygon->computeSurfaceArea(0), 1.0, 1e-12);
        EXPECT_TRUE(polygon->convex(4) == polygon);
        EXPECT_EQ(meshOf(polygon->convex(3)).getFaceCount(), 2);
    }
}

TEST(Faces, ReachEverySinkOnceAndPlaced)
{
    const RQ_PolygonMeshHandle mesh = rich();
    BAS_Mat4d matrix;
    matrix.setTranslation(BAS_Vec3d(5.0, 0.0, 0.0));
    mesh->setPrimitiveTransform(new RQ_Transform(&matrix, 1));
    RQ_RefineList list;
    EXPECT_TRUE(list.refine(mesh.get(), nullptr));
    EXPECT_EQ(list.entries(), 6);
    double volume = 0.0;
    for (int i = 0; i < list.entries(); ++i)
        volume += list.getPrimitive(i)->computeVolume(BAS_Vec3f(5.0f, 0.0f, 0.0f), 0);
    EXPECT_NEAR(volume, 1.0, 1e-12);
    EXPECT_FALSE(list.refine(RQ_PolygonMeshHandle(new RQ_PrimPolygonMesh).get(), nullptr));
    EXPECT_EQ(list.entries(), 6);
}

TEST(Pieces, HoldTheirFacesPointsAndSets)
{
    for (const MeshShape &shape : meshShapes())
    {
        if (shape.counts.size() < 2)
            continue;
        SCOPED_TRACE(shape.name);
        const RQ_PolygonMeshHandle mesh = makeMesh(shape);
        const RQ_FaceSetHandle odd(new RQ_FaceSet);
        for (int64_t face = 1; face < mesh->getFaceCount(); face += 2)
            odd->addFace(face);
        mesh->addFaceSet("odd", odd);

        // Cut by size and by material (last bit of the face number, and a negative one): each face must come once, whole.
        std::vector<int> materials;
        for (int64_t face = 0; face < mesh->getFaceCount(); ++face)
            materials.push_back(face % 5 == 4 ? -3 : int(face % 2));
        for (const bool byMaterial : {false, true})
        {
            BAS_Array<RQ_PrimitiveHandle> pieces;
            BAS_Array<int64_t> ids;
            ASSERT_TRUE(byMaterial ? mesh->partitionByMaterial(integers(materials), pieces, &ids)
                                   : mesh->splitMesh((mesh->getFaceCount() + 2) / 3, pieces));
            int64_t faces = 0;
            for (size_t p = 0; p < pieces.size(); ++p)
            {
                const RQ_PrimPolygonMesh &piece = meshOf(pieces[p]);
                std::string why;
                EXPECT_TRUE(piece.validate(&why)) << why;
                EXPECT_EQ(piece.getUsedPointList()->entries(), piece.getPointCount());
                for (int64_t face = 0; face < piece.getFaceCount(); ++face, ++faces)
                {
                    const int64_t source = piece.getUniform()->get("face")->getI64(face);
                    if (byMaterial)
                        EXPECT_EQ(ids[p], std::max(materials[size_t(source)], -1));
                    else
                        EXPECT_EQ(source, faces);
                    EXPECT_EQ(piece.faceSetMap()->find("odd")->contains(face), source % 2 == 1);
                    ASSERT_EQ(piece.getFaceCountArray().getCount(face), mesh->getFaceCountArray().getCount(source));
                    for (int64_t i = 0; i < piece.getFaceCountArray().getCount(face); ++i)
                    {
                        EXPECT_EQ(piece.getVertex()->get("corner")->getI64(piece.getVertex(face, i)),
                                  mesh->getVertex(source, i));
                        const BAS_Vec3d here = vectorOf(*piece.getShared()->get("P"), piece.getPoint(face, i));
                        const BAS_Vec3d there = vectorOf(*mesh->getShared()->get("P"), mesh->getPoint(source, i));
                        EXPECT_TRUE(here == there || there != there);
                    }
                }
            }
            EXPECT_EQ(faces, mesh->getFaceCount());
        }
    }
}

TEST(Pieces, AreViewsUnlessTheyAreToOwnTheirData)
{
    const RQ_PolygonMeshHandle mesh = makeMesh(stripShape(10));
    for (const bool harden : {false, true})
    {
        BAS_Array<RQ_PrimitiveHandle> split, materials;
        ASSERT_TRUE(mesh->splitMesh(4, split, harden));
        ASSERT_TRUE(mesh->partitionByMaterial(integers({0, 1, 0, 1, 0, 1, 0, 1, 0, 1}), materials, nullptr, harden));
        for (const RQ_PrimitiveHandle &piece : {split[1], materials[1]})
            for (const RQ_DataArrayHandle &array :
                 {meshOf(piece).getVertex()->get("corner"), meshOf(piece).getUniform()->get("face"),
                  meshOf(piece).getShared()->get("P")})
                EXPECT_EQ(dynamic_cast<const RQ_DAInherit *>(array.get()) == nullptr, harden);
        ASSERT_TRUE(split[1] && meshOf(split[1]).partitionByMaterial(integers({7, 7, 7, 7}), materials, nullptr, harden));
        EXPECT_EQ(materials[0] == split[1], !harden) << "a single material";
    }
}

TEST(Pieces, AreOfEvenSize)
{
    const RQ_PolygonMeshHandle mesh = makeMesh(stripShape(10));
    BAS_Array<RQ_PrimitiveHandle> pieces;
    EXPECT_FALSE(mesh->splitMesh(10, pieces));
    EXPECT_FALSE(mesh->splitMesh(0, pieces));
    EXPECT_TRUE(pieces.empty());
    ASSERT_TRUE(mesh->splitMesh(4, pieces));
    std::vector<int64_t> sizes;
    for (const RQ_PrimitiveHandle &piece : pieces)
        sizes.push_back(meshOf(piece).getFaceCount());
    EXPECT_EQ(sizes, (std::vector<int64_t>{4, 4, 2}));
}

TEST(Convexing, TellsInputEdgesFollowsSetsAndSparesOtherFaces)
{
    const RQ_PolygonMeshHandle mesh = makeMesh(cubeShape());
    const RQ_FaceSetHandle top(new RQ_FaceSet);
    top->addFace(2);
    mesh->addFaceSet("top", top);

    const RQ_PolygonMeshHandle triangles = mesh->convex(3, false, true);
    std::vector<double> edges = valuesOf(triangles->getVertex()->get("__edge"));
    EXPECT_EQ(std::count(edges.begin(), edges.end(), 1.0), 24);
    for (int64_t corner = 0; corner < 6; ++corner)
        EXPECT_EQ(edges[size_t(corner)], corner % 3 == 2 ? 0.0 : 1.0) << corner;
    EXPECT_EQ(membersOf(*triangles->faceSetMap()->find("top")), (std::vector<int64_t>{4, 5}));
    EXPECT_FALSE(mesh->convex(3, false, false, false)->faceSetMap());

    const RQ_PolygonMeshHandle some = mesh->convex(3, false, false, true, top.get());
    EXPECT_EQ(valuesOf(some->getFaceCounts()), (std::vector<double>{4, 4, 3, 3, 4, 4, 4}));
    EXPECT_FALSE(some->isConvexed());
    EXPECT_TRUE(triangles->isConvexed());
}

TEST(FaceSets, AreSortedOnceAndKnowTheirWidth)
{
    const RQ_FaceSetHandle set(new RQ_FaceSet);
    const int32_t some[] = {9, 3, 3, -1, 5};
    set->addFaces(some, 5);
    set->addFace(4);
    set->removeFace(5);
    set->removeFace(77);
    EXPECT_EQ(membersOf(*set), (std::vector<int64_t>{3, 4, 9}));
    EXPECT_EQ(set->extractMembers()->getStorage(), RQ_STORAGE_INT32);
    EXPECT_TRUE(set->anyIntersect({1, 4}));
    EXPECT_FALSE(set->anyIntersect({1, 5}));

    const RQ_FaceSetHandle deleted(new RQ_FaceSet);
    deleted->addFace(4);
    const RQ_DataArrayHandle remap = integers({0, 1, 2, 6, 3, 4, -1, -1, -1, 5});
    EXPECT_EQ(membersOf(*set->deleteFaces(*deleted, remap)), (std::vector<int64_t>{5, 6}));

    // Looked up one by one: few faces, far apart, of a set of many.
    const RQ_FaceSetMapHandle many(new RQ_FaceSetMap);
    std::vector<int64_t> odd;
    for (int64_t face = 1; face < 2000; face += 2)
        odd.push_back(face);
    many->add("odd", new RQ_FaceSet)->addFaces(odd.data(), int64_t(odd.size()));
    EXPECT_EQ(membersOf(*many->followFaces(integers({1999, 4, 5, -1, 2000}))->find("odd")), (std::vector<int64_t>{0, 2}));

    const RQ_FaceSetMapHandle far(new RQ_FaceSetMap);
    far->add("beyond every mesh", new RQ_FaceSet)->addFace(int64_t(1) << 50);
    far->find("beyond every mesh")->addFace(2);
    EXPECT_EQ(membersOf(*far->followFaces(integers({4, 2, -1}))->find("beyond every mesh")), (std::vector<int64_t>{1}));

    const int64_t large = 0x40000001;
    set->addFaces(&large, 1);
    EXPECT_EQ(set->extractMembers()->getStorage(), RQ_STORAGE_INT64);

    const RQ_FaceSetMapHandle map(new RQ_FaceSetMap);
    EXPECT_EQ(map->add("a", set), set);
    EXPECT_EQ(map->add("a", deleted), set);
    EXPECT_EQ(map->add("a", deleted, true), deleted);
}

TEST(FaceSets, MayBeReadFromManyThreadsAtOnce)
{
    std::vector<int32_t> faces(10000);
    for (size_t i = 0; i < faces.size(); ++i)
        faces[i] = int32_t((i * 7919) % 5000);
    const RQ_FaceSetHandle set(new RQ_FaceSet);
    set->addFaces(faces.data(), int64_t(faces.size()));
    std::atomic<int64_t> found{0};
    host::parallelFor(64, 1, [&](int64_t i) { found += set->contains(i) && set->entries() == 5000; });
    EXPECT_EQ(found, 64);
}

TEST(Builder, RefusesWhatDoesNotHoldTogether)
{
    const MeshShape cube = cubeShape();
    const RQ_AttributeListHandle shared = oneAttribute("P", positions(cube.positions));
    RQ_BuilderStatus status;
    RQ_PrimitiveBuilder builder(status);
    EXPECT_TRUE(builder.polygonMesh(integers(cube.counts), integers(cube.indices), shared));
    EXPECT_TRUE(builder.polygon(shared));
    EXPECT_FALSE(status.hasErrors() || status.hasWarnings());
    EXPECT_FALSE(builder.polygonMesh({}, {}, shared));
    EXPECT_FALSE(builder.polygon(oneAttribute("P", positions({0, 0, 0, 1, 1, 1}))));
    EXPECT_EQ(status.warnings(), (BAS_Array<std::string>{"Polygon mesh with 0 polygons", "Polygon with 2 points"}));
    EXPECT_FALSE(builder.polygonMesh(integers({3, -1}), integers({0, 1}), shared));
    EXPECT_FALSE(builder.polygonMesh(integers({3}), integers({0, 1, 8}), shared));
    EXPECT_FALSE(builder.polygonMesh(integers({3}), positions({0, 1, 2}), shared));
    EXPECT_FALSE(builder.polygon(shared->addAttribute("Cd", integers({1, 2}), false)));
    EXPECT_FALSE(builder.polygonMesh(makeArray(std::vector<int64_t>{int64_t(1) << 62}), integers({}), shared));
    EXPECT_EQ(status.errors().size(), 5u);
}

TEST(Polygon, GeometryOfDegenerateFaces)
{
    BAS_Vec3d normal, axisX, axisY;
    const RQ_DataArrayHandle pair = positions({0, 0, 0, 1, 0, 0});
    for (const RQ_DataArrayHandle &list : {RQ_DataArrayHandle(), integers({0, 1, 0})})
    {
        RQ_PrimPolygon::computeFastNormal(normal, pair, list);
        EXPECT_EQ(normal, BAS_Vec3d(0.0, 0.0, 1.0));
    }
    const RQ_DataArrayHandle line = positions({0, 0, 0, 1, 1, 1, 2, 2, 2});
    RQ_PrimPolygon::computeFastNormal(normal, line);
    EXPECT_EQ(normal, BAS_Vec3d(0.0));
    RQ_PrimPolygon::computeFrameOfReference(axisX, axisY, line);
    EXPECT_EQ(axisX, BAS_Vec3d(1.0, 0.0, 0.0));
    EXPECT_EQ(axisY, BAS_Vec3d(0.0, 0.0, 1.0));

    // A list has corners of its own.
    const RQ_DataArrayHandle corners = positions({0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 7, 7, 7});
    RQ_PrimPolygon::computeNormal(normal, corners, integers({9, 2, 1, 0}), -1, 1);
    EXPECT_EQ(normal, BAS_Vec3d(0.0, 0.0, -1.0));
    EXPECT_EQ(RQ_PrimPolygon::faceSurfaceArea(corners, integers({2, 1, 0}), 100, 0), 0.5);
    EXPECT_EQ(RQ_PrimPolygon::faceSurfaceArea(corners, integers({2, 1, 0}), 3, -1), 0.0);

    // A face inside a mesh, placed by a matrix.
    const RQ_DataArrayHandle square = positions({9, 9, 9, 0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0});
    BAS_Mat4d matrix;
    matrix.setScale(BAS_Vec3d(2.0, 3.0, 1.0));
    EXPECT_DOUBLE_EQ(RQ_PrimPolygon::faceSurfaceArea(square, integers({7, 1, 2, 3, 4}), 4, 1, &matrix), 6.0);
    EXPECT_DOUBLE_EQ(RQ_PrimPolygon::facePerimeter(square, integers({7, 1, 2, 3, 4}), 4, 1, &matrix), 10.0);
    EXPECT_DOUBLE_EQ(std::abs(RQ_PrimPolygon::faceVolume(BAS_Vec3f(0, 0, 3), square, integers({1, 2, 3, 4}), 4, 0)), 1.0);
}
