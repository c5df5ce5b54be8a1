#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include <rq/bridge/MSHElementArray.h>
#include <rq/bridge/typeFromHost.h>
#include <tests/rq/bridge/Fixture.h>
#include <tests/rq/data/arrays.h>

using namespace tests;

namespace
{
/// What every attribute of the tests holds: small whole numbers, so that every storage keeps them.
int valueAt(int owner, int64_t element, int component) { return int((element * 7 + component * 3 + owner * 11) % 100); }

constexpr int kTuple = 3;

template <class T> void addNumbers(MOD_Edit &edit, ELM_Owner owner, ELM_Storage storage, const char *name)
{
    T *values = edit.attribute(owner, name, storage, kTuple)->writeAll<T>();
    const int64_t rows = owner == ELM_OWNER_DETAIL ? 1 : edit.count(owner);
    for (int64_t i = 0; i < rows; ++i)
        for (int c = 0; c < kTuple; ++c)
            values[i * kTuple + c] = T(float(valueAt(owner, i, c)));
}

const char *const kNames[] = {"u8", "i8", "i16", "i32", "i64", "r16", "r32", "r64"};

constexpr const char *kKey = "value";

BAS_OptionsHolder dictOf(int value)
{
    BAS_Options options;
    options.set(kKey, int64_t(value));
    return BAS_OptionsHolder(options);
}

// A value as what attributes of T hold.
template <class T> T makeValue(int value)
{
    if constexpr (std::same_as<T, BAS_StringHolder>)
        return std::to_string(value);
    else if constexpr (std::same_as<T, BAS_OptionsHolder>)
        return dictOf(value);
    else
        return T(float(value));
}

/// The array in a row: none to three values.
template <class T> std::vector<T> arrayAt(int owner, ELM_Offset element)
{
    std::vector<T> values;
    for (int c = 0; c < element % 4; ++c)
        values.push_back(makeValue<T>(valueAt(owner, element, c)));
    return values;
}

std::string arraysOf(const char *name) { return std::string("arrays of ") + name; }

template <class T> void addArrays(MOD_Edit &edit, ELM_Owner owner, ELM_Storage storage, const char *name)
{
    ELM_Attribute *attribute = edit.arrayAttribute(owner, arraysOf(name), storage);
    for (int64_t i = 0; i < attribute->size(); ++i)
    {
        const std::vector<T> values = arrayAt<T>(owner, i);
        if constexpr (std::same_as<T, BAS_StringHolder>)
            attribute->stringArrays()->set(i, values);
        else if constexpr (std::same_as<T, BAS_OptionsHolder>)
            attribute->dictArrays()->set(i, values);
        else
            attribute->numericArrays()->as<T>()->set(i, values);
    }
}

/// Several pages of every owner, and an attribute of every kind and storage on each.
MOD_ConstDetailHandle makeRichDetail()
{
    MOD_Edit edit{MOD_DetailHandle()};
    append(edit, stripShape(1400));
    for (int o = 0; o < ELM_OWNERS; ++o)
    {
        const ELM_Owner owner = ELM_Owner(o);
        int storage = 0;
        forEachType(RQ_NumericTestTypes(), [&]<class T>(T) {
            addNumbers<T>(edit, owner, ELM_Storage(storage), kNames[storage]);
            addArrays<T>(edit, owner, ELM_Storage(storage), kNames[storage]);
            ++storage;
        });
        addArrays<BAS_StringHolder>(edit, owner, ELM_STORAGE_STRING, "text");
        addArrays<BAS_OptionsHolder>(edit, owner, ELM_STORAGE_DICTIONARY, "dict");
        edit.attribute(owner, "constant", ELM_STORAGE_INT32, kTuple);
        ELM_Attribute *strings = edit.stringAttribute(owner, "text"), *dicts = edit.dictAttribute(owner, "dict");
        for (int64_t i = 0; i < strings->size(); i += 2)
        {
            strings->strings()->set(i, std::to_string(valueAt(o, i, 0)));
            dicts->dicts()->set(i, dictOf(valueAt(o, i, 0)));
        }
    }
    return edit.commit();
}

/// The element whose row an array must show; -1 when the offsets do not lead to the attribute's owner.
ELM_Offset elementOf(const MSH_Detail &detail, ELM_Owner from, ELM_Owner to, ELM_Offset offset)
{
    if (to == ELM_OWNER_DETAIL)
        return 0;
    if (to == from)
        return offset;
    if (from != ELM_OWNER_VERTEX)
        return -1;
    if (to == ELM_OWNER_POINT)
        return detail.vertexPoint(offset);
    for (ELM_Offset primitive = 0; primitive < detail.primitiveCount(); ++primitive)
        if (offset < detail.vertexRun(primitive).start + detail.vertexRun(primitive).count)
            return primitive;
    return -1;
}

struct Rows
{
    const char *what;
    RQ_MSHOffsetList list;
};

std::vector<Rows> rowsOf(const MSH_Detail &detail, ELM_Owner owner)
{
    const int64_t count = owner == ELM_OWNER_DETAIL ? 1 : detail.count(owner);
    std::vector<int64_t> shuffled;
    for (int64_t i = 0; i < count; i += 3)
        shuffled.push_back(i);
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(5));
    return {{"none", RQ_MSHOffsetList()},
            {"all", RQ_MSHOffsetList(ELM_OffsetList(0, count))},
            {"a run across pages", RQ_MSHOffsetList(ELM_OffsetList(count / 3, count / 2))},
            {"shuffled", RQ_MSHOffsetList(shuffled.data(), int64_t(shuffled.size()))}};
}

