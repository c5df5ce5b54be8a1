#include <functional>

#include <rq/data/DAClamp.h>
#include <rq/data/DAConstant.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DAList.h>
#include <rq/data/DASubArray.h>
#include <rq/data/Values.h>
#include <rq/data/convert.h>

#include "arrays.h"

namespace
{
constexpr int64_t kSizes[] = {0, 1, 1023, 1024, 1025};

/// A value that loses bits in every narrower type.
template <class T> T exactValue(int64_t i)
{
    if constexpr (std::same_as<T, int64_t>)
        return (int64_t(1) << 53) + 2 * (i % 100) + 1;
    else if constexpr (std::same_as<T, int32_t>)
        return (1 << 24) + 2 * int32_t(i % 100) + 1;
    else if constexpr (std::is_floating_point_v<T>)
        return T(i % 100) + T(1) / T(3);
    else
        return T(float(i % 100));
}

struct View
{
    const char *what;
    RQ_DataArrayHandle array;
    /// Where entry i lies in the source.
    std::function<int64_t(int64_t)> place;
};

template <class T> std::vector<View> viewsOf(const RQ_DataArrayHandle &source, int64_t size)
{
    std::vector<int32_t> forward, backward;
    std::vector<int64_t> odd;
    for (int64_t i = 0; i < size; ++i)
    {
        backward.push_back(int32_t(size - 1 - i));
        odd.push_back(i * 7 % (size + 2));
    }
    const auto indices = makeArray(backward);
    const auto back = RQ_DAIndirect::createIndirect(source, indices);
    const auto last = [size](int64_t i) { return size - 1 - i; };
    return {
        {"the array itself", source, [](int64_t i) { return i; }},
        {"window", RQ_DASubArray::createSubArray(source, 2, size), [](int64_t i) { return i + 2; }},
        {"constant", RQ_DAConstant::createConstant(source, 1, size), [](int64_t) { return 1; }},
        {"32-bit indirection", back, last},
        {"64-bit indirection", RQ_DAIndirect::createIndirect(source, makeArray(odd)),
         [size](int64_t i) { return i * 7 % (size + 2); }},
        {"indirection twice", RQ_DAIndirect::createIndirect(back, indices), [](int64_t i) { return i; }},
        {"indirection flattened", RQ_DAIndirect::createIndirect(back, indices, true), [](int64_t i) { return i; }},
        {"window of an indirection", RQ_DASubArray::createSubArray(back, 0, size / 2), last},
        {"list of three and an empty one",
         RQ_DAList::createList({RQ_DASubArray::createSubArray(source, 0, size / 3),
                                RQ_DASubArray::createSubArray(source, 0, 0),
                                RQ_DASubArray::createSubArray(back, size / 3, size - size / 3), source}),
         [size](int64_t i) { return i < size / 3 ? i
                                    : i < size   ? size - 1 - i
                                                 : i - size; }},
        {"clamped", RQ_DAClamp::createClamp(source, size + 1500), [size](int64_t i) { return std::min(i, size + 1); }},
        {"clamped again", RQ_DAClamp::createClamp(RQ_DAClamp::createClamp(source, size + 3), size + 9),
         [size](int64_t i) { return std::min(i, size + 1); }},
        {"clamped indirection", RQ_DAClamp::createClamp(size ? back : source, size + 5),
         [size](int64_t i) { return size ? std::max<int64_t>(0, size - 1 - i) : std::min<int64_t>(i, 1); }},
        {"constant of an indirection", RQ_DAConstant::createConstant(size ? back : source, 0, size),
         [size](int64_t) { return std::max<int64_t>(0, size - 1); }},
    };
}

/// `check(view, source)` for every view of arrays of every size.
template <class T, class Check> void forEachView(Check check)
{
    for (const int64_t size : kSizes)
    {
        const auto source = countingArray<T>(size + 2, 3);
        for (int64_t i = 0; i < (size + 2) * 3; ++i)
            source->data()[i] = exactValue<T>(i);
        for (const View &view : viewsOf<T>(source, size))
        {
            SCOPED_TRACE(testing::Message() << view.what << ", " << size);
            ASSERT_TRUE(view.array);
            check(view, *source);
        }
    }
}

/// All ways to read T must agree with the values of the source.
template <class T, class Source> void expectReads(const View &view, const RQ_DANumeric<Source> &source)
{
    const RQ_DataArray &array = *view.array;
    const int64_t tuple = 3, size = array.entries();
    const auto expected = [&](int64_t i, int64_t c) { return RQconvert<T>(source.data()[view.place(i) * tuple + c]); };
    const rq::Values<T> all(array);
    std::vector<T> rows(size_t(size * 4), T(77.0f)), repeated(size_t(size * 6), T(0));
    array.fillArray(rows.data(), 0, size, 2, 4);
    array.extendedFill(repeated.data(), 0, size, 3, 2, 3);
    for (int64_t i = 0; i < size; ++i)
    {
        T row[4] = {T(1.0f), T(1.0f), T(1.0f), T(77.0f)}, imported[3] = {T(77.0f), T(77.0f), T(77.0f)};
        EXPECT_EQ(array.get(i, row, 4), row);
        array.import(i, imported, 2);
        for (int c = 0; c < 3; ++c)
        {
            ASSERT_EQ(array.getValue<T>(i, c), expected(i, c)) << "entry " << i;
            ASSERT_EQ(row[c], expected(i, c)) << "entry " << i;
            ASSERT_EQ(imported[c], c < 2 ? expected(i, c) : T(77.0f)) << "entry " << i;
            ASSERT_EQ(all(i, c), expected(i, c)) << "entry " << i;
            ASSERT_EQ(rows[size_t(i * 4 + c)], c < 2 ? expected(i, c) : T(77.0f)) << "entry " << i;
            ASSERT_EQ(repeated[size_t(i * 6 + c)], expected(i, c)) << "entry " << i;
            ASSERT_EQ(repeated[size_t(i * 6 + 3 + c)], expected(i, c)) << "entry " << i;
        }
        ASSERT_EQ(row[3], T(0.0f)) << "past the tuple";
    }
}

template <class T> class EveryStorage : public testing::Test
{};
TYPED_TEST_SUITE(EveryStorage, RQ_NumericTestTypes);

TYPED_TEST(EveryStorage, ViewsReadLikeTheirSource)
{
    forEachView<TypeParam>([](const View &view, const auto &source) {
        EXPECT_EQ(view.array->getStorage(), RQstorageOf<TypeParam>);
        EXPECT_EQ(view.array->getTupleSize(), 3);
        [&]<class... T>(testing::Types<T...>) { (expectReads<T>(view, source), ...); }(RQ_NumericTestTypes());
    });
}

TYPED_TEST(EveryStorage, WholeArrayOperationsDoNotCareHowValuesAreHeld)
{
    forEachView<TypeParam>([](const View &view, const auto &) {
        const RQ_DataArray &array = *view.array;
        const RQ_DataArrayHandle owned = array.harden();
        ASSERT_TRUE(owned);
        EXPECT_STREQ(owned->className(), "RQ_DANumeric");
        EXPECT_NE(owned.get(), &array);
        EXPECT_EQ(owned->getDataId(), array.getDataId());
        EXPECT_TRUE(owned->isEqual(array) && array.isEqual(*owned));
        EXPECT_EQ(owned->hash(), array.hash());

        const bool empty = array.entries() == 0;
        double min[3], max[3], low, high;
        EXPECT_TRUE(array.getMinMax(min, max));
        int64_t least, greatest;
        for (int c = 0; c < 3; ++c)
        {
            double expectedMin = std::numeric_limits<double>::max(), expectedMax = -expectedMin;
            int64_t expectedLeast = std::numeric_limits<int64_t>::max(), expectedGreatest = -expectedLeast - 1;
            for (int64_t i = 0; i < array.entries(); ++i)
            {
                expectedMin = std::min(expectedMin, array.getF64(i, c));
                expectedMax = std::max(expectedMax, array.getF64(i, c));
                expectedLeast = std::min(expectedLeast, array.getI64(i, c));
                expectedGreatest = std::max(expectedGreatest, array.getI64(i, c));
            }
            array.getRange(low, high, c);
            array.getRange(least, greatest, c);
            EXPECT_EQ(std::pair(min[c], max[c]), std::pair(expectedMin, expectedMax));
            EXPECT_EQ(low, empty ? 1.7014117331926443e38 : expectedMin);
            EXPECT_EQ(high, empty ? -5.877471754111438e-39 : expectedMax);
            EXPECT_EQ(std::pair(least, greatest), std::pair(expectedLeast, expectedGreatest));
        }
    });
}
}  // namespace
