#include <host/elm/PrimitiveFactory.h>
#include <rq/bridge/MSHPrimCollectPoly.h>
#include <rq/bridge/MSHPrimitive.h>
#include <rq/prim/PrimCollect.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
/// A cube, and a square beside it: two primitives groups' worth of faces, all points used.
MOD_DetailHandle makeCubeAndSquare()
{
    const MOD_DetailHandle detail;
    MOD_Edit edit(detail);
    append(edit, cubeShape());
    append(edit, faceShape("square", {{5, 0}, {6, 0}, {6, 1}, {5, 1}}));
    edit.commit();
    return detail;
}

const RQ_PrimPolygonMesh *onlyMesh(const std::vector<RQ_PrimitiveHandle> &primitives)
{
    EXPECT_EQ(primitives.size(), 1u);
    return primitives.size() == 1 ? as<RQ_PrimPolygonMesh>(primitives[0]) : nullptr;
}

TEST(Detail, KeepsEveryFaceOfEveryShape)
{
    for (const MeshShape &shape : meshShapes())
    {
        SCOPED_TRACE(shape.name);
        const std::vector<RQ_PrimitiveHandle> primitives = refine(makeDetail(shape));
        if (shape.counts.empty())
        {
            EXPECT_EQ(primitives.size(), shape.pointCount() > 0 ? 1u : 0u);
            continue;
        }
        ASSERT_FALSE(primitives.empty());
        const auto *mesh = as<RQ_PrimPolygonMesh>(primitives.back());
        ASSERT_NE(mesh, nullptr);
        std::string why;
        EXPECT_TRUE(mesh->validate(&why)) << why;
        ASSERT_EQ(mesh->getFaceCount(), int64_t(shape.counts.size()));
        ASSERT_EQ(mesh->getVertexCount(), int64_t(shape.indices.size()));
        const RQ_DataArrayHandle &p = mesh->getShared()->get("P");
        for (int64_t v = 0; v < mesh->getVertexCount(); ++v)
            for (int c = 0; c < 3; ++c)
            {
                const float expected = shape.positions[size_t(3 * shape.indices[size_t(v)] + c)];
                const float value = p->getF32(mesh->getVertexList()->getI64(v), c);
                ASSERT_TRUE(value == expected || (std::isnan(value) && std::isnan(expected))) << "vertex " << v;
            }
    }
}

TEST(Detail, ReadsTheHostInPlace)
{
    const MOD_ConstDetailHandle handle = makeCubeAndSquare().read();
    const MSH_Detail &detail = *handle.readLock();
    const std::vector<RQ_PrimitiveHandle> primitives = refine(handle);
    const RQ_PrimPolygonMesh *mesh = onlyMesh(primitives);
    ASSERT_NE(mesh, nullptr);
    RQ_DataArrayHandle buffer;
    EXPECT_EQ(mesh->getVertexList()->getArray<int32_t>(buffer), detail.vertexPoint().contiguous32());
    EXPECT_EQ(mesh->getShared()->get("P")->getArray<float>(buffer), detail.positions().contiguousData<float>());
    EXPECT_EQ(mesh->getMinVertexCount(), 4);
    EXPECT_EQ(mesh->getMaxVertexCount(), 4);
}