/// An attribute seen from vertices.
RQ_DataArrayHandle elements(const MOD_ConstDetailHandle &detail, ELM_Owner owner, const char *name,
                            const RQ_MSHOffsetList &vertices)
{
    return new RQ_MSHElementArray(detail, detail.readLock()->find(owner, name), vertices, ELM_OWNER_VERTEX);
}

void expectValues(const RQ_DataArray &array, const std::vector<int> &expected)
{
    ASSERT_TRUE(array.isValid());
    ASSERT_EQ(array.entries() * array.getTupleSize(), int64_t(expected.size()));
    forEachType(RQ_NumericTestTypes(), [&]<class T>(T) {
        RQ_DataArrayHandle buffer;
        const T *values = array.getArray<T>(buffer);
        for (size_t i = 0; i < expected.size(); ++i)
            ASSERT_EQ(double(values[i]), double(expected[i])) << "value " << i;
    });
    for (int64_t i = 0; i < array.entries(); i += 17)
        for (int c = 0; c < kTuple; ++c)
        {
            const int value = expected[size_t(i * kTuple + c)];
            ASSERT_EQ(array.getF64(i, c), value) << "row " << i;
            ASSERT_EQ(array.getI64(i, c), value) << "row " << i;
            ASSERT_EQ(array.getI32(i, c), value) << "row " << i;
        }
}

TEST(ElementArray, ReadsEveryStorageThroughEveryMapping)
{
    const MOD_ConstDetailHandle handle = makeRichDetail();
    const MSH_Detail &detail = *handle.readLock();
    EXPECT_FALSE(RQ_MSHElementArray(handle, nullptr, RQ_MSHOffsetList(detail, ELM_OWNER_POINT), ELM_OWNER_POINT).isValid());
    for (int from = 0; from < ELM_OWNERS; ++from)
        for (const Rows &rows : rowsOf(detail, ELM_Owner(from)))
            for (const ELM_Owner to : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE, ELM_OWNER_DETAIL})
            {
                SCOPED_TRACE("offsets of owner " + std::to_string(from) + " (" + rows.what + "), attribute of owner " +
                             std::to_string(to));
                std::vector<int> expected;
                for (int64_t i = 0; i < rows.list.entries(); ++i)
                    for (int c = 0; c < kTuple; ++c)
                        expected.push_back(valueAt(to, elementOf(detail, ELM_Owner(from), to, rows.list[i]), c));
                const bool reachable = elementOf(detail, ELM_Owner(from), to, 0) >= 0;
                for (const char *name : kNames)
                {
                    SCOPED_TRACE(name);
                    const ELM_Attribute *attribute = detail.find(to, name);
                    const RQ_DataArrayHandle array(new RQ_MSHElementArray(handle, attribute, rows.list, ELM_Owner(from)));
                    EXPECT_EQ(array->isValid(), reachable);
                    EXPECT_TRUE(reachable || (array->entries() == 0 && array->getTupleSize() == 0));
                    if (!reachable)
                        continue;
                    EXPECT_EQ(int(array->getStorage()), int(attribute->storage()));
                    expectValues(*array, expected);
                }
                const RQ_DataArrayHandle constant(
                    new RQ_MSHElementArray(handle, detail.find(to, "constant"), rows.list, ELM_Owner(from)));
                if (reachable)
                    expectValues(*constant, std::vector<int>(expected.size(), 0));
            }
}

