#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include <io/Scanner.h>

using namespace rq::io;

namespace
{
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// All words of a text, lines separated by "|".
std::string wordsOf(std::string_view text)
{
    std::string words;
    for (Scanner scanner(text); !scanner.atEnd(); scanner.toNextLine())
    {
        while (scanner.toWord())
            words += std::string(scanner.word()) + ",";
        words += "|";
    }
    return words;
}

const struct
{
    const char *what;
    std::string_view text, words;
} kWordCases[] = {
    {"empty", "", ""},
    {"only blanks", " \t ", "|"},
    {"only a line end", "\n", "|"},
    {"three kinds of line ends", "a\nb\r\nc\rd", "a,|b,|c,|d,|"},
    {"empty lines between carriage returns", "a\r\rb", "a,||b,|"},
    {"comment", "a #b c\n# d\ne", "a,||e,|"},
    {"a number sign inside a word", "a#b", "a#b,|"},
    {"continued line", "a\\\nb \\\r\n c\nd", "a,b,c,|d,|"},
    {"continuation into the end", "a \\\n", "a,|"},
    {"a backslash that continues nothing", "a\\b \\ c\\", "a\\b,\\,c\\,|"},
    {"a comment is not continued", "# a\\\nb", "|b,|"},
    {"a zero byte is part of a word", {"a\0b c", 5}, {"a\0b,c,|", 7}},
};

TEST(Scanner, SplitsLinesAndWords)
{
    for (const auto &c : kWordCases)
        EXPECT_EQ(wordsOf(c.text), c.words) << c.what;
}

TEST(Scanner, PassesOverTheRestOfALine)
{
    Scanner scanner("name of it # too \t\nx rest \\\n of it\ny");
    EXPECT_EQ(scanner.restOfLine(), "name of it # too");
    scanner.toNextLine();
    EXPECT_EQ(scanner.word(), "x");
    scanner.toNextLine();
    EXPECT_EQ(scanner.word(), "y");
}

constexpr const char *kNoNumbers[] = {"",    "-",  ".",      "+-1", "--1",  "e5",    "1e",
                                      "1e+", "1x", "3.1+e2", "1,5", "0x10", "1.#IN", "nanx"};

const std::pair<const char *, float> kNumbers[] = {
    {"0", 0.0f},
    {"-0", -0.0f},
    {"+1", 1.0f},
    {"2.", 2.0f},
    {".5", 0.5f},
    {"-.5e1", -5.0f},
    {"1E2", 100.0f},
    {"1e-050", 0.0f},
    {"1e+002", 100.0f},
    {"3.4028235e38", 3.4028235e38f},
    {"-1e-400", -0.0f},
    {"1e-45", 1e-45f},
    {"1.17549435e-38", 1.17549435e-38f},
    {"000000000000000000000000000000001.5", 1.5f},
};

constexpr const char *kInfinities[] = {"inf",     "+inf",   "-Infinity", "1.#INF",
                                       "-1.#inf", "3.5e38", "-1e400",    "1e99999999999999999999"};

constexpr const char *kNotANumber[] = {"nan", "-NaN", "+nan", "nan(12)", "1.#QNAN", "-1.#IND"};

TEST(Scanner, ReadsNumbersToTheirEndOrNotAtAll)
{
    for (const char *text : kNoNumbers)
    {
        Scanner scanner(text);
        float value = 42.0f;
        EXPECT_FALSE(scanner.real(value)) << text;
        EXPECT_TRUE(scanner.at() == text && value == 42.0f) << text << " is stepped over or sets the value";
    }
    const auto read = [](const char *text) {
        Scanner scanner(text);
        float value = 42.0f;
        EXPECT_TRUE(scanner.real(value) && scanner.atEnd()) << text;
        return value;
    };
    for (const auto &[text, expected] : kNumbers)
        EXPECT_EQ(std::bit_cast<uint32_t>(read(text)), std::bit_cast<uint32_t>(expected)) << text << " is " << read(text);
    for (const char *text : kInfinities)
        EXPECT_EQ(read(text), *text == '-' ? -kInfinity : kInfinity) << text;
    for (const char *text : kNotANumber)
        EXPECT_TRUE(std::isnan(read(text))) << text;
}

// The short way to a number must round as the long way does, also where two roundings would go wrong.
TEST(Scanner, RoundsNumbersToTheNearestFloat)
{
    std::mt19937_64 random(1);
    for (int i = 0; i < 20000; ++i)
    {
        const float near = std::bit_cast<float>(uint32_t(random() % 0x7f000000));
        // Half the texts lie halfway between two floats, or a last digit beside it.
        const double half = (double(near) + double(std::nextafter(near, kInfinity))) / 2;
        char text[64];
        const int digits = 1 + int(random() % 17);
        const auto end = i % 2 == 0 ? std::to_chars(text, text + 64, half, std::chars_format::general, digits)
                                    : std::to_chars(text, text + 64, near, std::chars_format::fixed, digits % 8);
        if (end.ec != std::errc())
            continue;
        float expected = 0.0f, value = 1.0f;
        if (std::from_chars(text, end.ptr, expected).ec != std::errc())
            continue;
        Scanner scanner({text, size_t(end.ptr - text)});
        ASSERT_TRUE(scanner.real(value)) << text;
        EXPECT_EQ(value, expected) << std::string(text, end.ptr);
    }
    for (const char *text :
         {"16777217", "16777219", "16777217.0000001", "9007199254740993", "0.500000029802322387695312499"})
    {
        Scanner scanner(text);
        float expected = 0.0f, value = 1.0f;
        std::from_chars(text, text + strlen(text), expected);
        EXPECT_TRUE(scanner.real(value) && value == expected) << text;
    }
}

TEST(Scanner, ReadsIntegersOfAnyLength)
{
    const std::string huge = "99999999999999999999";
    const std::pair<std::string, int64_t> cases[] = {
        {"0", 0}, {"-7", -7}, {"+7", 7}, {"007", 7}, {huge, INT64_MAX}, {"-" + huge, -INT64_MAX},
    };
    for (const auto &[text, expected] : cases)
    {
        Scanner scanner(text);
        int64_t value = 1;
        EXPECT_TRUE(scanner.integer(value) && scanner.atEnd()) << text;
        EXPECT_EQ(value, expected) << text;
    }
    for (const char *text : {"", "-", "x", "/"})
    {
        int64_t value = 1;
        EXPECT_FALSE(Scanner(text).integer(value)) << text;
    }
}

TEST(Scanner, NamesPlacesAndWhatIsFound)
{
    const std::string_view text = "ab c\r\n\r\td\n\n\x01"
                                  "e";
    const auto at = [&](size_t offset) {
        const Place place = placeOf(text, text.data() + offset);
        return std::to_string(place.line) + ":" + std::to_string(place.column) + "@" + std::to_string(place.offset);
    };
    EXPECT_EQ(at(0), "1:1@0");
    EXPECT_EQ(at(3), "1:4@3");
    EXPECT_EQ(at(6), "2:1@6");
    EXPECT_EQ(at(8), "3:2@8");
    EXPECT_EQ(at(11), "5:1@11");

    const auto found = [&](size_t offset) { return describe(text, text.data() + offset); };
    EXPECT_EQ(found(0), "\"ab\"");
    EXPECT_EQ(found(4), "the end of the line");
    EXPECT_EQ(found(11), "\"\\x01e\"");
    EXPECT_EQ(found(text.size()), "the end of the file");

    const std::string longWord(100, 'x');
    EXPECT_EQ(describe(longWord, longWord.data()), '"' + std::string(40, 'x') + "...\"");
}

TEST(Message, SaysWhere)
{
    Messages messages;
    messages.warn("a.obj", {.line = 3, .column = 7, .offset = 20}, "one");
    EXPECT_FALSE(messages.fail("b.ply", {.offset = 12}, "two"));
    EXPECT_FALSE(messages.fail("<stdin>", {}, "three"));
    EXPECT_EQ(messages.toString(), "a.obj:3:7: warning: one\nb.ply:@12: error: two\n<stdin>: error: three\n");
    EXPECT_EQ(messages.warnings(), 1);
    EXPECT_EQ(messages.errors(), 2);
}
}  // namespace
