#include <numeric>

#include <host/elm/PrimitiveFactory.h>
#include <host/msh/Grid.h>
#include <rq/bridge/MSHAutoNormalArray.h>
#include <rq/data/DANumeric.h>
#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimCurveMesh.h>
#include <rq/surface/PrimSubdivisionMesh.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
std::vector<int64_t> numbers(const RQ_DataArrayHandle &array)
{
    std::vector<int64_t> values;
    for (int64_t i = 0; array && i < array->entries(); ++i)
        values.push_back(array->getI64(i));
    return values;
}

/// What a detail refines to, a collection taken apart, with its collections marked by -1 and their ends by -2: faces of
/// meshes, vertices of curve meshes.
void appendSizes(const RQ_PrimitiveHandle &primitive, std::vector<int64_t> &sizes)
{
    if (const auto *several = as<RQ_PrimCollect>(primitive))
    {
        sizes.push_back(-1);
        for (int64_t i = 0; i < several->entries(); ++i)
            appendSizes(several->getPrim(i), sizes);
        sizes.push_back(-2);
    }
    if (const auto *mesh = as<RQ_PrimPolygonMesh>(primitive))
        sizes.push_back(mesh->getFaceCount());
    if (const auto *curves = as<RQ_PrimCurveMesh>(primitive))
        sizes.push_back(curves->getVertexCount());
    if (as<RQ_PrimPolygon>(primitive))
        sizes.push_back(0);
}

std::vector<int64_t> sizesOf(const std::vector<RQ_PrimitiveHandle> &primitives)
{
    std::vector<int64_t> sizes;
    for (const RQ_PrimitiveHandle &primitive : primitives)
        appendSizes(primitive, sizes);
    return sizes;
}

MOD_ConstDetailHandle withPolylines(const std::vector<int32_t> &counts)
{
    MOD_Edit edit{MOD_DetailHandle()};
    append(edit, cubeShape());
    std::vector<int32_t> points;
    for (const int32_t count : counts)
        for (int32_t i = 0; i < count; ++i)
            points.push_back(i % 4);
    EXPECT_TRUE(edit.appendPolygons(counts, points, false)) << edit.message();
    return edit.commit();
}

struct CurveCase
{
    const char *what;
    std::vector<int32_t> counts;
    int64_t curveLimit, faceLimit;
    std::vector<int64_t> sizes;
};

TEST(Polygons, ComeInMeshesOfLimitedSize)
{
    for (const CurveCase &c : {
             CurveCase{"faces only", {}, 10, -1, {6}},
             CurveCase{"no limit", {6, 0, 6, 4}, -1, -1, {-1, 6, 16, -2}},
             CurveCase{"the last mesh is asked first", {6, 6, 4}, 10, -1, {-1, 6, -1, 6, 10, -2, -2}},
             CurveCase{"then the first with room", {6, 9, 4, 1, 1}, 10, -1, {-1, 6, -1, 10, 10, 1, -2, -2}},
             CurveCase{"many meshes", {9, 8, 7, 1, 2, 3, 4}, 10, -1, {-1, 6, -1, 9, 8, 10, 7, -2, -2}},
             CurveCase{"longer than a mesh", {3, 12, 4}, 10, -1, {-1, 6, -1, 7, 12, -2, -2}},
             CurveCase{"a mesh each", {3, 2}, 0, -1, {-1, 6, -1, 3, 2, -2, -2}},
             CurveCase{"pieces and curves", {3, 3}, -1, 4, {-1, -1, 3, 3, -2, 6, -2}},
         })
    {
        SCOPED_TRACE(c.what);
        RQ_RefineParms parms;
        parms.setMaxPolyCurveSize(c.curveLimit);
        parms.setMaxPolyMeshSize(c.faceLimit);
        EXPECT_EQ(sizesOf(refine(withPolylines(c.counts), &parms)), c.sizes);
    }
    RQ_RefineParms single;
    single.setGeoPolygonMesh(false);
    EXPECT_EQ(sizesOf(refine(withPolylines({3}), &single)), (std::vector<int64_t>{-1, -1, 0, 0, 0, 0, 0, 0, -2, 3, -2}));
}

struct GridCase
{
    const char *what;
    int32_t rows, columns;
    bool wrapsU, wrapsV;
    std::vector<int64_t> points;
};

