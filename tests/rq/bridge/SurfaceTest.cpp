#include <cmath>
#include <map>
#include <numbers>
#include <numeric>
#include <random>

#include <host/bas/Parallel.h>
#include <host/msh/Surface.h>
#include <rq/bridge/MSHPrimTPSurf.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;
using std::numbers::pi;

namespace
{
struct ControlPoint
{
    double x, y, z, w;
};

/// A surface of the host; points[i + columns * j] is vertex i of row j.
MOD_DetailHandle makeSurface(const MSH_SurfaceData &surface, const std::vector<ControlPoint> &points, bool isBezier = false)
{
    const MOD_DetailHandle geometry;
    MOD_Edit edit(geometry);
    std::vector<int32_t> indices(points.size());
    std::iota(indices.begin(), indices.end(), 0);
    EXPECT_TRUE(edit.appendPoints(int64_t(points.size())));
    EXPECT_TRUE(isBezier ? edit.appendBezierSurface(surface, indices) : edit.appendNURBSSurface(surface, indices))
        << edit.message();
    double *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL64, 3, ELM_TYPE_POINT)->writeAll<double>();
    double *weight = edit.attribute(ELM_OWNER_POINT, "Pw", ELM_STORAGE_REAL64)->writeAll<double>();
    for (const ControlPoint &point : points)
    {
        *p++ = point.x, *p++ = point.y, *p++ = point.z;
        *weight++ = point.w;
    }
    edit.attribute(ELM_OWNER_PRIMITIVE, "number", ELM_STORAGE_INT32)->writeAll<int32_t>()[0] = 7;
    edit.commit();
    return geometry;
}

RQ_PolygonMeshHandle meshOf(const MOD_DetailHandle &geometry, const RQ_RefineParms *parms = nullptr)
{
    const std::vector<RQ_PrimitiveHandle> primitives = refine(geometry.read(), parms);
    EXPECT_EQ(primitives.size(), 1u);
    const auto *surface = as<RQ_MSHPrimTPSurf>(primitives[0]);
    EXPECT_TRUE(surface);
    const RQ_PolygonMeshHandle mesh = surface ? surface->refineToPolygonMesh(parms) : nullptr;
    std::string why;
    EXPECT_TRUE(!mesh || mesh->validate(&why)) << why;
    return mesh;
}

/// The edges that faces walk in one direction more often than in the other.
std::vector<std::pair<int64_t, int64_t>> openEdges(const RQ_PrimPolygonMesh &mesh)
{
    std::map<std::pair<int64_t, int64_t>, int> edges;
    for (int64_t face = 0; face < mesh.getFaceCount(); ++face)
        for (int64_t i = 0; i < mesh.getFaceCountArray().getCount(face); ++i)
        {
            int64_t a, b;
            mesh.getEdgePoints(face, i, a, b);
            ++edges[{a, b}];
            --edges[{b, a}];
        }
    std::vector<std::pair<int64_t, int64_t>> open;
    for (const auto &[edge, count] : edges)
        if (count > 0)
            open.push_back(edge);
    return open;
}

BAS_Vec3d pointOf(const RQ_PrimPolygonMesh &mesh, int64_t i, const char *name = "P")
{
    const RQ_DataArrayHandle &array = mesh.getShared()->get(name);
    return {array->getF64(i, 0), array->getF64(i, 1), array->getF64(i, 2)};
}

double openLength(const RQ_PrimPolygonMesh &mesh)
{
    double length = 0.0;
    for (const auto &[a, b] : openEdges(mesh))
        length += (pointOf(mesh, a) - pointOf(mesh, b)).length();
    return length;
}

const std::vector<double> kWrappedCircle = {-1, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5};
const double kAround[8][3] = {{1, 0, 1}, {1, 1, 0}, {0, 1, 1}, {-1, 1, 0}, {-1, 0, 1}, {-1, -1, 0}, {0, -1, 1}, {1, -1, 0}};

double weightAround(int i) { return kAround[i][2] == 1.0 ? 1.0 : std::sqrt(0.5); }

