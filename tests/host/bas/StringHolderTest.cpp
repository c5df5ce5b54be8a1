#include <gtest/gtest.h>

#include <thread>

#include <host/bas/OptionsHolder.h>
#include <host/bas/StringHolder.h>
#include <host/bas/StringMMPattern.h>

TEST(StringHolder, HoldsAnyText)
{
    const struct
    {
        const char *what;
        std::string_view text;
    } kCases[] = {
        {"empty", ""},
        {"shorter than a word", "P"},
        {"a word", "12345678"},
        {"longer than a word", "a name of some length"},
        {"a zero byte in front", std::string_view("\0tail", 5)},
        {"a zero byte inside", std::string_view("in\0side", 7)},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        const BAS_StringHolder text(c.text), twin(c.text), copy = text;
        EXPECT_EQ(text.view(), c.text);
        EXPECT_EQ(text.isEmpty(), c.text.empty());
        EXPECT_EQ(text, twin);
        EXPECT_EQ(text.hash(), twin.hash());
        EXPECT_EQ(copy.c_str(), text.c_str()) << "a copy shares the characters";
        EXPECT_EQ(text.c_str()[c.text.size()], '\0');
    }
    EXPECT_TRUE(BAS_StringHolder(static_cast<const char *>(nullptr)).isEmpty());
    EXPECT_FALSE(BAS_StringHolder("a") == BAS_StringHolder("b"));
}

TEST(StringHolder, LiteralsEqualCopies)
{
    const BAS_StringHolder literal = BAS_StringHolder::literal("uv"), copied(std::string("uv"));
    EXPECT_EQ(literal, copied);
    EXPECT_EQ(literal.hash(), copied.hash());
    EXPECT_EQ(literal.getMemoryUsage(), 0);
    EXPECT_GT(copied.getMemoryUsage(), 2);
}

TEST(StringHolder, SurvivesMovesAndSelfAssignment)
{
    BAS_StringHolder text("first");
    BAS_StringHolder &same = text;
    text = same;
    EXPECT_EQ(text.view(), "first");
    const BAS_StringHolder moved = std::move(text);
    EXPECT_EQ(moved.view(), "first");
    text = BAS_StringHolder("second");
    EXPECT_EQ(text.view(), "second");
}

TEST(StringHolder, IsCountedAcrossThreads)
{
    const BAS_StringHolder text("shared by all");
    const auto copyOften = [&text] {
        for (int i = 0; i < 10000; ++i)
        {
            const BAS_StringHolder copy = text;
            ASSERT_FALSE(copy.isEmpty());
        }
    };
    std::thread other(copyOften);
    copyOften();
    other.join();
    EXPECT_EQ(text.view(), "shared by all");
}

TEST(StringMMPattern, TheLastMatchDecides)
{
    const struct
    {
        const char *patterns, *name;
        bool matches;
    } kCases[] = {
        {"", "P", false},          {"  ", "", false},           {"^", "P", false},          {"*", "", true},
        {"P", "P", true},          {"P", "Pt", false},          {"P", "p", false},          {"*", "anything", true},
        {"* ^Cd", "Cd", false},    {"^Cd *", "Cd", true},       {"a*b*c", "a-b-b-c", true}, {"a*b*c", "a-c-b", false},
        {"*aab", "aaaaaab", true}, {"t?", "t1", true},          {"t?", "t", false},         {"uv[0-9]", "uv7", true},
        {"uv[0-9]", "uvx", false}, {"[a-cx]", "x", true},       {"[a-]", "-", true},        {"[]]", "]", true},
        {"[ab", "[ab", true},      {"N\tuv\n^u*", "uv", false}, {"N\tuv\n^u*", "N", true},
    };
    for (const auto &c : kCases)
        EXPECT_EQ(BAS_StringMMPattern(c.patterns).matches(c.name), c.matches)
            << "'" << c.patterns << "' on '" << c.name << "'";
}
