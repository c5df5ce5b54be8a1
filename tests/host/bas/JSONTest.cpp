#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>

#include <host/bas/JSONValue.h>
#include <host/bas/JSONWriter.h>

TEST(JSONWriter, AnswersWhatIsLegal)
{
    struct Case
    {
        const char *what;
        bool (*write)(BAS_JSONWriter &);
        bool legal;
    };
    const Case kCases[] = {
        {"a lone value", [](BAS_JSONWriter &w) { return w.writeInt(1); }, true},
        {"two roots", [](BAS_JSONWriter &w) { return w.writeInt(1) && w.writeInt(2); }, false},
        {"a root behind an array", [](BAS_JSONWriter &w) { return w.beginArray() && w.endArray() && w.writeNull(); }, false},
        {"a key in an array", [](BAS_JSONWriter &w) { return w.beginArray() && w.key("a"); }, false},
        {"a value without a key", [](BAS_JSONWriter &w) { return w.beginMap() && w.writeInt(1); }, false},
        {"two keys", [](BAS_JSONWriter &w) { return w.beginMap() && w.key("a") && w.key("b"); }, false},
        {"a key without a value", [](BAS_JSONWriter &w) { return w.beginMap() && w.key("a") && w.endMap(); }, false},
        {"crossed ends", [](BAS_JSONWriter &w) { return w.beginArray() && w.endMap(); }, false},
        {"an end too many", [](BAS_JSONWriter &w) { return w.endArray(); }, false},
        {"nesting",
         [](BAS_JSONWriter &w) {
             return w.beginMap() && w.key("a") && w.beginArray() && w.beginMap() && w.endMap() && w.endArray() &&
                    w.writeKeyBool("b", true) && w.endMap();
         },
         true},
    };
    for (const Case &c : kCases)
    {
        SCOPED_TRACE(c.what);
        std::string text;
        BAS_JSONWriter writer(text);
        EXPECT_EQ(c.write(writer), c.legal);
        if (!c.legal)
        {
            EXPECT_FALSE(writer.beginArray()) << "a failure is final";
            EXPECT_FALSE(writer.flush());
        }
    }
}

TEST(JSONWriter, WritesOneLineOrIndents)
{
    const auto write = [](BAS_JSONWriter &writer) {
        const float row[] = {0.1f, 2.0f};
        const BAS_StringHolder names[] = {"P", "N"};
        writer.beginMap();
        writer.key("row");
        writer.uniformArray(row, 2);
        writer.key("items");
        writer.beginArray();
        writer.stringArray(names, 2);
        writer.writeNull();
        writer.endArray();
        writer.endMap();
    };
    std::string line, indented;
    BAS_Options options;
    options.set("int json:indentstep", int64_t(2));
    BAS_JSONWriter lineWriter(line), indentingWriter(indented, options);
    write(lineWriter);
    write(indentingWriter);
    EXPECT_EQ(line, R"({"row":[0.1,2],"items":[["P","N"],null]})");
    EXPECT_EQ(indented, "{\n  \"row\": [0.1, 2],\n  \"items\": [\n    [\"P\", \"N\"],\n    null\n  ]\n}");
}

TEST(JSONWriter, WritesToAStream)
{
    FILE *stream = std::tmpfile();
    ASSERT_TRUE(stream);
    {
        BAS_JSONWriter writer(stream);
        writer.beginArray();
        for (int i = 0; i < 100000; ++i)
            writer.writeInt(1);
        EXPECT_TRUE(writer.endArray());
    }
    EXPECT_EQ(std::ftell(stream), 200001);
    std::fclose(stream);
}