TEST(ElementArray, ReadsTextsThroughEveryMapping)
{
    const MOD_ConstDetailHandle handle = makeRichDetail();
    const MSH_Detail &detail = *handle.readLock();
    for (const ELM_Owner to : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE, ELM_OWNER_DETAIL})
        for (const Rows &rows : rowsOf(detail, ELM_OWNER_VERTEX))
        {
            SCOPED_TRACE(std::string(rows.what) + ", owner " + std::to_string(to));
            const RQ_DataArrayHandle array = elements(handle, to, "text", rows.list);
            const RQ_DataArrayHandle dicts = elements(handle, to, "dict", rows.list);
            ASSERT_EQ(array->entries(), rows.list.entries());
            std::vector<BAS_StringHolder> all(size_t(rows.list.entries()));
            array->fillStringArray(all.data(), 0, array->entries());
            std::vector<BAS_OptionsHolder> allDicts(all.size());
            dicts->fillDictionaryArray(allDicts.data(), 0, dicts->entries());
            for (int64_t i = 0; i < array->entries(); ++i)
            {
                const ELM_Offset element = elementOf(detail, ELM_OWNER_VERTEX, to, rows.list[i]);
                const std::string text = element % 2 == 0 ? std::to_string(valueAt(to, element, 0)) : "";
                ASSERT_EQ(std::string(array->getS(i).view()), text) << "row " << i;
                ASSERT_EQ(std::string(all[size_t(i)].view()), text) << "row " << i;
                ASSERT_EQ(array->getStringIndex(i) < 0, text.empty()) << "row " << i;
                const BAS_OptionsHolder dict = text.empty() ? BAS_OptionsHolder() : dictOf(valueAt(to, element, 0));
                ASSERT_TRUE(dicts->getDict(i) == dict && allDicts[size_t(i)] == dict) << "row " << i;
                ASSERT_EQ(dicts->getDictIndex(i) < 0, text.empty()) << "row " << i;
            }
            EXPECT_TRUE(array->isEqual(*array->harden()) && dicts->isEqual(*dicts->harden()));
            EXPECT_EQ(array->getDictIndexCount() + dicts->getStringIndexCount(), -2) << "neither is the other";
        }
}

template <class T> void expectArrays(const RQ_DataArray &array, ELM_Owner to, const std::vector<ELM_Offset> &rows)
{
    BAS_Array<T> expected, all;
    BAS_Array<int> sizes(rows.size());
    if constexpr (RQ_NumericValue<T>)
        array.fillArray(all, sizes, 0, array.entries());
    for (size_t i = 0; i < rows.size(); ++i)
    {
        const std::vector<T> row = arrayAt<T>(to, rows[i]);
        expected.insert(expected.end(), row.begin(), row.end());
        std::conditional_t<RQ_NumericValue<T>, BAS_ValArray<T>, BAS_Array<T>> values(1);
        array.import(int64_t(i), values);
        ASSERT_TRUE(std::equal(row.begin(), row.end(), values.begin(), values.end())) << "row " << i;
        ASSERT_EQ(array.itemSize(int64_t(i)), int64_t(row.size())) << "row " << i;
        if constexpr (RQ_NumericValue<T>)
        {
            ASSERT_EQ(array.getValue<T>(int64_t(i), 2), row.size() < 3 ? T(0.0f) : row[2]) << "row " << i;
            ASSERT_EQ(sizes[i], int(row.size())) << "row " << i;
        }
    }
    EXPECT_TRUE(array.hasArrayEntries());
    EXPECT_EQ(array.getTotalArrayEntries(), int64_t(expected.size()));
    EXPECT_TRUE(!RQ_NumericValue<T> || all == expected);
}

