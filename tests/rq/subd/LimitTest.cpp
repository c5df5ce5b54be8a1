#include <gtest/gtest.h>

#include <functional>

#include <rq/subd/SubdLimit.h>
#include <tests/rq/surface/Fixture.h>

using namespace tests;

namespace
{
struct Place
{
    BAS_Vec3f p, du, dv, n;
    bool found;
};

class Surface
{
public:
    Surface(const MeshShape &shape, RQ_Scheme scheme, int hole = -1)
    {
        const RQ_SubdivisionMeshHandle mesh(new RQ_PrimSubdivisionMesh(*makeMesh(shape), scheme));
        mesh->appendIntTag("hole", integers({hole}));
        limit_ = RQ_SubdLimit::create(RQ_SubdTopology::create(*mesh), mesh->getShared()->get("P"));
    }

    Place at(const RQ_SubdSample &sample) const
    {
        Place place;
        place.found = limit_->evaluate(&sample, 1, {&place.p.x, &place.du.x, &place.dv.x, &place.n.x});
        return place;
    }

private:
    RQ_SubdLimitHandle limit_;
};

/// A grid over the whole numbers from 0 to 6 whose height is `height(x, y)`, of quads or of triangles.
template <class Height> MeshShape grid(bool triangles, Height &&height)
{
    MeshShape shape;
    for (int y = 0; y <= 6; ++y)
        for (int x = 0; x <= 6; ++x)
            shape.addPoint(float(x), float(y), float(height(x, y)));
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 6; ++x)
        {
            const int at = 7 * y + x;
            if (!triangles)
                shape.addFace({at, at + 1, at + 8, at + 7});
            else
                for (const std::vector<int> &face : {std::vector<int>{at, at + 1, at + 8}, {at, at + 8, at + 7}})
                    shape.addFace(face);
        }
    return shape;
}

void expectNear(const BAS_Vec3f &found, const BAS_Vec3f &expected, double tolerance)
{
    EXPECT_LT((found - expected).length(), tolerance) << found << expected;
}
}  // namespace

TEST(SubdLimit, RegularQuadsAreBicubicSplines)
{
    // The spline through control heights x squared is x squared plus a third.
    const Surface surface(grid(false, [](int x, int) { return x * x; }), RQ_SCHEME_CATMULL_CLARK);
    for (const float u : {0.0f, 0.3f, 1.0f})
        for (const float v : {0.0f, 0.5f, 0.9f})
        {
            const Place place = surface.at({6 * 2 + 3, 5, u, v});
            const float x = 3 + u;
            EXPECT_TRUE(place.found);
            expectNear(place.p, {x, 2 + v, x * x + 1.0f / 3}, 1e-5);
            expectNear(place.du, {1, 0, 2 * x}, 1e-5);
            expectNear(place.dv, {0, 1, 0}, 1e-5);
            expectNear(place.n, BAS_Vec3f(-2 * x, 0, 1).normalized(), 1e-5);
        }
    // Boundary curves are cubic splines of their own that end in the corners.
    expectNear(surface.at({0, 0, 0, 0}).p, {0, 0, 0}, 1e-6);
    expectNear(surface.at({3, 0, 0.5f, -1}).p, {3.5f, 0, 3.5f * 3.5f + 1.0f / 3}, 1e-5);
}

TEST(SubdLimit, RegularTrianglesKeepQuadraticShapes)
{
    // A box spline of control heights x squared is x squared plus a third as well: the mask 6, 1, 1, 1, 1, 1, 1 over 12.
    const Surface surface(grid(true, [](int x, int) { return x * x; }), RQ_SCHEME_LOOP);
    const Place place = surface.at({2 * (6 * 2 + 3), 0, 0.25f, 0.5f});  // corners (3,2), (4,2) and (4,3)
    expectNear(place.p, {3.75f, 2.5f, 3.75f * 3.75f + 1.0f / 3}, 1e-5);
    expectNear(place.du, {1, 0, 7.5f}, 1e-4);
    expectNear(place.dv, {1, 1, 7.5f}, 1e-4);
    expectNear(surface.at({2 * (6 * 2 + 3), 0, 1, 1}).p, {4, 2, 16 + 1.0f / 3}, 1e-5);
}

TEST(SubdLimit, IrregularPointsLieWhereTheirFormulasSay)
{
    // Catmull-Clark, valence n: n n own, 4 each neighbour, 1 each opposite corner, over n (n + 5).
    const Surface cube(cubeShape(), RQ_SCHEME_CATMULL_CLARK);
    const Place corner = cube.at({0, 0, 0, 0});
    expectNear(corner.p, BAS_Vec3f(-0.25f), 1e-5);
    expectNear(corner.n, BAS_Vec3f(-1).normalized(), 1e-4);
    // All quads of a pentagon meet in its middle, and neighbours along their edges.
    MeshShape house = faceShape("house", {{0, 0}, {4, 0}, {4, 3}, {2, 5}, {0, 3}});
    house.positions[2] = 1.0f;
    const Surface pentagon(house, RQ_SCHEME_CATMULL_CLARK);
    for (int quad = 0; quad < 5; ++quad)
    {
        expectNear(pentagon.at({0, quad, 1, 1}).p, pentagon.at({0, 0, 1, 1}).p, 1e-5);
        expectNear(pentagon.at({0, quad, 1, 0.3f}).p, pentagon.at({0, (quad + 1) % 5, 0.3f, 1}).p, 1e-5);
        expectNear(pentagon.at({0, quad, 0, 0}).p, BAS_Vec3f(pointOf(house, quad)), 1e-6);
    }
    // Loop, valence 4 of an octahedron: its neighbours cancel out, its own weight is 3 / (3 + 8 n beta).
    MeshShape octahedron;
    for (int i = 0; i < 6; ++i)
        octahedron.addPoint(i == 0 ? 1 : i == 1 ? -1 : 0, i == 2 ? 1 : i == 3 ? -1 : 0, i == 4 ? 1 : i == 5 ? -1 : 0);
    for (const std::vector<int> &face :
         {std::vector<int>{0, 2, 4}, {2, 1, 4}, {1, 3, 4}, {3, 0, 4}, {2, 0, 5}, {1, 2, 5}, {3, 1, 5}, {0, 3, 5}})
        octahedron.addFace(face);
    const double beta = (5.0 / 8 - 9.0 / 64) / 4;
    expectNear(Surface(octahedron, RQ_SCHEME_LOOP).at({0, 0, 0, 0}).p, {float(3 / (3 + 32 * beta)), 0, 0}, 1e-4);
}

