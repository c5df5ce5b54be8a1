#include <algorithm>
#include <random>

#include <fmt/format.h>

#include <rq/bridge/MSHElementArray.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
/// What every attribute of the tests holds: small whole numbers, so that every storage keeps them.
int valueAt(int owner, int64_t element, int component) { return int((element * 7 + component * 3 + owner * 11) % 100); }

constexpr int kTuple = 3, kCorners = 4;  // components of a value, corners of a face

template <class T> void addNumbers(MOD_Edit &edit, ELM_Owner owner, ELM_Storage storage, const char *name)
{
    T *values = edit.attribute(owner, name, storage, kTuple)->writeAll<T>();
    const int64_t rows = owner == ELM_OWNER_DETAIL ? 1 : edit.count(owner);
    for (int64_t i = 0; i < rows; ++i)
        for (int c = 0; c < kTuple; ++c)
            values[i * kTuple + c] = T(float(valueAt(owner, i, c)));
}

const char *const kNames[] = {"u8", "r16", "i64", "r64"};

/// Several pages of every owner, and numbers of four storages and strings on each.
MOD_ConstDetailHandle makeRichDetail()
{
    MOD_Edit edit{MOD_DetailHandle()};
    append(edit, stripShape(1400));
    for (const ELM_Owner owner : {ELM_OWNER_VERTEX, ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE, ELM_OWNER_DETAIL})
    {
        addNumbers<uint8_t>(edit, owner, ELM_STORAGE_UINT8, kNames[0]);
        addNumbers<PLT_Half>(edit, owner, ELM_STORAGE_REAL16, kNames[1]);
        addNumbers<int64_t>(edit, owner, ELM_STORAGE_INT64, kNames[2]);
        addNumbers<double>(edit, owner, ELM_STORAGE_REAL64, kNames[3]);
        edit.attribute(owner, "constant", ELM_STORAGE_INT32, kTuple);
        ELM_StringTuple *strings = edit.stringAttribute(owner, "text")->strings();
        for (int64_t i = 0; i < (owner == ELM_OWNER_DETAIL ? 1 : edit.count(owner)); i += 2)
            strings->set(i, std::to_string(valueAt(owner, i, 0)));
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
    return to == ELM_OWNER_POINT ? detail.vertexPoint(offset) : offset / kCorners;
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

/// Compare whole blocks in a type of the caller's.
template <class T> void expectBlocks(const RQ_DataArray &array, const std::vector<int> &expected)
{
    RQ_DataArrayHandle buffer;
    const T *values = array.getArray<T>(buffer);
    for (size_t i = 0; i < expected.size(); ++i)
        ASSERT_EQ(double(values[i]), double(expected[i])) << "value " << i;
}

TEST(ElementArray, ReadsEveryStorageThroughEveryMapping)
{
    const MOD_ConstDetailHandle handle = makeRichDetail();
    const MSH_Detail &detail = *handle.readLock();
    for (int from = 0; from < ELM_OWNERS; ++from)
        for (const Rows &rows : rowsOf(detail, ELM_Owner(from)))
            for (int to = 0; to < ELM_OWNERS; ++to)
            {
                SCOPED_TRACE(fmt::format("owner {} ({}), attribute of owner {}", from, rows.what, to));
                std::vector<int> expected;
                for (int64_t i = 0; i < rows.list.entries(); ++i)
                    for (int c = 0; c < kTuple; ++c)
                        expected.push_back(valueAt(to, elementOf(detail, ELM_Owner(from), ELM_Owner(to), rows.list[i]), c));
                const bool reachable = elementOf(detail, ELM_Owner(from), ELM_Owner(to), 0) >= 0;
                for (const char *name : kNames)
                {
                    SCOPED_TRACE(name);
                    const ELM_Attribute *attribute = detail.find(ELM_Owner(to), name);
                    const RQ_DataArrayHandle array(new RQ_MSHElementArray(handle, attribute, rows.list, ELM_Owner(from)));
                    EXPECT_EQ(array->isValid(), reachable);
                    ASSERT_EQ(array->entries(), reachable ? rows.list.entries() : 0);
                    if (!reachable)
                        continue;
                    expectBlocks<uint8_t>(*array, expected);
                    expectBlocks<int64_t>(*array, expected);
                    expectBlocks<PLT_Half>(*array, expected);
                    expectBlocks<float>(*array, expected);
                    for (int64_t i = 0; i < array->entries(); i += 17)
                        ASSERT_EQ(array->getI32(i, 1), expected[size_t(i * kTuple + 1)]) << "row " << i;
                }
                const RQ_DataArrayHandle text(
                    new RQ_MSHElementArray(handle, detail.find(ELM_Owner(to), "text"), rows.list, ELM_Owner(from)));
                for (int64_t i = 0; i < text->entries(); ++i)
                {
                    const ELM_Offset element = elementOf(detail, ELM_Owner(from), ELM_Owner(to), rows.list[i]);
                    const std::string value = element % 2 == 0 ? std::to_string(valueAt(to, element, 0)) : "";
                    ASSERT_EQ(text->getS(i).view(), value) << "row " << i;
                }
            }
}

TEST(ElementArray, HandsOutTheHostsMemory)
{
    const MOD_ConstDetailHandle handle = makeRichDetail();
    const MSH_Detail &detail = *handle.readLock();
    const ELM_Attribute *attribute = detail.find(ELM_OWNER_POINT, "r64");
    for (const int64_t first : {int64_t(0), int64_t(5), ELM_PAGE_SIZE})
    {
        const RQ_MSHOffsetList run(ELM_OffsetList(first, detail.pointCount() - first));
        const RQ_DataArrayHandle array(new RQ_MSHElementArray(handle, attribute, run, ELM_OWNER_POINT));
        RQ_DataArrayHandle buffer;
        EXPECT_EQ(array->getArray<double>(buffer), attribute->contiguousData<double>() + first * kTuple) << "from " << first;
    }
    const RQ_DataArrayHandle mapped(
        new RQ_MSHElementArray(handle, &detail.positions(), RQ_MSHOffsetList(detail, ELM_OWNER_VERTEX), ELM_OWNER_VERTEX));
    EXPECT_EQ(mapped->getBackingData(), nullptr) << "points seen from vertices are not in this order in memory";
    const RQ_DataArrayHandle repeated(new RQ_MSHElementArray(handle, detail.find(ELM_OWNER_POINT, "constant"),
                                                             RQ_MSHOffsetList(detail, ELM_OWNER_POINT), ELM_OWNER_POINT));
    EXPECT_EQ(repeated->getBackingData(), nullptr) << "one page stands for all";
    EXPECT_EQ(repeated->getI32(ELM_PAGE_SIZE), 0);
}

/// A cube with the velocity (x, 0, 0) at its first point, and some loose points.
MOD_ConstDetailHandle makeMovingCube(float x, int64_t loose)
{
    MOD_Edit edit{MOD_DetailHandle()};
    append(edit, cubeShape());
    EXPECT_TRUE(edit.appendPoints(loose));
    edit.attribute(ELM_OWNER_POINT, "v", ELM_STORAGE_REAL32, 3, ELM_TYPE_VECTOR)->modifyAll<float>()[0] = x;
    return edit.commit();
}

TEST(ElementArray, FollowsANewerSnapshotOfTheSameShape)
{
    const MOD_ConstDetailHandle older = makeMovingCube(1.0f, 0), newer = makeMovingCube(2.0f, 0);
    const RQ_MSHOffsetList points(*older.readLock(), ELM_OWNER_POINT);
    const ELM_Attribute *velocity = older.readLock()->find(ELM_OWNER_POINT, "v");
    const RQ_DataArrayHandle array(new RQ_MSHElementArray(older, velocity, points, ELM_OWNER_POINT));
    const float *before = static_cast<const float *>(array->getBackingData());

    array->updateGeoDetail(newer, "v", RQ_OWNER_POINT, 0);
    EXPECT_EQ(array->getF32(0, 0), 2.0f);
    EXPECT_EQ(before[0], 1.0f) << "pointers handed out before stay good until the next re-binding";

    array->updateGeoDetail(makeMovingCube(3.0f, 1), "v", RQ_OWNER_POINT, 0);
    EXPECT_EQ(array->getF32(0, 0), 2.0f) << "more points are another shape";
}

TEST(ElementArray, ReadsZeroWhereAVertexHasNoPoint)
{
    MOD_Edit edit{MOD_DetailHandle()};
    append(edit, cubeShape());
    ASSERT_TRUE(edit.setVertexPoint(3, -1));
    const MOD_ConstDetailHandle handle = edit.commit();
    const RQ_MSHOffsetList vertices(*handle.readLock(), ELM_OWNER_VERTEX);
    const RQ_DataArrayHandle p(new RQ_MSHElementArray(handle, &handle.readLock()->positions(), vertices, ELM_OWNER_VERTEX));
    RQ_DataArrayHandle buffer;
    EXPECT_EQ(p->getArray<float>(buffer)[9], 0.0f);
    EXPECT_EQ(p->getF64(3, 0), 0.0);
}

TEST(OffsetList, WidensWhereAnOffsetNeedsIt)
{
    const int64_t limit = 0x40000000;
    for (const int64_t middle : {limit - 1, limit})
    {
        const int64_t offsets[] = {1, middle, 2};
        const RQ_DataArrayHandle array = RQ_MSHOffsetList(offsets, 3).allocateArray();
        EXPECT_EQ(array->getStorage(), middle < limit ? RQ_STORAGE_INT32 : RQ_STORAGE_INT64);
        EXPECT_EQ(array->getI64(1), middle);
    }
}
}  // namespace
