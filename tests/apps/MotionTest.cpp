#include <gtest/gtest.h>

#include <tuple>

#include <rq/prim/CompactTransformArray.h>
#include <rq/prim/PrimInstance.h>
#include <rq/prim/RefineList.h>
#include <rq/surface/PrimSphereMesh.h>
#include <tests/apps/Globe.h>

using namespace tests;

namespace
{
BAS_Mat4d placed(const BAS_Vec3d &at, double size = 1.0, double turn = 0.0)
{
    BAS_Mat4d scale, rotate, move;
    scale.setScale(BAS_Vec3d(size, size, -1.5 * size));  // mirrored, and longer than wide
    rotate.setEulerAngles(BAS_Vec3d(turn, 0.4 * turn, 0.0));
    move.setTranslation(at);
    return scale * rotate * move;
}

RQ_PrimitiveHandle instances(const RQ_PrimitiveHandle &geometry, const std::vector<BAS_Mat4d> &matrices, int segments = 1,
                             const RQ_AttributeListHandle &attributes = {})
{
    const int64_t count = int64_t(matrices.size()) / segments;
    return RQ_PrimitiveHandle(new RQ_PrimInstance(
        geometry, RQ_TransformArrayHandle(new RQ_CompactTransformArray(matrices.data(), count, segments)), attributes));
}

/// What every instance is, as primitives of their own.
void addFlat(Scene &scene, const RQ_PrimitiveHandle &primitive)
{
    if (!dynamic_cast<const RQ_PrimInstance *>(primitive.get()))
        return scene.add(primitive);
    RQ_RefineList list;
    list.refine(primitive.get(), nullptr);
    for (int i = 0; i < list.entries(); ++i)
        addFlat(scene, list.getPrimitive(i));
}

/// The part of rays at a moment, straight down a grid over the middle of the scene, that meet something.
double coverage(const Scene &scene, float time)
{
    int met = 0;
    for (int i = 0; i < 100 * 100; ++i)
        met += scene.occluded({{float(i % 100) * 0.02f - 0.99f, 2.0f, float(i / 100) * 0.02f - 0.99f}, {0, -1, 0}, time});
    return met / 1e4;
}
}  // namespace

TEST(Instances, AreWhatTheyWouldBeOneByOne)
{
    const Globe globe(16, 8);
    const std::vector<BAS_Mat4d> few = {placed({0, 0, 0}, 0.5), placed({2, 0.5, 0}, 0.3, 1.0),
                                        placed({0, 1.5, 1}, 0.4, 2.0)};
    const RQ_PrimitiveHandle one = instances(globe.mesh(), few);
    const std::vector<BAS_Mat4d> rows = {placed({0, 0, 0}, 0.7, 0.3), placed({4, 1, -2}, 0.5, -1.0)};
    const std::pair<const char *, RQ_PrimitiveHandle> cases[] = {
        {"a few", one},
        {"instances of instances", instances(one, rows)},
        {"three levels", instances(instances(one, rows), rows)},
        {"small geometry, placed large",
         instances(instances(globe.mesh(), {placed({0, 0, 0}, 1e-7)}), {placed({0, 0, 0}, 1e7)})},
    };
    for (const auto &[what, primitive] : cases)
    {
        SCOPED_TRACE(what);
        Scene shared, flat;
        shared.add(primitive);
        addFlat(flat, primitive);
        shared.commit(UpAxis::Y);
        flat.commit(UpAxis::Y);
        EXPECT_EQ(shared.notDrawn(), 0);
        int met = 0, different = 0;
        for (int i = 0; i < 40 * 40; ++i)
        {
            // Both are asked in the file's space: what they take for the unit sphere may differ a little.
            const BAS_Vec3f eye(0.3f, 0.9f, 4.0f), way(float(i % 40) * 0.035f - 1.0f, float(i / 40) * 0.035f - 1.6f, -4.0f);
            Ray ray{flat.fromFile().inverse().point(eye), flat.fromFile().inverse().vector(way)};
            Hit a, b;
            const bool hitsFlat = flat.intersect({eye, way}, a),
                       hitsShared = shared.intersect(shared.fromFile().ray(ray), b);
            different += hitsFlat != hitsShared;
            if (!hitsFlat || !hitsShared)
                continue;
            ++met;
            EXPECT_NEAR(a.distance, b.distance, 2e-3f);
            EXPECT_EQ(shared.occluded(shared.fromFile().ray(ray)), true);
            ASSERT_LT((a.normal - b.normal).length(), 0.15f) << i;
        }
        EXPECT_GT(met, 50);
        EXPECT_LT(different, 8) << "but for some rays along an outline";
    }
}

