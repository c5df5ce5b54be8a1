#include <numeric>

#include <host/msh/Primitive.h>
#include <rq/bridge/MSHAutoNormalArray.h>
#include <rq/bridge/MSHElementId.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
void addNumbers(MOD_Edit &edit, ELM_Owner owner, const char *name)
{
    int32_t *values = edit.attribute(owner, name, ELM_STORAGE_INT32)->writeAll<int32_t>();
    std::iota(values, values + (owner == ELM_OWNER_DETAIL ? 1 : edit.count(owner)), 0);
}

/// A cube whose elements have their numbers as attributes; "both" is one of points and of vertices.
MOD_ConstDetailHandle makeNumberedCube()
{
    MOD_Edit edit{MOD_DetailHandle()};
    append(edit, cubeShape());
    addNumbers(edit, ELM_OWNER_VERTEX, "both");
    addNumbers(edit, ELM_OWNER_POINT, "both");
    addNumbers(edit, ELM_OWNER_PRIMITIVE, "face");
    addNumbers(edit, ELM_OWNER_DETAIL, "scene");
    edit.group(ELM_OWNER_PRIMITIVE, "low")->setRange(0, 2);
    edit.group(ELM_OWNER_PRIMITIVE, "top")->set(5);
    edit.group(ELM_OWNER_PRIMITIVE, "none");
    return edit.commit();
}

/// Names, number of rows, and the last row's value of every whole-number attribute.
std::string describe(const RQ_AttributeListHandle &list)
{
    std::string text;
    for (int i = 0; list && i < list->entries(); ++i)
    {
        const RQ_DataArrayHandle &array = list->get(i);
        text += std::string(list->getName(i).view()) + "[" + std::to_string(array->entries()) + "]";
        if (array->getTupleSize() == 1)
            text += "=" + std::to_string(array->getI64(array->entries() - 1));
        text += " ";
    }
    return text;
}

TEST(DetailList, MakesTheListsOfPrimitives)
{
    const MOD_ConstDetailHandle handle = makeNumberedCube();
    const RQ_MSHDetailList details(handle);
    const MSH_Primitive third(*handle.readLock(), 2);
    const MSH_Primitive *const primitives[] = {&third};
    const MOD_ConstDetailHandle handles[] = {handle};
    const int64_t some[] = {4, 1};
    const auto detail = RQ_MSHIncludeDetail::INCLUDE;
    const auto point = RQ_MSHIncludePoint::INCLUDE;
    const RQ_RefineParms *none = nullptr;

    EXPECT_EQ(describe(details.createDetail(nullptr)), "scene[1]=0 ");
    EXPECT_EQ(describe(details.createPrimitive(nullptr, 2)), "face[1]=2 ");
    EXPECT_EQ(describe(details.createPrimitive(nullptr, 2, none, detail)), "face[1]=2 scene[1]=0 ");
    EXPECT_EQ(describe(details.createPrimitiveVertex(nullptr, 2, none, point)), "both[1]=8 P[1] ");
    EXPECT_EQ(describe(details.createVertex(nullptr, 2)), "both[4]=11 ");
    EXPECT_EQ(describe(details.getPrimitiveVertexAttributes(nullptr, RQ_MSHOffsetList(some, 2))), "both[2]=4 ");

    using List = RQ_MSHDetailList;
    EXPECT_EQ(describe(List::createDetailAttributes(nullptr, handles)), "scene[1]=0 ");
    EXPECT_EQ(describe(List::createPrimitiveAttributes(nullptr, handles, primitives, none, detail)),
              "face[1]=2 scene[1]=0 ");
    EXPECT_EQ(describe(List::createPrimitiveVertexAttributes(nullptr, handles, primitives)), "both[1]=8 ");
    EXPECT_EQ(describe(List::createVertexAttributes(nullptr, handles, primitives, none, point)), "both[4]=11 P[4] ");
    EXPECT_EQ(List::createVertexAttributes(nullptr, {}, {}), nullptr);
}

