#include <cmath>
#include <typeinfo>

#include <host/bas/Diagnostics.h>
#include <host/mod/PackedAgent.h>
#include <host/mod/PackedDisk.h>
#include <host/mod/PackedGeometry.h>
#include <rq/bridge/MSHCollectPacked.h>
#include <rq/bridge/MSHPrimPacked.h>
#include <rq/prim/PrimCollect.h>
#include <rq/prim/PrimInstance.h>
#include <rq/surface/PrimSubdivisionMesh.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
using Implementation = BAS_IntrusivePtr<const MOD_PackedImpl>;

Implementation geometry(const MOD_ConstDetailHandle &detail) { return new MOD_PackedGeometry({{detail.readLock()}}); }

Implementation fragment(const MOD_ConstDetailHandle &detail, const char *value)
{
    return new MOD_PackedFragment({{detail.readLock()}, BAS_StringHolder("name"), BAS_StringHolder(value)});
}

/// A cube whose sides are named "a", "b", "a", ...
MOD_ConstDetailHandle namedCube()
{
    const MOD_DetailHandle handle = makeGeometry(cubeShape());
    MOD_Edit edit(handle);
    for (int64_t i = 0; i < edit.primitiveCount(); ++i)
        edit.stringAttribute(ELM_OWNER_PRIMITIVE, "name")->strings()->set(i, i % 2 ? "b" : "a");
    return edit.commit();
}

/// Packed primitives at points on the x axis, one unit apart, each turned a quarter around z and twice as large.
class Row
{
public:
    void add(const Implementation &what, int level = 4, const BAS_Vec3d &pivot = BAS_Vec3d(0.0))
    {
        const int at = int(edit_.pointCount());
        const std::vector<BAS_Mat3d> turn = {BAS_Mat3d(0, 2, 0, -2, 0, 0, 0, 0, 2)};
        ASSERT_TRUE(edit_.appendPoints(1));
        const float position[] = {float(at), 0, 0};
        edit_.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->write(at, 1, position);
        ASSERT_TRUE(edit_.appendPacked(what, std::vector<int32_t>{at}, turn, pivot, level)) << edit_.message();
        edit_.attribute(ELM_OWNER_PRIMITIVE, "number", ELM_STORAGE_INT32)->write(at, 1, &at);
    }
    MOD_ConstDetailHandle commit() { return edit_.commit(); }

private:
    MOD_DetailHandle handle_;
    MOD_Edit edit_{handle_};
};

BAS_BoundingBox boundsOf(const RQ_Primitive &primitive)
{
    BAS_BoundingBox box;
    primitive.enlargeBounds(&box, 1);
    return box;
}

/// The boxes of all that comes out in the end.
BAS_BoundingBox boundsOfParts(const RQ_PrimitiveHandle &primitive)
{
    RQ_RefineList list;
    const bool isEnd = dynamic_cast<const RQ_PrimPolygonMesh *>(primitive.get());
    if (isEnd || !list.refine(primitive.get(), nullptr))
        return boundsOf(*primitive);
    BAS_BoundingBox box;
    for (int i = 0; i < list.entries(); ++i)
        box.enlarge(boundsOfParts(list.getPrimitive(i)));
    return box;
}

int64_t facesIn(const RQ_PrimitiveHandle &primitive)
{
    if (const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(primitive.get()))
        return mesh->getFaceCount();
    RQ_RefineList list;
    list.refine(primitive.get(), nullptr);
    int64_t faces = 0;
    for (int i = 0; i < list.entries(); ++i)
        faces += facesIn(list.getPrimitive(i));
    return faces;
}