TEST(JSONWriter, AlwaysWritesValidText)
{
    const struct
    {
        std::string_view text, written;
    } kCases[] = {
        {"", R"("")"},
        {"quote\" slash\\ line\n", R"("quote\" slash\\ line\n")"},
        {std::string_view("a\0b", 3), R"("a\u0000b")"},
        {"gr\xC3\xBC\xC3\x9F", "\"gr\xC3\xBC\xC3\x9F\""},
        {"stray \xFC byte", "\"stray \xEF\xBF\xBD byte\""},
        {"cut \xE2\x82", "\"cut \xEF\xBF\xBD\xEF\xBF\xBD\""},
        {"surrogate \xED\xA0\x80", "\"surrogate \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""},
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
    const double kValues[] = {0.0,
                              -0.0,
                              0.1,
                              1.0 / 3.0,
                              -1e22,
                              1e23,
                              4.9e-324,
                              2.2250738585072011e-308,
                              std::numeric_limits<double>::max(),
                              9007199254740993.0,
                              60.060001373291016,
                              HUGE_VAL,
                              -HUGE_VAL};
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
    const BAS_JSONValue::Array &items = *read.array();
    int64_t least = 0;
    EXPECT_TRUE(items[0].integer(least));
    EXPECT_EQ(least, std::numeric_limits<int64_t>::min());
    EXPECT_FALSE(items[1].integer(least)) << "does not fit";
    double nan = 0.0;
    EXPECT_TRUE(items[3].number(nan));
    EXPECT_TRUE(std::isnan(nan));
}

TEST(JSONValue, ReadsWholeTexts)
{
    BAS_JSONValue value;
    std::string error;
    ASSERT_TRUE(BAS_JSONValue::parse(R"( {"a": [1, 2.5, "x", true, null], "b": {}, "a": 2e1} )", value, error)) << error;
    ASSERT_TRUE(value.map());
    EXPECT_EQ(value.map()->size(), 3u);
    int64_t last = 0;
    ASSERT_TRUE(value.find("a") && value.find("a")->integer(last));
    EXPECT_EQ(last, 20) << "of two members of one name the last counts";
    EXPECT_FALSE(value.find("c"));
    EXPECT_FALSE(value.find("a")->find("a"));
    const BAS_JSONValue::Array &items = *value.map()->front().second.array();
    bool flag = false;
    EXPECT_TRUE(items[3].boolean(flag));
    EXPECT_TRUE(flag);
    EXPECT_TRUE(items[4].isNull());
    EXPECT_EQ(*items[2].string(), "x");
    EXPECT_FALSE(items[1].integer(last));
}

TEST(JSONValue, RefusesWithTheOffset)
{
    struct Case
    {
        const char *what;
        std::string text;
        const char *offset;
    };
    const Case kCases[] = {
        {"nothing", "", "byte 0:"},
        {"blanks", "  ", "byte 2:"},
        {"two values", "1 2", "byte 2:"},
        {"a zero byte behind", std::string("1\0", 2), "byte 1:"},
        {"an open array", "[1, 2", "byte 5:"},
        {"a closing comma", "[1,]", "byte 3:"},
        {"no colon", R"({"a" 1})", "byte 5:"},
        {"no name", "{1:2}", "byte 1:"},
        {"an open string", "\"abc", "byte 4:"},
        {"half a number", "-", "byte 1:"},
        {"a word", "nan", "byte 1:"},
        {"not UTF-8", "\"\xFF\"", "byte 1:"},
        {"too deep", std::string(1001, '[') + std::string(1001, ']'), "byte 1000:"},
    };
    for (const Case &c : kCases)
    {
        SCOPED_TRACE(c.what);
        BAS_JSONValue value(BAS_JSONValue::Content(true));
        std::string error;
        EXPECT_FALSE(BAS_JSONValue::parse(c.text, value, error));
        EXPECT_EQ(error.substr(0, std::string_view(c.offset).size()), c.offset) << error;
        EXPECT_TRUE(value.isNull());
    }
    BAS_JSONValue value;
    std::string error;
    EXPECT_TRUE(BAS_JSONValue::parse(std::string(1000, '[') + std::string(1000, ']'), value, error)) << error;
}
