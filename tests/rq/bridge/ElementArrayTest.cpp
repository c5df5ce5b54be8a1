#include <algorithm>
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

/// Several pages of every owner, and an attribute of every storage on each.
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
            ++storage;
        });
        edit.attribute(owner, "constant", ELM_STORAGE_INT32, kTuple);
        ELM_StringTuple *strings = edit.stringAttribute(owner, "text")->strings();
        for (int64_t i = 0; i < (o == ELM_OWNER_DETAIL ? 1 : edit.count(owner)); i += 2)
            strings->set(i, std::to_string(valueAt(o, i, 0)));
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

TEST(ElementArray, ReadsStringsThroughEveryMapping)
{
    const MOD_ConstDetailHandle handle = makeRichDetail();
    const MSH_Detail &detail = *handle.readLock();
    for (const ELM_Owner to : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE, ELM_OWNER_DETAIL})
        for (const Rows &rows : rowsOf(detail, ELM_OWNER_VERTEX))
        {
            SCOPED_TRACE(std::string(rows.what) + ", owner " + std::to_string(to));
            const RQ_DataArrayHandle array(
                new RQ_MSHElementArray(handle, detail.find(to, "text"), rows.list, ELM_OWNER_VERTEX));
            ASSERT_EQ(array->entries(), rows.list.entries());
            std::vector<BAS_StringHolder> all(size_t(rows.list.entries()));
            array->fillStringArray(all.data(), 0, array->entries());
            for (int64_t i = 0; i < array->entries(); ++i)
            {
                const ELM_Offset element = elementOf(detail, ELM_OWNER_VERTEX, to, rows.list[i]);
                const std::string text = element % 2 == 0 ? std::to_string(valueAt(to, element, 0)) : "";
                ASSERT_EQ(std::string(array->getS(i).view()), text) << "row " << i;
                ASSERT_EQ(std::string(all[size_t(i)].view()), text) << "row " << i;
                ASSERT_EQ(array->getStringIndex(i) < 0, text.empty()) << "row " << i;
            }
        }
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

TEST(ElementArray, ReadsNothingWhereAVertexHasNoPoint)
{
    MOD_Edit edit{MOD_DetailHandle()};
    append(edit, cubeShape());
    ELM_StringTuple *names = edit.stringAttribute(ELM_OWNER_POINT, "name")->strings();
    for (int64_t point = 0; point < 8; ++point)
        names->set(point, "named");
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