TEST(ElementArray, ReadsArraysThroughEveryMapping)
{
    const MOD_ConstDetailHandle handle = makeRichDetail();
    const MSH_Detail &detail = *handle.readLock();
    for (const ELM_Owner to : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE, ELM_OWNER_DETAIL})
        for (const Rows &rows : rowsOf(detail, ELM_OWNER_VERTEX))
        {
            SCOPED_TRACE(std::string(rows.what) + ", owner " + std::to_string(to));
            std::vector<ELM_Offset> shown;
            for (int64_t i = 0; i < rows.list.entries(); ++i)
                shown.push_back(elementOf(detail, ELM_OWNER_VERTEX, to, rows.list[i]));
            const auto read = [&](const char *name) { return elements(handle, to, arraysOf(name).c_str(), rows.list); };
            // Each storage as itself, and as one of the others.
            int storage = 0;
            forEachType(RQ_NumericTestTypes(), [&]<class T>(T) {
                expectArrays<T>(*read(kNames[storage]), to, shown);
                expectArrays<T>(*read(kNames[(storage + 3) % 8]), to, shown);
                ++storage;
            });
            expectArrays<BAS_StringHolder>(*read("text"), to, shown);
            expectArrays<BAS_OptionsHolder>(*read("dict"), to, shown);
            for (const char *name : {"r32", "text", "dict"})
            {
                const RQ_DataArrayHandle array = read(name), copy = array->harden();
                EXPECT_NE(array, copy) << "it lets the detail go";
                EXPECT_TRUE(array->isEqual(*copy));
            }
        }
}

// What is filled in another form is what a copy in memory fills.
TEST(ElementArray, FillsQuantisedRowsAndBoxesLikeACopy)
{
    const MOD_ConstDetailHandle handle = makeRichDetail();
    const MSH_Detail &detail = *handle.readLock();
    for (const ELM_Owner to : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_DETAIL})
        for (const Rows &rows : rowsOf(detail, ELM_OWNER_VERTEX))
            for (const char *name : {"u8", "i64", "r16", "r32", "constant", "text", "arrays of r64"})
            {
                SCOPED_TRACE(std::string(rows.what) + ", " + name + " of owner " + std::to_string(to));
                const RQ_DataArrayHandle array = elements(handle, to, name, rows.list), copy = array->harden();
                const int64_t first = rows.list.entries() / 7, count = rows.list.entries() - first;
                const auto fill = [&](const RQ_DataArray &from) {
                    std::vector<uint8_t> bytes(size_t(6 * count), 7);
                    std::vector<float> values(size_t(4 * count), 7.0f);
                    BAS_BoundingBox box;
                    from.fillArray(bytes.data(), first, count, 2, 6, 10.0, 80.0);
                    from.extendedFillArray(bytes.data(), first, count, 1, 2, 3, 10.0, 80.0);
                    from.fillVec3BBox(values.data(), first, count, box, 3, 4);
                    double least[kTuple] = {}, greatest[kTuple] = {};
                    from.getMinMax(least, greatest);
                    return std::make_tuple(bytes, values, box.minimum(), box.maximum(), std::to_array(least),
                                           std::to_array(greatest));
                };
                EXPECT_TRUE(fill(*array) == fill(*copy));
            }
}