TEST(Instances, ShareTheirGeometryAndHaveColoursOfTheirOwn)
{
    const Globe globe(16, 8);
    const RQ_AttributeListHandle red = oneAttribute("Cd", triples({{1, 0, 0}, {0, 1, 0}}, RQ_TYPE_COLOR));
    Scene scene;
    const RQ_PrimitiveHandle mesh = globe.mesh();
    for (int i = 0; i < 5; ++i)
        scene.add(instances(mesh, {placed({0, 0, double(i)}, 0.2), placed({2, 0, double(i)}, 0.2)}, 1, red));
    scene.commit(UpAxis::Y);
    EXPECT_EQ(scene.sharedBytes(), int64_t(globe.points.size() * sizeof(BAS_Vec3f))) << "once, and in place";
    Hit hit;
    ASSERT_TRUE(scene.intersect(scene.fromFile().ray({{2, 0, 9}, {0, 0, -1}}), hit));
    EXPECT_EQ(hit.material.colour, BAS_Vec3f(0, 1, 0));
}

TEST(Motion, BlursWhatMovesAndNothingElse)
{
    // A ball that flies to the right beside one that rests, as moving points, as a moving transform and as an instance.
    const Globe globe(24, 12);
    const RQ_PrimitiveHandle rests = globe.mesh()->copyTransformed(RQ_TransformHandle(
        new RQ_Transform(std::vector<BAS_Mat4d>{BAS_Mat4d().setTranslation(BAS_Vec3d(0, 0, 6))}.data(), 1)));
    std::vector<BAS_Vec3f> later = globe.points;
    for (BAS_Vec3f &point : later)
        point.x += 8.0f;
    const RQ_DataArrayHandle ends[] = {triples(globe.points, RQ_TYPE_POINT), triples(later, RQ_TYPE_POINT)};
    const RQ_AttributeListHandle points =
        RQ_AttributeListHandle(new RQ_AttributeList(nullptr, 2))->addAttribute("P", ends, 2, true);
    const BAS_Mat4d way[] = {BAS_Mat4d(), BAS_Mat4d().setTranslation(BAS_Vec3d(8, 0, 0))};
    const BAS_IntrusivePtr<RQ_PrimSphereMesh> ball(new RQ_PrimSphereMesh);
    ASSERT_TRUE(ball->init({}, {}, RQ_TransformArrayHandle(new RQ_CompactTransformArray(way, 1, 2))));
    const std::pair<const char *, RQ_PrimitiveHandle> cases[] = {
        {"points", RQ_PrimitiveHandle(new RQ_PrimPolygonMesh(integers(globe.counts), integers(globe.corners), points))},
        {"a transform", globe.mesh()->copyTransformed(RQ_TransformHandle(new RQ_Transform(way, 2)))},
        {"a sphere", ball},
        {"an instance", instances(globe.mesh(), {way[0], way[1]}, 2)},
    };
    for (const auto &[what, primitive] : cases)
    {
        SCOPED_TRACE(what);
        Scene scene;
        scene.add(rests);
        scene.add(primitive);
        scene.commit(UpAxis::Y);
        Hit hit;
        for (const float time : {0.0f, 0.25f, 1.0f})
        {
            const auto meets = [&](float x) { return scene.occluded(scene.fromFile().ray({{x, 5, 0}, {0, -1, 0}, time})); };
            EXPECT_TRUE(meets(8.0f * time + 0.9f) && meets(8.0f * time - 0.9f)) << time;
            EXPECT_FALSE(meets(8.0f * time + 1.1f) || meets(8.0f * time - 1.1f)) << time;
            ASSERT_TRUE(scene.intersect(scene.fromFile().ray({{8.0f * time, 5, 0.3f}, {0, -1, 0}, time}), hit));
            EXPECT_NEAR(hit.normal.z, 0.3f, 0.06f);
            EXPECT_NEAR(coverage(scene, time), coverage(scene, 0.0f), 0.005);
        }

        // Seen at the beginning, at the end, and all the time.
        double covered[3] = {}, touched[3] = {};
        const float shutters[3][2] = {{0.0f, 0.0f}, {1.0f, 1.0f}, {0.0f, 1.0f}};
        for (int i = 0; i < 3; ++i)
        {
            Settings settings;
            settings.ground = false;
            std::tie(settings.shutterOpen, settings.shutterClose) = std::tie(shutters[i][0], shutters[i][1]);
            const auto film = picture(primitive, 16, settings);
            for (const Pixel &pixel : film->pixels)
            {
                covered[i] += double(pixel.coverage);
                touched[i] += pixel.coverage > 0.0f ? 1.0 : 0.0;
            }
        }
        EXPECT_NEAR(2.0 * covered[2] / (covered[0] + covered[1]), 1.0, 0.2) << "motion spreads the ball, no more";
        EXPECT_GT(touched[2], 1.5 * (touched[0] + touched[1])) << "it is seen all along its way";
    }
}
