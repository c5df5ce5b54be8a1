#include <host/bas/Diagnostics.h>
#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimCurveMesh.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
constexpr double kSeconds = 0.5;

/// A triangle, a polyline and a loose point or more, whose points lie at `x`.
struct Sample
{
    std::vector<float> x = {};
    std::vector<int32_t> ids = {};
    float velocity = 0.0f, acceleration = 0.0f;
    std::vector<int32_t> triangle = {0, 1, 2};

    MOD_ConstDetailHandle make() const
    {
        const auto addVectors = [this](MOD_Edit &edit, const char *name, auto &&valueOf) {
            float *values = edit.attribute(ELM_OWNER_POINT, name, ELM_STORAGE_REAL32, 3)->writeAll<float>();
            for (size_t i = 0; i < x.size(); ++i)
                values[3 * i] = valueOf(i);
        };
        MOD_Edit edit{MOD_DetailHandle()};
        const int32_t line[] = {1, 0}, two[] = {2};
        EXPECT_TRUE(edit.appendPoints(int64_t(x.size())));
        EXPECT_TRUE(edit.appendPolygons(3, triangle, true) && edit.appendPolygons(two, line, false));
        float *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->writeAll<float>();
        for (size_t i = 0; i < x.size(); ++i)
            p[3 * i] = x[i], p[3 * i + 1] = float(i == 1), p[3 * i + 2] = 0.0f;
        if (!ids.empty())
            std::copy(ids.begin(), ids.end(), edit.attribute(ELM_OWNER_POINT, "id", ELM_STORAGE_INT32)->writeAll<int32_t>());
        if (velocity != 0.0f)
            addVectors(edit, "v", [this](size_t i) { return i == 0 ? velocity : 0.0f; });
        if (acceleration != 0.0f)
            addVectors(edit, "accel", [this](size_t i) { return i == 0 ? acceleration : 0.0f; });
        edit.stringAttribute(ELM_OWNER_POINT, "name")->strings()->set(0, "first");
        return edit.commit();
    }
};

struct MotionCase
{
    const char *what;
    std::vector<Sample> samples;
    std::vector<float> end;  // x of each point in the last segment; empty: nothing moves
};

const Sample kStart{{0, 1, 2, 3}, {}, 0, 0}, kWithIds{{0, 1, 2, 3}, {5, 6, 7, 8}, 0, 0};

const MotionCase kMotionCases[] = {
    {"one sample", {kStart}, {}},
    {"the same elements", {kStart, {{4, 5, 6, 7}}}, {4, 5, 6, 7}},
    {"the same elements and ids", {kWithIds, {{4, 5, 6, 7}, {5, 6, 7, 8}}}, {4, 5, 6, 7}},
    {"the same elements and other ids", {kWithIds, {{4, 5, 6, 7}, {8, 7, 6, 5}}}, {7, 6, 5, 4}},
    {"a sample has no ids", {kWithIds, {{4, 5, 6, 7}}}, {4, 5, 6, 7}},
    {"an id twice", {kWithIds, {{4, 5, 9, 6, 7}, {5, 6, 5, 7, 8}}}, {4, 5, 6, 7}},
    {"births", {kWithIds, {{9, 4, 5, 6, 7}, {1, 5, 6, 7, 8}}}, {4, 5, 6, 7}},
    {"a death", {kWithIds, {{4, 5, 6}, {8, 7, 6}}}, {0, 6, 5, 4}},
    {"a death on the way", {{{0, 1, 2}, {5, 6, 7}, 8, 0}, {{4, 5, 6, 7}, {6, 7, 8, 9}}}, {4, 4, 5}},
    {"ids of which none is known", {{{0, 1, 2}, {-1, -1, -1}}, {{4, 5, 6, 7}, {-1, -1, -1, 9}}}, {0, 1, 2}},
    {"other faces, velocity", {{{0, 1, 2}, {}, 8}, {{4, 5, 6}, {}, 0, 0, {0, 2, 1}}}, {4, 1, 2}},
    {"acceleration too", {{{0, 1, 2}, {}, 8, 16}, {{4, 5, 6, 7}}}, {6, 1, 2}},
    {"two steps", {{{0, 1, 2}, {}, 8, 16}, {{4, 5, 6, 7}}, {{4, 5, 6, 7}}}, {16, 1, 2}},
    {"other elements", {kStart, {{4, 5, 6}}}, {}},
};

