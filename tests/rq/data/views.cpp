#include <utility>

#include <host/mod/DetailHandle.h>
#include <rq/data/DAClamp.h>
#include <rq/data/DAConstantValue.h>
#include <rq/data/DAIndexedText.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DAList.h>
#include <rq/data/DAParametric.h>
#include <rq/data/DASubArray.h>
#include <rq/data/Values.h>

#include "arrays.h"

namespace
{
RQ_DataArrayHandle texts(std::vector<BAS_StringHolder> values)
{
    return RQ_DAIndexedString::createIndexed(values.data(), int64_t(values.size()));
}

const RQ_DataArrayHandle kNone;

TEST(DAList, TakesOnlyPartsThatFit)
{
    const auto two = makeArray<float>({1, 2, 3, 4}, 2), one = makeArray<float>({1, 2, 3}), empty = makeArray<float>({}, 2);
    const RQ_DataArrayHandle huge(new RQ_DAConstantValue<float>(int64_t(1) << 62, 3.0f));
    const struct
    {
        const char *what;
        BAS_Array<RQ_DataArrayHandle> parts;
        int64_t entries;  // -1: no list
    } kCases[] = {
        {"no part", {}, -1},
        {"null part", {two, kNone}, -1},
        {"null first", {kNone, two}, -1},
        {"other storage", {one, makeArray<double>({1})}, -1},
        {"other tuple size", {one, two}, -1},
        {"other tuple size, though empty", {one, empty}, -1},
        {"more than 64 bits hold", {huge, huge}, -1},
        {"only empty", {empty, empty}, 0},
        {"two", {two, two}, 4},
        {"beyond 32 bits", {huge, one}, (int64_t(1) << 62) + 3},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        RQ_DAList list;
        EXPECT_EQ(list.init(c.parts), c.entries >= 0);
        EXPECT_EQ(list.isValid(), c.entries >= 0);
        EXPECT_EQ(list.entries(), std::max<int64_t>(0, c.entries));
        const RQ_DataArrayHandle array = RQ_DAList::createList(c.parts);
        EXPECT_EQ(array ? array->entries() : -1, c.entries);
    }
    EXPECT_EQ(RQ_DAList::createList({empty, two, empty}), two);
    const RQ_DataArrayHandle nested = RQ_DAList::createList({RQ_DAList::createList({two, two}), two});
    EXPECT_EQ(static_cast<const RQ_DAList &>(*nested).parts().size(), 3u);
}

TEST(DAList, AnIndexMeansTheSameTextInAllParts)
{
    const auto list = RQ_DAList::createList({texts({"a", "b", ""}), texts({"b", "c", "a"})});
    const std::vector<std::string> expected = {"a", "b", "", "b", "c", "a"};
    BAS_Array<BAS_StringHolder> distinct(6), filled(6);
    list->fillStringArray(filled.data(), 0, 6);
    list->getStrings(distinct);
    EXPECT_EQ(list->getStringIndexCount(), 3);
    for (int64_t i = 0; i < 6; ++i)
    {
        const int64_t index = list->getStringIndex(i);
        EXPECT_EQ(list->getS(i).view(), expected[size_t(i)]);
        EXPECT_EQ(filled[size_t(i)].view(), expected[size_t(i)]);
        EXPECT_EQ(index < 0 ? BAS_StringHolder() : distinct[size_t(index)], list->getS(i)) << "entry " << i;
    }
    EXPECT_TRUE(list->isEqual(*list->harden()));
}

TEST(DAParametric, SamplesTheGrid)
{
    using Grid = RQ_DAParametric;
    const struct
    {
        const char *what;
        Grid *grid;
        std::vector<float> values;
    } kCases[] = {
        {"nothing", new Grid({0}, {3}), {}},
        {"counts below 0", new Grid({-1}, {-1}), {}},
        {"one sample is the beginning", new Grid({1, 2, 3}, {1, 4, 5}), {2, 4}},
        {"along a curve", new Grid({3}), {0, 0, 0.5f, 0, 1, 0}},
        {"u fastest, v downward", new Grid({2, 0, 1}, {3, 1, 0}), {0, 1, 1, 1, 0, 0.5f, 1, 0.5f, 0, 0, 1, 0}},
        {"ends are exact", new Grid({2, 1e20, 0.1f}), {1e20f, 0, 0.1f, 0}},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        const RQ_DataArrayHandle grid(c.grid);
        const rq::Values<float> values(grid);
        EXPECT_EQ(std::vector<float>(values.begin(), values.end()), c.values);
        for (int64_t i = 0; i < values.size(); ++i)
            EXPECT_EQ(grid->getF64(i / 2, int(i % 2)), double(c.values[size_t(i)])) << "value " << i;
    }
    const RQ_DataArrayHandle odd(new Grid({1023, -1, 1}, {3, 0, 7}));
    const RQ_DataArrayHandle hard = odd->harden(), window = RQ_DASubArray::createSubArray(odd, 1000, 1100);
    EXPECT_TRUE(odd->isEqual(*hard));
    EXPECT_EQ(window->hash(), hard->hashRange(1000, 2100)) << "blocks may begin inside a row";
}

/// Entry i is i; a newer detail has one entry less.
class Shrinking final : public RQ_DANumbers
{
public:
    const char *className() const override { return "Shrinking"; }
    RQ_Storage getStorage() const override { return RQ_STORAGE_INT32; }
    int64_t entries() const override { return entries_; }
    int64_t getTupleSize() const override { return 1; }
    int64_t getMemoryUsage() const override { return sizeof(*this); }
    uint8_t getU8(int64_t offset, int) const override { return uint8_t(offset); }
    int32_t getI32(int64_t offset, int) const override { return int32_t(offset); }
    float getF32(int64_t offset, int) const override { return float(offset); }
    void updateGeoDetail(const MOD_ConstDetailHandle &, const char *, RQ_Owner, int) override
    {
        if (std::exchange(entries_, 2) != 2)
            setDataId(getDataId() + 1000000);
    }

private:
    int64_t entries_ = 3;
};

TEST(Views, AllNoticeANewerDetail)
{
    const RQ_DataArrayHandle source(new Shrinking);
    const RQ_DataArrayHandle views[] = {RQ_DASubArray::createSubArray(source, 0, 1),
                                        RQ_DASubArray::createSubArray(source, 1, 1), RQ_DAClamp::createClamp(source, 5),
                                        RQ_DAList::createList({source, source})};
    const RQ_DataArrayHandle stacked = RQ_DAIndirect::createIndirect(views[2], makeArray(std::vector<int32_t>(2000, 4)));
    EXPECT_EQ(rq::Values<int32_t>(stacked)[1999], 2);
    for (const RQ_DataArrayHandle &view : views)
    {
        const int64_t before = view->getDataId();
        view->updateGeoDetail(MOD_ConstDetailHandle(), "id", RQ_OWNER_POINT, 0);
        const int64_t after = view->getDataId();
        EXPECT_NE(after, before) << view->className();
        view->updateGeoDetail(MOD_ConstDetailHandle(), "id", RQ_OWNER_POINT, 0);
        EXPECT_EQ(view->getDataId(), after) << "nothing new in " << view->className();
    }
    EXPECT_EQ(views[2]->getI32(4), 1);
    EXPECT_EQ(views[3]->entries(), 4);
    EXPECT_EQ(views[3]->getI32(3), 1);
    EXPECT_EQ(rq::Values<int32_t>(stacked)[1999], 1) << "a view beneath has changed";
    stacked->updateGeoDetail(MOD_ConstDetailHandle(), "id", RQ_OWNER_POINT, 0);
    EXPECT_EQ(rq::Values<int32_t>(stacked)[1999], 1);
}
}  // namespace
