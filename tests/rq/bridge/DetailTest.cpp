#include <host/elm/PrimitiveFactory.h>
#include <rq/bridge/MSHPrimCollectPoly.h>
#include <rq/bridge/MSHPrimitive.h>
#include <rq/prim/PrimCollect.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
MOD_DetailHandle detailOf(const std::vector<MeshShape> &shapes)
{
    const MOD_DetailHandle detail;
    MOD_Edit edit(detail);
    for (const MeshShape &shape : shapes)
        append(edit, shape);
    edit.commit();
    return detail;
}

/// A cube, and a square beside it: two primitives groups' worth of faces, all points used.
MOD_DetailHandle makeCubeAndSquare()
{
    return detailOf({cubeShape(), faceShape("square", {{5, 0}, {6, 0}, {6, 1}, {5, 1}})});
}

MOD_ConstDetailHandle withGroup(const MOD_DetailHandle &detail, const char *name, const std::vector<ELM_Offset> &members)
{
    MOD_Edit edit(detail);
    ELM_Group *group = edit.group(ELM_OWNER_PRIMITIVE, name);
    for (const ELM_Offset member : members)
        group->set(member);
    return edit.commit();
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

TEST(Detail, GivesTheSameInOneBatchAndOneByOne)
{
    for (const MeshShape &shape : meshShapes())
    {
        SCOPED_TRACE(shape.name);
        const MOD_DetailHandle detail = detailOf({cubeShape(), shape});
        const std::string batch = textOf(refine(detail.read()));
        // A group of hidden primitives, be it empty, makes the walk look at every primitive.
        EXPECT_EQ(textOf(refine(withGroup(detail, ELM_HIDDEN_GROUP_NAME, {}))), batch);
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
    EXPECT_EQ(idsOf(first), ids);

    MOD_Edit edit(detail);
    edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->modifyAll<float>()[0] = 9.0f;
    const auto moved = idsOf(edit.commit());
    EXPECT_EQ(moved.first, ids.first) << "the topology did not change";
    EXPECT_NE(moved.second, ids.second);
}

TEST(Detail, SkipsHiddenPrimitives)
{
    const MOD_ConstDetailHandle handle = withGroup(makeCubeAndSquare(), ELM_HIDDEN_GROUP_NAME, {0, 1, 2, 3, 4, 5});
    const std::vector<RQ_PrimitiveHandle> primitives = refine(handle);
    ASSERT_NE(onlyMesh(primitives), nullptr);
    EXPECT_EQ(onlyMesh(primitives)->getFaceCount(), 1);
    EXPECT_EQ(onlyMesh(primitives)->getPointCount(), 4) << "the points of what is hidden are not the mesh's";
}

TEST(Detail, RefinesOneGroupWhenAsked)
{
    const MOD_ConstDetailHandle handle = withGroup(makeCubeAndSquare(), "some", {1, 6});
    RQ_RefineParms parms;
    parms.setGeoRefineGroup("some");
    const std::vector<RQ_PrimitiveHandle> some = refine(handle, &parms);
    ASSERT_NE(onlyMesh(some), nullptr);
    EXPECT_EQ(onlyMesh(some)->getFaceCount(), 2);
    EXPECT_EQ(onlyMesh(some)->getPointCount(), 8);
    parms.setGeoRefineGroup("no such group");
    EXPECT_EQ(textOf(refine(handle, &parms)), textOf(refine(handle)));
}

TEST(Detail, TurnsLoosePointsIntoPointMeshes)
{
    const MOD_ConstDetailHandle handle = makeDetail(meshShape("unused points"));  // 7 points, 3 of them unused
    const struct
    {
        const char *what;
        bool unusedPoints, allPoints;
        int64_t most;
        std::vector<int64_t> pointMeshes;  // points of each
    } cases[] = {
        {"as always", true, false, 1000, {3}},
        {"no unused points", false, false, 1000, {}},
        {"all points", true, true, 1000, {7}},
        {"cut", true, false, 2, {2, 1}},
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        RQ_RefineParms parms;
        parms.setShowUnusedPoints(c.unusedPoints);
        parms.setShowAllPoints(c.allPoints);
        parms.setMaxPointMeshSize(c.most);
        std::vector<int64_t> points;
        for (const RQ_PrimitiveHandle &primitive : refine(handle, &parms))
            if (const auto *mesh = as<RQ_PrimPointMesh>(primitive))
                points.push_back(mesh->getPointCount());
        EXPECT_EQ(points, c.pointMeshes);
    }
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
    EXPECT_EQ(particles->getVertexCount(), 2);
    const auto *both = as<RQ_PrimCollect>(primitives[1]);
    ASSERT_NE(both, nullptr) << "the closed mesh and the open polygon";
    ASSERT_EQ(both->entries(), 2);
    const RQ_PrimitiveHandle open = both->getPrim(1);
    ASSERT_NE(as<RQ_MSHPrimitive>(open), nullptr);
    EXPECT_FALSE(as<RQ_MSHPrimitive>(open)->isClosed());
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
    EXPECT_TRUE(list.refine(moving.get(), nullptr));
    ASSERT_EQ(list.entries(), 1);
    const RQ_AttributeListHandle &points = list.getPrimitive(0)->getPointAttributes();
    EXPECT_EQ(points->getSegments(), 2);
    EXPECT_EQ(points->get("P", 0)->getF32(0, 0), -0.5f);
    EXPECT_EQ(points->get("P", 1)->getF32(0, 0), 50.0f);
}

TEST(Detail, PlacesEverythingByItsTransform)
{
    BAS_Mat4d up;
    up.setTranslation(BAS_Vec3d(0, 0, 10));
    const RQ_PrimitiveHandle placed = RQ_MSHDetail::makeDetail(makeDetail(meshShape("unused points")));
    placed->setPrimitiveTransform(RQ_TransformHandle(new RQ_Transform(&up, 1)));
    RQ_RefineList list;
    EXPECT_TRUE(list.refine(placed.get(), nullptr));
    BAS_BoundingBox box;
    for (int i = 0; i < list.entries(); ++i)
        list.getPrimitive(i)->enlargeBounds(&box, 1);
    EXPECT_EQ(box.minimum().z, 10.0f) << "points and polygons";
}

/// Leaves primitives out.
class Leaver final : public RQ_MSHPrimCollect
{
public:
    RQ_PrimitiveHandle collect(const RQ_MSHDetailListHandle &, const MSH_Primitive *const *, int,
                               RQ_MSHPrimCollectData *) const override
    {
        return nullptr;
    }
};

TEST(Collectors, OfCallersWinAndSurviveNewTypes)
{
    const auto builtIn = RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_POLYGON);
    ASSERT_NE(builtIn, nullptr);
    RQ_MSHPrimCollect::bind(std::make_shared<Leaver>(), ELM_PRIMITIVE_POLYGON);
    // The built-in ones are registered anew for it.
    EXPECT_NE(ELM_PrimitiveFactory::add("collectors_test_type", "Test", false), ELM_PRIMITIVE_NONE);
    const std::vector<RQ_PrimitiveHandle> primitives = refine(makeDetail(cubeShape()));
    RQ_MSHPrimCollect::bind(nullptr, ELM_PRIMITIVE_POLYGON);
    EXPECT_TRUE(primitives.empty());
    EXPECT_EQ(RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_POLYGON), builtIn);
}

TEST(Collectors, LeaveOutFacesWithAVertexThatHasNoPoint)
{
    const MOD_DetailHandle detail = makeCubeAndSquare();
    MOD_Edit edit(detail);
    ASSERT_TRUE(edit.setVertexPoint(1, -1));
    const std::vector<RQ_PrimitiveHandle> primitives = refine(edit.commit());
    const RQ_PrimPolygonMesh *mesh = onlyMesh(primitives);
    ASSERT_NE(mesh, nullptr);
    EXPECT_EQ(mesh->getFaceCount(), 6);
    EXPECT_TRUE(mesh->validate());
}
}  // namespace