/// A ball of quarter arcs: eight columns around, five rows from pole to pole.
MOD_DetailHandle makeBall()
{
    MSH_SurfaceData ball{5, 8, 3, 3, kWrappedCircle, {0, 0, 0, 1, 1, 2, 2, 2}, true, false, true, {}};
    const double kProfile[5][3] = {{0, -1, 1}, {1, -1, 0}, {1, 0, 1}, {1, 1, 0}, {0, 1, 1}};
    std::vector<ControlPoint> points;
    for (const auto &[radius, z, isOn] : kProfile)
        for (int i = 0; i < 8; ++i)
            points.push_back(
                {radius * kAround[i][0], radius * kAround[i][1], z, weightAround(i) * (isOn == 1.0 ? 1.0 : std::sqrt(0.5))});
    return makeSurface(ball, points);
}

/// A ring of radii 3 and 1, closed in both directions.
MOD_DetailHandle makeRing(const MSH_TrimLoops &trims = {})
{
    MSH_SurfaceData ring{8, 8, 3, 3, kWrappedCircle, kWrappedCircle, true, true, true, trims};
    std::vector<ControlPoint> points;
    for (int j = 0; j < 8; ++j)
        for (int i = 0; i < 8; ++i)
        {
            const double radius = 3.0 + kAround[j][0];
            points.push_back(
                {radius * kAround[i][0], radius * kAround[i][1], kAround[j][1], weightAround(i) * weightAround(j)});
        }
    return makeSurface(ring, points);
}

using Loop = std::vector<BAS_Vec2d>;

/// Loops of straight curves.
MSH_TrimLoops straightLoops(const std::vector<Loop> &loops)
{
    MSH_TrimLoops trims;
    for (const Loop &loop : loops)
    {
        trims.loopCurves.push_back(1);
        trims.orders.push_back(2);
        trims.counts.push_back(int32_t(loop.size() + 1));
        for (size_t i = 0; i < loop.size() + 3; ++i)
            trims.knots.push_back(double(std::clamp<size_t>(i, 1, loop.size() + 1)));
        for (size_t i = 0; i <= loop.size(); ++i)
            trims.points.insert(trims.points.end(), {loop[i % loop.size()].x, loop[i % loop.size()].y, 1.0});
    }
    return trims;
}

double areaOf(const Loop &loop)
{
    double area = 0.0;
    for (size_t i = 0; i < loop.size(); ++i)
        area += 0.5 * loop[i].cross(loop[(i + 1) % loop.size()]);
    return area;
}

Loop box(double low, double high) { return {{low, low}, {high, low}, {high, high}, {low, high}}; }
Loop reversed(Loop loop) { return {loop.rbegin(), loop.rend()}; }

/// The unit square as a bicubic patch whose parameters are its places.
MOD_DetailHandle makeSquare(const MSH_TrimLoops &trims)
{
    MSH_SurfaceData square{4, 4, 4, 4, {}, {}, false, false, false, trims};
    std::vector<ControlPoint> points;
    for (int i = 0; i < 16; ++i)
        points.push_back({double(i % 4) / 3.0, double(i / 4) / 3.0, 0.0, 1.0 + i});  // weights do not count
    return makeSurface(square, points, true);
}

RQ_RefineParms levels(double u, double v)
{
    RQ_RefineParms parms;
    parms.setULOD(u);
    parms.setVLOD(v);
    return parms;
}
}  // namespace

