#include <cmath>
#include <functional>

#include <gtest/gtest.h>

#include <host/mod/DetailFiles.h>
#include <host/mod/Edit.h>
#include <host/mod/PackedAgent.h>
#include <host/mod/PackedDisk.h>
#include <host/mod/PackedGeometry.h>
#include <host/mod/PrimPacked.h>
#include <host/mod/services.h>
#include <host/msh/Quadric.h>

namespace
{
using Points = std::vector<int32_t>;
using Positions = std::vector<BAS_Vec3f>;

void writePositions(MOD_Edit &edit, const Positions &positions)
{
    edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)
        ->write(0, int64_t(positions.size()), &positions[0].x);
}

/// Triangles one after the other, named "a", "b", "a", ...
MOD_ConstDetailHandle triangles(const Positions &positions)
{
    MOD_DetailHandle handle;
    MOD_Edit edit(handle);
    Points points(positions.size());
    for (size_t i = 0; i < points.size(); ++i)
        points[i] = int32_t(i);
    EXPECT_TRUE(edit.appendPoints(int64_t(positions.size())));
    EXPECT_TRUE(edit.appendPolygons(3, points, true));
    writePositions(edit, positions);
    for (int64_t i = 0; i < edit.primitiveCount(); ++i)
        edit.stringAttribute(ELM_OWNER_PRIMITIVE, "name")->strings()->set(i, i % 2 ? "b" : "a");
    return edit.commit();
}

const Positions kThree = {{0, 0, 0}, {1, 0, 0}, {0, 2, 0}, {0, 0, 1}, {3, 0, 1}, {0, 1, 1}, {5, 5, 5}, {6, 5, 5}, {5, 6, 5}};

BAS_Vec3f pointOf(const MSH_Detail &detail, int64_t point)
{
    const float *p = detail.positions().pages<float>()->tuple(point);
    return {p[0], p[1], p[2]};
}

struct Placed
{
    MOD_ConstDetailHandle detail;
    MOD_PrimPacked prim() const { return MOD_PrimPacked(*detail.readLock(), 0); }
};

Placed placed(BAS_IntrusivePtr<const MOD_PackedImpl> implementation, const std::vector<BAS_Mat3d> &transforms = {},
              const BAS_Vec3d &pivot = BAS_Vec3d(0.0))
{
    MOD_DetailHandle handle;
    MOD_Edit edit(handle);
    EXPECT_TRUE(edit.appendPoints(1));
    writePositions(edit, {{10, 0, 0}});
    EXPECT_TRUE(edit.appendPacked(std::move(implementation), Points{0}, transforms, pivot, 2)) << edit.message();
    return {edit.commit()};
}

TEST(PrimPacked, PlacesItsGeometryAroundThePivot)
{
    const MOD_ConstDetailHandle source = triangles(kThree);
    const std::vector<BAS_Mat3d> doubled = {BAS_Mat3d() * 2.0};
    const Placed one = placed(new MOD_PackedGeometry({{source.readLock()}}), doubled, {1, 1, 1});
    const MOD_PrimPacked prim = one.prim();
    ASSERT_TRUE(prim.isValid());
    EXPECT_EQ(prim.viewportLOD(), 2);
    EXPECT_EQ(prim.pointOrNone(), 0);
    EXPECT_EQ(prim.bounds(), BAS_BoundingBox({0, 0, 0}, {6, 6, 5}));
    EXPECT_EQ(host::transformPoint({1, 1, 1}, prim.fullTransform()), BAS_Vec3d(10, 0, 0));
    EXPECT_EQ(host::transformPoint({2, 1, 1}, prim.fullTransform()), BAS_Vec3d(12, 0, 0));
    EXPECT_EQ(MODcomputeBounds(*one.detail.readLock()), BAS_BoundingBox({8, -2, -2}, {20, 10, 8}));
    std::string why;
    EXPECT_EQ(prim.unpack(why), source);
    const MOD_ConstDetailHandle cloud = prim.pointCloud(why);
    EXPECT_EQ(cloud.readLock()->primitiveCount(), 0);
    EXPECT_EQ(MODunusedPoints(*cloud.readLock()).size(), 9);
    EXPECT_EQ(cloud.readLock()->positions().contiguousData(), source.readLock()->positions().contiguousData());
}

