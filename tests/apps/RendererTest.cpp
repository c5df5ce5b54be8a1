#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <host/bas/Parallel.h>
#include <rq/prim/CompactTransformArray.h>
#include <rq/surface/PrimCircleMesh.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimPointMesh.h>
#include <rq/surface/PrimSphereMesh.h>
#include <rq/surface/PrimTubeMesh.h>
#include <tests/apps/Globe.h>

namespace
{
using namespace tests;

/// The part of each direction of the picture that the object spans; 2 when it touches the border.
Imath::V2f spanned(const Scene &scene)
{
    const Camera camera(scene.outline().points(), float(kWidth) / float(kHeight));
    Imath::V2i low(kWidth, kHeight), high(-1, -1);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
        {
            Hit hit;
            const BAS_Vec3f direction = camera.direction(2.0f * (float(x) + 0.5f) / float(kWidth) - 1.0f,
                                                         1.0f - 2.0f * (float(y) + 0.5f) / float(kHeight));
            if (!scene.intersect({camera.origin(), direction}, hit))
                continue;
            low = {std::min(low.x, x), std::min(low.y, y)};
            high = {std::max(high.x, x), std::max(high.y, y)};
        }
    const bool cut = low.x == 0 || low.y == 0 || high.x == kWidth - 1 || high.y == kHeight - 1;
    return cut ? Imath::V2f(2.0f)
               : Imath::V2f(float(high.x - low.x + 1) / float(kWidth), float(high.y - low.y + 1) / float(kHeight));
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
        scene.add(globe.mesh());
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
    scene.add(RQ_PrimitiveHandle(new RQ_PrimPointMesh(list)));
    scene.commit(UpAxis::Y);
    EXPECT_GT(spanned(scene).x, 0.6f);
}

TEST(Renderer, DrawsCurvesAsRoundRibbons)
{
    // A closed square around the origin, whose last edge no two neighbouring vertices make, and a curve that with the
    // greatest width around it makes the box a cube of radius 1.
    const float h = 0.25f, s = 1.0f / std::sqrt(3.0f) - 0.3f;
    const std::vector<BAS_Vec3f> points = {{-h, -h, 0}, {h, -h, 0}, {h, h, 0}, {-h, h, 0}, {-s, -s, -s}, {s, s, s}};
    const float widths[] = {0.1f, 0.1f, 0.1f, 0.3f, 0.0f, 0.0f};
    const RQ_AttributeListHandle vertex =
        oneAttribute("P", triples(points, RQ_TYPE_POINT))
            ->addAttribute("width", RQ_DataArrayHandle(new RQ_DANumeric<float>(widths, 6)), false);
    const RQ_AttributeListHandle colours = oneAttribute("Cd", triples({{1, 0, 0}, {0, 1, 0}}, RQ_TYPE_COLOR));
    const RQ_CurveMeshHandle curves(new RQ_PrimCurveMesh(RQ_BASIS_LINEAR, integers({4, 2}), vertex, colours, {}, true));
    Scene scene;
    scene.add(curves);
    scene.commit(UpAxis::Y);
    EXPECT_EQ(scene.notDrawn(), 0);
    for (const auto &[x, radius] : {std::pair(h, 0.05f), std::pair(-h, 0.1f)})  // the closing edge is wider
        for (const float inside : {0.9f, 1.1f})
        {
            SCOPED_TRACE(testing::Message() << x << ' ' << inside);
            Hit hit;
            const float side = inside * radius;
            ASSERT_EQ(scene.intersect({BAS_Vec3f(x + side, 0.0f, 2.0f), BAS_Vec3f(0, 0, -1)}, hit), inside < 1.0f);
            if (inside > 1.0f)
                continue;
            EXPECT_EQ(hit.material.colour, BAS_Vec3f(1, 0, 0));
            EXPECT_NEAR(hit.position.z, std::sqrt(radius * radius - side * side), 0.1f * radius);
            EXPECT_NEAR(hit.normal.x, inside, 0.15f) << "round, not flat";
        }
}

struct QuadricCase
{
    const char *what;
    RQ_PrimQuadricMesh *mesh;
    BAS_Vec3f origin, direction, position, normal;
};

TEST(Renderer, DrawsQuadricsAsTheSurfacesThatTheyAre)
{
    // One quadric in the middle of a scene that two tiny ones make a cube of radius 1.  A quarter turn around x puts z up.
    const double s = 1.0 / std::sqrt(3.0), d = 1e-9;
    const BAS_Mat4d tiny = BAS_Mat4d().setScale(d);
    const BAS_Mat4d corners[] = {tiny * BAS_Mat4d().setTranslation(BAS_Vec3d(s)),
                                 tiny * BAS_Mat4d().setTranslation(BAS_Vec3d(-s))};
    const auto place = [&](const BAS_Vec3d &scale) {
        const BAS_Mat4d up(1, 0, 0, 0, 0, 0, -1, 0, 0, 1, 0, 0, 0, 0, 0, 1);
        const BAS_Mat4d matrices[] = {BAS_Mat4d().setScale(scale) * up, corners[0], corners[1]};
        return RQ_TransformArrayHandle(new RQ_CompactTransformArray(matrices, 3));
    };
    const RQ_AttributeListHandle colours = oneAttribute("Cd", triples({{1, 0, 0}, {0, 1, 0}, {0, 1, 0}}, RQ_TYPE_COLOR));
    const BAS_IntrusivePtr<RQ_PrimSphereMesh> ellipsoid(new RQ_PrimSphereMesh);
    ASSERT_TRUE(ellipsoid->init(colours, {}, place({0.4, 0.2, 0.1})));
    const BAS_IntrusivePtr<RQ_PrimCircleMesh> disc(new RQ_PrimCircleMesh);
    ASSERT_TRUE(disc->init(colours, {}, place({0.5, 0.25, 0.0})));
    const BAS_IntrusivePtr<RQ_PrimTubeMesh> open(new RQ_PrimTubeMesh), closed(new RQ_PrimTubeMesh);
    ASSERT_TRUE(open->init(0.5, false, colours, {}, place({0.4, 0.4, 1.0})));
    ASSERT_TRUE(closed->init(0.5, true, colours, {}, place({0.4, 0.4, 1.0})));
    const BAS_Vec3f down(0, -1, 0), in(0, 0, -1), miss(9.0f), up(0, 1, 0), any(0.0f);
    const BAS_Vec3f slant = BAS_Vec3f(0, 0.2f, 1).normalized();  // of a side that loses 0.2 over a height of 1
    const QuadricCase kCases[] = {
        {"an ellipsoid, its long side", ellipsoid.get(), {-2, 0, 0}, {1, 0, 0}, {-0.4f, 0, 0}, {-1, 0, 0}},
        {"next to its rim", ellipsoid.get(), {0.239f, 3, 0}, down, {0.239f, 0.1f * std::sqrt(1 - 0.357006f), 0}, any},
        {"past its rim", ellipsoid.get(), {0.401f, 3, 0}, down, miss, any},
        {"a disc that its matrix flattens", disc.get(), {0.499f, 1, 0}, down, {0.499f, 0, 0}, up},
        {"past the disc", disc.get(), {0, 1, 0.251f}, down, miss, any},
        {"the side of a tube", open.get(), {0, 0, 2}, in, {0, 0, 0.3f}, slant},
        {"above a tube", open.get(), {0, 0.501f, 2}, in, miss, any},
        {"through an open tube", open.get(), {0, 2, 0}, down, miss, any},
        {"onto the cap of a tube", closed.get(), {0, 2, 0.19f}, down, {0, 0.5f, 0.19f}, up},
        {"beside the cap, onto the side", closed.get(), {0, 2, 0.3f}, down, {0, 0, 0.3f}, slant},
    };
    for (const QuadricCase &c : kCases)
    {
        SCOPED_TRACE(c.what);
        Scene scene;
        scene.add(c.mesh);
        scene.commit(UpAxis::Y);
        Hit hit;
        const bool expected = c.position != miss;
        EXPECT_EQ(scene.occluded({c.origin, c.direction}), expected);
        ASSERT_EQ(scene.intersect({c.origin, c.direction}, hit), expected);
        if (!expected)
            continue;
        EXPECT_LT((hit.position - c.position).length(), 1e-6f) << hit.position;
        const bool knowsNormal = c.normal != any;
        EXPECT_LT(knowsNormal ? (hit.normal - c.normal).length() : 0.0f, 1e-5f) << hit.normal;
        EXPECT_EQ(hit.material.colour, BAS_Vec3f(1, 0, 0));
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
        const std::unique_ptr<Film> image = picture(primitive, 1);
        EXPECT_EQ(difference(*image, *image), 0.0) << "some pixel is no finite number";
    }
}

TEST(Renderer, PicturesDoNotDependOnTheThreads)
{
    const Globe globe(40, 20);
    const std::unique_ptr<Film> many = picture(globe.mesh(), 7);
    const BAS_Threads::Limit limit(1);
    EXPECT_EQ(difference(*many, *picture(globe.mesh(), 7)), 0.0);
}

TEST(Renderer, TakesColoursFromAnyOwner)
{
    const Globe globe(24, 12);
    const BAS_Vec3f red(0.9f, 0.1f, 0.1f);
    const auto colours = [&](size_t count) { return triples(std::vector<BAS_Vec3f>(count, red), RQ_TYPE_COLOR); };
    const std::unique_ptr<Film> byVertex = picture(globe.mesh(oneAttribute("Cd", colours(globe.corners.size()))));
    const BAS_Vec3f middle = byVertex->at(kWidth / 2, kHeight / 2).beauty;
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
    const std::unique_ptr<Film> image = picture(Globe(12, 6).mesh(), 16);
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x)
            ASSERT_GT(image->at(x, y).beauty.length(), 0.08f) << x << ' ' << y;
}