TEST(SurfaceCollector, PutsEveryPointOnBallAndRingAndClosesThem)
{
    const struct
    {
        const char *what;
        MOD_DetailHandle geometry;
        double (*distance)(const BAS_Vec3d &);
        int64_t points, openEdges;
        double area;
    } kCases[] = {
        {"ball", makeBall(), [](const BAS_Vec3d &p) { return p.length() - 1.0; }, 32 * 17, 2 * 32, 4.0 * pi},
        {"ring", makeRing(), [](const BAS_Vec3d &p) { return std::hypot(std::hypot(p.x, p.y) - 3.0, p.z) - 1.0; }, 32 * 32,
         0, 12.0 * pi * pi},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        const RQ_PolygonMeshHandle mesh = meshOf(c.geometry);
        ASSERT_TRUE(mesh);
        EXPECT_EQ(mesh->getPointCount(), c.points);
        EXPECT_EQ(int64_t(openEdges(*mesh).size()), c.openEdges);  // a ball is open where its poles' points meet
        EXPECT_NEAR(mesh->computeSurfaceArea(0), c.area, 0.02 * c.area);
        EXPECT_EQ(mesh->getDetail()->get("number")->getI64(0), 7);
        for (int64_t i = 0; i < mesh->getPointCount(); ++i)
        {
            const BAS_Vec3d place = pointOf(*mesh, i), normal = pointOf(*mesh, i, "N");
            ASSERT_NEAR(c.distance(place), 0.0, 1e-14) << i;
            const double step = 1e-4, outside = c.distance(place + normal * step);
            ASSERT_NEAR(outside, step, 1e-8) << "normal at " << i << ", the one of a pole being that from beside";
        }
    }
}

TEST(SurfaceCollector, FollowsOptionsKnotsAndBreakpoints)
{
    std::vector<ControlPoint> plane;
    for (int i = 0; i < 7 * 4; ++i)
        plane.push_back({double(i % 7), double(i / 7), 0.0, 1.0});
    const auto net = [](int orderU, int orderV, const std::vector<double> &knotsU = {}, bool wraps = false) {
        return MSH_SurfaceData{4, 7, orderU, orderV, knotsU, {}, wraps, wraps, false, {}};
    };
    const struct
    {
        const char *what;
        MSH_SurfaceData surface;
        bool isBezier;
        double lodU, lodV;
        int64_t quadsU, quadsV;  // 0 for nothing at all
    } kCases[] = {
        {"as it is", net(4, 4), false, 1, 1, 4 * 8, 8},
        {"as Bezier patches", net(4, 4), true, 1, 1, 2 * 8, 8},
        {"breakpoints that meet", net(4, 4, {0, 2, 2}), true, 1, 1, 8, 8},
        {"straight", net(2, 2), false, 1, 2, 6, 6},
        {"finer and coarser", net(4, 4), false, 0.3, 1.5, 4 * 3, 12},
        {"closed", net(4, 3, {}, true), false, 0.1, 0.1, 7, 4},
        {"levels that are none", net(4, 4), false, std::nan(""), -1, 4, 1},
        {"endless", net(4, 2), false, 1e300, 1, (16384 / 7) * 4, 3},
        {"a double knot", net(3, 4, {0, 0, 0, 1, 2, 2, 3, 4, 4, 4}), false, 0.1, 0.1, 4, 1},
        {"unclamped", net(3, 4, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}), false, 0.1, 0.1, 5, 1},
        {"no span", net(4, 4, std::vector<double>(11, 0.5)), false, 1, 1, 0, 0},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        const RQ_RefineParms parms = levels(c.lodU, c.lodV);
        const RQ_PolygonMeshHandle mesh = meshOf(makeSurface(c.surface, plane, c.isBezier), &parms);
        ASSERT_EQ(bool(mesh), c.quadsU > 0);
        if (!mesh)
            continue;
        EXPECT_EQ(mesh->getFaceCount(), c.quadsU * c.quadsV);
        EXPECT_EQ(mesh->getPointCount(), (c.quadsU + !c.surface.wrapsU) * (c.quadsV + !c.surface.wrapsV));
        EXPECT_EQ(openEdges(*mesh).empty(), c.surface.wrapsU);
    }
}