std::vector<float> column(const RQ_DataArrayHandle &array)
{
    std::vector<float> x = {};
    for (int64_t i = 0; i < array->entries(); ++i)
        x.push_back(array->getF32(i));
    return x;
}

TEST(Motion, IsMadeOfWhatTheSamplesHaveInCommon)
{
    for (const MotionCase &c : kMotionCases)
    {
        SCOPED_TRACE(c.what);
        std::vector<MOD_ConstDetailHandle> details;
        for (const Sample &sample : c.samples)
            details.push_back(sample.make());
        static int warnings;
        warnings = 0;
        BAS_Diagnostics::setSink([](std::string_view) { ++warnings; });
        const RQ_PrimitiveHandle moving(new RQ_MSHDetail(details, {}, kSeconds));
        BAS_Diagnostics::setSink(nullptr);
        const int segments = c.end.empty() ? 1 : int(details.size());
        EXPECT_EQ(warnings, segments < int(details.size()));
        EXPECT_EQ(moving->getMotionSegments(), segments);
        RQ_RefineList list;
        RQ_RefineParms parms;
        parms.setShowAllPoints(true);
        parms.setAddVertexNormals(true);
        ASSERT_TRUE(list.refine(moving.get(), &parms));
        ASSERT_EQ(list.entries(), 2);
        const std::vector<float> end = c.end.empty() ? c.samples[0].x : c.end;
        EXPECT_EQ(column(list.getPrimitive(0)->getPointAttributes()->get("P", segments - 1)), end) << "points";
        const auto *both = as<RQ_PrimCollect>(list.getPrimitive(1));
        const RQ_PrimitiveHandle mesh = both->getPrim(0), curve = both->getPrim(1);
        const std::vector<float> corners(end.begin(), end.begin() + 3), line = {end[1], end[0]};
        EXPECT_EQ(mesh->getPointAttributes()->getSegments(), segments);
        EXPECT_EQ(column(mesh->getPointAttributes()->get("P", segments - 1)), corners) << "faces";
        const RQ_DataArrayHandle normals =
            as<RQ_PrimPolygonMesh>(mesh)->createVertexNormals(segments - 1, "P", 60.0, true, RQ_STORAGE_REAL32);
        EXPECT_TRUE(mesh->getVertexAttributes()->get("N", segments - 1)->isEqual(*normals));
        EXPECT_EQ(column(curve->getVertexAttributes()->get("P", segments - 1)), line) << "curves";
        EXPECT_EQ(column(mesh->getPointAttributes()->get("P", 0)),
                  std::vector<float>(c.samples[0].x.begin(), c.samples[0].x.begin() + 3));

        // Whoever refines the samples again finds the same ids.
        RQ_RefineList again;
        ASSERT_TRUE(again.refine(moving.get(), &parms));
        EXPECT_EQ(again.getPrimitive(0)->getPointAttributes()->get("P", segments - 1)->getDataId(),
                  list.getPrimitive(0)->getPointAttributes()->get("P", segments - 1)->getDataId());
    }
}

TEST(Motion, OfASingleSampleIsItsVelocity)
{
    const RQ_PrimitiveHandle moving = RQ_MSHDetail::makeMoving(Sample{{0, 1, 2}, {}, 8, 16}.make(), 3, kSeconds);
    EXPECT_EQ(moving->getMotionSegments(), 3);
    BAS_BoundingBox boxes[3];
    moving->enlargeBounds(boxes, 3);
    EXPECT_EQ(boxes[1].maximum().x, 6.0f);
    EXPECT_EQ(boxes[2].maximum().x, 16.0f);
    EXPECT_EQ(RQ_MSHDetail::makeMoving(kStart.make(), 3, kSeconds)->getMotionSegments(), 1);
    EXPECT_EQ(RQ_MSHDetail::makeMoving(MOD_ConstDetailHandle(), 3, kSeconds)->getMotionSegments(), 1);
}
}  // namespace