TEST(PrimPacked, NeedsNoVertexButTheRightImplementation)
{
    MOD_DetailHandle handle;
    MOD_Edit edit(handle);
    const MSH_PayloadHandle disk(new MOD_PackedPayload(new MOD_PackedDisk({BAS_StringHolder("a")}), BAS_Vec3d(0.0), 1));
    EXPECT_FALSE(edit.append({ELM_PRIMITIVE_PACKED_GEOMETRY, 1, {}, 0, {}, false, {&disk, 1}, {}}));
    EXPECT_EQ(edit.message(), "a packed primitive needs an implementation of its own type");
    ASSERT_TRUE(edit.append({ELM_PRIMITIVE_PACKED_DISK, 1, {}, 0, {}, false, {&disk, 1}, {}})) << edit.message();
    const MOD_ConstDetailHandle snapshot = edit.commit();
    EXPECT_EQ(MOD_PrimPacked(*snapshot.readLock(), 0).vertexOrNone(), -1);
    EXPECT_EQ(MOD_PrimPacked(*snapshot.readLock(), 0).pointOrNone(), -1);
}

TEST(PrimPacked, FragmentsAreThePrimitivesOfOneName)
{
    const MOD_ConstDetailHandle source = triangles(kThree);
    const auto fragment = [&](const char *value) {
        return BAS_IntrusivePtr<MOD_PackedFragment>(
            new MOD_PackedFragment({{source.readLock()}, BAS_StringHolder("name"), BAS_StringHolder(value)}));
    };
    EXPECT_EQ(fragment("a")->data.range().size(), 2);
    std::string why;
    const MOD_ConstDetailHandle b = fragment("b")->unpack(why);
    ASSERT_TRUE(b) << why;
    EXPECT_EQ(b.readLock()->primitiveCount(), 1);
    EXPECT_EQ(b.readLock()->pointCount(), 3);
    EXPECT_EQ(pointOf(*b.readLock(), 1), kThree[4]);
    EXPECT_EQ(fragment("b")->bounds(), BAS_BoundingBox({0, 0, 1}, {3, 1, 1}));
    EXPECT_EQ(fragment("c")->unpack(why).readLock()->pointCount(), 0);
    EXPECT_EQ(source.readLock()->primitiveCount(), 3);
}

TEST(PrimPacked, KeysAreEqualWhereGeometryIs)
{
    const MOD_ConstDetailHandle one = triangles(kThree), two = triangles(kThree);
    using Impl = BAS_IntrusivePtr<MOD_PackedImpl>;
    const auto geometry = [](const MOD_ConstDetailHandle &of) { return Impl(new MOD_PackedGeometry({{of.readLock()}})); };
    const auto fragment = [&](const char *value) {
        return Impl(new MOD_PackedFragment({{one.readLock()}, BAS_StringHolder("name"), BAS_StringHolder(value)}));
    };
    const auto sequence = [](double index) {
        return Impl(new MOD_PackedDiskSequence({{BAS_StringHolder("f"), BAS_StringHolder("g")}, index}));
    };
    const struct
    {
        const char *what;
        Impl a, b;
        bool areEqual;
    } cases[] = {
        {"one detail", geometry(one), geometry(one), true},
        {"two details", geometry(one), geometry(two), false},
        {"one fragment", fragment("a"), fragment("a"), true},
        {"two fragments", fragment("a"), fragment("b"), false},
        {"frames of one file", sequence(0.25), sequence(0.75), true},
        {"frames of two files", sequence(0), sequence(1), false},
        {"a file by name or by frame", sequence(0), Impl(new MOD_PackedDisk({BAS_StringHolder("f")})), false},
    };
    for (const auto &c : cases)
    {
        BAS_Options a, b;
        ASSERT_TRUE(c.a->instanceKey(a) && c.b->instanceKey(b)) << c.what;
        EXPECT_EQ(a.isEqual(b), c.areEqual) << c.what;
    }
    BAS_Options none;
    EXPECT_FALSE(MOD_PackedAgent().instanceKey(none));
}