TEST(ElementArray, LeavesNotANumberOutOfItsBounds)
{
    MOD_Edit edit{MOD_DetailHandle()};
    ASSERT_TRUE(edit.appendPoints(10));
    float *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->writeAll<float>();
    for (int i = 0; i < 10; ++i, p += 3)
    {
        p[0] = float(i);
        p[1] = i % 2 ? float(-i) : std::nanf("");
        p[2] = std::nanf("");
    }
    const MOD_ConstDetailHandle handle = edit.commit();
    const ELM_Offset points[] = {4, 7, 3, 6, 7};
    const RQ_MSHElementArray array(handle, &handle.readLock()->positions(), RQ_MSHOffsetList(points, 5), ELM_OWNER_POINT);
    double min[3], max[3];
    EXPECT_TRUE(array.getMinMax(min, max));
    EXPECT_TRUE(min[0] == 3.0 && max[0] == 7.0);
    EXPECT_TRUE(min[1] == -7.0 && max[1] == -3.0);
    EXPECT_GT(min[2], max[2]) << "no number at all";
}

TEST(ElementArray, EveryKindGoesWithTheFacesOfAMesh)
{
    const MOD_ConstDetailHandle handle = makeRichDetail();
    const RQ_PrimitiveHandle mesh = refine(handle).at(0), copy = as<RQ_PrimPolygonMesh>(mesh)->convex(3)->harden();
    std::vector<ELM_Offset> faces;
    for (int64_t i = 0; i < 2 * handle.readLock()->primitiveCount(); ++i)
        faces.push_back(i / 2);
    const RQ_AttributeListHandle &uniform = copy->getUniformAttributes();
    EXPECT_EQ(uniform->entries(), handle.readLock()->attributes(ELM_OWNER_PRIMITIVE).size());
    expectArrays<int32_t>(*uniform->get(arraysOf("i32")), ELM_OWNER_PRIMITIVE, faces);
    expectArrays<BAS_OptionsHolder>(*uniform->get(arraysOf("dict")), ELM_OWNER_PRIMITIVE, faces);
    EXPECT_TRUE(uniform->get("dict")->getDict(5) == dictOf(valueAt(ELM_OWNER_PRIMITIVE, 2, 0)));
}

TEST(ElementArray, HandsOutTheHostsMemory)
{
    const MOD_ConstDetailHandle handle = makeRichDetail();
    const MSH_Detail &detail = *handle.readLock();
    for (const ELM_Owner owner : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE})
    {
        SCOPED_TRACE(owner);
        const ELM_Attribute *attribute = detail.find(owner, "r32");
        const float *host = attribute->contiguousData<float>();
        ASSERT_NE(host, nullptr);
        for (const int64_t first : {int64_t(0), int64_t(5), ELM_PAGE_SIZE})
        {
            const RQ_MSHOffsetList run(ELM_OffsetList(first, detail.count(owner) - first));
            const RQ_DataArrayHandle array(new RQ_MSHElementArray(handle, attribute, run, owner));
            RQ_DataArrayHandle buffer;
            EXPECT_EQ(array->getArray<float>(buffer), host + first * kTuple) << "from " << first;
        }
        const int64_t every[] = {4, 2, 0};
        const RQ_DataArrayHandle gathered(new RQ_MSHElementArray(handle, attribute, RQ_MSHOffsetList(every, 3), owner));
        EXPECT_EQ(gathered->getBackingData(), nullptr);
    }
    const RQ_DataArrayHandle mapped(
        new RQ_MSHElementArray(handle, &detail.positions(), RQ_MSHOffsetList(detail, ELM_OWNER_VERTEX), ELM_OWNER_VERTEX));
    EXPECT_EQ(mapped->getBackingData(), nullptr) << "points seen from vertices are not in this order in memory";
}

/// A cube with the velocity (x, 0, 0) at its points, and what `change` does to it.
MOD_ConstDetailHandle makeMovingCube(float x, void (*change)(MOD_Edit &edit))
{
    MOD_Edit edit{MOD_DetailHandle()};
    append(edit, cubeShape());
    float *v = edit.attribute(ELM_OWNER_POINT, "v", ELM_STORAGE_REAL32, 3, ELM_TYPE_VECTOR)->writeAll<float>();
    for (int i = 0; i < 24; ++i)
        v[i] = i % 3 == 0 ? x : 0.0f;
    change(edit);
    return edit.commit();
}

