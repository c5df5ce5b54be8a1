#include <cmath>
#include <functional>

#include <gtest/gtest.h>

#include <rq/prim/CompactTransformArray.h>
#include <rq/prim/RefineCollect.h>
#include <rq/prim/ViewportRefineOptions.h>
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
            const BAS_Vec3f axis(BAS_Vec3d(0.0) * matrices()[3]);  // in the plane of every cut along u
            double area = 0.0, volume = 0.0;
            BAS_BoundingBox box;
            for (const int part : {0, 1})
            {
                // The samples that the whole has.
                RQ_RefineParms parms = divisions(33);
                alongU ? parms.setULOD(part ? 25.0 / 33.0 : 9.0 / 33.0) : parms.setVLOD(part ? 25.0 / 33.0 : 9.0 / 33.0);
                const RQ_PolygonMeshHandle mesh = parts[part]->refineToPolygonMesh(&parms);
                area += mesh->computeSurfaceArea(0);
                volume += mesh->computeVolume(axis, 0);
                parts[part]->enlargeBounds(&box, 1);
            }
            EXPECT_EQ(box, boundsOf(*whole));
            const RQ_RefineParms parms = divisions(33);
            const RQ_PolygonMeshHandle all = whole->refineToPolygonMesh(&parms);
            EXPECT_TRUE(std::isnan(shape.area) || std::abs(area - all->computeSurfaceArea(0)) < 1e-4);
            EXPECT_TRUE(std::isnan(shape.volume) || !alongU || std::abs(volume - all->computeVolume(axis, 0)) < 1e-5);
        }
}

TEST(Quadric, OptionsChooseSamplesAndRanges)
{
    const double kCases[][5] = {{20, 1, 1, 20, 20}, {2, 1, 1, 9, 9}, {20, 1.5, 0.51, 15, 30}, {1e300, 1, -1, 9, 16384}};
    for (const auto &[count, lod, ulod, wantedU, wantedV] : kCases)
    {
        RQ_RefineParms parms = divisions(count);
        parms.setLOD(lod);
        parms.setULOD(ulod);
        parms.setURange0(NAN);
        int nu, nv;
        RQ_Parametric range;
        RQ_PrimQuadric::extractRefineParms(&parms, nu, nv, range.umin, range.umax, range.vmin, range.vmax);
        EXPECT_TRUE(nu == wantedU && nv == wantedV && range.isWhole()) << count;
    }
    RQ_RefineParms parms;
    parms.setURange0(0.25);
    parms.setURange1(0.75);
    const auto begin = [&](double umin) {
        const RQ_PolygonMeshHandle mesh = RQ_PrimSphere().clone({umin, 1, 0, 1})->refineToPolygonMesh(&parms);
        return mesh ? mesh->getShared()->get("uv")->getF64(0) : -1.0;
    };
    EXPECT_EQ(begin(0.0), 0.25);
    EXPECT_EQ(begin(0.5), 0.5);
    EXPECT_EQ(begin(0.75), -1.0);
}

TEST(Quadric, MeshesCarryAttributesMotionAndCaps)
{
    const BAS_Mat4d moves[] = {BAS_Mat4d(), BAS_Mat4d().setTranslation(BAS_Vec3d(5, 0, 0))};
    const RQ_PrimitiveHandle tube =
        make<RQ_PrimTube>(oneAttribute("id", integers({7})), RQ_TransformHandle(new RQ_Transform(moves, 2)), 0.5, true);
    RQ_RefineCollect sink;
    ASSERT_TRUE(tube->harden()->refine(sink, nullptr));
    const RQ_PrimitiveHandle mesh = sink.getPrim(0);
    EXPECT_EQ(mesh->getDetailAttributes()->get("id")->getI32(0), 7);
    BAS_BoundingBox boxes[2];
    tube->enlargeBounds(boxes, tube->getMotionSegments());
    EXPECT_EQ(boxes[1], BAS_BoundingBox(BAS_Vec3f(4, -1, -0.5f), BAS_Vec3f(6, 1, 0.5f)));
    EXPECT_EQ(static_cast<const RQ_PrimPolygonMesh &>(*mesh).getFaceCount(), 19 * 19 + 2);
    const RQ_DataArrayHandle &p = mesh->getPointAttributes()->get("P", 1), &n = mesh->getPointAttributes()->get("N", 1);
    ASSERT_EQ(p->entries(), 20 * 20 + 2 * 19);
    EXPECT_EQ(vectorOf(*p, 400), BAS_Vec3d(6, 0, -0.5));
    EXPECT_EQ(vectorOf(*n, 400), BAS_Vec3d(0, 0, -1));
    EXPECT_EQ(vectorOf(*n, 437), BAS_Vec3d(0, 0, 1));
    EXPECT_EQ(jsonOf(*make<RQ_PrimHyperboloid>(BAS_Vec3d(1, 2, 3), BAS_Vec3d(4, 5, 6), RQ_AttributeListHandle(),
                                               RQ_TransformHandle(), RQ_Parametric{0.5, 1, 0, 1})),
              R"(["Hyperboloid",[1,2,3],[4,5,6],[0.5,1,0,1],{}])");
}

TEST(Quadric, RefusesWhatIsNotFinite)
{
    EXPECT_FALSE(RQ_PrimSphere().init({}, {}, {0.0, NAN, 0.0, 1.0}) || RQ_PrimTube().init({}, {}, INFINITY, true) ||
                 RQ_PrimHyperboloid().init(BAS_Vec3d(NAN), BAS_Vec3d(0.0), {}, {}));
    EXPECT_FALSE(RQ_PrimSphere().createMesh(9, 1, 0, 1, 0, 1, true, true, RQ_STORAGE_REAL32, RQ_STORAGE_REAL32));
    // Placed nowhere, or flattened: no more than that.
    for (const BAS_Mat4d &matrix : {BAS_Mat4d(0.0), BAS_Mat4d().setScale(NAN)})
        for (const Shape &shape : shapes())
            EXPECT_TRUE(placed(shape, matrix)->refineToPolygonMesh(nullptr)->validate());
}