TEST(Polygons, OfGridsAreTheirCells)
{
    for (const GridCase &c : {
             GridCase{"one point", 1, 1, false, false, {}},
             GridCase{"one row", 1, 3, true, false, {}},
             GridCase{"flat", 2, 3, false, false, {0, 1, 4, 3, 1, 2, 5, 4}},
             GridCase{"around u", 2, 3, true, false, {0, 1, 4, 3, 1, 2, 5, 4, 2, 0, 3, 5}},
             GridCase{"around v", 3, 2, false, true, {0, 1, 3, 2, 2, 3, 5, 4, 4, 5, 1, 0}},
             GridCase{"around both", 2, 2, true, true, {0, 1, 3, 2, 1, 0, 2, 3, 2, 3, 1, 0, 3, 2, 0, 1}},
         })
    {
        SCOPED_TRACE(c.what);
        MOD_Edit edit{MOD_DetailHandle()};
        std::vector<int32_t> all(size_t(c.rows * c.columns));
        std::iota(all.begin(), all.end(), 0);
        ASSERT_TRUE(edit.appendPoints(int64_t(all.size())));
        ASSERT_TRUE(edit.appendGrids({c.rows, c.columns, c.wrapsU, c.wrapsV}, all)) << edit.message();
        const RQ_PrimitiveHandle mesh = RQ_MSHDetail::makePolygonMesh(edit.commit());
        EXPECT_EQ(mesh ? numbers(mesh->getVertexList()) : std::vector<int64_t>(), c.points);
    }
}

TEST(Polygons, DropUnusedPointsUnlessTheMeshIsTheWholeDetail)
{
    struct Case
    {
        const char *beside;
        bool fast;
        int64_t points;
    };
    for (const Case &c : {Case{"", true, 7}, Case{"", false, 4}, Case{"polyline", true, 4}, Case{"strip", true, 4}})
    {
        SCOPED_TRACE(std::string("beside ") + c.beside);
        MOD_Edit edit{MOD_DetailHandle()};
        append(edit, meshShape("unused points"));
        const int32_t three[] = {3}, own[] = {1, 2, 4};
        ASSERT_TRUE(*c.beside != 'p' || edit.appendPolygons(three, own, false));
        ASSERT_TRUE(*c.beside != 's' || edit.appendTriangleStrips(three, own));
        const MOD_ConstDetailHandle detail = edit.commit();
        RQ_RefineParms parms;
        parms.setFastPolyCompacting(c.fast);
        const RQ_PrimitiveHandle mesh = RQ_MSHDetail::makePolygonMesh(detail, {}, &parms);
        const RQ_DataArrayHandle &p = mesh->getPointAttributes()->get("P");
        EXPECT_EQ(p->entries(), c.points);
        EXPECT_EQ(p->getBackingData() == detail.readLock()->positions().contiguousData(), c.points == 7) << "not a copy";
    }
}

/// Two quads with texture coordinates and groups, a fan of two triangles, and a polyline, whose primitives have materials.
MOD_ConstDetailHandle makeRich(const char *pointAttribute = nullptr)
{
    MOD_Edit edit{MOD_DetailHandle()};
    append(edit, stripShape(4));
    const int32_t fan[] = {0, 2, 3, 1}, four[] = {4};
    EXPECT_TRUE(edit.appendTriangleFans(four, fan));
    EXPECT_TRUE(edit.appendPolygons(four, fan, false));
    edit.group(ELM_OWNER_PRIMITIVE, "ends")->set(0);
    edit.group(ELM_OWNER_PRIMITIVE, "ends")->set(4);
    edit.group(ELM_OWNER_PRIMITIVE, "ends")->set(5);
    edit.group(ELM_OWNER_PRIMITIVE, "none");
    edit.attribute(ELM_OWNER_PRIMITIVE, "__material", ELM_STORAGE_INT32);
    float *uv = edit.attribute(ELM_OWNER_POINT, "uv", ELM_STORAGE_REAL32, 2)->writeAll<float>();
    for (int64_t i = 0; i < edit.pointCount(); ++i)
        uv[2 * i] = float(i / 2), uv[2 * i + 1] = float(i % 2);
    if (pointAttribute)
        edit.attribute(ELM_OWNER_POINT, pointAttribute, ELM_STORAGE_REAL32, 3);
    return edit.commit();
}

