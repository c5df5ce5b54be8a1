#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include <apps/offline/Integrator.h>
#include <host/bas/Parallel.h>
#include <rq/prim/CompactTransformArray.h>
#include <rq/surface/PrimPointMesh.h>
#include <rq/surface/PrimSphereMesh.h>
#include <tests/rq/surface/Fixture.h>

namespace
{
using namespace rq::offline;
using namespace tests;

constexpr int kWidth = 96, kHeight = 54;

RQ_DataArrayHandle triples(const std::vector<BAS_Vec3f> &values, RQ_Type type)
{
    return RQ_DataArrayHandle(new RQ_DANumeric<float>(&values.data()->x, int64_t(values.size()), 3, type));
}

/// A globe of quads around the origin, closed by triangles at the poles.
struct Globe
{
    std::vector<BAS_Vec3f> points;
    std::vector<int32_t> counts, corners;

    Globe(int around, int up)
    {
        for (int row = 0; row <= up; ++row)
            for (int i = 0; i < around; ++i)
            {
                const float turn = 2.0f * std::numbers::pi_v<float> * float(i) / float(around);
                const float lift = std::numbers::pi_v<float> * (float(row) / float(up) - 0.5f);
                points.emplace_back(std::cos(lift) * std::sin(turn), std::sin(lift), std::cos(lift) * std::cos(turn));
            }
        for (int row = 0; row < up; ++row)
            for (int i = 0; i < around; ++i)
            {
                const int a = row * around, next = (i + 1) % around;
                counts.push_back(4);
                corners.insert(corners.end(), {a + i, a + next, a + around + next, a + around + i});
            }
    }

    RQ_PrimitiveHandle mesh(const RQ_AttributeListHandle &vertex = {}, const RQ_AttributeListHandle &uniform = {}) const
    {
        return RQ_PrimitiveHandle(new RQ_PrimPolygonMesh(
            integers(counts), integers(corners), oneAttribute("P", triples(points, RQ_TYPE_POINT)), vertex, uniform));
    }
};

/// The part of each direction of the picture that the object spans; 2 when it touches the border.
Imath::V2f spanned(const Scene &scene)
{
    const Camera camera(scene.outline(), float(kWidth) / float(kHeight));
    Imath::V2i low(kWidth, kHeight), high(-1, -1);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
        {
            Hit hit;
            const BAS_Vec3f direction = camera.direction(2.0f * (float(x) + 0.5f) / float(kWidth) - 1.0f,
                                                         1.0f - 2.0f * (float(y) + 0.5f) / float(kHeight));
            if (!scene.intersect(camera.origin(), direction, hit))
                continue;
            low = {std::min(low.x, x), std::min(low.y, y)};
            high = {std::max(high.x, x), std::max(high.y, y)};
        }
    const bool cut = low.x == 0 || low.y == 0 || high.x == kWidth - 1 || high.y == kHeight - 1;
    return cut ? Imath::V2f(2.0f)
               : Imath::V2f(float(high.x - low.x + 1) / float(kWidth), float(high.y - low.y + 1) / float(kHeight));
}

std::unique_ptr<Image> picture(const RQ_PrimitiveHandle &primitive, int samples = 4)
{
    Scene scene;
    scene.add(primitive, nullptr);
    scene.commit(UpAxis::Y);
    Settings settings;
    settings.width = kWidth;
    settings.height = kHeight;
    settings.samples = samples;
    return render(scene, Camera(scene.outline(), float(kWidth) / float(kHeight)), settings);
}

double difference(Image &a, Image &b)
{
    double sum = 0.0;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            sum += (a.at(x, y) - b.at(x, y)).length();
    return sum / (kWidth * kHeight);
}
}  // namespace

TEST(Renderer, FramesObjectsOfAnySizeAndPlaceAndWithLostPoints)
{
    const struct
    {
        const char *what;
        float scale, offset, lost;  // the last is added to one coordinate of one point
    } kCases[] = {{"tiny", 1e-15f, 0.0f, 0.0f},
                  {"huge", 1e15f, 0.0f, 0.0f},
                  {"far away", 1.0f, 4096.0f, 0.0f},
                  {"tiny elsewhere", 1e-3f, 1.0f, 0.0f},
                  {"one point is no number", 1.0f, 0.0f, std::numeric_limits<float>::quiet_NaN()},
                  {"one point is infinitely far", 1.0f, 0.0f, std::numeric_limits<float>::infinity()}};
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        Globe globe(32, 16);
        for (BAS_Vec3f &point : globe.points)
            point = point * c.scale + BAS_Vec3f(c.offset);
        globe.points[40].x += c.lost;
        Scene scene;
        scene.add(globe.mesh(), nullptr);
        scene.commit(UpAxis::Auto);
        const Imath::V2f part = spanned(scene);
        EXPECT_GT(part.y, 0.8f);
        EXPECT_LT(part.y, 0.95f);
        EXPECT_NEAR(part.x * kWidth, part.y * kHeight, 2.0f) << "a globe is as wide as high";
    }
}

