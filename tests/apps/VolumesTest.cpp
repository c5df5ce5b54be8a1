#include <gtest/gtest.h>

#include <apps/offline/Scene.h>
#include <apps/viewport/Form.h>
#include <apps/viewport/Item.h>
#include <apps/viewport/Scene.h>
#include <host/mod/Edit.h>
#include <host/msh/Meta.h>
#include <host/msh/Volume.h>
#include <rq/bridge/MSHDetail.h>

namespace
{
/// Two volumes, one of which is a field of heights, and a blob between them.
RQ_PrimitiveHandle makeDetail()
{
    const float voxels[8] = {};
    MOD_Edit edit{MOD_DetailHandle()};
    EXPECT_TRUE(edit.appendPoints(3) && edit.appendVolumes(MSH_VolumeData(2, 2, 2, voxels), std::vector<int32_t>{0}) &&
                edit.appendVolumes(MSH_VolumeData(2, 2, 1, voxels), std::vector<int32_t>{1}) &&
                edit.appendBlobs(ELM_PRIMITIVE_BLOB_ELLIPSOID, {}, std::vector<int32_t>{2}))
        << edit.message();
    const float positions[] = {-3, 0, 0, 3, 0, 0, 0, 0, 0};
    EXPECT_TRUE(edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->write(0, 3, positions));
    return RQ_MSHDetail::makeDetail(edit.commit());
}

TEST(Volumes, ShowTheirBoxAndMetaballsTheirSurfaceInTheViewport)
{
    for (const bool converts : {false, true})
    {
        RQ_RefineParms parms;
        parms.setHeightFieldConvert(converts);
        const rq::viewport::SceneHandle scene = rq::viewport::Scene::make({{makeDetail(), {}}}, {}, &parms);
        ASSERT_TRUE(scene);
        EXPECT_TRUE(scene->complaints().empty());
        int64_t edges = 0, surfaces = 0;
        for (const rq::viewport::Item &item : scene->items())
        {
            edges += item.form->kind == rq::viewport::FormKind::Segments ? item.form->elements : 0;
            surfaces += item.form->kind == rq::viewport::FormKind::Triangles;
        }
        EXPECT_EQ(edges, converts ? 12 : 24);
        EXPECT_EQ(surfaces, converts ? 2 : 1);
        EXPECT_FLOAT_EQ(scene->bounds().minimum().x, -4.0f);
    }
}

TEST(Volumes, AreLeftOutOfPicturesWithOneWarning)
{
    rq::offline::Scene scene;
    scene.add(makeDetail());
    scene.add(makeDetail());
    scene.commit(rq::offline::UpAxis::Y);
    EXPECT_EQ(scene.notDrawn(), 0);
    EXPECT_EQ(scene.complaints().size(), 1u);
    rq::offline::Hit hit;
    EXPECT_TRUE(scene.intersect({BAS_Vec3f(0, 0, 5), BAS_Vec3f(0, 0, -1)}, hit));
}
}  // namespace