TEST(Packed, StandsWhereItIsPlaced)
{
    const MOD_ConstDetailHandle cube = makeDetail(cubeShape());
    Row inner, outer;
    inner.add(geometry(cube), 4, {1, 2, 3});
    inner.add(geometry(cube));
    outer.add(geometry(inner.commit()));
    outer.add(geometry(cube));
    const MOD_ConstDetailHandle detail = outer.commit();
    const BAS_Mat4d far = BAS_Mat4d().setAxisAngle(BAS_Vec3d(1, 2, 3).normalized(), 0.7);
    for (const RQ_TransformHandle &placement : {RQ_TransformHandle(), RQ_TransformHandle(new RQ_Transform(&far, 1))})
    {
        const RQ_PrimitiveHandle whole = RQ_MSHDetail::makeDetail(detail)->copyTransformed(placement, true);
        RQ_RefineList list;
        ASSERT_TRUE(list.refine(whole.get(), nullptr));
        std::vector<RQ_PrimitiveHandle> packed;
        for (int i = 0; i < list.entries(); ++i)
            packed.push_back(list.getPrimitive(i));
        ASSERT_EQ(packed.size(), 2u);
        BAS_BoundingBox one;
        // One by one, as instances, and as the boxes of what they are.
        const std::vector<RQ_PrimitiveHandle> shared = RQgatherInstances(packed);
        ASSERT_EQ(shared.size(), 2u);
        for (size_t i = 0; i < 2; ++i)
        {
            const BAS_BoundingBox parts = boundsOfParts(packed[i]);
            EXPECT_EQ(parts, boundsOfParts(shared[i]));
            EXPECT_TRUE(placement || parts == boundsOf(*packed[i])) << "turned boxes are larger";
            one.enlarge(parts);
        }
        EXPECT_TRUE(placement || one == boundsOf(*whole));
        EXPECT_EQ(facesIn(whole), 18);
    }
    // A corner of the innermost cube with the pivot, by hand: first around the pivot, then to the outer point.
    BAS_Mat4d matrix;
    RQ_MSHPrimPacked(detail, 1).getFullTransform(matrix);
    EXPECT_EQ(host::transformPoint({1, 0, 0}, matrix), BAS_Vec3d(1, 2, 0));
}

TEST(Packed, RefinesToTheLevelThatIsAskedFor)
{
    const RQ_PrimitiveHandle packed = [] {
        Row row;
        row.add(geometry(makeDetail(cubeShape())), 2);
        return RQ_PrimitiveHandle(new RQ_MSHPrimPacked(row.commit(), 0));
    }();
    struct Case
    {
        int64_t level;
        bool own;
        const char *className;
        bool usesOwn;
    };
    const char *const kMesh = "RQ_PrimPolygonMesh", *const kPoints = "RQ_PrimPointMesh";
    for (const Case &test : std::vector<Case>{{-1, false, kMesh, false},
                                              {-1, true, kMesh, true},
                                              {0, true, nullptr, false},
                                              {1, false, kPoints, false},
                                              {2, false, kMesh, false},
                                              {3, false, kPoints, false},
                                              {4, true, kMesh, false},
                                              {6, false, kMesh, false},
                                              {7, false, kMesh, false},
                                              {7, true, kMesh, true}})
    {
        SCOPED_TRACE(testing::Message() << test.level << (test.own ? " own" : ""));
        RQ_RefineParms parms;
        parms.setOverridePackedViewportLOD(test.level);
        parms.setPackedViewportLOD(test.own);
        EXPECT_EQ(RQ_MSHPrimPacked::useViewportLOD(&parms), test.usesOwn);
        RQ_RefineList list;
        EXPECT_TRUE(list.refine(packed.get(), &parms));
        ASSERT_EQ(list.entries(), test.className ? 1 : 0);
        if (!test.className)
            continue;
        const RQ_Primitive &made = *list.getPrimitive(0);
        EXPECT_STREQ(made.className(), test.className);
        const bool isBox = test.level == 2 || (test.level == 7 && test.own);
        const RQ_AttributeListHandle &ids = test.level == 1 ? made.getPointAttributes() : made.getUniformAttributes();
        EXPECT_EQ(ids && ids->get("__primitive_id"), isBox || test.level == 1);
        const BAS_BoundingBox box = boundsOf(made), whole = boundsOf(*packed);
        EXPECT_TRUE(test.level == 1 ? box.minimum() == box.maximum() : box == whole);
    }
    EXPECT_FALSE(RQ_MSHPrimPacked::useViewportLOD(nullptr));
    RQ_RefineParms parms;
    parms.setPolysAsSubdivision(true);
    for (const int64_t level : {-1, 2})
    {
        parms.setOverridePackedViewportLOD(level);
        RQ_RefineList list;
        list.refine(packed.get(), &parms);
        EXPECT_TRUE(as<RQ_PrimSubdivisionMesh>(list.getPrimitive(0))) << level;
    }
}

