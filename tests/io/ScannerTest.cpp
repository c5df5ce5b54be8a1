#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
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
    {"only blanks", " \t ", "|"},
    {"three kinds of line ends", "a\nb\r\nc\rd", "a,|b,|c,|d,|"},
    {"comment", "a #b c\n# d\ne", "a,||e,|"},
    {"continued line", "a\\\nb \\\r\n c\nd", "a,b,c,|d,|"},
    {"continuation into the end", "a \\\n", "a,|"},
    {"a backslash that continues nothing", "a\\b \\ c\\", "a\\b,\\,c\\,|"},
    {"a zero byte is part of a word", {"a\0b c", 5}, {"a\0b,c,|", 7}},
};

TEST(Scanner, SplitsLinesAndWords)
{
    for (const auto &c : kWordCases)
        EXPECT_EQ(wordsOf(c.text), c.words) << c.what;
}

constexpr const char *kNoNumbers[] = {"",    "-",  ".",      "+-1", "--1",  "e5",    "1e",
                                      "1e+", "1x", "3.1+e2", "1,5", "0x10", "1.#IN", "nanx"};

const std::pair<const char *, float> kNumbers[] = {
    {"-0", -0.0f},
    {".5", 0.5f},
    {"-.5e1", -5.0f},
    {"1e+002", 100.0f},
    {"3.4028235e38", 3.4028235e38f},
    {"-1e-400", -0.0f},
    {"0e99999999999999999999", 0.0f},
    {"0.0000000000000000000000000000000000000000000000000000000000001e10", 0.0f},
    {"1.17549435e-38", 1.17549435e-38f},
    {"000000000000000000000000000000001.5", 1.5f},
};

constexpr const char *kInfinities[] = {"inf",
                                       "+inf",
                                       "-Infinity",
                                       "1.#INF",
                                       "-1.#inf",
                                       "3.5e38",
                                       "-1e400",
                                       "1e99999999999999999999",
                                       "1000000000000000000000000000000000000000000000000000000000000e-10"};

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
        // Halfway between two floats, or a last digit beside it.
        const float near = std::bit_cast<float>(uint32_t(random() % 0x7f000000));
        const double half = (double(near) + double(std::nextafter(near, kInfinity))) / 2;
        char text[64];
        char *end = std::to_chars(text, text + 64, half, std::chars_format::general, 1 + int(random() % 17)).ptr;
        float expected = 0.0f, value = 1.0f;
        if (std::from_chars(text, end, expected).ec != std::errc())
            continue;
        EXPECT_TRUE(Scanner({text, size_t(end - text)}).real(value) && value == expected) << std::string(text, end);
        double wide = 0.0, expectedWide = 1.0;
        std::from_chars(text, end, expectedWide);
        EXPECT_TRUE(Scanner({text, size_t(end - text)}).real(wide) && wide == expectedWide) << std::string(text, end);
    }
}

TEST(Scanner, ReadsIntegersOfAnyLength)
{
    const std::string huge = "99999999999999999999";
    const std::pair<std::string, int64_t> cases[] = {
        {"0", 0}, {"-7", -7}, {"+7", 7}, {"0000000000000000000000007", 7}, {huge, INT64_MAX}, {"-" + huge, -INT64_MAX},
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
}  // namespace