TEST(SurfaceCollector, EvaluatesEveryAttributeLikePositions)
{
    for (const MSH_TrimLoops &trims : {MSH_TrimLoops(), straightLoops({{{0.1, 0.0}, {1.0, 0.2}, {0.3, 0.9}}})})
    {
        const MOD_DetailHandle geometry = makeSquare(trims);
        MOD_Edit edit(geometry);
        float *uv = edit.attribute(ELM_OWNER_VERTEX, "uv", ELM_STORAGE_REAL32, 2)->writeAll<float>();
        int32_t *hundredth = edit.attribute(ELM_OWNER_POINT, "hundredth", ELM_STORAGE_INT32)->writeAll<int32_t>();
        ELM_StringTuple *name = edit.stringAttribute(ELM_OWNER_POINT, "name")->strings();
        for (int i = 0; i < 16; ++i)
        {
            uv[2 * i] = float(i % 4) / 3.0f, uv[2 * i + 1] = float(i / 4) / 3.0f;
            hundredth[i] = int32_t(i % 4 * 300);
            name->set(i, std::to_string(i));
        }
        edit.commit();
        const RQ_PolygonMeshHandle mesh = meshOf(geometry);
        ASSERT_TRUE(mesh);
        const RQ_AttributeListHandle &list = mesh->getShared();
        EXPECT_FALSE(list->hasName("Pw"));
        for (int64_t i = 0; i < mesh->getPointCount(); ++i)
        {
            const double x = list->get("P")->getF64(i, 0), y = list->get("P")->getF64(i, 1);
            EXPECT_NEAR(list->get("uv")->getF64(i, 0), x, 1e-6);
            EXPECT_NEAR(list->get("uv")->getF64(i, 1), y, 1e-6);
            EXPECT_NEAR(double(list->get("hundredth")->getI64(i)), 900.0 * x, 0.5 + 1e-9);
            EXPECT_NEAR(list->get("N")->getF64(i, 2), 1.0, 1e-6);
            // Each of the four Bernstein polynomials counts most in its quarter, the first of equal ones where two meet.
            const auto nearest = [](double t) { return std::max(0, int(std::ceil(4.0 * t - 1e-9)) - 1); };
            EXPECT_EQ(list->get("name")->getS(i), std::to_string(nearest(x) + 4 * nearest(y))) << x << ' ' << y;
        }
    }
}

