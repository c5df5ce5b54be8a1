#include <host/elm/PrimitiveFactory.h>
#include <rq/prim/PrimCollect.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
TEST(Detail, HasTheSameIdsWheneverItIsRefined)
{
    const MOD_DetailHandle detail = makeGeometry(cubeShape());
    const MOD_ConstDetailHandle first = detail.read();
    const auto idsOf = [](const MOD_ConstDetailHandle &handle) {
        const std::vector<RQ_PrimitiveHandle> primitives = refine(handle);
        const auto *mesh = as<RQ_PrimPolygonMesh>(primitives.at(0));
        return std::pair(mesh->getVertexList()->getDataId(), mesh->getShared()->get("P")->getDataId());
    };
    const auto ids = idsOf(first);
    EXPECT_NE(ids.first, -1);
    EXPECT_NE(ids.second, -1);
    EXPECT_EQ(idsOf(first), ids);

    MOD_Edit edit(detail);
    edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->modifyAll<float>()[0] = 9.0f;
    const auto moved = idsOf(edit.commit());
    EXPECT_EQ(moved.first, ids.first) << "the topology did not change";
    EXPECT_NE(moved.second, ids.second);
}

struct PointCase
{
    const char *what;
    bool unusedPoints, allPoints, pointMesh, fast;
    int64_t limit;
    std::vector<int64_t> pointMeshes, polygonMeshes;  // points of each
};

TEST(Detail, TurnsLoosePointsIntoPointMeshes)
{
    const MOD_ConstDetailHandle handle = makeDetail(meshShape("unused points"));  // 7 points, 3 of them unused
    for (const PointCase &c : {PointCase{"no more than four points in a mesh", true, false, false, true, 4, {3}, {7}},
                               PointCase{"no more than two", true, false, false, true, 2, {2, 1}, {7}},
                               PointCase{"unused points are searched", true, false, false, false, 4, {3}, {4}},
                               PointCase{"no unused points", false, false, false, true, 4, {}, {7}},
                               PointCase{"all points", true, true, false, true, 7, {7}, {7}},
                               PointCase{"points only", true, false, true, true, 7, {7}, {}}})
    {
        SCOPED_TRACE(c.what);
        RQ_RefineParms parms;
        parms.setShowUnusedPoints(c.unusedPoints);
        parms.setShowAllPoints(c.allPoints);
        parms.setGeoPointMesh(c.pointMesh);
        parms.setFastPolyCompacting(c.fast);
        parms.setMaxPointMeshSize(c.limit);
        std::vector<int64_t> points, polygons;
        for (const RQ_PrimitiveHandle &primitive : refine(handle, &parms))
            if (const auto *mesh = as<RQ_PrimPointMesh>(primitive))
                points.push_back(mesh->getPointCount());
            else if (const auto *faces = as<RQ_PrimPolygonMesh>(primitive))
                polygons.push_back(faces->getPointCount());
        EXPECT_EQ(points, c.pointMeshes);
        EXPECT_EQ(polygons, c.polygonMeshes);
    }
    EXPECT_TRUE(refine(MOD_DetailHandle().read()).empty());
    EXPECT_TRUE(refine(MOD_ConstDetailHandle()).empty());
}

TEST(Detail, GathersPointsByTheirInstanceFile)
{
    const MOD_DetailHandle detail;
    MOD_Edit edit(detail);
    append(edit, meshShape("unused points"));
    ELM_StringTuple *files = edit.stringAttribute(ELM_OWNER_POINT, ELM_INSTANCE_FILE_NAME)->strings();
    files->set(6, "tree.obj");
    files->set(3, "rock.obj");
    files->set(1, "used.obj");
    const MOD_ConstDetailHandle handle = edit.commit();
    RQ_RefineParms parms;
    parms.setPointInstanceEnable(true);
    std::vector<std::pair<std::string, int64_t>> meshes;
    for (const RQ_PrimitiveHandle &primitive : refine(handle, &parms))
        if (const auto *points = as<RQ_PrimPointMesh>(primitive))
        {
            const RQ_AttributeListHandle &list = points->getDetailAttributes();
            meshes.emplace_back(list ? list->get(ELM_INSTANCE_FILE_NAME)->getS(0).view() : "", points->getPointCount());
        }
    const std::vector<std::pair<std::string, int64_t>> expected = {{"", 1}, {"rock.obj", 1}, {"tree.obj", 1}};
    EXPECT_EQ(meshes, expected);
}

TEST(Detail, FollowsMotionWhileTheTopologyStays)
{
    const MOD_DetailHandle detail = makeGeometry(cubeShape());
    const MOD_ConstDetailHandle first = detail.read();
    MOD_Edit edit(detail);
    edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->modifyAll<float>()[0] = 50.0f;
    const MOD_ConstDetailHandle second = edit.commit();
    RQ_RefineList list;
    const RQ_PrimitiveHandle moving(new RQ_MSHDetail(std::vector<MOD_ConstDetailHandle>{first, second}));
    EXPECT_EQ(moving->getMotionSegments(), 2);
    EXPECT_TRUE(list.refine(moving.get(), nullptr));
    ASSERT_EQ(list.entries(), 1);
    const RQ_AttributeListHandle &points = list.getPrimitive(0)->getPointAttributes();
    EXPECT_EQ(points->getSegments(), 2);
    EXPECT_EQ(points->get("P", 0)->getF32(0, 0), -0.5f);
    EXPECT_EQ(points->get("P", 1)->getF32(0, 0), 50.0f);
    BAS_BoundingBox boxes[2];
    moving->enlargeBounds(boxes, 2);
    EXPECT_EQ(boxes[0].maximum().x, 0.5f);
    EXPECT_EQ(boxes[1].maximum().x, 50.0f);
}