TEST(ElementArray, FollowsANewerSnapshotOfTheSameShape)
{
    const auto nothing = [](MOD_Edit &) {};
    const MOD_ConstDetailHandle older = makeMovingCube(1.0f, nothing), newer = makeMovingCube(2.0f, nothing);
    const RQ_MSHOffsetList points(*older.readLock(), ELM_OWNER_POINT);
    const ELM_Attribute *velocity = older.readLock()->find(ELM_OWNER_POINT, "v");
    const RQ_DataArrayHandle array(new RQ_MSHElementArray(older, velocity, points, ELM_OWNER_POINT));
    const auto &elements = static_cast<const RQ_MSHElementArray &>(*array);
    const float *before = static_cast<const float *>(array->getBackingData());
    const int64_t id = array->getDataId();

    array->updateGeoDetail(newer, "v", RQ_OWNER_POINT, 0);
    EXPECT_TRUE(elements.isBoundTo(newer));
    EXPECT_EQ(array->getF32(0, 0), 2.0f);
    EXPECT_NE(array->getDataId(), id);
    EXPECT_EQ(before[0], 1.0f) << "pointers handed out before stay good until the next re-binding";

    const std::pair<const char *, void (*)(MOD_Edit &)> refusals[] = {
        {"more points", [](MOD_Edit &edit) { ASSERT_TRUE(edit.appendPoints(1)); }},
        {"another storage",
         [](MOD_Edit &edit) { edit.attribute(ELM_OWNER_POINT, "v", ELM_STORAGE_REAL64, 3, ELM_TYPE_VECTOR); }},
        {"another tuple size",
         [](MOD_Edit &edit) { edit.attribute(ELM_OWNER_POINT, "v", ELM_STORAGE_REAL32, 4, ELM_TYPE_VECTOR); }},
        {"another meaning",
         [](MOD_Edit &edit) { edit.attribute(ELM_OWNER_POINT, "v", ELM_STORAGE_REAL32, 3, ELM_TYPE_COLOR); }},
        {"arrays",
         [](MOD_Edit &edit) { edit.arrayAttribute(ELM_OWNER_POINT, "v", ELM_STORAGE_REAL32, 3, ELM_TYPE_VECTOR); }},
    };
    for (const auto &[what, change] : refusals)
    {
        SCOPED_TRACE(what);
        array->updateGeoDetail(makeMovingCube(3.0f, change), "v", RQ_OWNER_POINT, 0);
        EXPECT_TRUE(elements.isBoundTo(newer));
        EXPECT_EQ(array->getF32(0, 0), 2.0f);
    }
    array->updateGeoDetail(newer, "no such attribute", RQ_OWNER_POINT, 0);
    array->updateGeoDetail(MOD_ConstDetailHandle(), "v", RQ_OWNER_POINT, 0);
    EXPECT_TRUE(elements.isBoundTo(newer));
}

TEST(ElementArray, FollowsOtherTopologyOnlyWhereThatTakesNoPart)
{
    const MOD_DetailHandle detail = makeGeometry(cubeShape());
    const MOD_ConstDetailHandle older = detail.read();
    const MSH_Detail &snapshot = *older.readLock();
    const RQ_DataArrayHandle direct(
        new RQ_MSHElementArray(older, &snapshot.positions(), RQ_MSHOffsetList(snapshot, ELM_OWNER_POINT), ELM_OWNER_POINT));
    const RQ_DataArrayHandle mapped(new RQ_MSHElementArray(older, &snapshot.positions(),
                                                           RQ_MSHOffsetList(snapshot, ELM_OWNER_VERTEX), ELM_OWNER_VERTEX));
    MOD_Edit edit(detail);
    ASSERT_TRUE(edit.setVertexPoint(0, 7));
    const MOD_ConstDetailHandle newer = edit.commit();
    for (const RQ_DataArrayHandle &array : {direct, mapped})
        array->updateGeoDetail(newer, "P", RQ_OWNER_POINT, 0);
    EXPECT_TRUE(static_cast<const RQ_MSHElementArray &>(*direct).isBoundTo(newer));
    EXPECT_TRUE(static_cast<const RQ_MSHElementArray &>(*mapped).isBoundTo(older));
}