TEST(SurfaceCollector, CutsAwayWhatLiesToTheRightOfLoops)
{
    const Loop touching = {{0.5, 0.5}, {0.7, 0.2}, {0.9, 0.6}},
               corner = {{0.375, 0.375}, {0.5, 0.2}, {0.5, 0.5}, {0.2, 0.5}},
               tiny = {{0.51, 0.52}, {0.515, 0.52}, {0.51, 0.53}};
    // A ribbon that goes to and fro between neighbouring cells.
    Loop ribbon, farSide;
    for (int i = 0; i <= 4000; ++i)
    {
        ribbon.push_back({i % 2 ? 0.61 : 0.31, 0.52 - 2.5e-6 * i});
        farSide.push_back(ribbon.back() + BAS_Vec2d(0.1, 0.0));
    }
    ribbon.insert(ribbon.end(), farSide.rbegin(), farSide.rend());
    const struct
    {
        const char *what;
        std::vector<Loop> loops;
        double area;
    } kCases[] = {
        {"all", {box(0, 1)}, 1.0},
        {"all, and more", {box(-1, 3)}, 1.0},
        {"along lines of the grid", {box(0.25, 0.75)}, 0.25},
        {"within cells", {box(0.26, 0.77)}, 0.51 * 0.51},
        {"a hole", {reversed(box(0.3, 0.6))}, 0.91},
        {"a hole in a border", {box(0, 1), reversed(box(0.3, 0.6))}, 0.91},
        {"a hole over the edge", {box(0, 1), {{0.9, 0.5}, {0.9, 0.6}, {1.4, 0.6}, {1.4, 0.5}}}, 0.99},
        {"a hole that touches a line", {reversed(touching)}, 1.0 - areaOf(touching)},
        {"an island in a hole", {box(0, 1), reversed(box(0.2, 0.8)), box(0.4, 0.6)}, 1.0 - 0.36 + 0.04},
        {"two outer loops", {box(0.1, 0.4), box(0.6, 0.9)}, 0.18},
        {"corners of cells", {corner}, areaOf(corner)},
        {"a loop in a cell", {tiny}, areaOf(tiny)},
        {"a hole in a cell", {reversed(tiny)}, 1.0 - areaOf(tiny)},
        {"holes in one cell", {reversed(box(0.51, 0.52)), reversed(box(0.53, 0.54)), reversed(box(0.60, 0.61))}, 1.0 - 3e-4},
        {"a cell entered many times", {ribbon}, 0.1 * 0.01},
        {"a point", {{{0.5, 0.5}, {0.5, 0.5}, {0.5, 0.5}}}, 1.0},
        {"elsewhere", {box(2, 3)}, 0.0},
        {"far away", {{{0.5, 0.5}, {-1e308, 0.5}, {1e308, 0.7}}}, 1.0},
        {"no place", {{{0.5, 0.5}, {std::nan(""), 0.5}, {0.5, 0.7}}}, 1.0},
    };
    for (const auto &c : kCases)
        for (const double lod : {0.1, 1.0, 2.7})
        {
            SCOPED_TRACE(c.what);
            const RQ_RefineParms parms = levels(lod, lod);
            const RQ_PolygonMeshHandle mesh = meshOf(makeSquare(straightLoops(c.loops)), &parms);
            ASSERT_TRUE(mesh);
            EXPECT_NEAR(mesh->computeSurfaceArea(0), c.area, 1e-9) << lod;
            EXPECT_NEAR(mesh->convex(3)->computeSurfaceArea(0), c.area, 1e-9) << "in triangles, none turned over, " << lod;
        }

    for (unsigned seed = 0; seed < 60; ++seed)
    {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> value(0.02, 0.48);
        Loop star;
        const int corners = 3 + int(seed);
        for (int i = 0; i < corners; ++i)
        {
            const double angle = 2.0 * pi * i / corners, radius = seed % 3 ? value(random) : 0.25;
            star.push_back({0.5 + radius * std::cos(angle), 0.5 + radius * std::sin(angle)});
        }
        const bool isHole = seed % 2;
        const RQ_RefineParms parms = levels(0.1 * (seed % 25), 0.1 * (seed % 11));
        const RQ_PolygonMeshHandle mesh = meshOf(makeSquare(straightLoops({isHole ? reversed(star) : star})), &parms);
        ASSERT_TRUE(mesh);
        const double area = isHole ? 1.0 - areaOf(star) : areaOf(star);
        EXPECT_NEAR(mesh->computeSurfaceArea(0), area, 1e-5 * area) << "but for points that were moved to lines";
        EXPECT_NEAR(mesh->convex(3)->computeSurfaceArea(0), area, 1e-5 * area);
        double length = isHole ? 4.0 : 0.0;
        for (size_t i = 0; i < star.size(); ++i)
            length += (star[i] - star[(i + 1) % star.size()]).length();
        EXPECT_NEAR(openLength(*mesh), length, 1e-4 * length) << "open along the loop, closed between cells";
    }
}

TEST(SurfaceCollector, FollowsTrimCurvesAndIsTheSameOnAnyNumberOfThreads)
{
    // A round hole in a ring: four rational quarters, clockwise, of radius 0.8 in parameters 0 to 4.
    MSH_TrimLoops hole;
    hole.loopCurves = {2};
    for (const int side : {0, 1})
    {
        hole.orders.push_back(3);
        hole.counts.push_back(5);
        hole.knots.insert(hole.knots.end(), {0, 0, 0, 1, 1, 2, 2, 2});
        for (int i = 0; i < 5; ++i)
        {
            const int at = (16 - 4 * side - i) % 8;
            hole.points.insert(hole.points.end(),
                               {2.0 + 0.8 * kAround[at][0], 2.0 + 0.8 * kAround[at][1], weightAround(at)});
        }
    }
    MSH_SurfaceData plane{2, 2, 2, 2, {0, 0, 4, 4}, {0, 0, 4, 4}, false, false, false, hole};
    const RQ_RefineParms fine = levels(20, 20);
    const RQ_PolygonMeshHandle mesh =
        meshOf(makeSurface(plane, {{0, 0, 0, 1}, {4, 0, 0, 1}, {0, 4, 0, 1}, {4, 4, 0, 1}}), &fine);
    EXPECT_NEAR(mesh->computeSurfaceArea(0), 16.0 - 0.64 * pi, 1e-3);

    const double whole = meshOf(makeRing())->computeSurfaceArea(0);
    std::vector<std::string> texts;
    for (const int threads : {1, 2, 8})
    {
        const BAS_Threads::Limit limit(threads);
        const RQ_PolygonMeshHandle cut = meshOf(makeRing(hole));
        EXPECT_LT(cut->computeSurfaceArea(0), whole - 1.0);
        texts.push_back(textOf(*cut));
    }
    EXPECT_EQ(texts[0], texts[1]);
    EXPECT_EQ(texts[0], texts[2]);
}

