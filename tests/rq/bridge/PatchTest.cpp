#include <cmath>
#include <numeric>

#include <host/elm/PrimitiveFactory.h>
#include <host/msh/Channel.h>
#include <host/msh/Grid.h>
#include <host/msh/Patch3.h>
#include <rq/bridge/MSHPrimCollectHull.h>
#include <rq/data/DANumeric.h>
#include <rq/prim/PrimCollect.h>
#include <rq/prim/RefineParms.h>
#include <rq/surface/PrimChannel.h>
#include <rq/surface/PrimPatch.h>
#include <rq/surface/PrimPatchMesh.h>
#include <rq/surface/PrimTriBez.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
std::vector<int32_t> appendPoints(MOD_Edit &edit, const std::vector<BAS_Vec3d> &places)
{
    std::vector<int32_t> points(places.size());
    std::iota(points.begin(), points.end(), int32_t(edit.pointCount()));
    EXPECT_TRUE(edit.appendPoints(int64_t(places.size())));
    ELM_Attribute *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL64, 3, ELM_TYPE_POINT);
    EXPECT_TRUE(p->write(points.at(0), int64_t(places.size()), &places.at(0).x));
    return points;
}

BAS_Vec3d place(const RQ_AttributeListHandle &list, int64_t i, const char *name = "P")
{
    const RQ_DataArrayHandle &array = list->get(name);
    return {array->getF64(i, 0), array->getF64(i, 1), array->getF64(i, 2)};
}

/// What a primitive refines to, which is one.
template <class T> BAS_IntrusivePtr<T> refinedTo(const RQ_PrimitiveHandle &primitive, const RQ_RefineParms *parms = nullptr)
{
    RQ_RefineList list;
    EXPECT_TRUE(list.refine(primitive.get(), parms));
    EXPECT_EQ(list.entries(), 1);
    return boost::dynamic_pointer_cast<T>(list.entries() > 0 ? list.getPrimitive(0) : nullptr);
}

/// Binds a collector to a type for as long as it lives.
class Bound
{
public:
    Bound(const std::shared_ptr<const RQ_MSHPrimCollect> &collector, ELM_PrimitiveTypeId type) : type_(type)
    {
        RQ_MSHPrimCollect::bind(collector, type);
    }
    ~Bound() { RQ_MSHPrimCollect::bind(nullptr, type_); }

private:
    ELM_PrimitiveTypeId type_;
};

MSH_ChannelData makeKeys()
{
    return {{0, 1, 3, 4},
            {0, 2, 1, 5},
            {0, 0, 0.5, 0},
            {0, 0, 1.5, 0},
            {MSH_CHANNEL_CONSTANT, MSH_CHANNEL_LINEAR, MSH_CHANNEL_CUBIC, MSH_CHANNEL_LINEAR}};
}
}  // namespace

TEST(TriangularPatches, LieOnTheirSurfaceOfAnyDegree)
{
    // z = x^2 + x y - y over the triangle (0, 0), (1, 0), (0, 2): of degree 2, and of any above.
    const auto height = [](double x, double y) { return x * x + x * y - y; };
    for (const int degree : {1, 2, 3, 7, 30})
    {
        SCOPED_TRACE(degree);
        const MOD_DetailHandle geometry;
        MOD_Edit edit(geometry);
        std::vector<BAS_Vec3d> net;
        for (int row = 0; row <= degree; ++row)
            for (int i = 0; i + row <= degree; ++i)
            {
                // The polar form of the height, for every degree.
                const double d = degree, b = i / d, c = row / d, pairs = d > 1 ? d / (d - 1) : 0.0;
                const double xx = pairs * (b * b - b / d), xy = pairs * b * c * 2.0;
                net.push_back({b, 2.0 * c, xx + xy - 2.0 * c});
            }
        ASSERT_TRUE(edit.appendTriangularPatches({degree}, appendPoints(edit, net))) << edit.message();
        edit.attribute(ELM_OWNER_POINT, "Pw", ELM_STORAGE_REAL32);  // of others: all zero
        float *colour = edit.attribute(ELM_OWNER_VERTEX, "x", ELM_STORAGE_REAL32)->writeAll<float>();
        for (const BAS_Vec3d &point : net)
            *colour++ = float(point.x);
        const std::vector<RQ_PrimitiveHandle> primitives = refine(edit.commit());
        ASSERT_EQ(primitives.size(), 1u);
        ASSERT_TRUE(as<RQ_PrimTriBez>(primitives[0]));
        EXPECT_EQ(textOf(*primitives[0]->harden()), textOf(*primitives[0]));
        RQ_RefineParms parms;
        parms.setULOD(0.5);
        const RQ_PolygonMeshHandle mesh = refinedTo<RQ_PrimPolygonMesh>(primitives[0], &parms);
        const int steps = degree == 1 ? 1 : 8;
        ASSERT_EQ(mesh->getFaceCount(), steps * steps);
        EXPECT_EQ(mesh->getPointCount(), (steps + 1) * (steps + 2) / 2);
        std::string why;
        EXPECT_TRUE(mesh->validate(&why)) << why;
        double area = 0.0;
        for (int64_t face = 0; face < mesh->getFaceCount(); ++face)
        {
            BAS_Vec3d corners[3];
            for (int i = 0; i < 3; ++i)
                corners[i] = place(mesh->getShared(), mesh->getPoint(face, i));
            area += 0.5 * (corners[1] - corners[0]).cross(corners[2] - corners[0]).z;
        }
        EXPECT_NEAR(area, 1.0, 1e-12) << "every triangle looks up";
        for (int64_t i = 0; i < mesh->getPointCount(); ++i)
        {
            const BAS_Vec3d p = place(mesh->getShared(), i);
            EXPECT_NEAR(mesh->getShared()->get("x")->getF64(i), p.x, 1e-6);
            if (degree == 1)
                continue;
            ASSERT_NEAR(p.z, height(p.x, p.y), 1e-12);
            const BAS_Vec3d normal = BAS_Vec3d(-2.0 * p.x - p.y, 1.0 - p.x, 1.0).normalized();
            EXPECT_NEAR((place(mesh->getShared(), i, "N") - normal).length(), 0.0, 1e-6);
        }
    }
}

