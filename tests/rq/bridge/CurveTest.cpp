#include <cmath>
#include <numeric>

#include <host/msh/Curve.h>
#include <rq/prim/PrimCollect.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/PrimCurveMesh.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
/// Appends points and primitives that use them one after the other.
class CurveMaker
{
public:
    explicit CurveMaker(const MOD_DetailHandle &geometry) : edit_(geometry) {}

    void append(bool isBezier, const MSH_CurveData &curve, int vertices, int curves = 1)
    {
        const std::vector<int32_t> corners(size_t(curves), vertices), points = newPoints(vertices * curves);
        EXPECT_TRUE(isBezier ? edit_.appendBezierCurves(curve, corners, points)
                             : edit_.appendNURBSCurves(curve, corners, points))
            << edit_.message();
    }
    void appendParticles(int count) { EXPECT_TRUE(edit_.appendParticles(newPoints(count))); }

    MOD_Edit &edit() { return edit_; }

    /// Number the elements of every owner, and place point i at (cos i, sin i, i) with weight i + 1.
    void number()
    {
        double *p = edit_.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL64, 3, ELM_TYPE_POINT)->writeAll<double>();
        double *weight = edit_.attribute(ELM_OWNER_POINT, "Pw", ELM_STORAGE_REAL64)->writeAll<double>();
        for (int i = 0; i < edit_.pointCount(); ++i)
        {
            const double place[] = {std::cos(i), std::sin(i), double(i)};
            std::copy_n(place, 3, p + 3 * i);
            weight[i] = i + 1;
        }
        for (const auto &[owner, name, count] : {std::tuple(ELM_OWNER_PRIMITIVE, "number", edit_.primitiveCount()),
                                                 std::tuple(ELM_OWNER_VERTEX, "vertex", edit_.vertexCount())})
        {
            int32_t *number = edit_.attribute(owner, name, ELM_STORAGE_INT32)->writeAll<int32_t>();
            std::iota(number, number + count, 0);
        }
    }

private:
    std::vector<int32_t> newPoints(int count)
    {
        std::vector<int32_t> points(static_cast<size_t>(count));
        std::iota(points.begin(), points.end(), int32_t(edit_.pointCount()));
        EXPECT_TRUE(edit_.appendPoints(count));
        return points;
    }

    MOD_Edit edit_;
};

/// The curve meshes of a refinement, taken out of their collection.
std::vector<const RQ_PrimCurveMesh *> curveMeshes(const std::vector<RQ_PrimitiveHandle> &primitives)
{
    std::vector<const RQ_PrimCurveMesh *> meshes;
    for (const RQ_PrimitiveHandle &primitive : primitives)
        if (const auto *all = dynamic_cast<const RQ_PrimCollect *>(primitive.get()))
            for (int64_t i = 0; i < all->entries(); ++i)
                meshes.push_back(as<RQ_PrimCurveMesh>(all->getPrim(i)));
        else if (const auto *mesh = dynamic_cast<const RQ_PrimCurveMesh *>(primitive.get()))
            meshes.push_back(mesh);
    return meshes;
}
}  // namespace

TEST(CurveCollector, MakesOneMeshOfEveryKind)
{
    for (const int copies : {1, 9000})  // the second on several threads
    {
        const MOD_DetailHandle geometry;
        CurveMaker maker(geometry);
        maker.append(false, {3, {}, false, false}, 5, copies);
        maker.append(true, {4, {}, false, false}, 7, copies);
        maker.append(false, {3, {}, true, false}, 3, copies);
        maker.append(false, {3, {0, 0, 0, 1, 1, 1}, false, false}, 3);
        maker.append(false, {4, {}, false, true}, 6);
        maker.append(true, {3, {0, 1, 7, 8}, false, true}, 6);
        maker.number();
        const std::vector<RQ_PrimitiveHandle> primitives = refine(maker.edit().commit());
        const std::vector<const RQ_PrimCurveMesh *> meshes = curveMeshes(primitives);

        const struct
        {
            const char *what;
            RQ_Basis basis;
            int order;
            bool wraps, rational, knots;
            int64_t curves, first, second;  // the numbers of the first two, -1 without
        } kExpected[] = {
            {"quadratic", RQ_BASIS_BSPLINE, 3, false, false, true, copies + 1, 0, copies > 1 ? 1 : 3},
            {"cubic Bezier", RQ_BASIS_BEZIER, 4, false, false, false, copies, copies, copies > 1 ? copies + 1 : -1},
            {"rational", RQ_BASIS_BSPLINE, 3, false, true, true, copies, 2 * copies, copies > 1 ? 2 * copies + 1 : -1},
            {"closed", RQ_BASIS_BSPLINE, 4, true, false, false, 1, 3 * copies + 1, -1},
            {"closed Bezier", RQ_BASIS_BEZIER, 3, true, false, false, 1, 3 * copies + 2, -1},
        };
        ASSERT_EQ(meshes.size(), std::size(kExpected));
        for (size_t i = 0; i < meshes.size(); ++i)
        {
            SCOPED_TRACE(kExpected[i].what);
            const RQ_PrimCurveMesh &mesh = *meshes[i];
            std::string why;
            EXPECT_TRUE(mesh.validate(&why)) << why;
            EXPECT_EQ(mesh.getBasis(), kExpected[i].basis);
            const int type = mesh.getBasis() == RQ_BASIS_BSPLINE ? RQ_PRIM_NURBS_CURVE_MESH : RQ_PRIM_CURVE_MESH;
            for (const RQ_PrimitiveHandle &one : {mesh.clone(), mesh.harden(), RQ_PrimitiveHandle(mesh.pinCurves())})
                EXPECT_EQ(one->getPrimitiveType(), type);
            EXPECT_EQ(mesh.refineToLinear(nullptr, 2.0)->getPrimitiveType(), RQ_PRIM_CURVE_MESH);
            EXPECT_EQ(textOf(mesh).find(RQprimitiveType(type)), 2u);
            EXPECT_EQ(mesh.uniformOrder(), kExpected[i].order);
            EXPECT_EQ(mesh.getWrap(), kExpected[i].wraps);
            EXPECT_EQ(mesh.getVertex()->hasName("Pw"), kExpected[i].rational);
            EXPECT_EQ(bool(mesh.knots()), kExpected[i].knots);
            ASSERT_EQ(mesh.getCurveCount(), kExpected[i].curves);
            const RQ_DataArrayHandle number = mesh.getUniform()->get("number"), vertex = mesh.getVertex()->get("vertex");
            EXPECT_EQ(number->getI64(0), kExpected[i].first);
            EXPECT_EQ(number->entries() > 1 ? number->getI64(1) : -1, kExpected[i].second);
            for (int64_t v = 0; v < mesh.getVertexCount(); ++v)  // vertices were numbered as their points
                ASSERT_EQ(mesh.getVertex()->get("P")->getF64(v, 2), double(vertex->getI64(v)));
        }
    }
}

