#include <host/msh/SparseVolume.h>
#include <host/msh/Volume.h>
#include <rq/bridge/PrimVDB.h>
#include <rq/bridge/PrimVolume.h>
#include <rq/data/Values.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
/// A volume whose voxels count up, x fastest.
MSH_VolumeData counting(int x, int y, int z)
{
    std::vector<float> dense(size_t(x * y * z));
    for (size_t i = 0; i < dense.size(); ++i)
        dense[i] = float(i);
    return MSH_VolumeData(x, y, z, dense.data());
}

/// Append a volume at a point of its own.
void append(const MOD_DetailHandle &geometry, MSH_VolumeData volume, const BAS_Mat3d &matrix = {},
            const BAS_Vec3f &at = BAS_Vec3f(0.0f))
{
    MOD_Edit edit(geometry);
    const int point = int(edit.pointCount());
    ASSERT_TRUE(edit.appendPoints(1));
    ASSERT_TRUE(edit.appendVolumes(std::move(volume), std::vector<int32_t>{point}, std::vector<BAS_Mat3d>{matrix}))
        << edit.message();
    ASSERT_TRUE(edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->write(point, 1, &at.x));
    edit.commit();
}

struct BorderCase
{
    const char *what;
    int32_t rule;
    float before, behind;  // of x at -1 and 3, of a row 0, 1, 2
};

TEST(Volumes, AreLeavesThatReadTheHostsVoxels)
{
    const MOD_DetailHandle geometry;
    const BorderCase cases[] = {{"constant", MSH_BORDER_CONSTANT, 7.0f, 7.0f},
                                {"repeat", MSH_BORDER_REPEAT, 2.0f, 0.0f},
                                {"streak", MSH_BORDER_STREAK, 0.0f, 2.0f}};
    for (const BorderCase &c : cases)
    {
        MSH_VolumeData volume = counting(3, 20, 2);
        volume.border = c.rule;
        volume.borderValue = 7.0;
        volume.name = "density";
        append(geometry, volume, BAS_Mat3d(2, 0, 0, 0, 1, 0, 0, 0.5, 1), {10.0f, 0.0f, 0.0f});
    }
    append(geometry, counting(0, 0, 0));
    MOD_Edit edit(geometry);
    float *colours = edit.attribute(ELM_OWNER_PRIMITIVE, "Cd", ELM_STORAGE_REAL32, 3, ELM_TYPE_COLOR)->writeAll<float>();
    std::fill_n(colours, 12, 0.0f);
    colours[0] = 0.25f;
    const MOD_ConstDetailHandle detail = edit.commit();

    const std::vector<RQ_PrimitiveHandle> all = refine(detail);
    ASSERT_EQ(all.size(), 4u);
    for (size_t i = 0; i < 3; ++i)
    {
        SCOPED_TRACE(cases[i].what);
        const auto *volume = as<RQ_PrimVolume>(all[i]);
        ASSERT_TRUE(volume);
        EXPECT_EQ(&volume->getVoxels(), &MSH_Volume(*detail.readLock(), ELM_Offset(i)).data());
        EXPECT_EQ(volume->getName().view(), "density");
        EXPECT_EQ(volume->getResolution(1), 20);
        EXPECT_EQ(volume->getValue(1, 17, 1), float(1 + 3 * (17 + 20)));
        EXPECT_EQ(volume->getValue(-1, 0, 0), cases[i].before);
        EXPECT_EQ(volume->getValue(3, 0, 0), cases[i].behind);
        BAS_BoundingBox box, outline;
        volume->enlargeBounds(&box, 1);
        EXPECT_EQ(box, BAS_BoundingBox({8.0f, -1.5f, -1.0f}, {12.0f, 1.5f, 1.0f}));
        volume->createOutline()->enlargeBounds(&outline, 1);
        EXPECT_EQ(box, outline);
        EXPECT_EQ(volume->getDetailAttributes()->get("Cd")->getF64(0), i == 0 ? 0.25 : 0.0);
        RQ_RefineList list;
        EXPECT_FALSE(list.refine(volume, nullptr));
        EXPECT_TRUE(list.entries() == 1 && list.getPrimitive(0) == all[i]);
        EXPECT_EQ(volume->computeSurfaceArea(0), 0.0);
        EXPECT_NE(textOf(*volume).find("\"VoxelVolume\""), std::string::npos);
        EXPECT_EQ(textOf(*volume->harden()), textOf(*volume));
        EXPECT_EQ(as<RQ_PrimVolume>(volume->harden())->getPayload(), volume->getPayload());
    }
    EXPECT_EQ(as<RQ_PrimVolume>(all[3])->getValue(0, 0, 0), 0.0f);
    BAS_BoundingBox whole;
    RQ_MSHDetail::makeDetail(detail)->enlargeBounds(&whole, 1);
    EXPECT_EQ(whole, BAS_BoundingBox({-1.0f, -1.5f, -1.0f}, {12.0f, 1.5f, 1.0f}));

    // The values outlive the detail.
    MSH_PayloadHandle kept;
    {
        const MOD_DetailHandle other;
        append(other, counting(2, 2, 2));
        kept = as<RQ_PrimVolume>(refine(other.read())[0]->harden())->getPayload();
    }
    EXPECT_EQ(MSHpayloadData<MSH_VolumeData>(*kept).value(1, 1, 1), 7.0f);
}

