#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <host/bas/JSONWriter.h>
#include <host/bas/OptionsHolder.h>

namespace
{
BAS_Options sample()
{
    BAS_Options options;
    options.set("flag", true);
    options.set("whole", int64_t(3));
    options.set("real", 2.5);
    options.set("text", BAS_StringHolder("sky"));
    options.set("wholes", std::vector<int64_t>{1, 2});
    options.set("reals", std::vector<double>{0.5});
    return options;
}

std::string saved(const BAS_Options &options)
{
    std::string text;
    BAS_JSONWriter writer(text);
    EXPECT_TRUE(options.save(writer));
    return text;
}
}  // namespace

TEST(Options, KeepTheOrderOfInsertion)
{
    BAS_Options options = sample();
    options.set("whole", int64_t(9007199254740993));
    options.remove("text");
    EXPECT_EQ(saved(options), R"({"flag":true,"whole":9007199254740993,"real":2.5,"wholes":[1,2],"reals":[0.5]})");
    EXPECT_EQ(saved({}), "{}");
}

TEST(Options, MergeReplacesInPlaceAndAppends)
{
    BAS_Options options, other;
    options.set("a", int64_t(1));
    options.set("b", int64_t(2));
    other.set("c", int64_t(3));
    other.set("a", 0.5);
    options.merge(other);
    EXPECT_EQ(saved(options), R"({"a":0.5,"b":2,"c":3})");
}

TEST(Options, GettersAreStrictAndImportWidens)
{
    const BAS_Options options = sample();
    EXPECT_EQ(options.get("whole", 7.0), 7.0);
    EXPECT_EQ(options.get<int64_t>("whole", 7), 3);

    bool flag = false;
    int64_t whole = -1;
    double real = -1.0;
    BAS_StringHolder text("old");
    std::vector<double> reals;
    std::vector<int64_t> wholes;
    EXPECT_TRUE(options.import("flag", real));
    EXPECT_EQ(real, 1.0);
    EXPECT_TRUE(options.import("whole", real));
    EXPECT_EQ(real, 3.0);
    EXPECT_TRUE(options.import("flag", whole));
    EXPECT_EQ(whole, 1);
    EXPECT_TRUE(options.import("real", reals));
    EXPECT_EQ(reals, std::vector<double>{2.5});
    EXPECT_TRUE(options.import("wholes", reals));
    EXPECT_EQ(reals, (std::vector<double>{1, 2}));

    EXPECT_FALSE(options.import("real", whole));
    EXPECT_FALSE(options.import("whole", flag));
    EXPECT_FALSE(options.import("reals", wholes));
    EXPECT_FALSE(options.import("whole", text));
    EXPECT_FALSE(options.import("absent", real));
    EXPECT_EQ(whole, 1) << "a failed import leaves the value alone";
    EXPECT_EQ(text.view(), "old");
}

TEST(Options, AKeyMayNameItsType)
{
    BAS_Options options;
    options.set("int json:indentstep", int64_t(2));
    options.set("not a type", int64_t(3));
    EXPECT_EQ(saved(options), R"({"json:indentstep":2,"not a type":3})");
    EXPECT_EQ(options.get<int64_t>("int json:indentstep", 0), 2);
    EXPECT_TRUE(options.remove("int json:indentstep"));
    EXPECT_FALSE(options.has("json:indentstep"));
}

TEST(Options, EqualityAndHashAgree)
{
    const double nan = std::nan("");
    struct Case
    {
        const char *what;
        BAS_Options::Value a, b;
        bool equal, close;
    };
    const Case kCases[] = {
        {"two zeros", 0.0, -0.0, true, true},
        {"not a number", nan, nan, true, true},
        {"infinities", HUGE_VAL, -HUGE_VAL, false, false},
        {"near numbers", 1.0, 1.05, false, true},
        {"near integers", int64_t(10), int64_t(11), false, false},
        {"other types", int64_t(1), 1.0, false, false},
        {"a flag is no number", true, int64_t(1), false, false},
        {"arrays of other length", std::vector<double>{1}, std::vector<double>{1, 1}, false, false},
        {"near arrays", std::vector<double>{1, 2}, std::vector<double>{1, 2.05}, false, true},
        {"texts", BAS_StringHolder("a"), BAS_StringHolder("b"), false, false},
    };
    for (const Case &c : kCases)
    {
        SCOPED_TRACE(c.what);
        BAS_Options a, b;
        a.set("key", c.a);
        b.set("key", c.b);
        EXPECT_EQ(a.isEqual(b), c.equal);
        EXPECT_EQ(a.isEqual(b, 0.1), c.close);
        EXPECT_EQ(a.hash() == b.hash(), c.equal);
    }

    BAS_Options reversed;
    const BAS_Options options = sample();
    for (const char *key : {"reals", "wholes", "text", "real", "whole", "flag"})
        reversed.set(key, *options.find(key));
    EXPECT_TRUE(options.isEqual(reversed)) << "order does not count";
    EXPECT_EQ(options.hash(), reversed.hash());
}

TEST(Options, HashIsTheSameInEveryProcess)
{
    // Files and caches on disk may hold it.
    EXPECT_EQ(BAS_Options().hash(), 0u);
    EXPECT_EQ(sample().hash(), 0xD56B47F4u);
}

TEST(OptionsHolder, EditsACopy)
{
    const BAS_OptionsHolder shared(sample());
    BAS_OptionsHolder mine = shared;
    EXPECT_EQ(&mine.options(), &shared.options());
    mine.edit([](BAS_Options &options) { options.set("flag", false); });
    EXPECT_TRUE(shared.options().get("flag", false));
    EXPECT_FALSE(mine.options().get("flag", true));
    EXPECT_FALSE(mine == shared);
    EXPECT_EQ(BAS_OptionsHolder(sample()), shared);
    EXPECT_EQ(BAS_OptionsHolder(BAS_Options()), BAS_OptionsHolder::empty());
    EXPECT_GT(shared.getMemoryUsage(), 6 * 16);
}