TEST(Polygons, HaveNormalsAndTangentsWhereTheyAreMissing)
{
    for (const char *given : {"", "N", "tangentu", "tangentv"})
    {
        SCOPED_TRACE(given);
        RQ_RefineParms parms;
        parms.setAddVertexNormals(true);
        parms.setAddMikkT(true);
        if (*given)
            parms.setCuspAngle(20.0f);
        const MOD_ConstDetailHandle detail = makeRich(*given ? given : nullptr);
        const RQ_PrimitiveHandle mesh = RQ_MSHDetail::makePolygonMesh(detail, {}, &parms);
        const RQ_AttributeListHandle &vertex = mesh->getVertexAttributes();
        EXPECT_EQ(vertex && vertex->hasName("N"), *given != 'N');
        EXPECT_EQ(vertex && vertex->hasName("tangentu"), *given != 't');
        EXPECT_EQ(vertex && vertex->hasName("tangentv"), *given != 't');
        if (!vertex || !vertex->hasName("N"))
            continue;
        const auto *normals = dynamic_cast<const RQ_MSHAutoNormalArray *>(vertex->get("N").get());
        ASSERT_NE(normals, nullptr);
        EXPECT_EQ(normals->getCuspAngle(), *given ? 20.0f : 60.06f);
        EXPECT_EQ(normals->entries(), 4 * 4 + 2 * 3) << "one for each corner of four quads and two triangles";
    }
}

TEST(Polygons, CarryGroupsAndMaterials)
{
    const MOD_ConstDetailHandle detail = makeRich();
    const BAS_IntrusivePtr<RQ_DANumeric<int32_t>> materials(new RQ_DANumeric<int32_t>(6, 1, RQ_TYPE_NONE));
    const BAS_IntrusivePtr<RQ_DANumeric<int32_t>> remap(new RQ_DANumeric<int32_t>(3, 1, RQ_TYPE_NONE));
    std::iota(materials->data(), materials->data() + 6, 10);
    std::iota(remap->data(), remap->data() + 3, 70);
    RQ_RefineParms parms;
    parms.setFaceSetMode(1);
    parms.setPackedViewportLOD(true);
    EXPECT_FALSE(RQ_MSHDetail::makePolygonMesh(detail, {}, &parms)->getUniformAttributes()) << "hidden from viewports";
    parms.setViewportMaterialAttrib(materials, remap);
    const RQ_PrimitiveHandle both = refine(detail, &parms).at(0);
    const auto *mesh = as<RQ_PrimPolygonMesh>(as<RQ_PrimCollect>(both)->getPrim(0));
    const auto *curves = as<RQ_PrimCurveMesh>(as<RQ_PrimCollect>(both)->getPrim(1));
    EXPECT_EQ(numbers(mesh->getUniform()->get("__material")), (std::vector<int64_t>{10, 11, 12, 13, 14, 14}));
    EXPECT_EQ(numbers(curves->getUniform()->get("__material")), (std::vector<int64_t>{15}));
    const RQ_DataArrayHandle &table = mesh->getDetail()->get("__material_remap");
    EXPECT_EQ(table->entries(), 1);
    EXPECT_EQ(table->getI64(0, 2), 72);
    ASSERT_EQ(mesh->faceSetMap()->entries(), 1) << "the empty group makes none";
    EXPECT_EQ(mesh->faceSetMap()->find("ends")->entries(), 3);
    EXPECT_EQ(curves->faceSetMap()->find("ends")->entries(), 1);
    std::string why;
    EXPECT_TRUE(mesh->validate(&why) && curves->validate(&why)) << why;

    // An array that is too short is of another detail.
    parms.setViewportMaterialAttrib(remap, nullptr);
    EXPECT_FALSE(RQ_MSHDetail::makePolygonMesh(detail, {}, &parms)->getUniformAttributes());
    parms.setPolysAsSubdivision(true);
    parms.setMaxPolyMeshSize(2);
    EXPECT_NE(as<RQ_PrimSubdivisionMesh>(as<RQ_PrimCollect>(refine(detail, &parms).at(0))->getPrim(0)), nullptr)
        << "in one piece";
}
}  // namespace