TEST(DetailList, MakesFaceSetsOfGroups)
{
    const RQ_MSHDetailList details(makeNumberedCube());
    const int64_t some[] = {5, 3, 1};
    struct Case
    {
        const char *what;
        RQ_MSHOffsetList faces;
        int mode;
        std::string expected;
    };
    const RQ_MSHOffsetList all(ELM_OffsetList(0, 6)), listed(some, 3);
    for (const Case &c : {Case{"no mode", all, 0, ""}, Case{"all faces", all, 1, "low 0 1 top 5 "},
                          Case{"a run", RQ_MSHOffsetList(ELM_OffsetList(1, 3)), 1, "low 0 "},
                          Case{"a list", listed, 1, "low 2 top 0 "}, Case{"empty ones too", listed, 2, "low 2 top 0 none "}})
    {
        SCOPED_TRACE(c.what);
        const RQ_FaceSetMapHandle map = details.buildFaceSets(c.faces, c.mode);
        std::string text;
        for (const char *name : {"low", "top", "none"})
            if (const RQ_FaceSetHandle set = map ? map->find(name) : nullptr)
            {
                text += std::string(name) + " ";
                for (const int64_t face : *set)
                    text += std::to_string(face) + " ";
            }
        EXPECT_EQ(text, c.expected);
    }
}

TEST(AttributeFilters, ChooseAmongTheAttributesOfAHost)
{
    MOD_Edit edit{MOD_DetailHandle()};
    ASSERT_TRUE(edit.appendPoints(1));
    for (const int size : {1, 2, 3, 4, 5, 9, 16})
        edit.attribute(ELM_OWNER_POINT, "f" + std::to_string(size), ELM_STORAGE_REAL32, size);
    edit.attribute(ELM_OWNER_POINT, "half", ELM_STORAGE_REAL16);
    edit.attribute(ELM_OWNER_POINT, "number", ELM_STORAGE_INT32);
    edit.attribute(ELM_OWNER_POINT, "own", ELM_STORAGE_REAL32, 1, ELM_TYPE_NONE, ELM_SCOPE_PRIVATE);
    edit.stringAttribute(ELM_OWNER_POINT, "text");
    edit.arrayAttribute(ELM_OWNER_POINT, "list", ELM_STORAGE_REAL32);
    const MOD_ConstDetailHandle detail = edit.commit();
    const auto find = [&](const char *name) { return detail.readLock()->find(ELM_OWNER_POINT, name); };
    const RQ_MSHAttributeFilter base;
    const RQ_MSHStdKelAttributeFilter shading;
    RQ_MSHViewportAttributeFilter viewport;
    viewport.setHandledAttribs(std::vector<BAS_StringHolder>{"f1", "text"});
    const RQ_MSHQuadricAttributeFilter quadric(find("f2"), find("number"));
    const std::pair<const RQ_MSHAttributeFilter *, std::string> kCases[] = {
        {&base, "P f1 f2 f3 f4 f5 f9 f16 half number text list "},
        {&viewport, "P f2 f3 f4 f5 f9 f16 half number list "},
        {&shading, "P f1 f3 f4 f9 f16 half "},
        {&quadric, "P f1 f3 f4 f5 f9 f16 half text list "}};
    const RQ_MSHDetailList details(detail);
    for (const auto &[filter, expected] : kCases)
    {
        const RQ_AttributeListHandle list = details.getPointAttributes(filter, RQ_MSHOffsetList(ELM_OffsetList(0, 1)));
        std::string names;
        for (int i = 0; i < list->entries(); ++i)
            names += std::string(list->getName(i).view()) + " ";
        EXPECT_EQ(names, expected);
    }
}

