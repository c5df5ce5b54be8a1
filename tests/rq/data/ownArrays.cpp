#include <cmath>
#include <functional>
#include <numeric>

#include <host/bas/MemoryTracker.h>
#include <rq/data/DABool.h>
#include <rq/data/DAClamp.h>
#include <rq/data/DAConstant.h>
#include <rq/data/DAIndexedText.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DAList.h>
#include <rq/data/DANumericArray.h>
#include <rq/data/DARandom.h>
#include <rq/data/DARange.h>
#include <rq/data/DASubArray.h>
#include <rq/data/DAText.h>
#include <rq/data/DATextArray.h>
#include <rq/data/Values.h>
#include <rq/data/convert.h>

#include "arrays.h"

namespace
{
template <class T> class EveryOwnArray : public testing::Test
{};
TYPED_TEST_SUITE(EveryOwnArray, RQ_NumericTestTypes);

// However it is read, a random value depends on its place alone, and all values lie inside the bounds.
TYPED_TEST(EveryOwnArray, RandomValuesAreFixedByTheirPlace)
{
    using T = TypeParam;
    for (const int64_t size : {0, 1, 1023, 1024, 1025})
    {
        const RQ_DataArrayHandle array(new RQ_DARandom<T>(size, 7, T(10.0f), T(90.0f), 3, RQ_TYPE_COLOR));
        const rq::Values<T> all(array);
        std::vector<T> rows(size_t(size * 4));
        array->fillArray(rows.data(), 0, size, 2, 4);
        double sum = 0.0;
        for (int64_t i = 0; i < size; ++i)
            for (int c = 0; c < 3; ++c)
            {
                const T value = array->getValue<T>(i, c);
                ASSERT_EQ(value, all(i, c)) << i;
                ASSERT_EQ(array->getF64(i, c), double(value));
                ASSERT_EQ(rows[size_t(i * 4 + c)], c < 2 ? value : T(0.0f));
                ASSERT_GE(double(value), 10.0);
                ASSERT_LE(double(value), 90.0);
                sum += double(value);
            }
        if (size > 1000)
        {
            EXPECT_NEAR(sum / double(size * 3), 50.0, 2.0);
            const RQ_DataArrayHandle window = RQ_DASubArray::createSubArray(array, 501, 300);
            EXPECT_EQ(window->hash(), array->hashRange(501, 801));
        }
    }
    const RQ_DARandom<T> one(1000, 1), other(1000, 2), flat(10, 1, T(5.0f), T(5.0f));
    EXPECT_FALSE(one.isEqual(other));
    EXPECT_TRUE(one.isEqual(RQ_DARandom<T>(1000, 1)));
    EXPECT_EQ(flat.getF64(9), 5.0);
}

// Blocks take the upper half of a product of 128 bits in a way of their own.
TEST(DARandom, LongIntegersOfAnySpanAreThoseOfSingleReads)
{
    using Limits = std::numeric_limits<int64_t>;
    const std::pair<int64_t, int64_t> bounds[] = {{3, 3},
                                                  {0, 1},
                                                  {-5, 0xfffffffa},
                                                  {-5, 0xfffffffb},
                                                  {0, 1ll << 62},
                                                  {Limits::min(), Limits::max() - 1},
                                                  {-1, Limits::max()},
                                                  {Limits::min(), Limits::max()}};
    for (const auto &[low, high] : bounds)
    {
        const RQ_DataArrayHandle array(new RQ_DARandom<int64_t>(2050, 11, low, high));
        const rq::Values<int64_t> all(array);
        for (int64_t i = 0; i < array->entries(); ++i)
        {
            ASSERT_EQ(all(i, 0), array->getI64(i)) << low << " to " << high << " at " << i;
            ASSERT_TRUE(low <= all(i, 0) && all(i, 0) <= high);
        }
    }
}

TEST(DARandom, IsTheSameOnEveryMachine)
{
    EXPECT_EQ(
        RQ_DARandom<int64_t>(9, 42, std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max()).getI64(8),
        4329828226119001998);
    EXPECT_EQ(RQ_DARandom<int32_t>(9, 42, -1000000, 1000000).getI32(7), -27301);
    EXPECT_EQ(RQ_DARandom<double>(9, 42).getF64(8), 0x1.782d47a99890cp-1);
    // The greatest value stays below the bound although the sum would round up to it.
    const RQ_DARandom<float> narrow(100000, 3, 1.0f, std::nextafter(1.0f, 2.0f));
    double min, max;
    EXPECT_TRUE(narrow.getMinMax(&min, &max));
    EXPECT_EQ(max, 1.0);
}

TEST(DABool, HoldsABitPerValue)
{
    const BAS_IntrusivePtr<RQ_DABool> array(new RQ_DABool(130, 2, RQ_TYPE_NONE));
    for (const int64_t i : {0, 63, 64, 129, 130, -1})
        array->setBit(i, true, 1);
    array->setAllBits(true, 0);
    array->setBit(5, false);
    array->setBit(0, true, 2);
    const rq::Values<float> values(*array);
    for (int64_t i = 0; i < 130; ++i)
    {
        ASSERT_EQ(values(i, 0), i == 5 ? 0.0f : 1.0f) << i;
        ASSERT_EQ(values(i, 1), i == 0 || i == 63 || i == 64 || i == 129 ? 1.0f : 0.0f) << i;
        ASSERT_EQ(array->getI32(i, 1), int(values(i, 1)));
    }
    std::vector<uint8_t> rows(66 * 3, 9);
    array->fillArray(rows.data(), 62, 66, 2, 3);
    EXPECT_EQ(std::vector<uint8_t>(rows.begin(), rows.begin() + 9), (std::vector<uint8_t>{1, 0, 9, 1, 1, 9, 1, 1, 9}));
    EXPECT_EQ(array->getU8(-1), 0);
    EXPECT_EQ(array->getU8(130), 0);
    EXPECT_EQ(array->getMemoryUsage(), 48 + (3 + 4) * 2 * 8);
    double min[2], max[2];
    EXPECT_TRUE(array->getMinMax(min, max));
    EXPECT_EQ(min[0], 0.0);
    EXPECT_EQ(max[1], 1.0);
    EXPECT_EQ(RQ_DABool(5, 0).entries(), 0);
    EXPECT_TRUE(array->isEqual(*array->harden()));
}

/// Entries of 2, 0, 3 and 1 values.
template <class T> RQ_DataArrayHandle rag(std::vector<T> values = {T(1.0f), T(2.0f), T(3.0f), T(4.0f), T(5.0f), T(6.0f)})
{
    const BAS_IntrusivePtr<RQ_DANumeric<T>> all(new RQ_DANumeric<T>(values.data(), int64_t(values.size())));
    return RQ_DataArrayHandle(new RQ_DANumericArray<T>(all, RQ_CountArray(makeArray<int32_t>({2, 0, 3, 1}))));
}

TYPED_TEST(EveryOwnArray, ArraysOfNumbersAreReadAlone)
{
    using T = TypeParam;
    const RQ_DataArrayHandle array = rag<T>();
    // Windows, indirections and constants pass entries on.
    const std::pair<RQ_DataArrayHandle, std::vector<int64_t>> views[] = {
        {array, {0, 1, 2, 3}},
        {RQ_DASubArray::createSubArray(array, 1, 2), {1, 2}},
        {RQ_DAIndirect::createIndirect(array, makeArray<int32_t>({3, 1, 0})), {3, 1, 0}},
        {RQ_DAList::createList({array, array}), {0, 1, 2, 3, 0, 1, 2, 3}},
        {RQ_DAConstant::createConstant(array, 2, 3), {2, 2, 2}},
        {RQ_DAClamp::createClamp(array, 6), {0, 1, 2, 3, 3, 3}},
    };
    const std::vector<float> entries[] = {{1, 2}, {}, {3, 4, 5}, {6}};
    for (const auto &[view, places] : views)
    {
        ASSERT_TRUE(view->hasArrayEntries());
        const RQ_DataArrayHandle owned = view->harden();
        EXPECT_STREQ(owned->className(), "RQ_DANumericArray");
        EXPECT_TRUE(owned->isEqual(*view));
        EXPECT_EQ(owned->getDataId(), view->getDataId());
        BAS_Array<T> data;
        BAS_Array<int> sizes, expectedSizes;
        std::vector<float> expected;
        for (size_t i = 0; i < places.size(); ++i)
        {
            const std::vector<float> &entry = entries[places[i]];
            BAS_ValArray<float> values(7, -1.0f);
            EXPECT_TRUE(view->getFA32(values, int64_t(i)));
            EXPECT_EQ(std::vector<float>(values.begin(), values.end()), entry);
            EXPECT_EQ(view->itemSize(int64_t(i)), int64_t(entry.size()));
            EXPECT_EQ(view->getI32(int64_t(i), 2), entry.size() > 2 ? int(entry[2]) : 0);
            expected.insert(expected.end(), entry.begin(), entry.end());
            expectedSizes.push_back(int(entry.size()));
        }
        view->fillArray(data, sizes, 0, view->entries());
        EXPECT_EQ(std::vector<float>(data.begin(), data.end()), expected);
        EXPECT_EQ(sizes, expectedSizes);
        EXPECT_EQ(view->getTotalArrayEntries(), int64_t(expected.size()));
        double min, max;
        EXPECT_TRUE(view->getMinMax(&min, &max));
        EXPECT_EQ(max, *std::max_element(expected.begin(), expected.end()));
    }
    EXPECT_TRUE(array->isEqual(*rag<T>()));
    EXPECT_EQ(array->hash(), rag<T>()->hash());
    EXPECT_FALSE(array->isEqual(*rag<T>({T(1.0f), T(2.0f), T(3.0f), T(4.0f), T(5.0f), T(7.0f)})));
    EXPECT_EQ(RQ_DANumericArray<T>({}, RQ_CountArray(2, 3)).entries(), 0) << "fewer values than the counts want";
    const auto all = countingArray<T>(6, 1);
    EXPECT_TRUE(RQ_DANumericArray<T>(all, RQ_CountArray(2, 3)).getPointerAliasing(all->data() + 5));
    EXPECT_EQ(RQ_DAConstant::createConstant(array, 2, int64_t(1) << 40)->getTotalArrayEntries(), int64_t(3) << 40);
}

// However deep, a flattened indirection reads what the unflattened one does, from the innermost array.
TEST(DAIndirect, FlattensAnyChainOfViews)
{
    const RQ_DataArrayHandle root = countingArray<double>(50, 2), range(new RQ_DARange(int64_t(1) << 40));
    const RQ_DataArrayHandle window = RQ_DASubArray::createSubArray(root, 10, 30);
    const RQ_DataArrayHandle inner = RQ_DAIndirect::createIndirect(window, makeArray<int64_t>({29, 0, 7, 7}));
    const struct
    {
        const char *what;
        RQ_DataArrayHandle source, root;
        std::vector<int64_t> indices;
    } kCases[] = {
        {"the array itself", root, root, {49, 0}},
        {"nothing of a window", window, root, {}},
        {"window", window, root, {3, 29}},
        {"clamp of an indirection of a window", RQ_DAClamp::createClamp(inner, 9), root, {8, 0, 2}},
        {"far constant", RQ_DAConstant::createConstant(inner, 2, int64_t(1) << 40), root, {(int64_t(1) << 40) - 1}},
        {"far window", RQ_DASubArray::createSubArray(range, int64_t(1) << 39, 9), range, {8}},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        const RQ_DataArrayHandle indices = makeArray(c.indices);
        const RQ_DataArrayHandle flat = RQ_DAIndirect::createIndirect(c.source, indices, true);
        ASSERT_TRUE(flat);
        EXPECT_TRUE(flat->isEqual(*RQ_DAIndirect::createIndirect(c.source, indices)));
        EXPECT_EQ(static_cast<const RQ_DAIndirect &>(*flat).source(), c.root);
    }
}

// Views of 32-bit indices are followed several at a time.
TEST(DAIndirect, ComposesIndicesOfAnyDepthAndWidth)
{
    constexpr int64_t kSize = 1500;
    for (const std::string widths : {"4", "44", "444", "4444", "44444", "8", "844", "484", "448", "888"})
    {
        SCOPED_TRACE(widths);
        const RQ_DataArrayHandle root = countingArray<double>(kSize, 2);
        RQ_DataArrayHandle view = root, below = root;
        std::vector<int64_t> rows(kSize);
        std::iota(rows.begin(), rows.end(), 0);
        RQ_DataArrayHandle indices;
        for (size_t level = 0; level < widths.size(); ++level)
        {
            std::vector<int64_t> order(kSize), composed(kSize);
            for (int64_t i = 0; i < kSize; ++i)
                order[size_t(i)] = (i * 7 + int64_t(level) + 1) % kSize;
            for (size_t i = 0; i < order.size(); ++i)
                composed[i] = rows[size_t(order[i])];
            rows = composed;
            indices = widths[level] == '8' ? makeArray(order) : makeArray(std::vector<int32_t>(order.begin(), order.end()));
            below = view;
            view = RQ_DAIndirect::createIndirect(below, indices);
        }
        const RQ_DataArrayHandle flat = RQ_DAIndirect::createIndirect(below, indices, true);
        EXPECT_EQ(static_cast<const RQ_DAIndirect &>(*flat).source(), root);
        std::vector<double> few(20), all(2 * kSize), again(2 * kSize);
        view->fillArray(few.data(), 5, 10);
        view->fillArray(all.data(), 0, kSize);
        view->fillArray(again.data(), 0, kSize);
        EXPECT_TRUE(std::equal(few.begin(), few.end(), all.begin() + 10));
        EXPECT_EQ(all, again);
        for (int64_t i = 0; i < kSize; ++i)
        {
            ASSERT_EQ(all[size_t(2 * i)], root->getF64(rows[size_t(i)])) << i;
            ASSERT_EQ(flat->getF64(i, 1), all[size_t(2 * i + 1)]) << i;
        }
    }
}

TEST(DATextArray, KnowsWhereEntriesEnd)
{
    using Strings = BAS_Array<BAS_StringHolder>;
    const auto make = [](std::vector<int32_t> counts) {
        return RQ_DataArrayHandle(new RQ_DAStringArray({"a", "b", "c"}, RQ_CountArray(makeArray(std::move(counts)))));
    };
    const RQ_DataArrayHandle array = make({1, 0, 2});
    Strings strings = {"x"};
    EXPECT_TRUE(RQ_DASubArray::createSubArray(array, 1, 2)->import(1, strings));
    EXPECT_EQ(strings, (Strings{"b", "c"}));
    EXPECT_TRUE(RQ_DASubArray::createSubArray(array, 1, 2)->harden()->import(1, strings));
    EXPECT_EQ(strings, (Strings{"b", "c"}));
    EXPECT_EQ(array->getS(2, 1), "c");
    EXPECT_TRUE(array->getS(2, 2).isEmpty());
    EXPECT_NE(array->hash(), make({0, 1, 2})->hash());
    EXPECT_FALSE(array->isEqual(*make({0, 1, 2})));
    EXPECT_TRUE(array->isEqual(*make({1, 0, 2})));
    BAS_Array<BAS_OptionsHolder> dicts;
    EXPECT_FALSE(array->import(0, dicts));
    EXPECT_EQ(make({2, 2})->entries(), 0) << "fewer values than the counts want";
}

TEST(DataArray, AllKindsThatOwnValuesAccountForThem)
{
    using Strings = BAS_Array<BAS_StringHolder>;
    const auto tracked = [] { return BAS_MemoryTracker::current(BAS_MEMORY_ARRAY); };
    const int64_t before = tracked();
    const std::pair<int64_t, std::function<RQ_DataArray *()>> kMakers[] = {
        {16000, [] { return new RQ_DABool(64000, 2); }},
        {16000, [] { return new RQ_DAString(Strings(1000)); }},
        {16000, [] { return new RQ_DAStringArray(Strings(1000), RQ_CountArray(500, 2)); }},
        {4016, [] { return new RQ_DAIndexedString({"a"}, BAS_ValArray<int32_t>(1000, 0)); }},
    };
    for (const auto &[bytes, make] : kMakers)
    {
        const RQ_DataArrayHandle array(make());
        EXPECT_EQ(tracked() - before, bytes) << array->className();
    }
    EXPECT_EQ(tracked(), before);
}
}  // namespace
