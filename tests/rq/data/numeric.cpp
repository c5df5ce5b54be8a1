#include <rq/data/DARange.h>
#include <host/bas/MemoryTracker.h>

#include "arrays.h"

namespace
{
TEST(DANumeric, GrowsInTheFixedSteps)
{
    // Capacities as entries are appended one by one.
    RQ_DANumeric<int64_t> array;
    std::vector<int64_t> capacities;
    for (int i = 0; i < 1200; ++i)
    {
        array.append(int64_t(i));
        if (capacities.empty() || capacities.back() != array.capacity())
            capacities.push_back(array.capacity());
    }
    const std::vector<int64_t> expected = {4,   8,   16,  32,  48,  64,  80,   96,   112, 128,
                                           256, 384, 512, 640, 768, 896, 1024, 1153, 1298};
    EXPECT_EQ(capacities, expected);
    for (int i = 0; i < 1200; ++i)
        ASSERT_EQ(array.data()[i], i);

    array.grow(5);
    EXPECT_EQ(array.capacity(), 1298) << "growing never shrinks";
    array.truncate();
    EXPECT_EQ(array.capacity(), 1200);
}

TEST(DANumeric, AppendsValuesTuplesAndOtherArrays)
{
    RQ_DANumeric<float> array(0, 2);
    const float tuple[] = {1.0f, 2.0f};
    array.append(tuple);
    array.set(0, 5.0f, 1);
    array.concat(array);
    array.concat(*makeArray<int32_t>({7, 8, 9}, 3));
    array.concat(RQ_DARange(3, 5));
    const std::vector<float> expected = {1, 5, 1, 5, 7, 8, 3, 0, 4, 0};
    EXPECT_EQ(std::vector<float>(array.data(), array.data() + 10), expected);

    for (const int64_t full = array.capacity(); array.entries() <= full;)
        array.append(array.data());
    EXPECT_EQ(array.getF32(array.entries() - 1, 1), 5.0f) << "a tuple of its own, as it grows";

    const RQ_DANumeric<float> copy(array);
    EXPECT_TRUE(copy.isEqual(array));
    EXPECT_NE(copy.getDataId(), array.getDataId());
    EXPECT_TRUE(array.getPointerAliasing(array.data() + 1));
    EXPECT_FALSE(array.getPointerAliasing(copy.data()));
    EXPECT_FALSE(array.getPointerAliasing(array.data() + array.capacity() * 2));
}

TEST(DANumeric, AccountsForItsMemory)
{
    const int64_t before = BAS_MemoryTracker::current(BAS_MEMORY_ARRAY);
    {
        RQ_DANumeric<double> array(1000, 3);
        EXPECT_EQ(BAS_MemoryTracker::current(BAS_MEMORY_ARRAY) - before, 24000);
        EXPECT_EQ(array.getMemoryUsage(), int64_t(sizeof(array)) + 24000);
        array.grow(5000000);
        array.truncate();
        EXPECT_EQ(BAS_MemoryTracker::current(BAS_MEMORY_ARRAY) - before, 24000);
    }
    EXPECT_EQ(BAS_MemoryTracker::current(BAS_MEMORY_ARRAY), before);
    EXPECT_THROW(RQ_DANumeric<double>(int64_t(1) << 61, 3), std::bad_alloc);
    EXPECT_THROW(RQ_DANumeric<double>(1, int64_t(1) << 61), std::bad_alloc);
    EXPECT_EQ(RQ_DANumeric<double>(-5, 3).entries(), 0);
}

constexpr int64_t kMax = std::numeric_limits<int64_t>::max(), kMin = std::numeric_limits<int64_t>::min();

const struct
{
    const char *what;
    int64_t start, end, step;
    RQ_Storage storage;
    int64_t entries, first, last;
} kRanges[] = {
    {"empty", 5, 5, 1, RQ_STORAGE_INT32, 0, 5, 0},
    {"step points away from the end", 0, 10, -1, RQ_STORAGE_INT32, 0, 0, 0},
    {"step 0 is 1", 2, 4, 0, RQ_STORAGE_INT32, 2, 2, 3},
    {"last step overshoots", 0, 10, 3, RQ_STORAGE_INT32, 4, 0, 9},
    {"counts downward", 10, 0, -3, RQ_STORAGE_INT32, 4, 10, 1},
    {"greatest 32-bit end", 0, 134217727, 1, RQ_STORAGE_INT32, 134217727, 0, 134217726},
    {"least 64-bit end", 0, 134217728, 1, RQ_STORAGE_INT64, 134217728, 0, 134217727},
    {"least 64-bit start", -134217728, 0, 1, RQ_STORAGE_INT64, 134217728, -134217728, -1},
    {"more entries than a number holds", kMin, kMax, 1, RQ_STORAGE_INT64, kMax, kMin, -2},
    {"from end to end in one step", kMax, kMin, kMin, RQ_STORAGE_INT64, 2, kMax, -1},
};

TEST(DARange, IsHalfOpenInBothDirections)
{
    for (const auto &c : kRanges)
    {
        SCOPED_TRACE(c.what);
        const RQ_DataArrayHandle range(new RQ_DARange(c.start, c.end, c.step));
        EXPECT_EQ(range->getStorage(), c.storage);
        ASSERT_EQ(range->entries(), c.entries);
        EXPECT_EQ(range->getI64(0), c.first);
        int64_t min, max;
        range->getRange(min, max);
        EXPECT_EQ(min, c.entries ? std::min(c.first, c.last) : kMax);
        EXPECT_EQ(max, c.entries ? std::max(c.first, c.last) : kMin);
        double low, high;
        range->getRange(low, high, 2);
        EXPECT_EQ(low, c.entries ? double(min) : 1.7014117331926443e38) << "every component is the same";
        EXPECT_EQ(high, c.entries ? double(max) : -5.877471754111438e-39);
        if (c.entries == 0)
            continue;
        EXPECT_EQ(range->getI64(c.entries - 1), c.last);
        EXPECT_EQ(range->getF64(c.entries - 1), double(c.last));
        EXPECT_EQ(range->getU8(c.entries - 1), uint8_t(c.last));
        EXPECT_TRUE(range->getMinMax(&low, &high));
        EXPECT_EQ(low, double(min));
        EXPECT_EQ(high, double(max));
        int16_t row[3];
        range->get(c.entries - 1, row, 3);
        EXPECT_EQ(row[2], int16_t(c.last)) << "components past the tuple repeat";
    }
}
}  // namespace