TEST(ElementId, NamesTheElementBehindARow)
{
    const MOD_ConstDetailHandle handle = makeNumberedCube();
    const MSH_Detail &detail = *handle.readLock();
    const int64_t some[] = {9, 2, 22};
    for (const RQ_MSHOffsetList &list : {RQ_MSHOffsetList(some, 3), RQ_MSHOffsetList(ELM_OffsetList(3, 12))})
        for (const ELM_Owner owner : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE})
        {
            const bool mapped = owner != ELM_OWNER_VERTEX;
            const RQ_DataArrayHandle ids(new RQ_MSHElementId(handle, list, owner, mapped));
            RQ_DataArrayHandle buffer;
            const int32_t *values = ids->getArray<int32_t>(buffer);
            for (int64_t i = 0; i < list.entries(); ++i)
            {
                const ELM_Offset v = list[i];
                const int64_t expected = !mapped ? v : owner == ELM_OWNER_POINT ? detail.vertexPoint(v) : v / 4;
                EXPECT_EQ(values[i], expected) << "owner " << owner << ", row " << i;
                EXPECT_EQ(ids->getI64(i), expected) << "owner " << owner << ", row " << i;
            }
            EXPECT_EQ(ids->getDataId(), RQ_DataArrayHandle(new RQ_MSHElementId(handle, list, owner, mapped))->getDataId());
        }

    // As many rows as 32 bits cannot number, without memory for them.
    for (const int64_t first : {int64_t(0x3FFFFFF0), int64_t(0x7FFFFFF0)})
    {
        const RQ_MSHOffsetList many(ELM_OffsetList(first, int64_t(3) << 31));
        const RQ_DataArrayHandle ids(new RQ_MSHElementId(handle, many, ELM_OWNER_PRIMITIVE, false));
        EXPECT_EQ(ids->getStorage(), RQ_STORAGE_INT64);
        EXPECT_EQ(ids->getI64(many.entries() - 1), first + many.entries() - 1);
        const RQ_DataArrayHandle scene(
            new RQ_MSHElementArray(handle, detail.find(ELM_OWNER_DETAIL, "scene"), many, ELM_OWNER_VERTEX));
        int32_t last[2] = {7, 7};
        scene->fillArray(last, many.entries() - 2, 2);
        EXPECT_EQ(last[1], 0);
    }
}

TEST(AutoNormal, IsWhatTheMeshComputesAndFollowsItsDetail)
{
    const MOD_DetailHandle geometry = makeGeometry(cubeShape());
    const MOD_ConstDetailHandle before = geometry.read();
    const RQ_MSHOffsetList vertices(*before.readLock(), ELM_OWNER_VERTEX);
    const RQ_DataArrayHandle hard(new RQ_MSHAutoNormalArray(before, ELM_OWNER_VERTEX, vertices, ELM_OWNER_VERTEX, 40.0f));
    const RQ_DataArrayHandle soft(new RQ_MSHAutoNormalArray(before, ELM_OWNER_POINT, vertices, ELM_OWNER_VERTEX, 40.0f));
    const auto expectMeshes = [&](const MOD_ConstDetailHandle &detail) {
        const std::vector<RQ_PrimitiveHandle> refined = refine(detail);
        const auto *mesh = as<RQ_PrimPolygonMesh>(refined.at(0));
        EXPECT_TRUE(hard->isEqual(*mesh->createVertexNormals(0, "P", 40.0, true, RQ_STORAGE_REAL32)));
        EXPECT_TRUE(soft->isEqual(*mesh->createVertexNormals(0, "P", 180.0, true, RQ_STORAGE_REAL32)));
    };
    expectMeshes(before);
    const int64_t id = hard->getDataId();

    MOD_Edit edit(geometry);
    edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->modifyAll<float>()[0] -= 0.7f;
    const MOD_ConstDetailHandle after = edit.commit();
    for (const RQ_DataArrayHandle &array : {hard, soft})
        array->updateGeoDetail(after, "N", RQ_OWNER_VERTEX, 0);
    expectMeshes(after);
    EXPECT_NE(hard->getDataId(), id);

    const RQ_DataArrayHandle invalid(new RQ_MSHAutoNormalArray(after, ELM_OWNER_PRIMITIVE, vertices, ELM_OWNER_VERTEX, 0));
    EXPECT_FALSE(invalid->isValid());
}
}  // namespace