TEST(Detail, HasTheSameIdsWheneverItIsRefined)
{
    const MOD_DetailHandle detail = makeCubeAndSquare();
    const MOD_ConstDetailHandle first = detail.read();
    const auto idsOf = [](const MOD_ConstDetailHandle &handle) {
        const std::vector<RQ_PrimitiveHandle> primitives = refine(handle);
        const RQ_PrimPolygonMesh *mesh = onlyMesh(primitives);
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
    bool unusedPoints, allPoints, pointMesh;
    std::vector<int64_t> pointMeshes;  // points of each
    bool polygons;
};

TEST(Detail, TurnsLoosePointsIntoPointMeshes)
{
    const MOD_ConstDetailHandle handle = makeDetail(meshShape("unused points"));  // 7 points, 3 of them unused
    for (const PointCase &c :
         {PointCase{"as always", true, false, false, {3}, true},
          PointCase{"no unused points", false, false, false, {}, true},
          PointCase{"all points", true, true, false, {7}, true}, PointCase{"points only", true, false, true, {7}, false}})
    {
        SCOPED_TRACE(c.what);
        RQ_RefineParms parms;
        parms.setShowUnusedPoints(c.unusedPoints);
        parms.setShowAllPoints(c.allPoints);
        parms.setGeoPointMesh(c.pointMesh);
        std::vector<int64_t> points;
        int meshes = 0;
        for (const RQ_PrimitiveHandle &primitive : refine(handle, &parms))
            if (const auto *mesh = as<RQ_PrimPointMesh>(primitive))
                points.push_back(mesh->getPointCount());
            else if (as<RQ_PrimPolygonMesh>(primitive))
                ++meshes;
        EXPECT_EQ(points, c.pointMeshes);
        EXPECT_EQ(meshes, int(c.polygons));
    }
}

TEST(Detail, LeavesUnusedPointsInTheMeshUnlessTheyAreSearched)
{
    const MOD_ConstDetailHandle handle = makeDetail(meshShape("unused points"));
    for (const bool fast : {true, false})
    {
        RQ_RefineParms parms;
        parms.setFastPolyCompacting(fast);
        const std::vector<RQ_PrimitiveHandle> primitives = refine(handle, &parms);
        const auto *mesh = as<RQ_PrimPolygonMesh>(primitives.back());
        ASSERT_NE(mesh, nullptr);
        EXPECT_EQ(mesh->getPointCount(), fast ? 7 : 4);
        EXPECT_TRUE(mesh->validate());
    }
}

TEST(Detail, WithoutPrimitivesIsOnePointMesh)
{
    const std::vector<RQ_PrimitiveHandle> primitives = refine(makeDetail(meshShape("points only")));
    ASSERT_EQ(primitives.size(), 1u);
    const auto *points = as<RQ_PrimPointMesh>(primitives[0]);
    ASSERT_NE(points, nullptr);
    EXPECT_EQ(points->getPointCount(), 3);
    EXPECT_EQ(points->getPoints()->get("P")->getF32(1, 0), 1.0f);

    EXPECT_TRUE(refine(MOD_DetailHandle().read()).empty());
    EXPECT_TRUE(refine(MOD_ConstDetailHandle()).empty());
}

TEST(Detail, CutsLargePointMeshes)
{
    const MOD_ConstDetailHandle handle = makeDetail(meshShape("points only"));
    RQ_RefineParms parms;
    parms.setMaxPointMeshSize(2);
    const std::vector<RQ_PrimitiveHandle> primitives = refine(handle, &parms);
    ASSERT_EQ(primitives.size(), 2u);
    EXPECT_EQ(as<RQ_PrimPointMesh>(primitives[0])->getPointCount(), 2);
    EXPECT_EQ(as<RQ_PrimPointMesh>(primitives[1])->getPointCount(), 1);
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

TEST(Detail, WrapsWhatHasNoCollector)
{
    const MOD_DetailHandle detail;
    MOD_Edit edit(detail);
    append(edit, cubeShape());
    const int32_t line[] = {0, 1, 2}, cloud[] = {3, 4}, three[] = {3};
    ASSERT_TRUE(edit.appendPolygons(three, line, false));
    ASSERT_TRUE(edit.appendParticles(cloud));
    const std::vector<RQ_PrimitiveHandle> primitives = refine(edit.commit());
    ASSERT_EQ(primitives.size(), 2u);
    const auto *particles = as<RQ_MSHPrimitive>(primitives[0]);
    ASSERT_NE(particles, nullptr);
    EXPECT_EQ(particles->getHostType(), ELM_PRIMITIVE_PARTICLES);
    EXPECT_EQ(particles->getVertexCount(), 2);

    const auto *both = as<RQ_PrimCollect>(primitives[1]);
    ASSERT_NE(both, nullptr) << "the closed mesh and the open polygon";
    ASSERT_EQ(both->entries(), 2);
    EXPECT_NE(as<RQ_PrimPolygonMesh>(both->getPrim(0)), nullptr);
    const RQ_PrimitiveHandle open = both->getPrim(1);
    ASSERT_NE(as<RQ_MSHPrimitive>(open), nullptr);
    EXPECT_FALSE(as<RQ_MSHPrimitive>(open)->isClosed());
    BAS_BoundingBox box;
    open->enlargeBounds(&box, 1);
    EXPECT_EQ(box.minimum(), BAS_Vec3f(-0.5f, -0.5f, -0.5f));
    EXPECT_EQ(box.maximum(), BAS_Vec3f(0.5f, 0.5f, -0.5f));
}

TEST(Detail, FollowsMotionWhileTheTopologyStays)
{
    const MOD_DetailHandle detail = makeCubeAndSquare();
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
    EXPECT_EQ(boxes[0].maximum().x, 6.0f);
    EXPECT_EQ(boxes[1].maximum().x, 50.0f);
}

TEST(Detail, PlacesEverythingByItsTransform)
{
    BAS_Mat4d up;
    up.setTranslation(BAS_Vec3d(0, 0, 10));
    const RQ_PrimitiveHandle placed = RQ_MSHDetail::makeDetail(makeDetail(meshShape("unused points")));
    placed->setPrimitiveTransform(RQ_TransformHandle(new RQ_Transform(&up, 1)));
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

/// Counts what it is given, and emits one thing at the end.
class Counter final : public RQ_MSHPrimCollect
{
public:
    struct Data final : RQ_MSHPrimCollectOffsets
    {};

    RQ_MSHPrimCollectData *beginCollecting(const RQ_MSHDetailListHandle &, const RQ_RefineParms *) const override
    {
        return new Data;
    }
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *primitives, int,
                               RQ_MSHPrimCollectData *data) const override
    {
        static_cast<Data *>(data)->append(*primitives[0]);
        return nullptr;
    }
    RQ_PrimitiveHandle endCollecting(const RQ_MSHDetailListHandle &details, RQ_MSHPrimCollectData *data) const override
    {
        return new RQ_PrimPointMesh(details->getPrimitiveAttributes(nullptr, static_cast<Data *>(data)->getPrimitives()),
                                    details->getPointAttributes(nullptr, static_cast<Data *>(data)->getPrimitives()));
    }
};

TEST(Collectors, OfCallersWinAndSurviveNewTypes)
{
    const MOD_ConstDetailHandle handle = makeDetail(cubeShape());
    const auto builtIn = RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_POLYGON);
    ASSERT_NE(builtIn, nullptr);
    const auto counter = std::make_shared<Counter>();
    RQ_MSHPrimCollect::bind(counter, ELM_PRIMITIVE_POLYGON);
    EXPECT_EQ(RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_POLYGON), counter);
    EXPECT_NE(ELM_PrimitiveFactory::add("collectors_test_type", "Test", false), ELM_PRIMITIVE_NONE);
    EXPECT_EQ(RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_POLYGON), counter) << "after a rebuild";
    const std::vector<RQ_PrimitiveHandle> primitives = refine(handle);
    ASSERT_EQ(primitives.size(), 1u);
    ASSERT_NE(as<RQ_PrimPointMesh>(primitives[0]), nullptr);
    EXPECT_EQ(primitives[0]->getDetailAttributes()->get("P")->entries(), 6) << "one collect for each face";

    // A bare collector may be bound to several types, and again.
    const RQ_MSHPrimCollect *bare = new Counter;
    bare->bind(ELM_PRIMITIVE_POLYGON);
    bare->bind(ELM_PRIMITIVE_PARTICLES);
    bare->bind(ELM_PRIMITIVE_POLYGON);
    EXPECT_EQ(RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_POLYGON).get(), bare);
    EXPECT_EQ(RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_PARTICLES).get(), bare);

    for (const ELM_PrimitiveTypeId type : {ELM_PRIMITIVE_POLYGON, ELM_PRIMITIVE_PARTICLES})
        RQ_MSHPrimCollect::bind(nullptr, type);
    EXPECT_EQ(RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_POLYGON), builtIn);
    EXPECT_EQ(RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_PARTICLES), nullptr);
}
}  // namespace
