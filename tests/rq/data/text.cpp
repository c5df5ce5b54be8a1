#include <cmath>

#include <fmt/format.h>

#include <rq/data/DAConstant.h>
#include <rq/data/DAIndexedText.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DARange.h>
#include <rq/data/DASubArray.h>
#include <rq/data/DAText.h>
#include <tests/json.h>

#include "arrays.h"

namespace
{
using Strings = BAS_Array<BAS_StringHolder>;

/// Text that is made when asked for, in an array that defines no more than it must.
class Spelled final : public RQ_DANumbers
{
public:
    const char *className() const override { return "Spelled"; }
    RQ_Storage getStorage() const override { return RQ_STORAGE_STRING; }
    int64_t entries() const override { return 3; }
    int64_t getTupleSize() const override { return 1; }
    int64_t getMemoryUsage() const override { return sizeof(*this); }
    uint8_t getU8(int64_t, int) const override { return 0; }
    int32_t getI32(int64_t, int) const override { return 0; }
    float getF32(int64_t, int) const override { return 0.0f; }
    BAS_StringHolder getS(int64_t offset, int) const override { return std::to_string(offset); }
};

TEST(DataArray, HardensTextOfAnyMaking)
{
    const RQ_DataArrayHandle spelled(new Spelled), owned = spelled->harden();
    EXPECT_EQ(owned->getS(2).view(), "2");
    EXPECT_EQ(owned->getStringIndexCount(), 3);
}

TEST(DAIndexedString, AnIndexPastTheListIsNoText)
{
    EXPECT_EQ(RQ_DAIndexedString({"a"}, {0, 5, -7}).getS(1), BAS_StringHolder());
}

template <class Value> class EveryText : public testing::Test
{};
using TextTypes = testing::Types<BAS_StringHolder, BAS_OptionsHolder>;
TYPED_TEST_SUITE(EveryText, TextTypes);

template <class Value> Value valueOf(int number)
{
    if constexpr (std::same_as<Value, BAS_StringHolder>)
        return number ? BAS_StringHolder(std::to_string(number)) : BAS_StringHolder();
    else
    {
        BAS_Options options;
        if (number)
            options.set("n", double(number));
        return BAS_OptionsHolder(options);
    }
}

TYPED_TEST(EveryText, IsSeenThroughViewsAndHardened)
{
    using Value = TypeParam;
    constexpr bool kStrings = std::same_as<Value, BAS_StringHolder>;
    const BAS_Array<Value> values = {valueOf<Value>(1), valueOf<Value>(0), valueOf<Value>(2), valueOf<Value>(1)};
    for (const RQ_DataArrayHandle &array :
         {RQ_DataArrayHandle(new RQ_DAText<Value>(values)), RQ_DAIndexedText<Value>::createIndexed(values.data(), 4)})
    {
        const RQ_DataArrayHandle back = RQ_DAIndirect::createIndirect(array, makeArray<int32_t>({0, 2, 1, 3}));
        const RQ_DataArrayHandle view = RQ_DASubArray::createSubArray(back, 1, 3);
        const RQ_DataArrayHandle owned = view->harden();
        EXPECT_STREQ(owned->className(), kStrings ? "RQ_DAIndexedString" : "RQ_DAIndexedDict");
        EXPECT_EQ(owned->getDataId(), view->getDataId());
        EXPECT_TRUE(owned->isEqual(*view));
        EXPECT_EQ(owned->hash(), view->hash());
        EXPECT_EQ(kStrings ? owned->getStringIndexCount() : owned->getDictIndexCount(), 2);
        EXPECT_EQ(kStrings ? owned->getDictIndexCount() : owned->getStringIndexCount(), -1);
        EXPECT_EQ(kStrings ? owned->getStringIndex(1) : owned->getDictIndex(1), -1);
        BAS_Array<Value> distinct, filled(3);
        if constexpr (kStrings)
        {
            owned->getStrings(distinct);
            view->fillStringArray(filled.data(), 0, 3);
            Strings strings;
            view->fillStrings(strings);
            EXPECT_EQ(strings, filled);
            EXPECT_EQ(RQ_DAConstant::createConstant(back, 1, 2)->getS(1), values[2]);
        }
        else
        {
            owned->getDictionaries(distinct);
            view->fillDictionaryArray(filled.data(), 0, 3);
            EXPECT_EQ(RQ_DAConstant::createConstant(back, 1, 2)->getDict(1), values[2]);
        }
        EXPECT_EQ(distinct, (BAS_Array<Value>{values[2], values[0]}));
        EXPECT_EQ(filled, (BAS_Array<Value>{values[2], values[1], values[3]}));
        double min, max;
        EXPECT_EQ(view->getMinMax(&min, &max), !kStrings);
        EXPECT_EQ(min, kStrings ? std::numeric_limits<double>::max() : 0.0);
    }
}

TEST(DataArray, SavesValues)
{
    const struct
    {
        RQ_DataArrayHandle array;
        const char *description, *values;
    } cases[] = {
        {makeArray<float>({}), R"("RQ_DANumeric","storage":"real32","type":"","size":1)", "[]"},
        {makeArray<uint8_t>({1, 255}), R"("RQ_DANumeric","storage":"uint8","type":"","size":1)", "[1,255]"},
        {makeArray<float>({0.1f, NAN, INFINITY, -INFINITY}, 2, RQ_TYPE_VECTOR),
         R"("RQ_DANumeric","storage":"real32","type":"vector","size":2)", R"([[0.1,"nan"],["inf","-inf"]])"},
        {RQ_DataArrayHandle(new RQ_DARange(3)), R"("RQ_DARange","storage":"int32","type":"","size":1)", "[0,1,2]"},
        {RQ_DAIndexedString::createIndexed(Strings{"a", "", "b", "\""}.data(), 2, 2),
         R"("RQ_DAIndexedString","storage":"string","type":"","size":2)", R"([["a",""],["b","\""]])"},
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.description);
        EXPECT_EQ(tests::jsonOf(*c.array), c.values);
        const std::string described = fmt::format("{{\"class\":{},\"values\":{}}}", c.description, c.values);
        EXPECT_EQ(tests::jsonOf(*c.array, true), described);
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        c.array->dumpValues("dumped ");
        c.array->dumpValues(nullptr);
        EXPECT_EQ(testing::internal::GetCapturedStdout(), "dumped " + described + "\n" + described);
        const std::string id = fmt::format("[id:{}]", c.array->getDataId());
        EXPECT_EQ(testing::internal::GetCapturedStderr(), id + id);
    }
}
}  // namespace