TEST(Quadric, CirclesFaceAnAxisAndHaveARim)
{
    for (int axis = 0; axis < 3; ++axis)
    {
        const RQ_PolygonMeshHandle disc = RQ_PrimCircle::makePolygonMesh(nullptr, axis);
        EXPECT_EQ(vectorOf(*disc->getShared()->get("N"), 0)[axis], 1.0);
        // The rim is the second row of the disc, without the last column.
        const RQ_CurveMeshHandle rim = RQ_PrimCircle::makeCurve(nullptr, axis);
        ASSERT_TRUE(rim->validate() && rim->getWrap());
        const std::vector<double> all = valuesOf(disc->getShared()->get("P"));
        EXPECT_EQ(valuesOf(rim->getVertex()->get("P")), std::vector<double>(all.begin() + 60, all.end() - 3));
    }
    const double quarters[] = {0.75, 1.0};
    BAS_Vec3d exact[2];
    RQ_PrimCircle().fillQP(exact, 2, quarters, 1.0);
    EXPECT_TRUE(exact[0] == BAS_Vec3d(0, -1, 0) && exact[1] == BAS_Vec3d(1, 0, 0));
    const RQ_CurveMeshHandle arc =
        static_cast<RQ_PrimCircle &>(*RQ_PrimCircle().clone({0, 0.5, 0, 3})).refineToCurve(nullptr);
    EXPECT_FALSE(arc->getWrap() || RQ_PrimCircle::makePolygonMesh(nullptr, 3));
    EXPECT_NEAR(arc->computePerimeter(0), 3.0 * kPi, 0.02);
}

TEST(QuadricMesh, IsItsQuadrics)
{
    constexpr int kQuadrics = 3000;
    std::vector<BAS_Mat4d> places;
    std::vector<int> ids;
    for (int i = 0; i < kQuadrics; ++i)
    {
        places.push_back(matrices()[size_t(i) % 4] * BAS_Mat4d().setTranslation(BAS_Vec3d(i, 0.0, -i)));
        ids.push_back(i);
    }
    const RQ_TransformArrayHandle transforms(new RQ_CompactTransformArray(places.data(), kQuadrics));
    const RQ_AttributeListHandle vertex = oneAttribute("id", integers(ids)), detail = oneAttribute("id", integers({-1}));
    const BAS_IntrusivePtr<RQ_PrimTubeMesh> tubes(new RQ_PrimTubeMesh);
    ASSERT_TRUE(tubes->init(-2.0, true, vertex, detail, transforms));
    for (const BAS_IntrusivePtr<RQ_PrimQuadricMesh> &mesh :
         {BAS_IntrusivePtr<RQ_PrimQuadricMesh>(new RQ_PrimSphereMesh),
          BAS_IntrusivePtr<RQ_PrimQuadricMesh>(new RQ_PrimCircleMesh), BAS_IntrusivePtr<RQ_PrimQuadricMesh>(tubes)})
    {
        SCOPED_TRACE(mesh->className());
        RQ_RefineCollect sink;
        EXPECT_TRUE(mesh->viewportRefineOptions().changesWithLOD());
        EXPECT_FALSE((mesh != tubes && mesh->refine(sink, nullptr)) || mesh->init({}, {}, {}));
        ASSERT_TRUE(mesh->init({}, {}, transforms));
        EXPECT_LE(mesh->getMemoryUsage(), kQuadrics * 96 * 105 / 100);
        ASSERT_TRUE(mesh->init(vertex, detail, transforms));
        const BAS_Mat4d base = BAS_Mat4d().setScale(BAS_Vec3d(1.0, 2.0, -1.0));
        mesh->setPrimitiveTransform(new RQ_Transform(&base, 1));

        ASSERT_TRUE(mesh->harden()->refine(sink, nullptr));
        ASSERT_EQ(sink.entries(), kQuadrics);
        BAS_BoundingBox box;
        std::vector<bool> seen(kQuadrics);
        for (int64_t i = 0; i < kQuadrics; ++i)
        {
            const RQ_PrimitiveHandle quadric = sink.getPrim(i);
            const size_t id = size_t(quadric->getDetailAttributes()->get("id")->getI64(0));
            BAS_Mat4d matrix;
            quadric->getPrimitiveTransform()->getMatrix(matrix, 0);
            EXPECT_EQ(matrix, places[id] * base) << id;
            EXPECT_FALSE(seen[id]);
            seen[id] = true;
            quadric->enlargeBounds(&box, 1);
        }
        for (int c = 0; c < 3; ++c)
        {
            EXPECT_FLOAT_EQ(boundsOf(*mesh).minimum()[c], box.minimum()[c]);
            EXPECT_FLOAT_EQ(boundsOf(*mesh).maximum()[c], box.maximum()[c]);
        }
    }
    EXPECT_FALSE(tubes->makeQuadric(-1) || tubes->makeQuadric(kQuadrics));
    ASSERT_TRUE(tubes->init(0.5, true, {}, {}, new RQ_TransformArray));
    EXPECT_EQ(jsonOf(*tubes->clone()), R"(["TubeMesh",0.5,true,[],{"transform":[[1,0,0,0,0,2,0,0,0,0,-1,0,0,0,0,1]]}])");
}
}  // namespace