TEST(SubdLimit, PlacesThatAreNoneGetZeros)
{
    const Surface cube(cubeShape(), RQ_SCHEME_CATMULL_CLARK, 2);
    for (const RQ_SubdSample &sample : {RQ_SubdSample{-1, 0, 0, 0}, {6, 0, 0, 0}, {2, 0, 0.5f, 0.5f}})
    {
        const Place place = cube.at(sample);
        EXPECT_FALSE(place.found);
        EXPECT_EQ(place.p, BAS_Vec3f(0)) << sample.face;
        EXPECT_EQ(place.n, BAS_Vec3f(0)) << sample.face;
    }
    const RQ_SubdivisionMeshHandle mesh(new RQ_PrimSubdivisionMesh(*makeMesh(cubeShape())));
    const RQ_SubdTopologyHandle topology = RQ_SubdTopology::create(*mesh);
    EXPECT_EQ(RQ_SubdLimit::create(topology, integers({1, 2})), nullptr);
    EXPECT_EQ(RQ_SubdLimit::create(topology, nullptr), nullptr);
    EXPECT_EQ(RQ_SubdLimit::create(nullptr, integers({1, 2})), nullptr);
}

TEST(SubdLimit, FaceVaryingValuesFollowTheirSeams)
{
    const MeshShape shape = grid(false, [](int, int) { return 0; });
    const auto valuesOf = [&](const std::function<float(int face, double x)> &valueAt) {
        std::vector<float> values;
        for (size_t corner = 0; corner < shape.indices.size(); ++corner)
            values.push_back(valueAt(int(corner / 4), pointOf(shape, shape.indices[corner]).x));
        return makeArray(values, 1);
    };
    const auto isLeft = [](int face) { return face % 6 < 3; };
    const RQ_DataArrayHandle whole = valuesOf([](int, double x) { return float(x * x); });
    const RQ_DataArrayHandle cut = valuesOf([&](int face, double x) { return float(isLeft(face) ? x : 20 - x); });
    const int at = 6 * 2 + 2;  // the face from x = 2 to the seam at 3
    const struct
    {
        const char *what;
        RQ_DataArrayHandle values;
        int linear;  // the tag
        RQ_SubdSample sample;
        float value, du;
    } kCases[] = {
        {"smooth as points are", whole, 2, {at, 0, 0.5f, 0.5f}, 6.25f + 1.0f / 3, 5},
        {"over a line of points", whole, 2, {at, 0, 1, 0.25f}, 9 + 1.0f / 3, 6},
        {"linear on faces", whole, 5, {at, 0, 0.5f, 0.5f}, 6.5f, 5},
        {"left of the seam", cut, 2, {at, 0, 1, 0.5f}, 3, 1},
        {"right of it", cut, 2, {at + 1, 0, 0, 0.5f}, 17, -1},
        {"away from it", cut, 1, {at + 3, 0, 0.25f, 0}, 14.75f, -1},
    };
    for (const bool known : {true, false})  // whether the topology was made with these seams
        for (const auto &c : kCases)
        {
            SCOPED_TRACE(testing::Message() << c.what << (known ? ", known" : ", new"));
            const RQ_SubdivisionMeshHandle mesh(new RQ_PrimSubdivisionMesh(
                integers(shape.counts), integers(shape.indices), oneAttribute("P", positions(shape.positions)),
                known ? oneAttribute("uv", c.values) : RQ_AttributeListHandle()));
            mesh->appendIntTag("osd_fvarlinearinterpolation", integers({c.linear}));
            const RQ_SubdTopologyHandle topology = RQ_SubdTopology::create(*mesh);
            const RQ_SubdLimitHandle limit = RQ_SubdLimit::createFaceVarying(topology, c.values);
            ASSERT_TRUE(limit);
            float value = 0, du = 0, dv = 1;
            EXPECT_TRUE(limit->evaluate(&c.sample, 1, {&value, &du, &dv}));
            EXPECT_NEAR(value, c.value, 1e-5);
            EXPECT_NEAR(du, c.du, 1e-4);
            EXPECT_NEAR(dv, 0, 1e-5);
            EXPECT_EQ(RQ_SubdLimit::createFaceVarying(topology, integers({1, 2})), nullptr);
        }
}
