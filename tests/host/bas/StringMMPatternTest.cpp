#include <gtest/gtest.h>

#include <host/bas/StringMMPattern.h>

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
