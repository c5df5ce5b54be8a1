#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

#include <host/bas/JSONValue.h>
#include <host/bas/JSONWriter.h>

TEST(JSONWriter, AlwaysWritesValidText)
{
    const struct
    {
        std::string_view text, written;
    } kCases[] = {
        {"quote\" slash\\ line\n", R"("quote\" slash\\ line\n")"},
        {std::string_view("a\0b", 3), R"("a\u0000b")"},
        {"stray \xFC byte", "\"stray \xEF\xBF\xBD byte\""},
        {"cut \xE2\x82", "\"cut \xEF\xBF\xBD\xEF\xBF\xBD\""},
    };
    for (const auto &c : kCases)
    {
        std::string text;
        BAS_JSONWriter writer(text);
        EXPECT_TRUE(writer.writeString(c.text));
        EXPECT_EQ(text, c.written);
        BAS_JSONValue value;
        std::string error;
        EXPECT_TRUE(BAS_JSONValue::parse(text, value, error)) << error;
    }
}

TEST(JSON, NumbersReadBackToTheSameBits)
{
    const double kValues[] = {-0.0, 0.1, 1e23, 4.9e-324, std::numeric_limits<double>::max(), 60.060001373291016, -HUGE_VAL};
    for (const double value : kValues)
    {
        std::string text, error;
        BAS_JSONWriter writer(text);
        writer.writeReal64(value);
        BAS_JSONValue read;
        double back = 1.0;
        ASSERT_TRUE(BAS_JSONValue::parse(text, read, error)) << error;
        ASSERT_TRUE(read.number(back)) << text;
        EXPECT_EQ(std::bit_cast<uint64_t>(back), std::bit_cast<uint64_t>(value)) << text;
    }

    std::string text, error;
    BAS_JSONWriter writer(text);
    writer.beginArray();
    writer.writeInt(std::numeric_limits<int64_t>::min());
    writer.writeUInt(std::numeric_limits<uint64_t>::max());
    writer.writeReal32(60.06f);
    writer.writeReal32(std::nanf(""));
    writer.endArray();
    EXPECT_EQ(text, R"([-9223372036854775808,18446744073709551615,60.06,"nan"])");

    BAS_JSONValue read;
    ASSERT_TRUE(BAS_JSONValue::parse(text, read, error)) << error;
    int64_t least = 0;
    EXPECT_TRUE((*read.array())[0].integer(least) && least == std::numeric_limits<int64_t>::min());
    EXPECT_FALSE((*read.array())[1].integer(least)) << "does not fit";
}

TEST(JSONValue, ReadsWholeTexts)
{
    BAS_JSONValue value;
    std::string error;
    ASSERT_TRUE(BAS_JSONValue::parse(R"( {"a": [1, 2.5, "x", true, null], "b": {}, "a": 2e1} )", value, error)) << error;
    int64_t last = 0;
    ASSERT_TRUE(value.find("a") && value.find("a")->integer(last));
    EXPECT_EQ(last, 20) << "of two members of one name the last counts";
    EXPECT_FALSE(value.find("a")->find("a"));
    const BAS_JSONValue::Array &items = *value.map()->front().second.array();
    EXPECT_EQ(*items[2].string(), "x");
    EXPECT_TRUE(items[4].isNull());
    EXPECT_FALSE(items[1].integer(last));
}

TEST(JSONValue, RefusesWithTheOffset)
{
    const struct
    {
        const char *what;
        std::string text;
        const char *offset;
    } kCases[] = {
        {"nothing", "", "byte 0:"},
        {"a zero byte behind", std::string("1\0", 2), "byte 1:"},
        {"an open array", "[1, 2", "byte 5:"},
        {"a closing comma", "[1,]", "byte 3:"},
        {"an open string", "\"abc", "byte 4:"},
        {"a word", "nan", "byte 1:"},
        {"not UTF-8", "\"\xFF\"", "byte 1:"},
        {"too deep", std::string(1001, '[') + std::string(1001, ']'), "byte 1000:"},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        BAS_JSONValue value(BAS_JSONValue::Content(true));
        std::string error;
        EXPECT_FALSE(BAS_JSONValue::parse(c.text, value, error));
        EXPECT_EQ(error.substr(0, std::string_view(c.offset).size()), c.offset) << error;
        EXPECT_TRUE(value.isNull());
    }
}
