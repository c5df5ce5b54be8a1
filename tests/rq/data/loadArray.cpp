#include <rq/data/loadArray.h>

#include <cmath>

#include <host/bas/JSONValue.h>
#include <rq/data/DABool.h>
#include <rq/data/DAConstantText.h>
#include <rq/data/DAConstantValue.h>
#include <rq/data/DAIndexedText.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DANumericArray.h>
#include <rq/data/DARandom.h>
#include <rq/data/DARange.h>
#include <rq/data/DAText.h>
#include <rq/data/DATextArray.h>
#include <rq/data/convert.h>
#include <tests/json.h>

#include "arrays.h"

namespace
{
std::string describe(const RQ_DataArray &array) { return tests::jsonOf(array, true); }

RQ_DataArrayHandle load(std::string_view text, std::string &error)
{
    BAS_JSONValue value;
    EXPECT_TRUE(BAS_JSONValue::parse(text, value, error)) << error;
    return rq::loadArray(value, error);
}

BAS_OptionsHolder options(double number)
{
    BAS_Options options;
    options.set("n", number);
    options.set("text", BAS_StringHolder("nan"));
    options.set("list", std::vector<double>{1.5, -INFINITY});
    options.set("flag", true);
    return BAS_OptionsHolder(options);
}

/// What does not come back as it was: views, as the class that owns their values.
void expectRoundTrip(const RQ_DataArrayHandle &array, const char *className = nullptr)
{
    const std::string text = describe(*array);
    SCOPED_TRACE(text.substr(0, 200));
    std::string error;
    const RQ_DataArrayHandle loaded = load(text, error);
    ASSERT_TRUE(loaded) << error;
    EXPECT_STREQ(loaded->className(), className ? className : array->className());
    EXPECT_EQ(loaded->hash(), array->hash());
    EXPECT_EQ(loaded->getTypeInfo(), array->getTypeInfo());
    EXPECT_EQ(describe(*loaded), text);
}

template <class T> class EveryDescription : public testing::Test
{};
TYPED_TEST_SUITE(EveryDescription, RQ_NumericTestTypes);

TYPED_TEST(EveryDescription, ComesBackFromItsDescription)
{
    using T = TypeParam;
    using Limits = std::numeric_limits<T>;
    const std::vector<T> ends = {Limits::lowest(), Limits::max(), Limits::min(), Limits::epsilon(), T(-0.0f), T(3.0f)};
    std::vector<T> values = ends;
    if (Limits::has_infinity)
        values.insert(values.end(),
                      {Limits::infinity(), T(-Limits::infinity()), Limits::denorm_min(), RQconvert<T>(std::nanf(""))});
    expectRoundTrip(makeArray(std::vector<T>()));
    expectRoundTrip(makeArray(values));
    expectRoundTrip(makeArray(ends, 3, RQ_TYPE_POINT));
    expectRoundTrip(RQ_DAIndirect::createIndirect(makeArray(values), makeArray<int32_t>({3, 1})), "RQ_DANumeric");
    expectRoundTrip(RQ_DataArrayHandle(new RQ_DARandom<T>(1000, 5, Limits::lowest() / T(2.0f), Limits::max() / T(2.0f))),
                    "RQ_DANumeric");
    expectRoundTrip(RQ_DataArrayHandle(new RQ_DAConstantValue<T>(3, Limits::max(), 2)));
    const BAS_IntrusivePtr<RQ_DANumeric<T>> all(new RQ_DANumeric<T>(ends.data(), 6));
    const RQ_DataArrayHandle arrays(new RQ_DANumericArray<T>(all, RQ_CountArray(makeArray<int32_t>({0, 5, 1}))));
    expectRoundTrip(arrays);
    expectRoundTrip(RQ_DAIndirect::createIndirect(arrays, makeArray<int32_t>({1, 0})), "RQ_DANumericArray");
}

TEST(LoadArray, MakesEveryClassAgain)
{
    const BAS_Array<BAS_StringHolder> texts = {"a", "", "\"\n\xc3\xa9", "a"};
    const BAS_Array<BAS_OptionsHolder> dicts = {options(1.0), {}, options(NAN), options(1.0)};
    const RQ_CountArray counts(makeArray<int32_t>({3, 0, 1}));
    const RQ_DataArrayHandle arrays[] = {
        RQ_DataArrayHandle(new RQ_DAString(texts, 2)),
        RQ_DAIndexedString::createIndexed(texts.data(), 4),
        RQ_DataArrayHandle(new RQ_DAConstantString(3, "x", 2)),
        RQ_DataArrayHandle(new RQ_DAConstantString(2, "")),
        RQ_DataArrayHandle(new RQ_DAStringArray(texts, counts)),
        RQ_DataArrayHandle(new RQ_DADict(dicts, 2)),
        RQ_DAIndexedDict::createIndexed(dicts.data(), 4),
        RQ_DataArrayHandle(new RQ_DAConstantDict(3, options(2.5))),
        RQ_DataArrayHandle(new RQ_DADictArray(dicts, counts)),
        RQ_DataArrayHandle(new RQ_DABool(0)),
        RQ_DataArrayHandle(new RQ_DABool(65, 3)),
        RQ_DataArrayHandle(new RQ_DARange(5, 5)),
        RQ_DataArrayHandle(new RQ_DARange(int64_t(1) << 40, 5)),
        RQ_DataArrayHandle(new RQ_DARange(10, 0, -3)),
        RQ_DataArrayHandle(new RQ_DARange(0, 134217728, 100000000)),
        RQ_DataArrayHandle(new RQ_DARange(134217727, 134217720, -100)),
        RQ_DataArrayHandle(new RQ_DARange(5, 134217728, 134217728)),
        RQ_DataArrayHandle(new RQ_DARange(std::numeric_limits<int64_t>::max(), std::numeric_limits<int64_t>::min(),
                                          std::numeric_limits<int64_t>::min())),
    };
    for (const RQ_DataArrayHandle &array : arrays)
    {
        std::string error;
        const RQ_DataArrayHandle loaded = load(describe(*array), error);
        ASSERT_TRUE(loaded) << error << describe(*array);
        EXPECT_STREQ(loaded->className(), array->className());
        EXPECT_EQ(loaded->getStorage(), array->getStorage());
        EXPECT_EQ(describe(*loaded), describe(*array));
    }
}

TEST(LoadArray, SaysWhatIsWrong)
{
    const auto with = [](const char *cls, const char *storage, const char *size, const char *values) {
        return std::string(R"({"class":")") + cls + R"(","storage":")" + storage + R"(","type":"","size":)" + size +
               R"(,"values":)" + values + "}";
    };
    const std::pair<std::string, const char *> cases[] = {
        {"[]", "class: expected a text"},
        {with("RQ_DAOther", "int8", "1", "[]"), "class: expected a class of arrays, found 'RQ_DAOther'"},
        {with("RQ_DANumeric", "int", "-1", "[]"), "size: expected the number of components"},
        {with("RQ_DANumeric", "float80", "1", "[]"), "storage: expected a storage, found 'float80'"},
        {with("RQ_DANumeric", "int8", "1", "7"), "values: expected an array"},
        {with("RQ_DANumeric", "int8", "1", "[1,128]"), "values[1]: expected a value of storage int8"},
        {with("RQ_DANumeric", "int32", "1", "[0.5]"), "values[0]: expected a value of storage int32"},
        {with("RQ_DANumeric", "real32", "1", "[1e39]"), "values[0]: expected a value of storage real32"},
        {with("RQ_DANumeric", "real32", "2", "[[1,2],[3]]"), "values[1]: expected an array of 2 values"},
        {with("RQ_DANumeric", "real32", "2", "[[1,\"x\"]]"), "values[0][1]: expected a value of storage real32"},
        {with("RQ_DANumericArray", "real32", "1", "[1]"), "values[0]: expected an array"},
        {with("RQ_DANumeric", "string", "1", "[]"), "values: not what RQ_DANumeric of storage string holds"},
        {with("RQ_DAString", "string", "0", "[]"), "values: not what RQ_DAString of storage string holds"},
        {with("RQ_DABool", "uint8", "1", "[2]"), "values: not what RQ_DABool of storage uint8 holds"},
        {with("RQ_DARange", "int32", "1", "[1,2,4]"), "values: not what RQ_DARange of storage int32 holds"},
        {with("RQ_DAConstantValue", "int32", "1", "[1,2]"), "values: not what RQ_DAConstantValue of storage int32 holds"},
        {with("RQ_DADict", "dictionary", "1", "[{\"a\":{}}]"), "values[0]: expected a value of storage dictionary"},
    };
    for (const auto &[text, message] : cases)
    {
        std::string error;
        EXPECT_FALSE(load(text, error)) << text;
        EXPECT_EQ(error, message) << text;
    }
}
}  // namespace