TEST(SurfaceCollector, SurvivesWhatIsNoSurface)
{
    const double kOdd[] = {0.0, -1.0, 1e300, std::nan(""), HUGE_VAL};
    for (const double odd : kOdd)
    {
        MSH_SurfaceData surface{4, 4, 4, 4, {}, {}, false, false, true, straightLoops({box(0.1, 0.9)})};
        for (const bool isPlace : {false, true})
        {
            std::vector<ControlPoint> points(16, {isPlace ? odd : 1.0, 0, 0, isPlace ? 1.0 : odd});
            const RQ_PolygonMeshHandle mesh = meshOf(makeSurface(surface, points));
            ASSERT_TRUE(mesh);
            EXPECT_EQ(mesh->getShared()->get("N")->getF64(0, 0), 0.0) << "there is no side";
        }
    }
    // So far away that a cell is less than what rounding moves the loop by.
    const RQ_PolygonMeshHandle cut =
        meshOf(makeSquare(straightLoops({{{-9e15, 4e15}, {9.6e15, 1.8e15}, {-2e15, -6.5e15}}})));
    EXPECT_TRUE(!cut || cut->validate());
    RQ_MSHPrimTPSurf nothing;
    EXPECT_FALSE(nothing.refineToPolygonMesh(nullptr));
}

TEST(SurfaceCollector, MovesCopiesAndSavesLikeOtherPrimitives)
{
    const MOD_DetailHandle geometry = makeBall();
    const MOD_ConstDetailHandle before = geometry.read();
    {
        MOD_Edit edit(geometry);
        double *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL64, 3, ELM_TYPE_POINT)->modifyAll<double>();
        for (int i = 0; i < 40; ++i)
            p[3 * i] += 10.0;
        edit.commit();
    }
    RQ_RefineList list;
    list.refine(RQ_PrimitiveHandle(new RQ_MSHDetail(std::vector<MOD_ConstDetailHandle>{before, geometry.read()})).get(),
                nullptr);
    ASSERT_EQ(list.entries(), 1);
    const BAS_Mat4d matrix = BAS_Mat4d().setTranslation(BAS_Vec3d(0, 5, 0));
    const RQ_PrimitiveHandle moved = list.getPrimitive(0)->copyTransformed(RQ_TransformHandle(new RQ_Transform(&matrix, 1)));
    ASSERT_EQ(moved->getMotionSegments(), 2);
    const RQ_PrimitiveHandle hard = moved->harden();
    EXPECT_EQ(textOf(*hard), textOf(*moved));
    for (const RQ_PrimitiveHandle &primitive : {moved, hard, moved->clone()})
    {
        BAS_BoundingBox boxes[2], refined[2];
        primitive->enlargeBounds(boxes, 2);
        EXPECT_EQ(boxes[0], BAS_BoundingBox({-1, 4, -1}, {1, 6, 1}));
        EXPECT_EQ(boxes[1], BAS_BoundingBox({9, 4, -1}, {11, 6, 1}));
        RQ_RefineList meshes;
        EXPECT_TRUE(meshes.refine(primitive.get(), nullptr));
        meshes.getPrimitive(0)->enlargeBounds(refined, 2);
        for (const int segment : {0, 1})
            for (int axis = 0; axis < 3; ++axis)
                EXPECT_NEAR(refined[segment].maximum()[axis], boxes[segment].maximum()[axis], 1e-6);
    }
}
