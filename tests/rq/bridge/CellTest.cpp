#include <numeric>

#include <host/bas/Parallel.h>
#include <host/msh/Hexa.h>
#include <host/msh/Tetra.h>
#include <rq/bridge/MSHPrimCollectHexahedron.h>
#include <rq/bridge/MSHPrimCollectTetrahedron.h>
#include <rq/bridge/RefineCache.h>
#include <rq/surface/PrimHexMesh.h>
#include <rq/surface/PrimTetMesh.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
/// A cube of n x n x n cells, a tetrahedron of legs 3 that touches none of them, and a face; all in turn where it is mixed.
/// Every element has its number.
MOD_DetailHandle makeCells(int n, bool mixed)
{
    const MOD_DetailHandle geometry;
    MOD_Edit edit(geometry);
    const int side = n + 1, points = side * side * side;
    std::vector<int32_t> hexahedra;
    for (int i = 0; i < n * n * n; ++i)
    {
        const int32_t low = i % n + side * (i / n % n + side * (i / n / n));
        for (const int32_t corner : {0, 1, side + 1, side})
            hexahedra.push_back(low + corner);
        for (int corner = 0; corner < 4; ++corner)
            hexahedra.push_back(hexahedra[hexahedra.size() - 4] + side * side);
    }
    EXPECT_TRUE(edit.appendPoints(points + (mixed ? 5 : 0)));
    const std::vector<int32_t> tetrahedron{points, points + 1, points + 2, points + 3},
        triangle{points + 1, points + 2, points + 4};
    EXPECT_TRUE(!mixed || (edit.appendTetrahedra(tetrahedron) && edit.appendPolygons(3, triangle, true)));
    EXPECT_TRUE(edit.appendHexahedra(hexahedra)) << edit.message();
    float *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->writeAll<float>();
    for (int i = 0; i < points; ++i)
        for (int axis = 0, rest = i; axis < 3; ++axis, rest /= side)
            p[3 * i + axis] = float(rest % side);
    for (int i = 0; mixed && i < 5; ++i)
        for (int axis = 0; axis < 3; ++axis)
            p[3 * (points + i) + axis] = i == axis + 1 || i == 4 ? -4.0f : -1.0f;
    for (const ELM_Owner owner : {ELM_OWNER_POINT, ELM_OWNER_VERTEX, ELM_OWNER_PRIMITIVE})
    {
        int32_t *number = edit.attribute(owner, "number", ELM_STORAGE_INT32)->writeAll<int32_t>();
        std::iota(number, number + edit.capacity(owner), 0);
    }
    *edit.attribute(ELM_OWNER_DETAIL, "whole", ELM_STORAGE_INT32)->writeAll<int32_t>() = 7;
    edit.commit();
    return geometry;
}

/// Whether every value of a mesh is that of the element of the detail that it stands for.
template <class View> void expectNumbersOf(const RQ_PrimCellMesh &mesh, const MSH_Detail &detail)
{
    ASSERT_TRUE(mesh.validate());
    EXPECT_EQ(mesh.getDetailAttributes()->get("whole")->getI64(0), 7);
    for (int64_t cell = 0; cell < mesh.getCellCount(); ++cell)
    {
        const View view(detail, mesh.getUniformAttributes()->get("number")->getI64(cell));
        ASSERT_TRUE(view.isValid());
        for (int i = 0; i < mesh.getCornerCount(); ++i)
        {
            EXPECT_EQ(mesh.getVertexAttributes()->get("number")->getI64(cell * mesh.getCornerCount() + i), view.vertex(i));
            EXPECT_EQ(mesh.getPointAttributes()->get("number")->getI64(mesh.getPoint(cell, i)), view.point(i));
        }
    }
}