TEST(CurveCollector, KeepsTheShapeOfRationalCurvesAndTheirEnds)
{
    // A full circle of nine control points.
    const MOD_DetailHandle geometry;
    CurveMaker maker(geometry);
    maker.append(false, {3, {0, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 4}, true, false}, 9);
    maker.number();
    double *p = maker.edit().attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL64, 3, ELM_TYPE_POINT)->writeAll<double>();
    double *weight = maker.edit().attribute(ELM_OWNER_POINT, "Pw", ELM_STORAGE_REAL64)->writeAll<double>();
    const double around[] = {1, 0, 1, 1, 0, 1, -1, 1, -1, 0, -1, -1, 0, -1, 1, -1, 1, 0};
    for (int i = 0; i < 9; ++i)
    {
        const double place[] = {around[2 * i], around[2 * i + 1], 0.0};
        std::copy_n(place, 3, p + 3 * i);
        weight[i] = i % 2 ? std::sqrt(0.5) : 1.0;
    }
    const std::vector<RQ_PrimitiveHandle> primitives = refine(maker.edit().commit());
    ASSERT_EQ(curveMeshes(primitives).size(), 1u);
    const RQ_CurveMeshHandle linear = curveMeshes(primitives)[0]->refineToLinear(nullptr, 10.0);
    const RQ_DataArrayHandle points = linear->getVertex()->get("P");
    ASSERT_EQ(points->entries(), 41);
    for (int64_t i = 0; i < 41; ++i)
        EXPECT_NEAR(std::hypot(points->getF64(i, 0), points->getF64(i, 1)), 1.0, 1e-12) << i;
    for (const int64_t end : {0, 40})
        EXPECT_EQ(points->getF64(end, 0), 1.0) << "clamped";
}

TEST(CurveCollector, LeavesOutWhatLostItsPoints)
{
    const MOD_DetailHandle geometry;
    CurveMaker maker(geometry);
    maker.append(false, {3, {}, false, false}, 4, 3);
    maker.appendParticles(2);
    maker.appendParticles(3);
    maker.number();
    EXPECT_TRUE(maker.edit().setVertexPoint(5, -1));
    EXPECT_TRUE(maker.edit().setVertexPoint(13, -1));
    const std::vector<RQ_PrimitiveHandle> primitives = refine(maker.edit().commit());
    ASSERT_EQ(primitives.size(), 2u);
    const auto *particles = as<RQ_PrimPointMesh>(primitives[0]);
    EXPECT_EQ(particles->getPointCount(), 3);
    EXPECT_EQ(particles->getPoints()->get("P")->getF64(2, 2), 16.0);
    EXPECT_EQ(particles->getDetailAttributes()->get("number")->getI64(0), 4);
    const RQ_PrimCurveMesh &curves = *curveMeshes(primitives)[0];
    EXPECT_EQ(curves.getCurveCount(), 2);
    EXPECT_EQ(curves.getVertex()->get("vertex")->getI64(4), 8);

    // And what never was anywhere: all of its parameters are one.
    const MOD_DetailHandle other;
    CurveMaker nowhere(other);
    nowhere.append(false, {3, {2, 2, 2, 2, 2, 2}, false, false}, 3);
    const std::vector<RQ_PrimitiveHandle> all = refine(nowhere.edit().commit());
    EXPECT_EQ(curveMeshes(all).at(0)->refineToLinear(nullptr, 4.0)->getVertexCount(), 0);
}