TEST(PrimPacked, FilesAreReadOnceWhileInUseAndFailuresSayWhy)
{
    int reads = 0;
    MOD_DetailFiles::registerReader(".test_geo", [&reads](const std::string &path, std::string &why) {
        ++reads;
        const float x = path == "1.test_geo" ? 4.0f : 0.0f;
        return path == "bad.test_geo" ? (why = "broken", MOD_ConstDetailHandle())
                                      : triangles({{x, 0, 0}, {x + 1, 0, 0}, {x, 1, 0}});
    });
    std::string why;
    {
        const Placed a = placed(new MOD_PackedDisk({BAS_StringHolder("0.TEST_geo")}));
        const Placed b = placed(new MOD_PackedDisk({BAS_StringHolder("0.TEST_geo")}));
        EXPECT_EQ(reads, 0);
        EXPECT_EQ(a.prim().unpack(why), b.prim().unpack(why));
        EXPECT_EQ(reads, 1);
    }
    EXPECT_TRUE(placed(new MOD_PackedDisk({BAS_StringHolder("0.TEST_geo")})).prim().unpack(why));
    EXPECT_EQ(reads, 2);
    const struct
    {
        const char *path, *reason;
    } failures[] = {{"bad.test_geo", "broken"}, {"0.none", "no reader for \"0.none\""}};
    for (const auto &[path, reason] : failures)
    {
        EXPECT_FALSE(placed(new MOD_PackedDisk({BAS_StringHolder(path)})).prim().unpack(why));
        EXPECT_EQ(why, reason);
        EXPECT_TRUE(placed(new MOD_PackedDisk({BAS_StringHolder(path)})).prim().bounds().isEmpty());
    }
    MOD_PackedDiskSequenceData sequence{{BAS_StringHolder("0.test_geo"), BAS_StringHolder("1.test_geo")}, 0.25, true};
    const MOD_ConstDetailHandle between = placed(new MOD_PackedDiskSequence(sequence)).prim().unpack(why);
    ASSERT_TRUE(between);
    EXPECT_EQ(pointOf(*between.readLock(), 1), BAS_Vec3f(2, 0, 0));

    const struct
    {
        MOD_SequenceRule rule;
        std::vector<int64_t> files;  // of frames -3 to 4 of two
    } cases[] = {
        {MOD_SEQUENCE_HOLD, {0, 0, 0, 0, 1, 1, 1, 1}},
        {MOD_SEQUENCE_CYCLE, {1, 0, 1, 0, 1, 0, 1, 0}},
        {MOD_SEQUENCE_MIRROR, {1, 1, 0, 0, 1, 1, 0, 0}},
        {MOD_SEQUENCE_NONE, {-1, -1, -1, 0, 1, -1, -1, -1}},
    };
    for (const auto &c : cases)
        for (size_t i = 0; i < c.files.size(); ++i)
        {
            sequence.rule = c.rule;
            EXPECT_EQ(sequence.fileOf(double(i) - 2.5), c.files[i]) << c.rule << " at " << i;
        }
    MOD_DetailFiles::registerReader(".test_geo", nullptr);
}