TEST(Channels, AreCurvesThroughTheirVerticesOrGraphs)
{
    const MOD_DetailHandle geometry;
    MOD_Edit edit(geometry);
    ASSERT_TRUE(edit.appendChannel(makeKeys(), appendPoints(edit, {{0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {1, 1, 2}})));
    ASSERT_TRUE(edit.appendChannel(makeKeys())) << edit.message();
    ASSERT_TRUE(edit.appendChannel({}));
    edit.attribute(ELM_OWNER_PRIMITIVE, "name", ELM_STORAGE_INT32)->writeAll<int32_t>()[0] = 5;
    const std::vector<RQ_PrimitiveHandle> primitives = refine(edit.commit());
    ASSERT_EQ(primitives.size(), 3u);
    for (const RQ_PrimitiveHandle &channel : primitives)
    {
        ASSERT_TRUE(as<RQ_PrimChannel>(channel));
        EXPECT_EQ(textOf(*channel->harden()), textOf(*channel));
    }
    const RQ_CurveMeshHandle through = refinedTo<RQ_PrimCurveMesh>(primitives[0]);
    EXPECT_EQ(through->getVertexCount(), 4);
    EXPECT_EQ(place(through->getVertex(), 3), BAS_Vec3d(1, 1, 2));
    EXPECT_EQ(through->getUniform()->get("name")->getI64(0), 5);

    const RQ_CurveMeshHandle graph = refinedTo<RQ_PrimCurveMesh>(primitives[1]);
    EXPECT_EQ(graph->getBasis(), RQ_BASIS_LINEAR);
    ASSERT_EQ(graph->getVertexCount(), 2 + 1 + 8 + 1);
    EXPECT_EQ(place(graph->getVertex(), 1), BAS_Vec3d(1, 0, 0)) << "a step ends where the next key begins";
    EXPECT_EQ(place(graph->getVertex(), 2), BAS_Vec3d(1, 2, 0));
    // Half-way of the cubic: the mean of both values, and an eighth of what the slopes differ by.
    EXPECT_NEAR((place(graph->getVertex(), 7) - BAS_Vec3d(3.5, 3.0 + 1.5 / 8.0, 0)).length(), 0.0, 1e-12);
    BAS_BoundingBox box, drawn;
    primitives[1]->enlargeBounds(&box, 1);
    graph->enlargeBounds(&drawn, 1);
    drawn.enlarge(box);
    EXPECT_EQ(drawn, box);
    RQ_RefineParms endless;
    endless.setLOD(1e9);
    EXPECT_EQ(refinedTo<RQ_PrimCurveMesh>(primitives[1], &endless)->getVertexCount(), 2 + 1 + 16384 + 1);
    RQ_RefineList none;
    EXPECT_FALSE(none.refine(primitives[2].get(), nullptr));
}

TEST(HullCollector, MakesPatchesOfGridsForThoseWhoBindIt)
{
    const Bound bound(std::make_shared<RQ_MSHPrimCollectHull>(), ELM_PRIMITIVE_GRID);
    const MOD_DetailHandle geometry;
    MOD_Edit edit(geometry);
    const struct
    {
        MSH_GridData grid;
        int quads, finer;  // of one step, and of three along u and two along v
    } kCases[] = {
        {{2, 2, false, false}, 1, 6}, {{3, 4, false, false}, 6, 36}, {{3, 4, true, false}, 8, 48},
        {{3, 4, true, true}, 12, 72}, {{1, 4, true, false}, 0, 0},
    };
    for (const auto &c : kCases)
    {
        std::vector<BAS_Vec3d> places;
        for (int i = 0; i < c.grid.rows * c.grid.columns; ++i)
            places.push_back({double(i % c.grid.columns), double(i / c.grid.columns), double(i % 3)});
        ASSERT_TRUE(edit.appendGrids(c.grid, appendPoints(edit, places))) << edit.message();
    }
    const std::vector<RQ_PrimitiveHandle> primitives = refine(edit.commit());
    ASSERT_EQ(primitives.size(), 1u);
    const auto *all = as<RQ_PrimCollect>(primitives[0]);
    ASSERT_TRUE(all);
    ASSERT_EQ(all->entries(), 4);
    EXPECT_TRUE(as<RQ_PrimPatch>(all->getPrim(0)));
    RQ_RefineParms parms;
    parms.setULOD(3);
    parms.setVLOD(2);
    for (int i = 0; i < 4; ++i)
    {
        SCOPED_TRACE(i);
        const RQ_PrimitiveHandle patch = all->getPrim(i);
        EXPECT_EQ(bool(as<RQ_PrimPatchMesh>(patch)), i > 0);
        const RQ_PolygonMeshHandle hull = refinedTo<RQ_PrimPolygonMesh>(patch);
        EXPECT_EQ(hull->getFaceCount(), kCases[i].quads);
        EXPECT_EQ(hull->getShared()->get("P"), patch->getVertexAttributes()->get("P")) << "nothing is copied";
        EXPECT_EQ(refinedTo<RQ_PrimPolygonMesh>(patch, &parms)->getFaceCount(), kCases[i].finer);
        EXPECT_EQ(textOf(*patch->harden()), textOf(*patch));
        BAS_BoundingBox box, drawn;
        patch->enlargeBounds(&box, 1);
        hull->enlargeBounds(&drawn, 1);
        EXPECT_EQ(box, drawn);
    }
}

TEST(Patches, AreCutNoFinerThanMemoryLasts)
{
    RQ_RefineParms endless;
    endless.setLOD(1e9);
    const struct
    {
        int order;
        int64_t vertices;
        int usual, most;
    } cases[] = {{4, 4, 8, 4096}, {2, 4, 1, 4096}, {4, 5000, 3, 3}, {4, int64_t(1) << 40, 1, 1}};
    for (const auto &c : cases)
    {
        const RQ_NetDirection direction{RQ_BASIS_BSPLINE, c.order, false, c.vertices, {}};
        EXPECT_EQ(RQ_PrimTensorPatch::divisions(direction, nullptr, true), c.usual) << c.vertices;
        EXPECT_EQ(RQ_PrimTensorPatch::divisions(direction, &endless, false), c.most) << c.vertices;
    }
}

TEST(Patches, RefuseWhatDoesNotFit)
{
    const RQ_AttributeListHandle sixteen = RQ_AttributeListHandle(new RQ_AttributeList(nullptr))
                                               ->addAttribute("P", new RQ_DANumeric<float>(16, 3, RQ_TYPE_POINT), false);
    const RQ_NetDirection whole{RQ_BASIS_BEZIER, 4, false, 4, {}};
    const struct
    {
        const char *what;
        RQ_NetDirection direction;
        bool isOne, isMesh;
    } kCases[] = {
        {"whole", whole, true, true},
        {"several spans", {RQ_BASIS_LINEAR, 2, false, 4, {}}, false, true},
        {"another basis", {RQ_BASIS_HERMITE, 4, false, 4, {}}, false, false},
        {"another number", {RQ_BASIS_BEZIER, 3, false, 4, {}}, false, false},
        {"an order of one", {RQ_BASIS_BSPLINE, 1, false, 4, {}}, false, false},
        {"falling knots", {RQ_BASIS_BSPLINE, 2, false, 4, {0, 1, 2, 1, 3, 4}}, false, false},
        {"endless knots", {RQ_BASIS_BSPLINE, 2, false, 4, {0, 1, 2, 3, 4, HUGE_VAL}}, false, false},
        {"too few knots", {RQ_BASIS_BSPLINE, 2, false, 4, {0, 1, 2, 3, 4}}, false, false},
        {"fewer than there are attributes of", {RQ_BASIS_LINEAR, 2, false, 3, {}}, false, false},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(RQ_PrimPatch().init(c.direction, whole, sixteen), c.isOne);
        EXPECT_EQ(RQ_PrimPatchMesh().init(whole, c.direction, sixteen), c.isMesh);
    }
    EXPECT_FALSE(RQ_PrimPatchMesh().init(whole, whole, nullptr));
    const RQ_NetDirection huge{RQ_BASIS_LINEAR, 2, false, (int64_t(1) << 62) + 4, {}};
    EXPECT_FALSE(RQ_PrimPatchMesh().init(huge, whole, sixteen)) << "though the product wraps around to sixteen";
    const RQ_AttributeListHandle empty = sixteen->addAttribute("nothing", new RQ_DANumeric<float>(16, 0), false);
    RQ_PrimPatchMesh patch;
    ASSERT_TRUE(patch.init(whole, whole, empty));
    EXPECT_TRUE(patch.refineToPolygonMesh(nullptr));
    EXPECT_FALSE(RQ_PrimTriBez().init(4, sixteen));
    EXPECT_FALSE(RQ_PrimTriBez().init(31, sixteen));
    EXPECT_FALSE(RQ_PrimChannel().init({{0.0}, {}, {}, {}, {}}, nullptr));
}
