#include <random>

#include <rq/data/Counts.h>
#include <rq/data/DARange.h>
#include <rq/data/Values.h>
#include <tests/json.h>

#include "arrays.h"

namespace
{
const int64_t kHuge = int64_t(1) << 31;

const struct
{
    const char *what;
    std::vector<int64_t> counts;
    int64_t min, max;
    RQ_Storage storage;
} kCounts[] = {
    {"no items", {}, 2147483647, 0, RQ_STORAGE_INT32},
    {"zeros", {0, 0, 0}, 0, 0, RQ_STORAGE_INT32},
    {"equal", {4, 4, 4}, 4, 4, RQ_STORAGE_INT32},
    {"one item", {5}, 5, 5, RQ_STORAGE_INT32},
    {"mixed", {3, 0, 4, 1}, 0, 4, RQ_STORAGE_INT32},
    {"total just in 32 bits", {kHuge - 2, 1}, 1, kHuge - 2, RQ_STORAGE_INT32},
    {"total of 64 bits", {kHuge - 1, 1}, 1, kHuge - 1, RQ_STORAGE_INT64},
    {"equal and huge", {kHuge, kHuge}, kHuge - 1, kHuge, RQ_STORAGE_INT64},
};

void expectCounts(const RQ_CountArray &array, const std::vector<int64_t> &counts)
{
    const int64_t n = int64_t(counts.size());
    ASSERT_EQ(array.entries(), n);
    const rq::Counts reader(array);
    const rq::Values<int64_t> extracted(array.extractCounts()), offsets(array.extractOffsets());
    ASSERT_EQ(extracted.size(), n);
    ASSERT_EQ(offsets.size(), n + 1);
    int64_t offset = 0;
    for (int64_t i = 0; i < n; ++i)
    {
        SCOPED_TRACE(testing::Message() << "item " << i);
        const int64_t count = counts[size_t(i)];
        EXPECT_EQ(array.getOffset(i), offset);
        EXPECT_EQ(array.getCount(i), count);
        EXPECT_EQ(array.getOffsetCount(i), std::make_pair(offset, count));
        EXPECT_EQ(reader.begin(i), offset);
        EXPECT_EQ(reader.count(i), count);
        EXPECT_EQ(extracted[i], count);
        EXPECT_EQ(offsets[i], offset);
        offset += count;
    }
    EXPECT_EQ(array.sumCounts(), offset);
    EXPECT_EQ(offsets[n], offset);
    if (offset > 1000000)
        return;
    const rq::Values<int64_t> items(array.buildRepeatList());
    ASSERT_EQ(items.size(), offset);
    for (int64_t i = 0, element = 0; i < n; ++i)
        for (int64_t c = 0; c < counts[size_t(i)]; ++c)
            ASSERT_EQ(items[element++], i);
}

TEST(CountArray, KeepsCountsAndPlaces)
{
    for (const auto &c : kCounts)
    {
        SCOPED_TRACE(c.what);
        const RQ_CountArray array(makeArray(c.counts));
        EXPECT_EQ(array.getMinCount(), c.min);
        EXPECT_EQ(array.getMaxCount(), c.max);
        EXPECT_EQ(array.getStorage(), c.storage);
        expectCounts(array, c.counts);

        RQ_CountArray owned = array;
        owned.harden();
        EXPECT_TRUE(owned.isEqual(array));
        EXPECT_FALSE(array.isEqual(RQ_CountArray(makeArray<int32_t>({1, 2, 3}))));
    }
    EXPECT_EQ(tests::jsonOf(RQ_CountArray(makeArray<int32_t>({3, 0, 4}))), "[3,0,4]");
    EXPECT_EQ(tests::jsonOf(RQ_CountArray()), "[]");
    expectCounts(RQ_CountArray(), {});
    expectCounts(RQ_CountArray(makeArray<int32_t>({-3, 2, -1})), {0, 2, 0});
}

TEST(CountArray, TrustsHintsAndStoresEqualCountsInNoMemory)
{
    RQ_CountArray array;
    array.init(makeArray<int32_t>({3, 4}), 1, int64_t(1) << 30);
    EXPECT_EQ(array.getStorage(), RQ_STORAGE_INT64) << "entries times the maximum needs 64 bits";
    EXPECT_EQ(array.getOffset(1), 3);
    array.init(makeArray<int64_t>({3, kHuge, 4}), 1, 5);
    EXPECT_EQ(array.sumCounts(), kHuge + 7) << "wrong hints do not make totals wrong";
    array.init(makeArray<int32_t>({3, 4}), 1, 5);
    EXPECT_TRUE(array.isEqual(RQ_CountArray(makeArray<int32_t>({3, 4}))));

    array.init(int64_t(1) << 33, 4);
    EXPECT_LT(array.getMemoryUsage(), 100);
    EXPECT_EQ(array.getOffset(int64_t(1) << 32), int64_t(1) << 34);
    EXPECT_EQ(array.extractOffsets()->getI64(int64_t(1) << 33), array.sumCounts());
    array.init(std::numeric_limits<int64_t>::max(), 4);
    EXPECT_EQ(array.entries(), 0) << "more elements than can be numbered";
    array.init(makeArray<int64_t>({1, std::numeric_limits<int64_t>::max(), 1}));
    EXPECT_EQ(array.entries(), 0) << "more elements than can be numbered";
    array.init(RQ_DataArrayHandle(new RQ_DARange(1, 4)));
    expectCounts(array, {1, 2, 3});
}

TEST(CountArray, SumsLargeListsInBlocks)
{
    std::mt19937 random(7);
    std::vector<int64_t> counts(100000);
    for (int64_t &count : counts)
        count = random() % 7;
    expectCounts(RQ_CountArray(makeArray(counts)), counts);
}
}  // namespace