TEST(PrimPacked, AgentsPoseTheirShapes)
{
    BAS_Mat4d up;
    up.setTranslation(BAS_Vec3d(0, 0, 2));
    const Positions straight = {{0, 0, 0}, {0, 0, 2}, {0, 0, 4}};
    MOD_DetailHandle skin(triangles(straight));
    MOD_Edit edit(skin);
    const int32_t joints[] = {0, -1, 0, 1, 1, -1};
    const float weights[] = {1, 0, 0.5f, 0.5f, 1, 0};
    edit.attribute(ELM_OWNER_POINT, "joint", ELM_STORAGE_INT32, 2)->write(0, 3, joints);
    edit.attribute(ELM_OWNER_POINT, "weight", ELM_STORAGE_REAL32, 2)->write(0, 3, weights);

    MOD_AgentDefinition parts;
    const MOD_ConstDetailHandle hat = triangles(kThree);
    parts.joints = {{BAS_StringHolder("root"), -1, BAS_Mat4d()}, {BAS_StringHolder("tip"), 0, up}};
    parts.shapes = {{BAS_StringHolder("skin"), edit.commit(), -1}, {BAS_StringHolder("hat"), hat, 1}};
    std::string why;
    const MOD_ConstDetailHandle definition = parts.make(why);
    ASSERT_TRUE(definition) << why;

    // The root stays, the tip moves by 6 along x.
    std::vector<double> pose(32);
    BAS_Mat4d aside = up;
    aside[3][0] = 6;
    std::copy_n(&BAS_Mat4d()[0][0], 16, pose.begin());
    std::copy_n(&aside[0][0], 16, pose.begin() + 16);
    const MOD_PackedAgentData agent{{definition.readLock()}, pose};
    const MOD_ConstDetailHandle posed = placed(new MOD_PackedAgent(agent)).prim().unpack(why);
    ASSERT_TRUE(posed) << why;
    const MOD_PrimPacked bent(*posed.readLock(), 0), moved(*posed.readLock(), 1);
    const MOD_ConstDetailHandle bentDetail = bent.unpack(why);
    EXPECT_EQ(pointOf(*bentDetail.readLock(), 0), BAS_Vec3f(0, 0, 0));
    EXPECT_EQ(pointOf(*bentDetail.readLock(), 1), BAS_Vec3f(3, 0, 2));
    EXPECT_EQ(pointOf(*bentDetail.readLock(), 2), BAS_Vec3f(6, 0, 4));
    EXPECT_EQ(moved.unpack(why), hat);
    EXPECT_EQ(moved.fullTransform()[3][0], 6);

    parts.joints[0].parent = 1;
    EXPECT_FALSE(parts.make(why));
    EXPECT_EQ(why, "the parent 1 of joint 0 does not come before it");
    EXPECT_FALSE(MOD_PackedAgent({{definition.readLock()}, {1.0}}).check(why));
    EXPECT_EQ(why, "a pose of 1 numbers does not fit 2 joints");
}

TEST(Services, BoundsReachAsFarAsPlacedPrimitives)
{
    const std::vector<BAS_Mat3d> turned = {BAS_Mat3d(1, 1, 0, -1, 1, 0, 0, 0, 1)};
    const double root = std::sqrt(2.0);
    const float reach = float(root), low = float(10 - root), high = float(10 + root);
    const struct
    {
        const char *what;
        std::function<bool(MOD_Edit &)> append;
        BAS_BoundingBox box;
    } cases[] = {
        {"a point", [](MOD_Edit &) { return true; }, {{10, 0, 0}, {10, 0, 0}}},
        {"a turned ball",
         [&](MOD_Edit &e) { return e.appendSpheres(Points{0}, turned); },
         {{low, -reach, -1}, {high, reach, 1}}},
        {"a disc", [&](MOD_Edit &e) { return e.appendCircles(Points{0}); }, {{9, -1, 0}, {11, 1, 0}}},
        {"a funnel",
         [&](MOD_Edit &e) {
             return e.appendTubes({3.0, false}, Points{0});
         },
         {{7, -3, -0.5f}, {13, 3, 0.5f}}},
    };
    for (const auto &c : cases)
    {
        MOD_DetailHandle handle;
        MOD_Edit edit(handle);
        ASSERT_TRUE(edit.appendPoints(1));
        writePositions(edit, {{10, 0, 0}});
        ASSERT_TRUE(c.append(edit)) << c.what;
        EXPECT_EQ(MODcomputeBounds(*edit.commit().readLock()), c.box) << c.what;
    }
    MOD_DetailHandle empty;
    EXPECT_TRUE(MODcomputeBounds(*empty.read().readLock()).isEmpty());
}
}  // namespace
