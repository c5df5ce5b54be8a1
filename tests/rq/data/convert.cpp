#include <bit>
#include <cmath>
#include <cstring>
#include <numeric>

#include <rq/data/convert.h>

#include "arrays.h"

namespace
{
constexpr int32_t kMax32 = std::numeric_limits<int32_t>::max(), kMin32 = std::numeric_limits<int32_t>::min();
constexpr int64_t kMax64 = std::numeric_limits<int64_t>::max(), kMin64 = std::numeric_limits<int64_t>::min();

// Out of range: nothing is 0, narrow targets keep the low bits of the value saturated to 32 bits.
const struct
{
    double value;
    uint8_t u8;
    int8_t i8;
    int16_t i16;
    int32_t i32;
    int64_t i64;
} kFloats[] = {
    {NAN, 0, 0, 0, 0, 0},
    {-0.0, 0, 0, 0, 0, 0},
    {INFINITY, 255, -1, -1, kMax32, kMax64},
    {-INFINITY, 0, 0, 0, kMin32, kMin64},
    {-1.0, 255, -1, -1, -1, -1},
    {-0.999, 0, 0, 0, 0, 0},
    {300.7, 44, 44, 300, 300, 300},
    {70000.5, 112, 112, 4464, 70000, 70000},
    {2147483647.0, 255, -1, -1, kMax32, 2147483647},
    {2147483648.0, 255, -1, -1, kMax32, 2147483648},
    {-2147483648.0, 0, 0, 0, kMin32, -2147483648},
    {0x1p62, 255, -1, -1, kMax32, int64_t(1) << 62},
    {0x1p63, 255, -1, -1, kMax32, kMax64},
    {-0x1p63, 0, 0, 0, kMin32, kMin64},
    {-1e300, 0, 0, 0, kMin32, kMin64},
};

TEST(Convert, FollowsOnePolicyFromFloatsToIntegers)
{
    for (const auto &c : kFloats)
    {
        // Values and blocks must agree; the array is long enough for the loops' vectors and remainders.
        const RQ_DataArrayHandle array = makeArray(std::vector<double>(37, c.value));
        const auto check = [&]<class T>(T expected) {
            SCOPED_TRACE(testing::Message() << c.value << " as " << RQstorage(RQstorageOf<T>));
            RQ_DataArrayHandle buffer;
            EXPECT_EQ(array->getValue<T>(36), expected);
            EXPECT_EQ(array->getArray<T>(buffer)[0], expected);
            EXPECT_EQ(array->getArray<T>(buffer)[36], expected);
        };
        check(c.u8);
        check(c.i8);
        check(c.i16);
        check(c.i32);
        check(c.i64);
    }
}

TEST(Convert, NeitherScalesNorClampsIntegers)
{
    RQ_DataArrayHandle buffer;
    EXPECT_EQ(makeArray<uint8_t>({255})->getArray<float>(buffer)[0], 255.0f);
    EXPECT_EQ(makeArray<int8_t>({-1})->getArray<float>(buffer)[0], -1.0f);
    EXPECT_EQ(makeArray<int64_t>({(int64_t(1) << 40) + 5})->getArray<int32_t>(buffer)[0], 5);
    EXPECT_EQ(makeArray<int64_t>({(int64_t(1) << 53) - 1})->getArray<double>(buffer)[0], 0x1p53 - 1);
    EXPECT_EQ(makeArray<int32_t>({-2})->getArray<uint8_t>(buffer)[0], 254);
}

TEST(Convert, HalfBlocksHaveTheBitsOfHalfValues)
{
    // Every half, not-a-numbers of both kinds included.
    std::vector<PLT_Half> halfs(65536);
    for (size_t i = 0; i < halfs.size(); ++i)
        halfs[i].setBits(uint16_t(i));
    RQ_DataArrayHandle buffer;
    const RQ_DataArrayHandle array = makeArray(halfs);
    const float *floats = array->getArray<float>(buffer);
    for (size_t i = 0; i < halfs.size(); ++i)
        ASSERT_EQ(std::bit_cast<uint32_t>(floats[i]), std::bit_cast<uint32_t>(float(halfs[i]))) << "half " << i;

    // Floats around every half and half way to the next.
    std::vector<float> near;
    for (size_t i = 0; i < halfs.size(); ++i)
        for (const uint32_t low : {0u, 1u, 0xfffu, 0x1000u, 0x1001u, 0x1fffu})
            near.push_back(std::bit_cast<float>(std::bit_cast<uint32_t>(float(halfs[i])) + low));
    const RQ_DataArrayHandle nearArray = makeArray(near);
    const PLT_Half *rounded = nearArray->getArray<PLT_Half>(buffer);
    for (size_t i = 0; i < near.size(); ++i)
        ASSERT_EQ(rounded[i].bits(), PLT_Half(near[i]).bits()) << "float " << near[i];
}

// Outputs that are larger than the caches are written past them, in whole stores between the odd ends.
TEST(Convert, LargeOutputsAreCompleteAtAnyAlignment)
{
    std::vector<uint8_t> from((2 << 20) + 1029);
    std::iota(from.begin(), from.end(), uint8_t(0));
    std::vector<double> to(from.size() + 2, -1.0);
    rq::convertValues(from.data(), RQ_STORAGE_UINT8, to.data() + 1, RQ_STORAGE_REAL64, int64_t(from.size()));
    EXPECT_TRUE(std::equal(from.begin(), from.end(), to.begin() + 1));
    EXPECT_EQ(to.front() + to.back(), -2.0);
}

template <class T> class ConvertEvery : public testing::Test
{};
TYPED_TEST_SUITE(ConvertEvery, RQ_NumericTestTypes);

// Values where the ways to convert could differ: not-a-numbers of both kinds, infinities, zeros of both signs, values around
// the ends of every integer type, integers just above the middle between two floats, and values all over the place.
template <class T> std::vector<T> roughValues()
{
    std::vector<T> values;
    for (const auto &c : kFloats)
        for (const double sign : {1.0, -1.0})
            values.push_back(RQconvert<T>(sign * c.value));
    for (int shift = 24; shift < 63; ++shift)
        values.push_back(RQconvert<T>((int64_t(1) << shift) + (int64_t(1) << (shift - 24)) + 1));
    uint64_t bits = 1;
    for (int i = 0; i < 4096; ++i)
    {
        bits = bits * 6364136223846793005u + 1442695040888963407u;
        T value;
        const uint64_t rough = i % 2 ? bits : uint64_t(int64_t(bits) >> (i / 2 % 64));
        std::memcpy(static_cast<void *>(&value), reinterpret_cast<const char *>(&rough) + sizeof(rough) - sizeof(T),
                    sizeof(T));
        values.push_back(value);
        values.push_back(RQconvert<T>(int64_t(rough)));
    }
    return values;
}

// Short spans are converted one by one, long ones in groups where the processor can.
TYPED_TEST(ConvertEvery, SpansHaveTheBitsOfValues)
{
    const std::vector<TypeParam> from = roughValues<TypeParam>();
    const auto check = [&]<class To>(std::type_identity<To>) {
        for (const size_t length : {size_t(5), from.size()})
            for (size_t first = 0; first + length <= from.size(); first += length)
            {
                std::vector<To> to(length);
                rq::convertValues(from.data() + first, RQstorageOf<TypeParam>, to.data(), RQstorageOf<To>, int64_t(length));
                for (size_t i = 0; i < length; ++i)
                {
                    const To expected = RQconvert<To>(from[first + i]);
                    ASSERT_EQ(std::memcmp(&to[i], &expected, sizeof(To)), 0)
                        << "value " << first + i << " as " << RQstorage(RQstorageOf<To>) << ": " << double(to[i]) << " for "
                        << double(expected);
                }
            }
    };
    for (int slot = 0; slot < 8; ++slot)
        rq::dispatchStorage(RQ_Storage(slot), check);
}

// Rows with gaps, fewer components than the source has, gathered backwards: large enough to run in parallel.
TYPED_TEST(ConvertEvery, RowsAndGatheredRowsMatchValues)
{
    const auto array = countingArray<TypeParam>(50000, 3);
    std::vector<int32_t> indices(50000);
    std::iota(indices.rbegin(), indices.rend(), 0);
    const auto check = [&]<class To>(To) {
        std::vector<To> rows(50000 * 4, To(77.0f)), gathered = rows;
        rq::convertRows(array->data(), RQstorageOf<TypeParam>, 3, rows.data(), RQstorageOf<To>, 4, 2, 50000);
        rq::gatherRows(array->data(), RQstorageOf<TypeParam>, 3, indices.data(), gathered.data(), RQstorageOf<To>, 4, 2,
                       50000);
        for (int64_t i = 0; i < 50000; ++i)
            for (int c = 0; c < 4; ++c)
            {
                const int64_t expected = c < 2 ? (i * 3 + c) % 100 : 77, back = c < 2 ? ((49999 - i) * 3 + c) % 100 : 77;
                ASSERT_EQ(float(rows[size_t(i * 4 + c)]), float(expected)) << i << ", " << c;
                ASSERT_EQ(float(gathered[size_t(i * 4 + c)]), float(back)) << i << ", " << c;
            }
    };
    check(uint8_t());
    check(int64_t());
    check(PLT_Half());
    check(double());
}
// Large enough to pass the caches by; the output may begin between two stores.
TEST(Convert, LargeGathersAreExact)
{
    constexpr int64_t kRows = 1500003;
    const auto array = countingArray<float>(1000, 3);
    std::vector<int32_t> narrow(kRows);
    std::vector<int64_t> wide(kRows);
    for (int64_t i = 0; i < kRows; ++i)
        wide[size_t(i)] = narrow[size_t(i)] = int32_t(i * 7919 % 1000);
    std::vector<float> out(kRows * 3 + 5);
    const auto check = [&](const auto *indices, int64_t shift) {
        std::fill(out.begin(), out.end(), 777.0f);
        rq::gatherRows(array->data(), RQ_STORAGE_REAL32, 3, indices, out.data() + shift, RQ_STORAGE_REAL32, 3, 3, kRows);
        int64_t wrong = 0;
        for (int64_t i = 0; i < kRows; ++i)
            wrong += !std::equal(array->data() + 3 * wide[size_t(i)], array->data() + 3 * wide[size_t(i)] + 3,
                                 out.data() + shift + 3 * i);
        EXPECT_EQ(wrong, 0);
        EXPECT_EQ(std::count(out.begin(), out.end(), 777.0f), 5) << "writes outside";
    };
    for (const int64_t shift : {0, 1, 2, 3})
    {
        SCOPED_TRACE(shift);
        check(narrow.data(), shift);
        check(wide.data(), shift);
    }
}
}  // namespace