TEST(Renderer, DrawsPointsAsSpheres)
{
    RQ_AttributeListHandle list = oneAttribute("P", triples({{0, 0, 0}, {10, 0, 0}, {5, 4, 0}}, RQ_TYPE_POINT));
    const float widths[] = {2.0f, 1.0f, 1.0f};
    list = list->addAttribute("width", RQ_DataArrayHandle(new RQ_DANumeric<float>(widths, 3)), false);
    Scene scene;
    scene.add(RQ_PrimitiveHandle(new RQ_PrimPointMesh(list)), nullptr);
    scene.commit(UpAxis::Y);
    EXPECT_EQ(scene.spheres(), 3);
    EXPECT_GT(spanned(scene).x, 0.6f);
}

TEST(Renderer, DrawsQuadricsAsTheSmoothSurfacesTheyAre)
{
    const BAS_Mat4d places[] = {BAS_Mat4d(), BAS_Mat4d().setTranslation(BAS_Vec3d(4, 0, 0))};
    const BAS_IntrusivePtr<RQ_PrimSphereMesh> spheres(new RQ_PrimSphereMesh);
    ASSERT_TRUE(spheres->init(oneAttribute("Cd", triples({{1, 0, 0}, {0, 1, 0}}, RQ_TYPE_COLOR)), {},
                              new RQ_CompactTransformArray(places, 2)));
    Scene scene;
    scene.add(spheres, nullptr);
    scene.commit(UpAxis::Y);
    EXPECT_EQ(scene.notDrawn(), 0);
    const float unit = 1.0f / std::sqrt(11.0f);  // the box is 6 x 2 x 2
    for (const int i : {0, 1})
    {
        const BAS_Vec3f centre(unit * (i == 0 ? -2.0f : 2.0f), 0.0f, 0.0f);
        Hit hit;
        ASSERT_TRUE(scene.intersect(centre + BAS_Vec3f(0.5f * unit, 0.4f * unit, 2.0f), BAS_Vec3f(0, 0, -1), hit));
        const BAS_Vec3f outward = (hit.position - centre) / unit;
        EXPECT_NEAR(outward.length(), 1.0f, 0.03f);
        EXPECT_LT((hit.normal - outward.normalized()).length(), 0.03f);
        EXPECT_EQ(hit.colour, BAS_Vec3f(i == 0, i == 1, 0));
    }
}

TEST(Renderer, SurvivesUglyInput)
{
    const RQ_PrimitiveHandle noFaces(
        new RQ_PrimPolygonMesh(integers({}), integers({}), oneAttribute("P", triples({{0, 0, 0}}, RQ_TYPE_POINT))));
    const RQ_PrimitiveHandle noPositions(
        new RQ_PrimPolygonMesh(integers({3}), integers({0, 0, 0}), RQ_AttributeListHandle(new RQ_AttributeList(nullptr))));
    Globe flat(8, 4);
    std::ranges::fill(flat.points, BAS_Vec3f(1.0f));
    Globe lost(8, 4);
    lost.points[11] = BAS_Vec3f(std::numeric_limits<float>::quiet_NaN());
    const std::pair<const char *, RQ_PrimitiveHandle> cases[] = {
        {"nothing", nullptr},
        {"no faces", noFaces},
        {"no positions", noPositions},
        {"all points in one place", flat.mesh()},
        {"a point that is no number", lost.mesh()},
    };
    for (const auto &[what, primitive] : cases)
    {
        SCOPED_TRACE(what);
        const std::unique_ptr<Image> image = picture(primitive, 1);
        EXPECT_EQ(difference(*image, *image), 0.0) << "some pixel is no finite number";
    }
}

TEST(Renderer, PicturesDoNotDependOnTheThreads)
{
    const Globe globe(40, 20);
    const std::unique_ptr<Image> many = picture(globe.mesh(), 7);
    const BAS_Threads::Limit limit(1);
    EXPECT_EQ(difference(*many, *picture(globe.mesh(), 7)), 0.0);
}

TEST(Renderer, TakesColoursFromAnyOwner)
{
    const Globe globe(24, 12);
    const BAS_Vec3f red(0.9f, 0.1f, 0.1f);
    const auto colours = [&](size_t count) { return triples(std::vector<BAS_Vec3f>(count, red), RQ_TYPE_COLOR); };
    const std::unique_ptr<Image> byVertex = picture(globe.mesh(oneAttribute("Cd", colours(globe.corners.size()))));
    const BAS_Vec3f middle = byVertex->at(kWidth / 2, kHeight / 2);
    EXPECT_GT(middle.x, 4.0f * middle.y);
    EXPECT_LT(difference(*byVertex, *picture(globe.mesh({}, oneAttribute("Cd", colours(globe.counts.size()))))), 1e-6);
}

TEST(Renderer, NormalsOfTheFileMayPointInward)
{
    const Globe globe(24, 12);
    std::vector<BAS_Vec3f> inward;
    for (const int32_t point : globe.corners)
        inward.push_back(-globe.points[size_t(point)]);
    const RQ_PrimitiveHandle reversed = globe.mesh(oneAttribute("N", triples(inward, RQ_TYPE_NORMAL)));
    EXPECT_LT(difference(*picture(globe.mesh(), 16), *picture(reversed, 16)), 0.02);
}

TEST(Renderer, CoarseSmoothSurfacesHaveNoBlackSpeckles)
{
    const std::unique_ptr<Image> image = picture(Globe(12, 6).mesh(), 16);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            ASSERT_GT(image->at(x, y).length(), 0.08f) << x << ' ' << y;
}