TEST(ElementArray, MeshesFollowADetailWhoseFacesStay)
{
    struct Case
    {
        const char *what;
        void (*change)(MOD_Edit &edit);
        bool follows;
        bool shades = false, isSampled = false;
    };
    const auto move = [](MOD_Edit &edit) {
        edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->writeAll<float>()[0] = 5.0f;
    };
    const Case cases[] = {
        {"points move", move, true},
        {"points move, and normals were computed", move, false, true},
        {"an attribute changes its storage",
         [](MOD_Edit &edit) { edit.attribute(ELM_OWNER_POINT, "v", ELM_STORAGE_REAL64, 3, ELM_TYPE_VECTOR); }, false},
        {"a corner moves to another point", [](MOD_Edit &edit) { ASSERT_TRUE(edit.setVertexPoint(0, 7)); }, false},
        {"points move, between samples too", move, false, false, true},
    };
    for (const Case &c : cases)
    {
        SCOPED_TRACE(c.what);
        const MOD_DetailHandle geometry(makeMovingCube(1.0f, [](MOD_Edit &) {}));
        const auto next = [&] {
            MOD_Edit edit(geometry);
            c.change(edit);
            return edit.commit();
        };
        std::vector<MOD_ConstDetailHandle> samples(c.isSampled ? 2 : 1, geometry.read());
        if (c.isSampled)
            samples[1] = next();
        RQ_RefineList meshes;
        ASSERT_TRUE(meshes.refine(RQ_PrimitiveHandle(new RQ_MSHDetail(samples)).get(), nullptr));
        ASSERT_EQ(meshes.entries(), 1);
        RQ_PrimitiveHandle mesh = meshes.getPrimitive(0);
        bool shaded = false;
        if (c.shades)
            mesh = static_cast<RQ_PrimPolygonMesh &>(*mesh).createVertexNormalsIfMissing("P", 180.0, true, shaded);
        EXPECT_EQ(shaded, c.shades);
        const std::string before = textOf(*mesh);
        const MOD_ConstDetailHandle newer = next();
        EXPECT_EQ(mesh->updateGeoPrim(newer, RQ_RefineParms()), c.follows);
        EXPECT_EQ(textOf(*mesh), c.follows ? textOf(*refine(newer)[0]) : before);
    }
    const RQ_PrimitiveHandle own(new RQ_PrimPolygonMesh);
    EXPECT_FALSE(own->updateGeoPrim(makeDetail(cubeShape()), RQ_RefineParms()));
}

TEST(ElementArray, ReadsNothingWhereAVertexHasNoPoint)
{
    MOD_Edit edit{MOD_DetailHandle()};
    append(edit, cubeShape());
    ELM_StringTuple *names = edit.stringAttribute(ELM_OWNER_POINT, "name")->strings();
    for (int64_t point = 0; point < 8; ++point)
        names->set(point, "named");
    const float three[] = {1, 2, 3};
    ELM_Attribute *weights = edit.arrayAttribute(ELM_OWNER_POINT, "weights", ELM_STORAGE_REAL32);
    weights->numericArrays()->as<float>()->fill(0, 8, weights->numericArrays()->as<float>()->add(three));
    ASSERT_TRUE(edit.setVertexPoint(3, -1));
    const MOD_ConstDetailHandle handle = edit.commit();
    const RQ_MSHOffsetList vertices(*handle.readLock(), ELM_OWNER_VERTEX);
    const RQ_DataArrayHandle p(new RQ_MSHElementArray(handle, &handle.readLock()->positions(), vertices, ELM_OWNER_VERTEX));
    const ELM_Attribute *name = handle.readLock()->find(ELM_OWNER_POINT, "name");
    const RQ_DataArrayHandle text(new RQ_MSHElementArray(handle, name, vertices, ELM_OWNER_VERTEX));
    RQ_DataArrayHandle buffer;
    EXPECT_EQ(p->getArray<float>(buffer)[11], 0.0f);
    EXPECT_EQ(p->getF64(3, 2), 0.0);
    EXPECT_EQ(text->getStringIndex(3), -1);
    EXPECT_EQ(text->getS(3).view(), "");
    EXPECT_EQ(text->getS(2).view(), "named");
    const RQ_DataArrayHandle arrays = elements(handle, ELM_OWNER_POINT, "weights", vertices);
    EXPECT_EQ(arrays->itemSize(3), 0);
    EXPECT_EQ(arrays->getTotalArrayEntries(), 23 * 3);
}