TEST(Detail, PlacesEverythingByItsTransform)
{
    BAS_Mat4d up;
    up.setTranslation(BAS_Vec3d(0, 0, 10));
    const RQ_PrimitiveHandle placed = RQ_MSHDetail::makeDetail(makeDetail(meshShape("unused points")));
    placed->setPrimitiveTransform(new RQ_Transform(&up, 1));
    RQ_RefineList list;
    EXPECT_TRUE(list.refine(placed.get(), nullptr));
    ASSERT_EQ(list.entries(), 2);
    for (int i = 0; i < 2; ++i)
    {
        BAS_BoundingBox box;
        list.getPrimitive(i)->enlargeBounds(&box, 1);
        EXPECT_GE(box.minimum().z, 10.0f) << list.getPrimitive(i)->className();
    }
}

struct RangeCase
{
    int64_t begin, end, faces, points;  // of a cube whose last point was removed
};

TEST(Detail, CutsOffWhatARangeHasMoreThanTheDetail)
{
    const MOD_DetailHandle geometry = makeGeometry(cubeShape());
    MOD_Edit edit(geometry);
    ASSERT_TRUE(edit.appendPoints(2) && edit.remove(ELM_Range(ELM_OWNER_POINT, 8, 9)));
    const MOD_ConstDetailHandle cube = edit.commit();
    for (const RangeCase &c : {RangeCase{0, 1000000, 6, 9}, RangeCase{-70, 2, 2, 2}, RangeCase{5, 5000, 1, 4},
                               RangeCase{3, 3, 0, 0}, RangeCase{5000, 9000000, 0, 0}})
    {
        SCOPED_TRACE(testing::Message() << c.begin << " to " << c.end);
        const auto range = std::make_shared<ELM_Range>(ELM_OWNER_PRIMITIVE, c.begin, c.end);
        const RQ_PrimitiveHandle mesh = RQ_MSHDetail::makePolygonMesh(cube, range);
        EXPECT_EQ(mesh ? as<RQ_PrimPolygonMesh>(mesh)->getFaceCount() : 0, c.faces);
        EXPECT_EQ(refine(cube, nullptr, range).size(), c.faces > 0 ? 1u : 0u);
        BAS_BoundingBox box;
        RQ_MSHDetail::makeDetail(cube, range)->enlargeBounds(&box, 1);
        EXPECT_EQ(box.isEmpty(), c.faces == 0);
        const RQ_PrimitiveHandle points =
            RQ_MSHDetail::makePointMesh(cube, std::make_shared<ELM_Range>(ELM_OWNER_POINT, c.begin, c.end));
        EXPECT_EQ(points ? as<RQ_PrimPointMesh>(points)->getPointCount() : 0, c.points);
    }
    EXPECT_EQ(RQ_MSHOffsetList(ELM_OffsetList(0, 3)).createVertexPointArray(MOD_ConstDetailHandle())->entries(), 0);
}

TEST(Collectors, OfCallersWinAndSurviveNewTypes)
{
    MOD_Edit edit{MOD_DetailHandle()};
    append(edit, cubeShape());
    edit.attribute(ELM_OWNER_PRIMITIVE, "number", ELM_STORAGE_INT32);
    const auto builtIn = RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_POLYGON);
    ASSERT_NE(builtIn, nullptr);
    const auto recorder = std::make_shared<Recorder>(false);
    RQ_MSHPrimCollect::bind(recorder, ELM_PRIMITIVE_POLYGON);
    const ELM_PrimitiveTypeId added = ELM_PrimitiveFactory::add("collectors_test_type", "Test", false);
    EXPECT_NE(added, ELM_PRIMITIVE_NONE);
    EXPECT_EQ(RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_POLYGON), recorder) << "after a rebuild";
    const RQ_PrimitiveHandle last = refine(edit.commit()).back();
    ASSERT_NE(as<RQ_PrimPointMesh>(last), nullptr);
    EXPECT_EQ(last->getPointAttributes()->get("number")->entries(), 6) << "one collect for each face";

    // A bare collector may be bound to several types, and again.
    const RQ_MSHPrimCollect *bare = new Recorder(true);
    bare->bind(ELM_PRIMITIVE_POLYGON);
    bare->bind(added);
    bare->bind(ELM_PRIMITIVE_POLYGON);
    EXPECT_EQ(RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_POLYGON).get(), bare);
    EXPECT_EQ(RQ_MSHPrimCollect::getCollector(added).get(), bare);

    for (const ELM_PrimitiveTypeId type : {ELM_PrimitiveTypeId(ELM_PRIMITIVE_POLYGON), added})
        RQ_MSHPrimCollect::bind(nullptr, type);
    EXPECT_EQ(RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_POLYGON), builtIn);
    EXPECT_EQ(RQ_MSHPrimCollect::getCollector(added), nullptr);
}
}  // namespace
