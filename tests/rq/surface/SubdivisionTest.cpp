#include <gtest/gtest.h>

#include <rq/data/DAIndexedText.h>
#include <rq/prim/PrimCollect.h>
#include <rq/prim/RefineCollect.h>
#include <rq/prim/PrimitiveType.h>
#include <rq/surface/CatPolygonMesh.h>
#include <rq/surface/PrimSubdivisionMesh.h>
#include <tests/json.h>
#include <tests/rq/surface/Fixture.h>

using namespace tests;

namespace
{
using Tag = RQ_PrimSubdivisionMesh::Tag;

RQ_DataArrayHandle reals(const std::vector<float> &values) { return makeArray(values); }

RQ_DataArrayHandle text(const char *value)
{
    const BAS_StringHolder string(value);
    return RQ_DAIndexedString::createIndexed(&string, 1);
}

/// A row of 3 quads whose points 2i and 2i + 1 lie across, with two creases, two corners, a hole and a tag of no standard.
RQ_SubdivisionMeshHandle taggedStrip(int quads = 3)
{
    const RQ_SubdivisionMeshHandle mesh(new RQ_PrimSubdivisionMesh(*makeMesh(stripShape(quads)), RQ_SCHEME_BILINEAR));
    mesh->appendIntTag("crease", integers({0, 1, 4, 5}));
    mesh->appendRealTag("crease", reals({1, 2}));
    mesh->appendIntTag("corner", integers({0, 7}));
    mesh->appendRealTag("corner", reals({3, 4}));
    mesh->appendIntTag("hole", integers({2}));
    mesh->appendStringTag("note", text("kept"));
    return mesh;
}

/// Everything that a mesh's tags hold, such as "crease[0 1][1] note[kept]".
std::string tagsOf(const RQ_Primitive *primitive)
{
    const auto *mesh = dynamic_cast<const RQ_PrimSubdivisionMesh *>(primitive);
    if (!mesh)
        return "no subdivision mesh";
    std::string all;
    for (auto at = mesh->beginTags(); !at.atEnd(); at.advance())
    {
        all += all.empty() ? "" : " ";
        all += at.tag().name().view();
        for (const Tag::Arrays *arrays : {&at.tag().getAllInt(), &at.tag().getAllReal(), &at.tag().getAllString()})
            for (const RQ_DataArrayHandle &array : *arrays)
            {
                all += "[";
                for (int64_t i = 0; i < array->entries(); ++i)
                {
                    all += i ? " " : "";
                    all += RQisNumeric(array->getStorage()) ? std::to_string(array->getI64(i))
                                                            : std::string(array->getS(i).view());
                }
                all += "]";
            }
    }
    return all;
}
}  // namespace

TEST(SubdivisionMesh, KeepsTagsInOrderOfTheirNames)
{
    RQ_PrimSubdivisionMesh mesh;
    mesh.appendIntTag("corner", integers({1}));
    mesh.appendIntTag("corner", integers({2}));
    mesh.appendRealTag("corner", nullptr);
    mesh.appendIntTag("hole", integers({3}));
    EXPECT_EQ(tagsOf(&mesh), "corner[1][2] hole[3]");
    mesh.appendIntTag("corner", integers({4}), true);
    EXPECT_EQ(tagsOf(&mesh), "corner[4] hole[3]");
    EXPECT_EQ(mesh.findTag("corner")->intArray(1), nullptr);
    EXPECT_TRUE(mesh.delTag("corner"));
    EXPECT_FALSE(mesh.delTag("corner"));
    EXPECT_EQ(mesh.findTag("corner"), nullptr);
}

