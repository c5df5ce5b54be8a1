#include <io/detail/JSONText.h>

#include <charconv>

namespace rq::io
{
namespace
{
// The characters that stand for bytes take three bytes of UTF-8: EE BE xx and EE BF xx, for 80 to BF and C0 to FF.
constexpr char32_t kByteBase = 0xEF00, kFirstByte = 0x80, kLastByte = 0xFF;

void appendUTF8(std::string &to, char32_t c)
{
    if (c < 0x80)
        to += char(c);
    else if (c < 0x800)
        (to += char(0xC0 | c >> 6)) += char(0x80 | (c & 0x3F));
    else if (c < 0x10000)
        ((to += char(0xE0 | c >> 12)) += char(0x80 | (c >> 6 & 0x3F))) += char(0x80 | (c & 0x3F));
    else
        (((to += char(0xF0 | c >> 18)) += char(0x80 | (c >> 12 & 0x3F))) += char(0x80 | (c >> 6 & 0x3F))) +=
            char(0x80 | (c & 0x3F));
}

// The character that a text begins with and how many bytes it takes; 0 bytes when it is not UTF-8.
size_t readUTF8(std::string_view text, char32_t &c)
{
    const auto byte = [&](size_t i) { return i < text.size() ? uint8_t(text[i]) : uint8_t(0); };
    constexpr char32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000};
    const size_t length = byte(0) < 0x80 ? 1 : byte(0) >> 5 == 6 ? 2 : byte(0) >> 4 == 14 ? 3 : byte(0) >> 3 == 30 ? 4 : 0;
    c = length == 1 ? byte(0) : byte(0) & (0x7F >> length);
    for (size_t i = 1; i < length; ++i)
    {
        if (byte(i) >> 6 != 2)
            return 0;
        c = c << 6 | (byte(i) & 0x3F);
    }
    return length > 1 && (c < kLeast[length] || c > 0x10FFFF || (c >= 0xD800 && c < 0xE000)) ? 0 : length;
}

char32_t hexadecimal(const char *digits)
{
    unsigned value = 0;
    std::from_chars(digits, digits + 4, value, 16);
    return value;
}

// Step over an escape, and answer its character.
char32_t readEscape(const char *&p)
{
    const char letter = *++p;
    ++p;
    if (letter != 'u')
    {
        constexpr std::string_view kLetters = "bfnrt", kMeanings = "\b\f\n\r\t";
        const size_t known = kLetters.find(letter);
        return char32_t(known == kLetters.npos ? letter : kMeanings[known]);
    }
    const char32_t first = hexadecimal(p);
    p += 4;
    if (first < 0xD800 || first >= 0xDC00)
        return first;
    // The other half of a character that takes two.
    const char32_t second = hexadecimal(p + 2);
    p += 6;
    return 0x10000 + ((first - 0xD800) << 10) + (second - 0xDC00);
}
}  // namespace

// `p` is at the quote.
const char *JSONText::behindString(const char *p)
{
    for (++p; *p != '"'; ++p)
        p += *p == '\\';
    return p + 1;
}

const char *JSONText::behind(const char *value)
{
    const char *p = value;
    if (*p == '"')
        return behindString(p);
    if (*p != '{' && *p != '[')
    {
        while (*p != ',' && *p != ']' && *p != '}' && blanks(p) == p)
            ++p;
        return p;
    }
    for (int64_t depth = 0;;)
    {
        if (*p == '"')
        {
            p = behindString(p);
            continue;
        }
        depth += (*p == '{' || *p == '[') - (*p == '}' || *p == ']');
        ++p;
        if (depth == 0)
            return p;
    }
}

// The value or key after this one, or the closing bracket.
const char *JSONText::next(const char *value)
{
    const char *p = blanks(behind(value));
    return *p == ',' ? blanks(p + 1) : p;
}

std::string_view JSONText::raw() const
{
    const char *end = behind(at_);
    return isString() ? std::string_view(at_ + 1, size_t(end - at_ - 2)) : std::string_view(at_, size_t(end - at_));
}

std::string JSONText::string() const
{
    const std::string_view written = raw();
    std::string bytes;
    bytes.reserve(written.size());
    for (const char *p = written.data(), *end = p + written.size(); p < end;)
    {
        char32_t c;
        if (*p == '\\')
            c = readEscape(p);
        else
            p += readUTF8({p, size_t(end - p)}, c);
        if (c >= kByteBase + kFirstByte && c <= kByteBase + kLastByte)
            bytes += char(c - kByteBase);
        else
            appendUTF8(bytes, c);
    }
    return bytes;
}

std::string toJSONText(std::string_view bytes)
{
    std::string text;
    text.reserve(bytes.size());
    while (!bytes.empty())
    {
        char32_t c;
        size_t length = readUTF8(bytes, c);
        const bool isPlain = length > 0 && (c < kByteBase + kFirstByte || c > kByteBase + kLastByte);
        if (isPlain)
            text += bytes.substr(0, length);
        else
            appendUTF8(text, kByteBase + uint8_t(bytes[0]));
        bytes.remove_prefix(isPlain ? length : 1);
    }
    return text;
}
}  // namespace rq::io
