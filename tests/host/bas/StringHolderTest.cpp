#include <gtest/gtest.h>

#include <host/bas/OptionsHolder.h>
#include <host/bas/StringHolder.h>
#include <host/bas/StringMMPattern.h>

TEST(StringHolder, HoldsAnyText)
{
    const std::pair<const char *, std::string_view> kCases[] = {{"empty", ""},
                                                                {"a word", "12345678"},
                                                                {"longer than a word", "a name of some length"},
                                                                {"a zero byte inside", std::string_view("in\0side", 7)}};
    for (const auto &[what, characters] : kCases)
    {
        SCOPED_TRACE(what);
        const BAS_StringHolder text(characters), twin(characters), copy = text;
        EXPECT_EQ(text.view(), characters);
        EXPECT_EQ(text.isEmpty(), characters.empty());
        EXPECT_EQ(text, twin);
        EXPECT_EQ(text.hash(), twin.hash());
        EXPECT_EQ(copy.c_str(), text.c_str()) << "a copy shares the characters";
        EXPECT_EQ(text.c_str()[characters.size()], '\0');
    }
    EXPECT_TRUE(BAS_StringHolder(static_cast<const char *>(nullptr)).isEmpty());
    EXPECT_FALSE(BAS_StringHolder("a") == BAS_StringHolder("b"));
    EXPECT_EQ(BAS_StringHolder::literal("uv"), BAS_StringHolder(std::string("uv")));
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
