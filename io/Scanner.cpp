#include <io/Scanner.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <limits>

#include <fmt/format.h>

namespace rq::io
{
namespace
{
bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Compare a word without regard to case; `spelling` is in lower case.
bool isSpelled(std::string_view word, std::string_view spelling)
{
    return std::equal(word.begin(), word.end(), spelling.begin(), spelling.end(),
                      [](char a, char b) { return a == b || (a >= 'A' && a <= 'Z' && a + 32 == b); });
}

// What a number is that the type cannot hold: far above 1 or far below, as the place of its first digit and its exponent
// tell together.
template <class Real> Real outOfRange(std::string_view number)
{
    const size_t end = std::min(number.find_first_of("eE"), number.size());
    const auto point = int64_t(std::min(number.find('.'), end)), first = int64_t(number.find_first_of("123456789"));
    int64_t exponent = 0;
    if (end < number.size())
        Scanner(number.substr(end + 1)).integer(exponent);
    const bool small = exponent < first - point;
    return std::copysign(small ? Real(0) : std::numeric_limits<Real>::infinity(), number[0] == '-' ? Real(-1) : Real(1));
}

// Spellings of one family of compilers.
template <class Real> bool isOldSpelling(std::string_view word, Real &value)
{
    const bool negative = !word.empty() && word[0] == '-';
    word.remove_prefix(negative);
    if (isSpelled(word, "1.#inf"))
        value = negative ? -std::numeric_limits<Real>::infinity() : std::numeric_limits<Real>::infinity();
    else if (isSpelled(word, "1.#qnan") || isSpelled(word, "1.#snan") || isSpelled(word, "1.#ind"))
        value = std::numeric_limits<Real>::quiet_NaN();
    else
        return false;
    return true;
}
}  // namespace

void Scanner::toNextLine()
{
    bool comment = false, wordBegins = at_ == begin_ || isBlank(at_[-1]) || isBreak(at_[-1]);
    for (; at_ != end_; ++at_)
    {
        if (isBreak(*at_))
        {
            at_ = lineBreak(at_);
            return;
        }
        comment |= *at_ == '#' && wordBegins;
        wordBegins = isBlank(*at_);
        if (*at_ == '\\' && !comment && continues(at_))
            at_ = lineBreak(at_ + 1) - 1;
    }
}

std::string_view Scanner::word()
{
    const char *first = at_;
    while (!endsWord(at_))
        ++at_;
    return {first, size_t(at_ - first)};
}

std::string_view Scanner::restOfLine()
{
    const char *first = at_;
    while (at_ != end_ && !isBreak(*at_) && !(*at_ == '\\' && continues(at_)))
        ++at_;
    const char *last = at_;
    while (last != first && isBlank(last[-1]))
        --last;
    return {first, size_t(last - first)};
}

bool Scanner::integer(int64_t &value)
{
    const char *p = at_;
    const bool negative = p != end_ && *p == '-';
    p += negative || (p != end_ && *p == '+');
    const char *first = p;
    while (p != end_ && *p == '0')
        ++p;
    const char *digits = p;
    // 18 digits fit; what is longer is out of anyone's range.
    uint64_t sum = 0;
    for (; p != end_ && isDigit(*p); ++p)
        sum = p - digits < 18 ? 10 * sum + uint64_t(*p - '0') : uint64_t(std::numeric_limits<int64_t>::max());
    if (p == first)
        return false;
    value = negative ? -int64_t(sum) : int64_t(sum);
    at_ = p;
    return true;
}

bool Scanner::real(float &value) { return commonReal(value) || anyReal(value); }
bool Scanner::real(double &value) { return commonReal(value) || anyReal(value); }

// A mantissa below 2^53 times or over a power of ten below 10^23 is one rounding away from the number (both are exact
// in double precision).  Rounding again to single precision is right as well, unless the first result lies exactly
// between two floats or outside their normal range.
template <class Real> bool Scanner::commonReal(Real &value)
{
    static constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                         1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    const char *p = at_;
    const bool negative = p != end_ && *p == '-';
    p += negative || (p != end_ && *p == '+');

    uint64_t mantissa = 0;
    const char *digits = p;
    for (; p != end_ && isDigit(*p); ++p)
        mantissa = 10 * mantissa + uint64_t(*p - '0');
    int64_t count = p - digits;
    int64_t exponent = 0;
    if (p != end_ && *p == '.')
    {
        const char *fraction = ++p;
        for (; p != end_ && isDigit(*p); ++p)
            mantissa = 10 * mantissa + uint64_t(*p - '0');
        exponent = fraction - p;
        count -= exponent;
    }
    if (p != end_ && count > 0 && (*p == 'e' || *p == 'E'))
    {
        Scanner tail({p + 1, size_t(end_ - p - 1)});
        int64_t written;
        if (!tail.integer(written) || written < -99 || written > 99)
            return false;
        exponent += written;
        p = tail.at_;
    }
    if (count < 1 || count > 19 || mantissa > (uint64_t(1) << 53) || exponent < -22 || exponent > 22 || !endsWord(p))
        return false;

    const double wide = exponent < 0 ? double(mantissa) / kPowers[-exponent] : double(mantissa) * kPowers[exponent];
    if constexpr (std::is_same_v<Real, float>)
    {
        const bool normal =
            wide >= double(std::numeric_limits<float>::min()) && wide <= double(std::numeric_limits<float>::max());
        const bool halfway = (std::bit_cast<uint64_t>(wide) & 0x1fffffff) == 0x10000000;
        if ((!normal && mantissa != 0) || halfway)
            return false;
    }
    value = negative ? -Real(wide) : Real(wide);
    at_ = p;
    return true;
}

template <class Real> bool Scanner::anyReal(Real &value)
{
    const char *first = at_;
    if (first != end_ && *first == '+' && first + 1 != end_ && first[1] != '-')
        ++first;
    Real parsed = 0;
    auto [next, error] = std::from_chars(first, end_, parsed);
    if (error == std::errc::result_out_of_range)
        parsed = outOfRange<Real>({first, size_t(next - first)});
    else if (error != std::errc() || !endsWord(next))
    {
        next = first;
        while (!endsWord(next))
            ++next;
        if (!isOldSpelling({first, size_t(next - first)}, parsed))
            return false;
    }
    if (!endsWord(next))
        return false;
    value = parsed;
    at_ = next;
    return true;
}

Place placeOf(std::string_view text, const char *at)
{
    Place place;
    place.line = 1;
    const char *lineStart = text.data();
    for (const char *p = text.data(); p < at; ++p)
    {
        // CR LF counts at its LF.
        const bool isBreak = *p == '\n' || (*p == '\r' && !(p + 1 < text.data() + text.size() && p[1] == '\n'));
        if (!isBreak)
            continue;
        ++place.line;
        lineStart = p + 1;
    }
    place.column = at - lineStart + 1;
    place.offset = at - text.data();
    return place;
}

std::string describe(std::string_view text, const char *at)
{
    constexpr size_t kLongest = 40;
    Scanner scanner(text.substr(size_t(at - text.data())));
    if (scanner.atEnd())
        return "the end of the file";
    const std::string_view word = scanner.word();
    if (word.empty() || word[0] == '#')
        return "the end of the line";

    // Never cut inside a character of several bytes.
    size_t length = std::min(word.size(), kLongest);
    while (length < word.size() && length > 0 && (uint8_t(word[length]) & 0xc0) == 0x80)
        --length;
    std::string quoted = "\"";
    for (const char c : word.substr(0, length))
    {
        if (uint8_t(c) < 32 || c == 127)
            quoted += fmt::format("\\x{:02x}", uint8_t(c));
        else
            quoted += c;
    }
    return quoted + (word.size() > length ? "...\"" : "\"");
}
}  // namespace rq::io