TEST(ElementArray, KnowsHostTypesByTheirSize)
{
    EXPECT_EQ(RQtypeFromHost(ELM_TYPE_HPOINT, 4), RQ_TYPE_HPOINT);
    EXPECT_EQ(int(RQtypeFromHost(ELM_TYPE_HPOINT, 3)), -1);
    for (const int tupleSize : {9, 16, 18})
        EXPECT_EQ(int(RQtypeFromHost(ELM_TYPE_MATRIX, tupleSize)), tupleSize == 16 ? 7 : 6) << tupleSize;
}

TEST(OffsetList, KeepsItsTwoFacts)
{
    const int64_t limit = 0x40000000;
    const struct
    {
        const char *what;
        std::vector<int64_t> offsets;
        bool is32Bit, monotonic, trivial;
    } cases[] = {
        {"empty", {}, true, true, true},
        {"a run", {4, 5, 6}, true, true, true},
        {"rising", {4, 4, 9}, true, true, false},
        {"falling", {5, 3}, true, false, false},
        {"last narrow one", {limit - 1}, true, true, true},
        {"first wide one", {limit}, false, true, true},
        {"wide in the middle", {1, limit + 5, 2}, false, false, false},
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        RQ_MSHOffsetList appended;
        for (const int64_t offset : c.offsets)
            appended.append(offset);
        const RQ_MSHOffsetList whole(c.offsets.data(), int64_t(c.offsets.size()));
        for (const RQ_MSHOffsetList *list : {static_cast<const RQ_MSHOffsetList *>(&appended), &whole})
        {
            EXPECT_EQ(list->is32Bit(), c.is32Bit);
            EXPECT_EQ(list->monotonic(), c.monotonic);
            EXPECT_EQ(list->isTrivial(), c.trivial);
            const RQ_DataArrayHandle array = list->allocateArray();
            EXPECT_EQ(array->getStorage(), c.is32Bit ? RQ_STORAGE_INT32 : RQ_STORAGE_INT64);
            ASSERT_EQ(array->entries(), int64_t(c.offsets.size()));
            for (int64_t i = 0; i < array->entries(); ++i)
                EXPECT_EQ(array->getI64(i), c.offsets[size_t(i)]);
        }
        RQ_MSHOffsetList joined = appended;
        joined.concat(whole);
        ASSERT_EQ(joined.entries(), 2 * appended.entries());
        EXPECT_EQ(joined.monotonic(), c.monotonic && (c.offsets.empty() || c.offsets.front() >= c.offsets.back()));
    }
}

TEST(OffsetList, FindsThePointsOfVertices)
{
    const MOD_ConstDetailHandle handle = makeRichDetail();
    const MSH_Detail &detail = *handle.readLock();
    for (const Rows &rows : rowsOf(detail, ELM_OWNER_VERTEX))
    {
        SCOPED_TRACE(rows.what);
        const RQ_DataArrayHandle points = rows.list.createVertexPointArray(handle);
        const RQ_MSHOffsetList list = RQ_MSHOffsetList::pointFromVertex(handle, rows.list);
        ASSERT_EQ(points->entries(), rows.list.entries());
        ASSERT_EQ(list.entries(), rows.list.entries());
        for (int64_t i = 0; i < rows.list.entries(); ++i)
        {
            ASSERT_EQ(points->getI64(i), detail.vertexPoint(rows.list[i])) << "vertex " << i;
            ASSERT_EQ(list[i], detail.vertexPoint(rows.list[i])) << "vertex " << i;
        }
        EXPECT_EQ(points->getDataId(), rows.list.createVertexPointArray(handle)->getDataId());
    }
}
}  // namespace