struct HeightCase
{
    const char *what;
    int x, y, z;
    BAS_Mat3d matrix;
    bool isField;
    BAS_Vec3f first, last;  // points
    BAS_Vec3f up;
};

TEST(Volumes, HeightFieldsBecomeMeshesWhenAsked)
{
    const BAS_Mat3d still, mirrored(-2, 0, 0, 0, 2, 0, 0, 0, 4);
    const HeightCase cases[] = {
        {"a volume", 2, 2, 2, still, false, {}, {}, {}},
        {"a row", 5, 1, 1, still, false, {}, {}, {}},
        {"nothing", 0, 4, 1, still, false, {}, {}, {}},
        {"flat in z", 2, 4, 1, still, true, {-0.5f, -0.75f, 0.0f}, {0.5f, 0.75f, 7.0f}, {0, 0, 1}},
        {"flat in y", 4, 1, 2, still, true, {-0.75f, 0.0f, -0.5f}, {0.75f, 7.0f, 0.5f}, {0, 1, 0}},
        {"flat in x", 1, 2, 4, still, true, {0.0f, -0.5f, -0.75f}, {7.0f, 0.5f, 0.75f}, {1, 0, 0}},
        {"mirrored", 2, 4, 1, mirrored, true, {1.0f, -1.5f, 0.0f}, {-1.0f, 1.5f, 7.0f}, {0, 0, 1}},
    };
    RQ_RefineParms parms;
    parms.setHeightFieldConvert(true);
    for (const HeightCase &c : cases)
    {
        SCOPED_TRACE(c.what);
        const MOD_DetailHandle geometry;
        append(geometry, counting(c.x, c.y, c.z), c.matrix);
        RQ_RefineList list;
        EXPECT_EQ(list.refine(refine(geometry.read(), &parms)[0].get(), &parms), c.isField);
        const auto *mesh = as<RQ_PrimPolygonMesh>(list.getPrimitive(0));
        ASSERT_EQ(bool(mesh), c.isField);
        if (!mesh)
            continue;
        std::string why;
        EXPECT_TRUE(mesh->validate(&why)) << why;
        EXPECT_EQ(mesh->getFaceCount(), 3);
        const rq::Values<float> p(mesh->getShared()->get("P"));
        const auto point = [&](int64_t i) { return BAS_Vec3f(p[3 * i], p[3 * i + 1], p[3 * i + 2]); };
        EXPECT_EQ(point(0), c.first);
        EXPECT_EQ(point(7), c.last);
        for (int64_t face = 0; face < 3; ++face)
        {
            const BAS_Vec3f a = point(mesh->getPoint(face, 0)), b = point(mesh->getPoint(face, 1)),
                            d = point(mesh->getPoint(face, 3));
            EXPECT_GT((b - a).cross(d - a).dot(c.up), 0.0f);
        }
    }
}

/// A grid of some library.
class Grid final : public MSH_Opaque
{
public:
    const char *kind() const override { return "test_grid"; }
    bool save(std::vector<uint8_t> &bytes) const override { return bytes.push_back(1), true; }
    int64_t memoryUsage() const override { return 1; }
};

TEST(Volumes, SparseOnesHandTheirGridOn)
{
    const MOD_DetailHandle geometry;
    const MSH_OpaqueHandle grid(new Grid);
    const auto shift = [&](float by) {
        MOD_Edit edit(geometry);
        for (float &p :
             std::span(edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->modifyAll<float>(), 3))
            p += by;
        return edit.commit();
    };
    MOD_Edit edit(geometry);
    ASSERT_TRUE(edit.appendPoints(1));
    ASSERT_TRUE(edit.appendSparseVolumes({"fire", grid}, std::vector<int32_t>{0})) << edit.message();
    edit.commit();
    RQ_RefineList list;
    ASSERT_TRUE(list.refine(RQ_PrimitiveHandle(new RQ_MSHDetail({shift(0.0f), shift(3.0f)})).get(), nullptr));
    const auto *volume = as<RQ_PrimVDB>(list.getPrimitive(0));
    ASSERT_TRUE(volume);
    EXPECT_EQ(volume->getGrid(), grid);
    EXPECT_EQ(volume->getName().view(), "fire");
    EXPECT_STREQ(volume->getKind(), "test_grid");
    EXPECT_EQ(volume->getMotionSegments(), 2);
    BAS_BoundingBox boxes[2];
    volume->clone()->enlargeBounds(boxes, 2);
    EXPECT_TRUE(boxes[0] == BAS_BoundingBox(BAS_Vec3f(-1.0f), BAS_Vec3f(1.0f)) &&
                boxes[1] == BAS_BoundingBox(BAS_Vec3f(2.0f), BAS_Vec3f(4.0f)));
    EXPECT_NE(textOf(*volume).find("\"VDBVolume\""), std::string::npos);
}
}  // namespace