TEST(Packed, ViewportsGetBoxesAndCentroidsTogether)
{
    const Implementation cube = geometry(makeDetail(cubeShape()));
    const RQ_PrimitiveHandle cubeMesh = refine(makeDetail(cubeShape()))[0];
    RQ_RefineParms parms;
    parms.setPackedViewportLOD(true);
    for (const int copies : {1, 3000})  // the second on several threads
    {
        Row row;
        for (int i = 0; i < copies; ++i)
            for (const int level : {1, 2, 0, 4})
                row.add(cube, level);
        const std::vector<RQ_PrimitiveHandle> made = refine(row.commit(), &parms);
        ASSERT_EQ(made.size(), size_t(copies + 1));
        EXPECT_EQ(as<RQ_MSHPrimPacked>(made[0])->getPrim().offset(), 3);
        const auto *both = as<RQ_PrimCollect>(made.back());
        ASSERT_TRUE(both && both->entries() == 2);
        const auto *boxes = as<RQ_PrimPolygonMesh>(both->getPrim(0));
        const auto *centroids = as<RQ_PrimPointMesh>(both->getPrim(1));
        ASSERT_TRUE(boxes && boxes->getFaceCount() == 6 * copies && centroids->getPointCount() == copies);
        const double volume = 8.0 * cubeMesh->computeVolume(BAS_Vec3f(0.0f), 0);  // each is twice as large
        EXPECT_NEAR(boxes->computeVolume(BAS_Vec3f(0.0f), 0), copies * volume, 1e-4 * copies * std::abs(volume));
        const int64_t last = copies - 1;
        EXPECT_EQ(boxes->getUniform()->get("__primitive_id")->getI64(6 * last + 5), 4 * last + 1);
        EXPECT_EQ(centroids->getPoints()->get("__point_id")->getI64(last), 4 * last);
    }
    // One that stands nowhere has no vertex and no point.
    const MOD_DetailHandle handle;
    MOD_Edit edit(handle);
    const MSH_PayloadHandle payload(new MOD_PackedPayload(cube, BAS_Vec3d(0.0), 1));
    ASSERT_TRUE(edit.append({ELM_PRIMITIVE_PACKED_GEOMETRY, 1, {}, 0, {}, false, {&payload, 1}, {}}));
    const std::vector<RQ_PrimitiveHandle> nowhere = refine(edit.commit(), &parms);
    ASSERT_EQ(nowhere.size(), 1u);
    for (const char *name : {"__vertex_id", "__point_id"})
        EXPECT_EQ(nowhere[0]->getPointAttributes()->get(name)->getI64(0), -1);
    // Nor does one that stands somewhere lose its place to it.
    MOD_Edit more(handle);
    ASSERT_TRUE(more.appendPoints(1) && more.appendPacked(cube, std::vector<int32_t>{0}));
    const float at[] = {5, 0, 0};
    ASSERT_TRUE(more.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->write(0, 1, at));
    const std::vector<RQ_PrimitiveHandle> shared = RQgatherInstances(refine(more.commit()));
    ASSERT_EQ(shared.size(), 2u);
    BAS_Mat4d matrix;
    as<RQ_PrimInstance>(shared[1])->getTransforms()->getMatrix(matrix, 0, 0);
    EXPECT_EQ(matrix.translation(), BAS_Vec3d(5, 0, 0));
}

TEST(Packed, SharesGeometryOfEqualKeys)
{
    const MOD_ConstDetailHandle cube = makeDetail(cubeShape()), pole = makeDetail(poleShape());
    Row row;
    for (const MOD_ConstDetailHandle &detail : {cube, pole, cube, cube})
        row.add(geometry(detail));
    row.add(new MOD_PackedDisk({BAS_StringHolder("nowhere.obj")}));
    row.add(new MOD_PackedDisk({BAS_StringHolder("nowhere.obj")}));
    row.add(fragment(namedCube(), "a"));
    const std::vector<RQ_PrimitiveHandle> packed = refine(row.commit()), shared = RQgatherInstances(packed);
    ASSERT_EQ(packed.size(), 7u);
    ASSERT_EQ(shared.size(), 5u);
    const auto *cubes = as<RQ_PrimInstance>(shared[0]), *poles = as<RQ_PrimInstance>(shared[1]);
    ASSERT_TRUE(cubes && poles && cubes->entries() == 3 && poles->entries() == 1);
    for (int i = 0; i < 3; ++i)
    {
        const int64_t number = std::vector<int64_t>{0, 2, 3}[size_t(i)];
        EXPECT_EQ(cubes->getInstanceAttributes()->get("number")->getI64(i), number);
        BAS_Mat4d matrix;
        cubes->getTransforms()->getMatrix(matrix, i, 0);
        EXPECT_EQ(matrix.translation(), BAS_Vec3d(double(number), 0, 0));
    }
    EXPECT_FALSE(cubes->getInstanceAttributes()->get("P") || cubes->getInstanceAttributes()->get("transform"));

    // What cannot be had stays as it is, and says so when it is refined.
    static std::string said;
    BAS_Diagnostics::setSink([](std::string_view message) { said = message; });
    for (const size_t i : {2u, 3u})
    {
        RQ_RefineList list;
        EXPECT_TRUE(as<RQ_MSHPrimPacked>(shared[i]) && !list.refine(shared[i].get(), nullptr));
    }
    BAS_Diagnostics::setSink(nullptr);
    EXPECT_NE(said.find("nowhere.obj"), std::string::npos) << said;
    EXPECT_EQ(shared[4], packed[6]);
}