TEST(SubdivisionMesh, SchemesHaveNamesAndTwoHaveNumbers)
{
    const struct
    {
        RQ_DataArrayHandle array;
        RQ_Scheme scheme;
    } cases[] = {{nullptr, RQ_SCHEME_BILINEAR},
                 {integers({}), RQ_SCHEME_BILINEAR},
                 {text("catmull-clark"), RQ_SCHEME_CATMULL_CLARK},
                 {text("loop"), RQ_SCHEME_LOOP},
                 {text("Loop"), RQ_SCHEME_BILINEAR},
                 {integers({1, 0}), RQ_SCHEME_LOOP},
                 {integers({2}), RQ_SCHEME_BILINEAR}};
    for (const auto &c : cases)
        EXPECT_EQ(RQ_PrimSubdivisionMesh::lookupScheme(c.array, RQ_SCHEME_BILINEAR), c.scheme) << (&c - cases);
    EXPECT_STREQ(RQscheme(RQscheme("catclark")), "catmullClark");
    EXPECT_EQ(RQscheme(RQ_SCHEME_INVALID), nullptr);
}

TEST(SubdivisionMesh, OperationsRenumberTags)
{
    const RQ_SubdivisionMeshHandle mesh = taggedStrip();
    BAS_Array<RQ_PrimitiveHandle> pieces, parts;
    ASSERT_TRUE(mesh->splitMesh(2, pieces));
    ASSERT_TRUE(mesh->partitionByMaterial(integers({1, 0, 1}), parts));
    const std::string all = "crease[0 1 4 5][1 2] corner[0 7][3 4] hole[2] note[kept]";
    const struct
    {
        const char *what;
        RQ_PrimitiveHandle result;
        std::string tags;
    } cases[] = {
        {"soft copy", mesh->clone(), all},
        {"hardened", mesh->harden(), all},
        {"first two quads", pieces[0], "crease[0 1 4 5][1 2] corner[0][3] note[kept]"},
        {"last quad", pieces[1], "crease[0 1][2] corner[3][4] hole[0] note[kept]"},
        {"middle quad", parts[0], "crease[2 3][2] note[kept]"},
        {"outer quads", parts[1], all.substr(0, all.find("hole")) + "hole[1] note[kept]"},
        {"triangles", mesh->triangulate(), all.substr(0, all.find("hole")) + "hole[4 5] note[kept]"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(tagsOf(c.result.get()), c.tags) << c.what;
    for (const RQ_PrimitiveHandle &piece : pieces)
        EXPECT_EQ(static_cast<RQ_PrimSubdivisionMesh &>(*piece).scheme(), RQ_SCHEME_BILINEAR);

    // Point 0 is of no face.
    const RQ_SubdivisionMeshHandle loose(new RQ_PrimSubdivisionMesh(integers({3}), integers({1, 2, 3}),
                                                                    oneAttribute("P", positions(std::vector<float>(12)))));
    loose->appendIntTag("corner", integers({0, 3, 9, -1}));
    loose->appendRealTag("corner", reals({5}));
    EXPECT_EQ(tagsOf(loose->removeUnusedPoints().get()), "corner[2][5]");
}

TEST(SubdivisionMesh, RefinesToItsCageWithTheAttributesThatStandIn)
{
    const RQ_SubdivisionMeshHandle mesh = taggedStrip();
    mesh->overrideAttributes(oneAttribute("P", positions(std::vector<float>(24, 7.0f))), nullptr);
    RQ_RefineCollect collect;
    for (const RQ_PrimitiveHandle &one : {RQ_PrimitiveHandle(mesh), mesh->clone(), mesh->harden()})
        ASSERT_TRUE(one->refine(collect, nullptr));
    for (int64_t copy = 1; copy < 3; ++copy)
        EXPECT_EQ(collect.getPrim(copy)->getPointAttributes()->get("P")->getF32(3, 1), 7.0f) << copy;
    const RQ_PrimitiveHandle hull = collect.getPrim(0);
    EXPECT_EQ(hull->getPrimitiveType(), RQ_PRIM_POLYGON_MESH);
    EXPECT_EQ(hull->getVertexList(), mesh->getVertexList());
    EXPECT_EQ(hull->getPointAttributes()->get("P")->getF32(3, 1), 7.0f);
    EXPECT_EQ(hull->getVertexAttributes(), nullptr);
    EXPECT_EQ(
        jsonOf(*mesh).substr(0, 150),
        R"(["SubdivisionMesh",[4,4,4],[0,2,3,1,2,4,5,3,4,6,7,5],{"crease":[[[0,1,4,5]],[[1,2]],[]],"corner":[[[0,7]],[[3,4]],[]],"hole":[[[2]],[],[]],"note":[[],)");
}

TEST(SubdivisionMesh, StandardTagsComeFromAttributes)
{
    const RQ_PolygonMeshHandle strip = makeMesh(stripShape(2));  // faces 0 2 3 1 and 2 4 5 3
    const RQ_AttributeListHandle detail = oneAttribute("osd_scheme", text("loop"))
                                              ->addAttribute("interpolateboundary", integers({1}), false)
                                              ->addAttribute("osd_creasingmethod", text("chaikin"), false);
    const RQ_PrimPolygonMesh mesh(*strip, strip->getShared()->addAttribute("corner", reals({0, 2, 0, 0, 0, -1}), false),
                                  oneAttribute("crease", reals({0, 3, 0, 0, 0, 0, 1, 4})),
                                  oneAttribute("hole", integers({0, 1})), detail);
    const RQ_SubdivisionMeshHandle tagged = RQ_PrimSubdivisionMesh::createWithStandardTags(mesh);
    EXPECT_EQ(tagged->scheme(), RQ_SCHEME_LOOP);
    EXPECT_EQ(tagsOf(tagged.get()),
              "crease[2 3 3 5][4 1] corner[1][2] hole[1] interpolateboundary[1] osd_creasingmethod[chaikin]");
}

TEST(CatPolygonMesh, JoinsWhatFits)
{
    const RQ_SubdivisionMeshHandle a = taggedStrip(1), b = taggedStrip(3);
    b->addFaceSet("set", new RQ_FaceSet);
    b->faceSetMap()->find("set")->addFace(1);
    RQ_CatPolygonMesh cat(false, 10, 2, 3);
    const RQ_PolygonHandle polygon = makeMesh(cubeShape())->getFace(0);
    const RQ_SubdivisionMeshHandle other(new RQ_PrimSubdivisionMesh(*a, RQ_SCHEME_LOOP));
    BAS_Mat4d lift;
    lift.setTranslation(BAS_Vec3d(0, 0, 9));
    const RQ_TransformHandle lifted(new RQ_Transform(&lift, 1));

    RQ_CatPolygonMesh polygons(true, 7);
    EXPECT_TRUE(polygons.append(makeMesh(cubeShape())));
    ASSERT_TRUE(cat.append(a));
    const struct
    {
        const RQ_CatPolygonMesh &cat;
        RQ_PrimitiveHandle primitive;
        int reason;
    } cases[] = {
        {cat, b, RQ_CatPolygonMesh::ACCEPTED},
        {cat, nullptr, RQ_CatPolygonMesh::NOT_A_MESH},
        {cat, polygon, RQ_CatPolygonMesh::KIND},
        {cat, makeMesh(cubeShape()), RQ_CatPolygonMesh::KIND},
        {cat, other, RQ_CatPolygonMesh::ATTRIBUTES},
        {cat, taggedStrip(4), RQ_CatPolygonMesh::MESH_FACE_LIMIT},
        {cat, new RQ_PrimSubdivisionMesh, RQ_CatPolygonMesh::NO_FACES},
        {polygons, a, RQ_CatPolygonMesh::KIND},
        {polygons, polygon, RQ_CatPolygonMesh::ATTRIBUTES},
        {polygons, makeMesh(stripShape(2)), RQ_CatPolygonMesh::TOTAL_FACE_LIMIT},
    };
    int reason = -1;
    for (const auto &c : cases)
    {
        EXPECT_EQ(c.cat.canAppend(c.primitive, reason), c.reason == 0) << (&c - cases);
        EXPECT_EQ(reason, c.reason) << (&c - cases);
    }

    ASSERT_TRUE(cat.append(b, lifted));
    EXPECT_FALSE(cat.canAppend(b, reason));
    EXPECT_EQ(reason, RQ_CatPolygonMesh::MESH_LIMIT);
    RQ_PrimCollect all;
    cat.result(all);
    const auto joint = boost::dynamic_pointer_cast<RQ_PrimSubdivisionMesh>(all.getPrim(0));
    ASSERT_TRUE(joint && joint->validate());
    EXPECT_EQ(joint->getFaceCount(), 4);
    EXPECT_EQ(joint->getPoint(1, 1), 6);
    EXPECT_EQ(vectorOf(*joint->getShared()->get("P"), 4).z - vectorOf(*b->getShared()->get("P"), 0).z, 9.0);
    EXPECT_EQ(tagsOf(joint.get()), "crease[0 1 4 5 8 9][1 1 2] corner[0 4 11][3 3 4] hole[3]");
    EXPECT_TRUE(joint->faceSetMap()->find("set")->contains(2));
}

TEST(CatPolygonMesh, JoinsWhatHasLessThanOthers)
{
    // Creases without a sharpness come first, and motion last.
    const RQ_SubdivisionMeshHandle still = taggedStrip(1), moving(new RQ_PrimSubdivisionMesh(*still));
    still->findOrCreateTag("crease", true).appendInt(integers({0, 1, 2, 3}));
    BAS_Mat4d places[2];
    places[1].setTranslation(BAS_Vec3d(0, 0, 9));
    moving->setPrimitiveTransform(new RQ_Transform(places, 2));
    const RQ_CatPolygonMesh cat({still, moving}, false);
    RQ_PrimCollect all;
    cat.result(all);
    const auto joint = boost::dynamic_pointer_cast<RQ_PrimSubdivisionMesh>(all.getPrim(0));
    ASSERT_TRUE(joint && joint->getMotionSegments() == 2);
    const RQ_DataArrayHandle &first = joint->getShared()->get("P", 0), &second = joint->getShared()->get("P", 1);
    for (int64_t point = 0; point < 8; ++point)
        EXPECT_NEAR(second->getF32(point, 2) - first->getF32(point, 2), point < 4 ? 0.0f : 9.0f, 1e-5) << point;
    EXPECT_EQ(tagsOf(joint.get()).find("crease[0 1 2 3 4 5][0 0 1] "), 0u) << tagsOf(joint.get());

    const RQ_PolygonMeshHandle points(new RQ_PrimPolygonMesh(integers({0, 0}), nullptr, nullptr));
    RQ_PrimCollect none;
    RQ_CatPolygonMesh({points, points}, false).result(none);
    EXPECT_EQ(static_cast<const RQ_PrimPolygonMesh &>(*none.getPrim(0)).getFaceCount(), 4);
}

TEST(CatPolygonMesh, DetailAttributesThatDifferBecomeUniform)
{
    const RQ_PolygonMeshHandle strip = makeMesh(stripShape(2));
    const auto withDetail = [&](const RQ_AttributeListHandle &detail) {
        return RQ_PolygonMeshHandle(
            new RQ_PrimPolygonMesh(*strip, strip->getShared(), strip->getVertex(), strip->getUniform(), detail));
    };
    RQ_CatPolygonMesh cat(
        {withDetail(nullptr), withDetail(oneAttribute("id", integers({5}))), withDetail(oneAttribute("id", integers({6})))},
        true);
    ASSERT_EQ(cat.entries(), 3);
    RQ_PrimCollect all;
    cat.result(all);
    const RQ_DataArrayHandle ids = all.getPrim(0)->getUniformAttributes()->get("id");
    const std::vector<int> expected = {0, 0, 5, 5, 6, 6};
    for (int64_t face = 0; face < 6; ++face)
        EXPECT_EQ(ids->getI32(face), expected[size_t(face)]) << face;

    EXPECT_TRUE(cat.remove(1));
    EXPECT_TRUE(cat.replace(0, strip));
    EXPECT_EQ(cat.faces(), 4);
    EXPECT_FALSE(cat.clearMesh(2));
}
