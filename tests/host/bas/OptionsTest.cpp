#include <gtest/gtest.h>

#include <cmath>

#include <host/bas/OptionsHolder.h>
#include <tests/json.h>

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
}  // namespace

TEST(Options, KeepTheOrderOfInsertion)
{
    BAS_Options options = sample(), other;
    options.set("whole", int64_t(9007199254740993));
    options.remove("text");
    other.set("more", int64_t(3));
    other.set("flag", 0.5);
    options.merge(other);
    EXPECT_EQ(tests::jsonOf(options),
              R"({"flag":0.5,"whole":9007199254740993,"real":2.5,"wholes":[1,2],"reals":[0.5],"more":3})");
    EXPECT_EQ(tests::jsonOf(BAS_Options()), "{}");
}

TEST(Options, GettersAreStrictAndImportWidens)
{
    const BAS_Options options = sample();
    EXPECT_EQ(options.get("whole", 7.0), 7.0);
    EXPECT_EQ(options.get<int64_t>("whole", 7), 3);

    int64_t whole = -1;
    double real = -1.0;
    BAS_StringHolder text("old");
    std::vector<double> reals;
    EXPECT_TRUE(options.import("flag", whole));
    EXPECT_EQ(whole, 1);
    EXPECT_TRUE(options.import("whole", real));
    EXPECT_EQ(real, 3.0);
    EXPECT_TRUE(options.import("real", reals));
    EXPECT_EQ(reals, std::vector<double>{2.5});
    EXPECT_TRUE(options.import("wholes", reals));
    EXPECT_EQ(reals, (std::vector<double>{1, 2}));

    EXPECT_FALSE(options.import("real", whole));
    EXPECT_FALSE(options.import("whole", text));
    EXPECT_FALSE(options.import("absent", real));
    EXPECT_EQ(whole, 1) << "a failed import leaves the value alone";
    EXPECT_EQ(text.view(), "old");
}

TEST(Options, EqualityAndHashAgree)
{
    const double nan = std::nan("");
    const struct
    {
        const char *what;
        BAS_Options::Value a, b;
        bool equal, close;
    } kCases[] = {
        {"two zeros", 0.0, -0.0, true, true},
        {"not a number", nan, nan, true, true},
        {"near numbers", 1.0, 1.05, false, true},
        {"other types", int64_t(1), 1.0, false, false},
        {"arrays of other length", std::vector<double>{1}, std::vector<double>{1, 1}, false, false},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        BAS_Options a, b;
        a.set("key", c.a);
        b.set("key", c.b);
        EXPECT_EQ(a.isEqual(b), c.equal);
        EXPECT_EQ(a.isEqual(b, 0.1), c.close);
        EXPECT_EQ(a.hash() == b.hash(), c.equal);
    }

    EXPECT_EQ(sample().hash(), 0xD56B47F4u) << "files may hold it";
}

TEST(OptionsHolder, EditsACopy)
{
    const BAS_OptionsHolder shared(sample());
    BAS_OptionsHolder mine = shared;
    EXPECT_EQ(&mine.options(), &shared.options());
    mine.edit([](BAS_Options &options) { options.set("flag", false); });
    EXPECT_TRUE(shared.options().get("flag", false));
    EXPECT_FALSE(mine.options().get("flag", true));
}