TEST(Packed, MovesWithItsPoint)
{
    const MOD_DetailHandle handle;
    MOD_Edit edit(handle);
    ASSERT_TRUE(edit.appendPoints(2));
    const float velocities[] = {24, 0, 0, 0, 48, 0};
    ASSERT_TRUE(edit.attribute(ELM_OWNER_POINT, "v", ELM_STORAGE_REAL32, 3, ELM_TYPE_VECTOR)->write(0, 2, velocities));
    const MOD_ConstDetailHandle cube = makeDetail(cubeShape());
    ASSERT_TRUE(edit.appendPacked(geometry(cube), std::vector<int32_t>{0, 1}, {}, BAS_Vec3d(1, 0, 0)));
    RQ_RefineList list;
    ASSERT_TRUE(list.refine(RQ_MSHDetail::makeMoving(edit.commit(), 2, 1.0 / 24.0).get(), nullptr));
    ASSERT_EQ(list.entries(), 2);
    const std::vector<RQ_PrimitiveHandle> shared = RQgatherInstances({list.getPrimitive(0), list.getPrimitive(1)});
    ASSERT_EQ(shared.size(), 1u);
    const BAS_Vec3d ends[2][2] = {{{-1, 0, 0}, {0, 0, 0}}, {{-1, 0, 0}, {-1, 2, 0}}};
    for (int i = 0; i < 2; ++i)
        for (int segment = 0; segment < 2; ++segment)
        {
            BAS_Mat4d one, all;
            as<RQ_MSHPrimPacked>(list.getPrimitive(i))->getFullTransform(one, segment);
            as<RQ_PrimInstance>(shared[0])->getTransforms()->getMatrix(all, i, segment);
            EXPECT_EQ(one, all);
            EXPECT_EQ(all.translation(), ends[i][segment]) << i << ' ' << segment;
        }
}

TEST(Packed, FragmentsOfOneSourceComeTogether)
{
    const MOD_ConstDetailHandle cube = namedCube(), other = namedCube();
    const MOD_DetailHandle handle;
    MOD_Edit edit(handle);
    ASSERT_TRUE(edit.appendPoints(2));
    for (const auto &[source, value, point] :
         {std::tuple(cube, "a", 0), std::tuple(other, "a", 0), std::tuple(cube, "b", 0), std::tuple(cube, "b", 1)})
        ASSERT_TRUE(edit.appendPacked(fragment(source, value), std::vector<int32_t>{point}));
    const float positions[] = {0, 0, 0, 9, 0, 0};
    ASSERT_TRUE(edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->write(0, 2, positions));
    const MOD_ConstDetailHandle detail = edit.commit();

    const std::vector<RQ_PrimitiveHandle> together = refine(detail);
    ASSERT_EQ(together.size(), 1u);
    const auto *groups = as<RQ_PrimCollect>(together[0]);
    ASSERT_TRUE(groups && groups->entries() == 3) << "by source and place";
    for (const auto &[i, faces] : {std::pair(0, 6), std::pair(1, 3), std::pair(2, 3)})
        EXPECT_EQ(facesIn(groups->getPrim(i)), faces);
    EXPECT_EQ(boundsOf(*groups->getPrim(2)->copyTransformed(nullptr)).minimum().x, 9 + cubeShape().positions[0]);

    // One that is lost takes no other along.
    MOD_Edit lose(handle);
    lose.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->modifyAll<float>()[0] = NAN;
    const std::vector<RQ_PrimitiveHandle> lost = refine(lose.commit());
    EXPECT_EQ(as<RQ_PrimCollect>(lost.at(0))->entries(), 3);

    RQ_RefineParms parms;
    parms.setCoalesceFragments(false);
    const std::vector<RQ_PrimitiveHandle> single = refine(detail, &parms);
    ASSERT_EQ(single.size(), 4u);
    for (size_t i = 0; i < 4; ++i)
    {
        RQ_RefineList list;
        ASSERT_TRUE(list.refine(single[i].get(), &parms));
        const RQ_Primitive &mesh = *list.getPrimitive(0);
        EXPECT_EQ(mesh.getDetailAttributes()->get("__primitive_id")->getI64(0), int64_t(i));
        EXPECT_EQ(mesh.getDetailAttributes()->get("__point_id")->getI64(0), i == 3 ? 1 : 0);
        EXPECT_EQ(facesIn(list.getPrimitive(0)), 3);
    }
}

