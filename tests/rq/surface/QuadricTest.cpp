#include <cmath>
#include <functional>
#include <limits>

#include <gtest/gtest.h>

#include <host/bas/Parallel.h>
#include <rq/data/Positions.h>
#include <rq/prim/CompactTransformArray.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/prim/RefineCollect.h>
#include <rq/surface/PrimCircle.h>
#include <rq/surface/PrimCircleMesh.h>
#include <rq/surface/PrimHyperboloid.h>
#include <rq/surface/PrimSphere.h>
#include <rq/surface/PrimSphereMesh.h>
#include <rq/surface/PrimTube.h>
#include <rq/surface/PrimTubeMesh.h>
#include <tests/json.h>
#include <tests/rq/surface/Fixture.h>

using namespace tests;

namespace
{
constexpr double kPi = 3.141592653589793;

/// A shape, and where its surface is by the plain formula.
struct Shape
{
    const char *what;
    RQ_QuadricHandle quadric;
    std::function<BAS_Vec3d(double u, double v)> at;
    double area, volume;  ///< NaN: not of this shape
};

BAS_Vec3d turned(const BAS_Vec3d &p, double u)
{
    const double c = std::cos(2.0 * kPi * u), s = std::sin(2.0 * kPi * u);
    return {p.x * c - p.y * s, p.y * c + p.x * s, p.z};
}

template <class Quadric, class... Arguments> RQ_QuadricHandle make(const Arguments &...arguments)
{
    const BAS_IntrusivePtr<Quadric> quadric(new Quadric);
    EXPECT_TRUE(quadric->init(arguments...));
    return quadric;
}

Shape tube(const char *what, double taper, bool caps)
{
    const double area = kPi * (1.0 + taper) * std::hypot(1.0, 1.0 - taper) + (caps ? kPi * (1.0 + taper * taper) : 0.0);
    return {what, make<RQ_PrimTube>(RQ_AttributeListHandle(), RQ_TransformHandle(), taper, caps),
            [=](double u, double v) {
                return turned({1.0 + v * (taper - 1.0), 0.0, v - 0.5}, u);
            },
            taper < 0.0 ? NAN : area, caps && taper >= 0.0 ? kPi / 3.0 * (1.0 + taper + taper * taper) : NAN};
}

Shape hyperboloid(const char *what, const BAS_Vec3d &p0, const BAS_Vec3d &p1, double area)
{
    return {what, make<RQ_PrimHyperboloid>(p0, p1, RQ_AttributeListHandle(), RQ_TransformHandle()),
            [=](double u, double v) { return turned(p0 + (p1 - p0) * v, u); }, area, NAN};
}

std::vector<Shape> shapes()
{
    const auto sphere = [](double u, double v) { return turned({std::sin(kPi * v), 0.0, std::cos(kPi * v)}, u); };
    const auto circle = [](double u, double v) { return turned({v, 0.0, 0.0}, u); };
    return {
        {"sphere", new RQ_PrimSphere, sphere, 4.0 * kPi, 4.0 / 3.0 * kPi},
        {"circle", new RQ_PrimCircle, circle, kPi, NAN},
        tube("open tube", 0.5, false),
        tube("closed tube", 1.0, true),
        tube("cone", 0.0, true),
        tube("tube through its tip", -0.7, true),
        hyperboloid("frustum", {1.0, 0.0, 0.0}, {0.5, 0.0, 1.0}, 1.5 * kPi * std::hypot(0.5, 1.0)),
        hyperboloid("skew line", {1.0, 0.5, -1.0}, {-0.5, 1.0, 0.5}, NAN),
        hyperboloid("cone from its tip", {0.0, 0.0, 0.0}, {0.0, 2.0, -1.0}, 2.0 * kPi * std::hypot(2.0, 1.0)),
    };
}

const RQ_Parametric kRanges[] = {
    {}, {0.0, 0.4, 0.0, 1.0}, {0.3, 1.3, 0.25, 0.75}, {-0.35, 0.2, 0.0, 0.6}, {0.9, 0.1, 1.0, 0.2}};

std::vector<BAS_Mat4d> matrices()
{
    const BAS_Mat4d similar = BAS_Mat4d().setEulerAngles(BAS_Vec3d(0.3, 1.0, 2.0)) * BAS_Mat4d().setScale(2.0);
    BAS_Mat4d skew =
        similar * BAS_Mat4d().setShear(BAS_Vec3d(0.4, -0.3, 0.8)) * BAS_Mat4d().setTranslation(BAS_Vec3d(3.0, -4.0, 5.0));
    return {BAS_Mat4d(), similar, skew, skew * BAS_Mat4d().setScale(BAS_Vec3d(1.0, -1.0, 0.5))};
}

RQ_QuadricHandle placed(const Shape &shape, const BAS_Mat4d &matrix, const RQ_Parametric &range = {})
{
    const RQ_QuadricHandle quadric = shape.quadric->clone(range);
    quadric->setPrimitiveTransform(new RQ_Transform(&matrix, 1));
    return quadric;
}

RQ_RefineParms divisions(double count)
{
    RQ_RefineParms parms;
    parms.setQuadricDivs(count);
    return parms;
}

BAS_BoundingBox boundsOf(const RQ_Primitive &primitive)
{
    BAS_BoundingBox box;
    primitive.enlargeBounds(&box, 1);
    return box;
}

/// Visit every combination of shape, range and matrix.
template <class Body> void forAll(Body &&body)
{
    for (const Shape &shape : shapes())
        for (const RQ_Parametric &range : kRanges)
            for (size_t m = 0; m < matrices().size(); ++m)
            {
                SCOPED_TRACE(testing::Message() << shape.what << ", range " << range.umin << " matrix " << m);
                body(shape, range, matrices()[m]);
            }
}

TEST(Quadric, VerticesAndNormalsAreThoseOfTheSurface)
{
    forAll([](const Shape &shape, const RQ_Parametric &range, const BAS_Mat4d &matrix) {
        int nu = 21, nv = 15;
        shape.quadric->adjustTesselationCounts(nu, nv);
        const RQ_PolygonMeshHandle mesh = placed(shape, matrix)
                                              ->createMesh(nu, nv, range.umin, range.umax, range.vmin, range.vmax, true,
                                                           true, RQ_STORAGE_REAL32, RQ_STORAGE_REAL64);
        std::string why;
        ASSERT_TRUE(mesh && mesh->validate(&why)) << why;
        const rq::Values<float> p(mesh->getShared()->get("P")), uv(mesh->getShared()->get("uv"));
        const RQ_DataArrayHandle &n = mesh->getShared()->get("N");
        for (int64_t i = 0; i < nu * nv; ++i)
        {
            const double u = uv(i, 0), v = uv(i, 1), step = 1e-5;
            const BAS_Vec3d at(p(i, 0), p(i, 1), p(i, 2)), normal = vectorOf(*n, i);
            ASSERT_LT((at - shape.at(u, v) * matrix).length(), 1e-6 * (1.0 + at.length())) << i;
            ASSERT_NEAR(normal.length(), 1.0, 1e-12) << i;
            const auto along = [&](double du, double dv) {
                return (shape.at(u + du, v + dv) * matrix - shape.at(u - du, v - dv) * matrix) / (2.0 * step);
            };
            ASSERT_NEAR(normal ^ along(step, 0.0), 0.0, 1e-5) << i;
            ASSERT_NEAR(normal ^ along(0.0, step), 0.0, 1e-5) << i;
        }
        const bool closed = std::abs(range.umax - range.umin) == 1.0;
        for (int64_t j = 0; j < nv && closed; ++j)
            ASSERT_TRUE(std::equal(&p.data()[3 * nu * j], &p.data()[3 * nu * j] + 3, &p.data()[3 * (nu * j + nu - 1)])) << j;

        // Faces turn the side to the front that the normals point to.
        const RQ_DataArrayHandle facets = mesh->faceNormals(0, "P", RQ_STORAGE_REAL64);
        for (int64_t face = 0; face < mesh->getFaceCount(); ++face)
        {
            const BAS_Vec3d a = vectorOf(*n, mesh->getPoint(face, 0)), b = vectorOf(*n, mesh->getPoint(face, 2));
            const bool crossesTip = (a ^ b) <= 0.0;
            ASSERT_TRUE(crossesTip || (vectorOf(*facets, face) ^ (a + b)) > -1e-6) << face;
        }
    });
}

TEST(Quadric, BoundsAreThoseOfTheSurface)
{
    forAll([](const Shape &shape, const RQ_Parametric &range, const BAS_Mat4d &matrix) {
        constexpr int kSteps = 120;
        BAS_BoundingBox sampled;
        for (int i = 0; i <= kSteps; ++i)
            for (int j = 0; j <= kSteps; ++j)
                sampled.enlarge(BAS_Vec3f(shape.at(range.umin + (range.umax - range.umin) * i / kSteps,
                                                   range.vmin + (range.vmax - range.vmin) * j / kSteps) *
                                          matrix));
        const RQ_QuadricHandle quadric = placed(shape, matrix, range);
        const RQ_PrimitiveHandle mesh = quadric->refineToPolygonMesh(nullptr);
        sampled.enlarge(boundsOf(*mesh));  // caps
        const BAS_BoundingBox box = boundsOf(*quadric);
        for (int c = 0; c < 3; ++c)
        {
            const float size = sampled.size().length();
            EXPECT_LE(box.minimum()[c], sampled.minimum()[c] + 1e-6f * size);
            EXPECT_GE(box.maximum()[c], sampled.maximum()[c] - 1e-6f * size);
            EXPECT_NEAR(box.minimum()[c], sampled.minimum()[c], 1e-3f * size);
            EXPECT_NEAR(box.maximum()[c], sampled.maximum()[c], 1e-3f * size);
        }
    });
}

TEST(Quadric, AreaAndVolumeConvergeAtSecondOrder)
{
    for (const Shape &shape : shapes())
        for (const double mirror : {1.0, -1.0})
        {
            SCOPED_TRACE(shape.what);
            const RQ_QuadricHandle quadric = placed(shape, BAS_Mat4d().setScale(BAS_Vec3d(mirror, 1.0, 1.0)));
            double errors[2][2];
            for (const int fine : {0, 1})
            {
                const RQ_RefineParms parms = divisions(fine ? 129 : 65);
                const RQ_PolygonMeshHandle mesh = quadric->refineToPolygonMesh(&parms);
                errors[fine][0] = shape.area - mesh->computeSurfaceArea(0);
                errors[fine][1] = shape.volume - mesh->computeVolume(BAS_Vec3f(0.0f), 0);
            }
            for (const int measure : {0, 1})
                if (!std::isnan(errors[0][measure]))
                {
                    EXPECT_LT(std::abs(errors[1][measure]), 0.01);
                    EXPECT_NEAR(errors[0][measure] / errors[1][measure], 4.0, 0.1);
                }
        }
}

TEST(Quadric, PartsTogetherAreTheWhole)
{
    for (const Shape &shape : shapes())
        for (const bool alongU : {true, false})
        {
            SCOPED_TRACE(testing::Message() << shape.what << (alongU ? " along u" : " along v"));
            const RQ_QuadricHandle whole = placed(shape, matrices()[3]);
            RQ_QuadricHandle parts[2];
            ASSERT_TRUE(alongU ? whole->splitU(parts[0], parts[1], 0.25) : whole->splitV(parts[0], parts[1], 0.25));
            const RQ_Parametric &low = parts[0]->getParametric(), &high = parts[1]->getParametric();
            EXPECT_EQ(low, (RQ_Parametric{0.0, alongU ? 0.25 : 1.0, 0.0, alongU ? 1.0 : 0.25}));
            EXPECT_EQ(high, (RQ_Parametric{alongU ? 0.25 : 0.0, 1.0, alongU ? 0.0 : 0.25, 1.0}));

            // The same samples as the whole has.
            RQ_RefineParms fine = divisions(33), parms[2];
            for (const int part : {0, 1})
            {
                parms[part] = fine;
                const double lod = (part == 0 ? 9.0 : 25.0) / 33.0;
                alongU ? parms[part].setULOD(lod) : parms[part].setVLOD(lod);
            }
            const RQ_PolygonMeshHandle all = whole->refineToPolygonMesh(&fine);
            const RQ_PolygonMeshHandle first = parts[0]->refineToPolygonMesh(&parms[0]);
            const RQ_PolygonMeshHandle second = parts[1]->refineToPolygonMesh(&parms[1]);
            BAS_BoundingBox box = boundsOf(*parts[0]);
            box.enlarge(boundsOf(*parts[1]));
            EXPECT_EQ(box, boundsOf(*whole));
            if (alongU && shape.volume == shape.volume)
            {
                const BAS_Vec3f inside(BAS_Vec3d(0.0) * matrices()[3]);
                EXPECT_NEAR(first->computeVolume(inside, 0) + second->computeVolume(inside, 0),
                            all->computeVolume(inside, 0), 1e-5);
            }
            if (shape.area != shape.area)
                continue;  // quads that are not flat, or fold
            EXPECT_NEAR(first->computeSurfaceArea(0) + second->computeSurfaceArea(0), all->computeSurfaceArea(0), 1e-4);
        }
    RQ_QuadricHandle none, other;
    EXPECT_FALSE(RQ_PrimSphere().splitU(none, other, 1.0) || RQ_PrimSphere().splitV(none, other, NAN));
}

struct CountCase
{
    double divisions, lod, ulod;
    int nu, nv;
};

const CountCase kCountCases[] = {
    {20.0, 1.0, 1.0, 20, 20},        {2.0, 1.0, 1.0, 9, 9}, {20.0, 1.5, 0.51, 15, 30},        {-5.0, 1.0, 1.0, 9, 9},
    {1e300, 1.0, 1.0, 16384, 16384}, {NAN, 1.0, 1.0, 9, 9}, {20.0, 1.0, INFINITY, 16384, 20},
};

TEST(Quadric, OptionsChooseSamplesAndRanges)
{
    for (const CountCase &c : kCountCases)
    {
        RQ_RefineParms parms = divisions(c.divisions);
        parms.setLOD(c.lod);
        parms.setULOD(c.ulod);
        parms.setURange0(NAN);
        parms.setVRange1(INFINITY);
        int nu, nv;
        RQ_Parametric range;
        RQ_PrimQuadric::extractRefineParms(&parms, nu, nv, range.umin, range.umax, range.vmin, range.vmax);
        EXPECT_EQ(nu, c.nu) << c.divisions;
        EXPECT_EQ(nv, c.nv) << c.divisions;
        EXPECT_TRUE(range.isWhole());
    }

    // What is wanted limits what there is.
    RQ_RefineParms parms;
    parms.setURange0(0.25);
    parms.setURange1(0.75);
    const auto begin = [&](const RQ_Parametric &range) {
        const RQ_PolygonMeshHandle mesh = RQ_PrimSphere().clone(range)->refineToPolygonMesh(&parms);
        return mesh ? valuesOf(mesh->getShared()->get("uv"))[0] : -1.0;
    };
    EXPECT_EQ(begin({}), 0.25);
    EXPECT_EQ(begin({0.5, 1.0, 0.0, 1.0}), 0.5);
    EXPECT_EQ(begin({0.75, 0.125, 0.0, 1.0}), 0.75);
    EXPECT_EQ(begin({0.75, 1.0, 0.0, 1.0}), -1.0);
    EXPECT_EQ(RQ_PrimCircle::makePolygonMesh(nullptr)->getPointCount(), 40);
}

TEST(Quadric, QuarterTurnsAreExact)
{
    const double u[] = {0.0, 0.25, 0.5, 0.75, 1.0};
    const BAS_Vec3d expected[] = {{1, 0, 0}, {0, 1, 0}, {-1, 0, 0}, {0, -1, 0}, {1, 0, 0}};
    BAS_Vec3d positions[5], normals[5];
    const RQ_PrimSphere sphere;
    sphere.fillQP(positions, 5, u, 0.5);
    sphere.fillQN(normals, 5, u, 0.5);
    for (int i = 0; i < 5; ++i)
    {
        EXPECT_EQ(positions[i], expected[i]);
        EXPECT_EQ(normals[i], expected[i]);
    }
    BAS_BoundingBox box;
    sphere.getQBounds(box);
    EXPECT_EQ(box, BAS_BoundingBox(BAS_Vec3f(-1), BAS_Vec3f(1)));
    const double no[] = {NAN, INFINITY};
    sphere.fillQP(positions, 2, no, 0.5);
    EXPECT_TRUE(std::isnan(positions[0].x) && std::isnan(positions[1].y));
}

TEST(Quadric, MeshesCarryTheirAttributesAndMove)
{
    const BAS_Mat4d moves[] = {BAS_Mat4d(), BAS_Mat4d().setTranslation(BAS_Vec3d(5, 0, 0))};
    const RQ_PrimitiveHandle capped =
        make<RQ_PrimTube>(oneAttribute("id", integers({7})), RQ_TransformHandle(new RQ_Transform(moves, 2)), 0.5, true);
    for (const RQ_PrimitiveHandle &tube : {capped, capped->harden()})
    {
        RQ_RefineCollect sink;
        ASSERT_TRUE(tube->refine(sink, nullptr));
        const RQ_PrimitiveHandle mesh = sink.getPrim(0);
        EXPECT_EQ(tube->getMotionSegments(), 2);
        EXPECT_EQ(mesh->getMotionSegments(), 2);
        EXPECT_EQ(mesh->getDetailAttributes()->get("id")->getI32(0), 7);
        BAS_BoundingBox boxes[2], meshBoxes[2];
        tube->enlargeBounds(boxes, 2);
        mesh->enlargeBounds(meshBoxes, 2);
        EXPECT_EQ(boxes[1], BAS_BoundingBox(BAS_Vec3f(4, -1, -0.5f), BAS_Vec3f(6, 1, 0.5f)));
        EXPECT_EQ(meshBoxes[1].maximum().z, 0.5f);
        // The caps: one face each, with a normal of its own.
        const auto &polygons = static_cast<const RQ_PrimPolygonMesh &>(*mesh);
        EXPECT_EQ(polygons.getFaceCount(), 19 * 19 + 2);
        EXPECT_EQ(polygons.getPointCount(), 20 * 20 + 2 * 19);
        EXPECT_EQ(vectorOf(*mesh->getPointAttributes()->get("N", 1), 400), BAS_Vec3d(0, 0, -1));
        EXPECT_EQ(vectorOf(*mesh->getPointAttributes()->get("N", 1), 437), BAS_Vec3d(0, 0, 1));
    }
    EXPECT_EQ(jsonOf(*make<RQ_PrimTube>(RQ_AttributeListHandle(), RQ_TransformHandle(), 0.5, true)),
              R"(["Tube",0.5,true,[0,1,0,1],{}])");
    EXPECT_EQ(jsonOf(*make<RQ_PrimHyperboloid>(BAS_Vec3d(1, 2, 3), BAS_Vec3d(4, 5, 6), RQ_AttributeListHandle(),
                                               RQ_TransformHandle(), RQ_Parametric{0.5, 1, 0, 1})),
              R"(["Hyperboloid",[1,2,3],[4,5,6],[0.5,1,0,1],{}])");
}

TEST(Quadric, RefusesWhatIsNotFinite)
{
    RQ_PrimSphere sphere;
    EXPECT_FALSE(sphere.init({}, {}, {0.0, NAN, 0.0, 1.0}));
    EXPECT_FALSE(RQ_PrimTube().init({}, {}, INFINITY, true));
    EXPECT_FALSE(RQ_PrimHyperboloid().init(BAS_Vec3d(NAN), BAS_Vec3d(0.0), {}, {}));
    EXPECT_FALSE(sphere.createMesh(9, 1, 0, 1, 0, 1, true, true, RQ_STORAGE_REAL32, RQ_STORAGE_REAL32));
    EXPECT_FALSE(sphere.createMesh(9, 9, 0, 1, 0, NAN, true, true, RQ_STORAGE_REAL32, RQ_STORAGE_REAL32));
    EXPECT_FALSE(RQ_PrimCircle::makePolygonMesh(nullptr, 3) || RQ_PrimCircle::makeCurve(nullptr, -1));
    const RQ_QuadricHandle capped = make<RQ_PrimTube>(RQ_AttributeListHandle(), RQ_TransformHandle(), 2.0, true);
    const RQ_PolygonMeshHandle bare =
        capped->createMesh(9, 9, 0, 0.5, 0, 1, false, false, RQ_STORAGE_REAL64, RQ_STORAGE_INVALID);
    EXPECT_TRUE(bare->validate());
    EXPECT_EQ(bare->getShared()->entries(), 1);
    EXPECT_EQ(bare->getPointCount(), 81 + 2 * 10);
    // Placed nowhere, or flattened: no more than that.
    for (const BAS_Mat4d &matrix : {BAS_Mat4d(0.0), BAS_Mat4d().setScale(NAN)})
        for (const Shape &shape : shapes())
            EXPECT_TRUE(placed(shape, matrix)->refineToPolygonMesh(nullptr)->validate());
}

TEST(Quadric, MakersStandAtTheOrigin)
{
    EXPECT_NEAR(RQ_PrimSphere::makePolygonMesh(nullptr)->computeVolume(BAS_Vec3f(0.0f), 0), 4.0 / 3.0 * kPi, 0.2);
    EXPECT_NEAR(RQ_PrimTube::makePolygonMesh(nullptr, 2.0, true)->computeVolume(BAS_Vec3f(0.0f), 0), kPi * 7.0 / 3.0, 0.2);
    for (int axis = 0; axis < 3; ++axis)
    {
        BAS_Vec3d facing(0.0);
        facing[axis] = 1.0;
        const RQ_PolygonMeshHandle disc = RQ_PrimCircle::makePolygonMesh(nullptr, axis);
        EXPECT_EQ(vectorOf(*disc->getShared()->get("N"), 0), facing);
        EXPECT_EQ(boundsOf(*disc).size()[axis], 0.0f);
        // The rim is the second row of the disc, without the last column.
        const RQ_CurveMeshHandle rim = RQ_PrimCircle::makeCurve(nullptr, axis);
        ASSERT_TRUE(rim->validate());
        EXPECT_TRUE(rim->getWrap());
        const std::vector<double> all = valuesOf(disc->getShared()->get("P"));
        EXPECT_EQ(valuesOf(rim->getVertex()->get("P")), std::vector<double>(all.begin() + 60, all.end() - 3));
    }
    const RQ_CurveMeshHandle arc =
        static_cast<RQ_PrimCircle &>(*RQ_PrimCircle().clone({0, 0.5, 0, 3})).refineToCurve(nullptr);
    EXPECT_FALSE(arc->getWrap());
    EXPECT_NEAR(arc->computePerimeter(0), 3.0 * kPi, 0.02);
}

/// Meshes of every kind over the same transforms.
std::vector<BAS_IntrusivePtr<RQ_PrimQuadricMesh>> meshesOf(const RQ_AttributeListHandle &vertex,
                                                           const RQ_AttributeListHandle &detail,
                                                           const RQ_TransformArrayHandle &transforms)
{
    const BAS_IntrusivePtr<RQ_PrimTubeMesh> tubes(new RQ_PrimTubeMesh);
    EXPECT_TRUE(tubes->init(-2.0, true, vertex, detail, transforms));
    std::vector<BAS_IntrusivePtr<RQ_PrimQuadricMesh>> meshes{new RQ_PrimSphereMesh, new RQ_PrimCircleMesh};
    for (const auto &mesh : meshes)
        EXPECT_TRUE(mesh->init(vertex, detail, transforms));
    meshes.push_back(tubes);
    return meshes;
}

TEST(QuadricMesh, IsItsQuadrics)
{
    std::vector<BAS_Mat4d> places;
    for (int i = 0; i < 3000; ++i)
        places.push_back(matrices()[size_t(i) % 4] * BAS_Mat4d().setTranslation(BAS_Vec3d(i, 0.0, -i)));
    std::vector<int> ids(places.size());
    for (size_t i = 0; i < ids.size(); ++i)
        ids[i] = int(i);
    const RQ_TransformArrayHandle transforms(new RQ_CompactTransformArray(places.data(), int64_t(places.size())));
    for (const auto &mesh : meshesOf(oneAttribute("id", integers(ids)), oneAttribute("id", integers({-1})), transforms))
    {
        SCOPED_TRACE(mesh->className());
        const BAS_Mat4d base = BAS_Mat4d().setScale(BAS_Vec3d(1.0, 2.0, -1.0));
        mesh->setPrimitiveTransform(new RQ_Transform(&base, 1));
        BAS_BoundingBox box;
        for (int64_t i = 0; i < mesh->getQuadricCount(); ++i)
            mesh->makeQuadric(i)->enlargeBounds(&box, 1);
        for (int c = 0; c < 3; ++c)
        {
            EXPECT_FLOAT_EQ(boundsOf(*mesh).minimum()[c], box.minimum()[c]);
            EXPECT_FLOAT_EQ(boundsOf(*mesh).maximum()[c], box.maximum()[c]);
        }
        EXPECT_FALSE(mesh->makeQuadric(-1) || mesh->makeQuadric(3000));

        for (const RQ_PrimitiveHandle &source : {RQ_PrimitiveHandle(mesh), mesh->harden(), mesh->clone()})
        {
            RQ_RefineCollect sink;
            ASSERT_TRUE(source->refine(sink, nullptr));
            ASSERT_EQ(sink.entries(), 3000);
            int64_t sum = 0;
            for (int64_t i = 0; i < 3000; ++i)
            {
                const RQ_PrimitiveHandle quadric = sink.getPrim(i);
                const int64_t id = quadric->getDetailAttributes()->get("id")->getI64(0);
                BAS_Mat4d matrix;
                quadric->getPrimitiveTransform()->getMatrix(matrix, 0);
                EXPECT_EQ(matrix, places[size_t(id)] * base) << id;
                sum += id;
            }
            EXPECT_EQ(sum, 3000 * 2999 / 2);
        }
    }
}

TEST(QuadricMesh, CostsItsTransforms)
{
    constexpr int64_t kSpheres = 100000;
    const BAS_IntrusivePtr<RQ_CompactTransformArray> transforms(new RQ_CompactTransformArray);
    transforms->setEntries(kSpheres);
    RQ_PrimSphereMesh mesh;
    EXPECT_TRUE(mesh.init({}, {}, transforms));
    EXPECT_LE(mesh.getMemoryUsage(), kSpheres * 96 * 105 / 100);
}

TEST(QuadricMesh, MovesAndIsSaved)
{
    const BAS_Mat4d moves[] = {BAS_Mat4d(), BAS_Mat4d().setTranslation(BAS_Vec3d(5, 0, 0))};
    const RQ_TransformArrayHandle one(new RQ_TransformArray), none(new RQ_TransformArray);
    one->append(new RQ_Transform(moves, 2));
    const auto meshes = meshesOf({}, {}, one);
    BAS_BoundingBox boxes[2];
    meshes[0]->enlargeBounds(boxes, 2);
    EXPECT_EQ(boxes[1], BAS_BoundingBox(BAS_Vec3f(4, -1, -1), BAS_Vec3f(6, 1, 1)));
    EXPECT_EQ(meshes[0]->getMotionSegments(), 2);
    RQ_RefineCollect sink;
    EXPECT_FALSE(RQ_PrimCircleMesh().refine(sink, nullptr) || RQ_PrimCircleMesh().init({}, {}, {}));
    EXPECT_FALSE(meshesOf({}, {}, none)[0]->refine(sink, nullptr));
    EXPECT_EQ(jsonOf(*meshesOf({}, {}, none)[2]), R"(["TubeMesh",-2,true,[],{}])");
}
}  // namespace