TEST(CellCollectors, MakeOneMeshOfEachKind)
{
    struct Case
    {
        const char *what;
        std::function<void(MOD_Edit &)> change;
        int64_t cells;  // hexahedra left of eight
        double area;
    };
    const Case cases[] = {
        {"all", [](MOD_Edit &) {}, 8, 24.0},
        {"one gone", [](MOD_Edit &edit) { EXPECT_TRUE(edit.remove(ELM_Range(ELM_OWNER_PRIMITIVE, 5, 6))); }, 7, 24.0},
        {"two hidden", [](MOD_Edit &edit) { edit.group(ELM_OWNER_PRIMITIVE, ELM_HIDDEN_GROUP_NAME)->setRange(2, 2); }, 6,
         22.0},
        {"one without a point", [](MOD_Edit &edit) { EXPECT_TRUE(edit.setVertexPoint(4 + 3 + 8 * 7, -1)); }, 7, 24.0},
    };
    for (const Case &c : cases)
    {
        SCOPED_TRACE(c.what);
        const MOD_DetailHandle geometry = makeCells(2, true);
        MOD_Edit edit(geometry);
        c.change(edit);
        const MOD_ConstDetailHandle detail = edit.commit();
        const std::vector<RQ_PrimitiveHandle> primitives = refine(detail);
        ASSERT_GE(primitives.size(), 3u);  // a point that lost its cell comes first
        const size_t first = primitives.size() - 3;
        EXPECT_EQ(as<RQ_PrimPolygonMesh>(primitives[first])->getFaceCount(), 1);
        const auto *tets = as<RQ_PrimTetMesh>(primitives[first + 1]);
        const auto *hexes = as<RQ_PrimHexMesh>(primitives[first + 2]);
        ASSERT_TRUE(tets && hexes);
        expectNumbersOf<MSH_Tetra>(*tets, *detail.readLock());
        expectNumbersOf<MSH_Hexa>(*hexes, *detail.readLock());
        EXPECT_EQ(tets->getPointCount(), 4);
        EXPECT_EQ(tets->computeVolume(BAS_Vec3f(0.0f), 0), 4.5);
        EXPECT_EQ(hexes->getCellCount(), c.cells);
        EXPECT_NEAR(hexes->computeVolume(BAS_Vec3f(0.0f), 0), double(c.cells), 1e-9);
        EXPECT_EQ(hexes->computeSurfaceArea(0), c.area);

        // One by one it is the same.
        const auto details = std::make_shared<RQ_MSHDetailList>(detail);
        const RQ_MSHPrimCollectHexahedron collector;
        std::vector<std::unique_ptr<RQ_MSHPrimCollectData>> parts;
        for (int half = 0; half < 2; ++half)
        {
            parts.emplace_back(collector.beginCollecting(details, nullptr));
            for (ELM_Offset i = 5 * half; i < 5 + 5 * half; ++i)
            {
                const MSH_Primitive primitive(*detail.readLock(), i), *pointer = &primitive;
                const ELM_Group *hidden = detail.readLock()->hidden();
                EXPECT_FALSE((!hidden || !hidden->contains(i)) &&
                             collector.collect(details, &pointer, 1, parts[size_t(half)].get()));
            }
        }
        collector.mergeData(parts[0].get(), parts[1].get());
        EXPECT_EQ(textOf(*collector.endCollecting(details, parts[0].get())), textOf(*hexes));
    }
}

TEST(CellCollectors, ReadTheDetailInPlaceFromAnyNumberOfThreads)
{
    const MOD_DetailHandle geometry = makeCells(28, false);
    const MOD_ConstDetailHandle detail = geometry.read();
    std::string first;
    for (const int threads : {1, 2, 8})
    {
        const BAS_Threads::Limit limit(threads);
        const std::vector<RQ_PrimitiveHandle> primitives = refine(detail);
        ASSERT_EQ(primitives.size(), 1u);
        const auto &mesh = *as<RQ_PrimHexMesh>(primitives[0]);
        EXPECT_EQ(mesh.getVertexList()->getBackingData(), detail.readLock()->vertexPoint().contiguous32());
        EXPECT_EQ(mesh.getPointAttributes()->get("P")->getBackingData(), detail.readLock()->positions().contiguousData());
        const std::string text = textOf(*mesh.getOuterFaces());
        first = first.empty() ? text : first;
        EXPECT_EQ(text, first);
        EXPECT_EQ(mesh.getOuterFaces()->getFaceCount(), 6 * 28 * 28);
    }

    // Frames share what is outside.
    RQ_RefineCache cache;
    const auto frame = [&] { return cache.refine(RQ_MSHDetail(geometry.read()), nullptr)[0]; };
    const RQ_PrimitiveHandle before = frame();
    const RQ_PolygonMeshHandle outer = as<RQ_PrimHexMesh>(before)->getOuterFaces();
    MOD_Edit edit(geometry);
    edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->modifyAll<float>()[0] = -1.0f;
    edit.commit();
    const RQ_PrimitiveHandle after = frame();
    EXPECT_EQ(cache.getWork().walks, 1);
    EXPECT_EQ(as<RQ_PrimHexMesh>(after)->getOuterFaces()->getVertexList(), outer->getVertexList());
    EXPECT_GT(after->computeVolume(BAS_Vec3f(0.0f), 0), before->computeVolume(BAS_Vec3f(0.0f), 0));
    EXPECT_EQ(textOf(*after) + "\n", textOf(refine(geometry.read())));
}
}  // namespace