TEST(Packed, GivesItsAttributesToWhatItRefinesTo)
{
    Row row;
    row.add(geometry(namedCube()));
    const MOD_ConstDetailHandle detail = row.commit();
    RQ_RefineList list;
    ASSERT_TRUE(list.refine(refine(detail)[0].get(), nullptr));
    const RQ_Primitive &mesh = *list.getPrimitive(0);
    EXPECT_EQ(mesh.getDetailAttributes()->get("number")->getI64(0), 0);
    EXPECT_FALSE(mesh.getDetailAttributes()->get("P"));
    EXPECT_EQ(mesh.getUniformAttributes()->get("name")->entries(), 6) << "its own stays";
}

TEST(Packed, SavesTheKeyOfWhatCanBeShared)
{
    Row row;
    row.add(new MOD_PackedDisk({BAS_StringHolder("nowhere.obj")}));
    const MOD_ConstDetailHandle detail = row.commit();
    const std::string shared = textOf(RQ_MSHPrimPackedShared(detail, 0)), alone = textOf(RQ_MSHPrimPacked(detail, 0));
    size_t at = 0;
    for (const char *key : {"RQ_MSHPrimPacked", "\"bounds\":[1.7014117", "\"transformed\":true", "\"caninstance\":true",
                            "\"instancetransform\":", "\"instancekey\":", "\"instanceattributes\":", "\"attributes\":"})
    {
        at = shared.find(key, at);
        EXPECT_NE(at, std::string::npos) << key << " in " << shared;
    }
    EXPECT_NE(alone.find("\"caninstance\":false"), std::string::npos) << alone;
    EXPECT_EQ(alone.find("\"instancetransform\""), std::string::npos);
    EXPECT_EQ(alone.find("\"instancekey\""), std::string::npos);
}

TEST(Packed, CollectorsServeEveryPackedType)
{
    const ELM_PrimitiveTypeId own = ELM_PrimitiveFactory::add("PackedOfATest", "Packed Of A Test", true);
    const auto isOf = [](ELM_PrimitiveTypeId type, auto *example) {
        using Collector = std::remove_pointer_t<decltype(example)>;
        return typeid(*RQ_MSHPrimCollect::getCollector(type)) == typeid(Collector);
    };
    EXPECT_TRUE(isOf(own, static_cast<RQ_MSHPrimCollectPacked *>(nullptr)));
    const auto generic = std::make_shared<const RQ_MSHPrimCollectPacked>();
    RQ_MSHPrimCollect::bind(generic, ELM_PRIMITIVE_PACKED_DISK);
    EXPECT_EQ(RQ_MSHPrimCollect::getCollector(ELM_PRIMITIVE_PACKED_DISK), generic);
    RQ_MSHCollectPackedDisk::install();
    EXPECT_TRUE(isOf(ELM_PRIMITIVE_PACKED_DISK, static_cast<RQ_MSHCollectPackedDisk *>(nullptr)));
    RQ_MSHPrimCollect::bind(nullptr, ELM_PRIMITIVE_PACKED_DISK);
    EXPECT_TRUE(isOf(ELM_PRIMITIVE_PACKED_DISK, static_cast<RQ_MSHCollectPackedDisk *>(nullptr)));
    EXPECT_TRUE(isOf(ELM_PRIMITIVE_PACKED_AGENT, static_cast<RQ_MSHCollectPackedAgent *>(nullptr)));
    EXPECT_TRUE(isOf(ELM_PRIMITIVE_PACKED_DISK_SEQUENCE, static_cast<RQ_MSHCollectPackedSequence *>(nullptr)));
}
}  // namespace
