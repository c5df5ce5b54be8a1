#include <host/bas/JSONValue.h>

#include <charconv>
#include <cmath>
#include <limits>

#include <fmt/format.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

namespace
{
constexpr size_t kDeepest = 1000;

/// Builds the tree while the text is read.
class Builder
{
public:
    using Ch = char;

    explicit Builder(BAS_JSONValue &root) : root_(root) {}

    bool Null() { return add({}); }
    bool Bool(bool value) { return add(value); }
    bool String(const char *text, rapidjson::SizeType length, bool) { return add(std::string(text, length)); }

    bool Key(const char *text, rapidjson::SizeType length, bool)
    {
        key_.assign(text, length);
        return true;
    }

    // Numbers come as text, so that integers stay exact and floats are rounded once.
    bool RawNumber(const char *text, rapidjson::SizeType length, bool)
    {
        const char *const end = text + length;
        int64_t integer;
        const std::from_chars_result whole = std::from_chars(text, end, integer);
        if (whole.ec == std::errc() && whole.ptr == end && !(integer == 0 && *text == '-'))
            return add(integer);
        double real = 0.0;
        if (std::from_chars(text, end, real).ec == std::errc::result_out_of_range)
            real = std::strtod(std::string(text, end).c_str(), nullptr);
        return add(real);
    }

    bool StartObject() { return begin(BAS_JSONValue::Map()); }
    bool StartArray() { return begin(BAS_JSONValue::Array()); }
    bool EndObject(rapidjson::SizeType) { return end(); }
    bool EndArray(rapidjson::SizeType) { return end(); }

    // The reader needs these names but never calls them: numbers come raw.
    bool Int(int) { return false; }
    bool Uint(unsigned) { return false; }
    bool Int64(int64_t) { return false; }
    bool Uint64(uint64_t) { return false; }
    bool Double(double) { return false; }

private:
    bool add(BAS_JSONValue::Content content)
    {
        place() = BAS_JSONValue(std::move(content));
        return true;
    }

    bool begin(BAS_JSONValue::Content content)
    {
        if (open_.size() == kDeepest)
            return false;
        BAS_JSONValue &value = place();
        value.content = std::move(content);
        open_.push_back(&value);
        return true;
    }

    bool end()
    {
        open_.pop_back();
        return true;
    }

    // Where the next value goes.  Only the innermost container grows, so the pointers to those around it stay valid.
    BAS_JSONValue &place()
    {
        if (open_.empty())
            return root_;
        if (auto *map = std::get_if<BAS_JSONValue::Map>(&open_.back()->content))
            return map->emplace_back(key_, BAS_JSONValue()).second;
        return std::get<BAS_JSONValue::Array>(open_.back()->content).emplace_back();
    }

    BAS_JSONValue &root_;
    std::vector<BAS_JSONValue *> open_;
    std::string key_;
};

/// Takes note of nothing but the depth.
struct Checker : rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Checker>
{
    bool StartObject() { return ++depth <= kDeepest; }
    bool StartArray() { return ++depth <= kDeepest; }
    bool EndObject(rapidjson::SizeType) { return depth-- > 0; }
    bool EndArray(rapidjson::SizeType) { return depth-- > 0; }

    size_t depth = 0;
};

const char *reason(rapidjson::ParseErrorCode code)
{
    switch (code)
    {
    case rapidjson::kParseErrorDocumentEmpty:
        return "a value is missing";
    case rapidjson::kParseErrorDocumentRootNotSingular:
        return "something follows the value";
    case rapidjson::kParseErrorObjectMissName:
        return "the name of a member is missing";
    case rapidjson::kParseErrorObjectMissColon:
        return "a colon is missing";
    case rapidjson::kParseErrorObjectMissCommaOrCurlyBracket:
        return "a comma or closing brace is missing";
    case rapidjson::kParseErrorArrayMissCommaOrSquareBracket:
        return "a comma or closing bracket is missing";
    case rapidjson::kParseErrorStringMissQuotationMark:
        return "a string is not closed";
    case rapidjson::kParseErrorStringInvalidEncoding:
        return "a string is not UTF-8";
    case rapidjson::kParseErrorStringEscapeInvalid:
    case rapidjson::kParseErrorStringUnicodeEscapeInvalidHex:
    case rapidjson::kParseErrorStringUnicodeSurrogateInvalid:
        return "a string has an escape that does not exist";
    case rapidjson::kParseErrorNumberMissFraction:
    case rapidjson::kParseErrorNumberMissExponent:
    case rapidjson::kParseErrorNumberTooBig:
        return "a number is not complete";
    case rapidjson::kParseErrorTermination:
        return "nested deeper than 1000 levels";
    default:
        return "not a value";
    }
}

/// Read a text.  Null, or what is wrong at byte `offset`.
template <class Handler> const char *read(std::string_view text, Handler &handler, int64_t &offset)
{
    constexpr unsigned kFlags =
        rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag | rapidjson::kParseValidateEncodingFlag;
    rapidjson::MemoryStream stream(text.empty() ? "" : text.data(), text.size());
    rapidjson::Reader reader;
    const rapidjson::ParseResult result = reader.Parse<kFlags>(stream, handler);
    offset = int64_t(result.IsError() ? result.Offset() : stream.Tell());
    if (result.IsError())
        return reason(result.Code());
    // The reader takes a 0 byte for the end.
    return size_t(offset) < text.size() ? reason(rapidjson::kParseErrorDocumentRootNotSingular) : nullptr;
}
}  // namespace

bool BAS_JSONValue::parse(std::string_view text, BAS_JSONValue &value, std::string &error)
{
    value = BAS_JSONValue();
    Builder builder(value);
    int64_t offset;
    const char *what = read(text, builder, offset);
    if (!what)
        return true;
    error = fmt::format("byte {}: {}", offset, what);
    value = BAS_JSONValue();
    return false;
}

bool BAS_JSONValue::check(std::string_view text, int64_t &offset, const char *&what)
{
    Checker checker;
    what = read(text, checker, offset);
    return !what;
}

const BAS_JSONValue *BAS_JSONValue::find(std::string_view name) const
{
    const Map *members = map();
    if (!members)
        return nullptr;
    for (auto member = members->rbegin(); member != members->rend(); ++member)
        if (member->first == name)
            return &member->second;
    return nullptr;
}

bool BAS_JSONValue::number(double &value) const
{
    if (const double *real = std::get_if<double>(&content))
        value = *real;
    else if (const int64_t *whole = std::get_if<int64_t>(&content))
        value = double(*whole);
    else if (const std::string *text = string(); text && *text == "nan")
        value = std::numeric_limits<double>::quiet_NaN();
    else if (text && *text == "inf")
        value = std::numeric_limits<double>::infinity();
    else if (text && *text == "-inf")
        value = -std::numeric_limits<double>::infinity();
    else
        return false;
    return true;
}

bool BAS_JSONValue::integer(int64_t &value) const
{
    constexpr double kEnd = 0x1p63;
    if (const int64_t *whole = std::get_if<int64_t>(&content))
        value = *whole;
    else if (const double *real = std::get_if<double>(&content);
             real && *real >= -kEnd && *real < kEnd && *real == std::trunc(*real))
        value = int64_t(*real);
    else
        return false;
    return true;
}

bool BAS_JSONValue::boolean(bool &value) const
{
    const bool *stored = std::get_if<bool>(&content);
    if (stored)
        value = *stored;
    return stored != nullptr;
}
