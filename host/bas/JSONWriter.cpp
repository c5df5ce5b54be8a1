#include <host/bas/JSONWriter.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <variant>
#include <vector>

#include <rapidjson/memorystream.h>
#include <rapidjson/prettywriter.h>

namespace
{
/// Where characters go: a caller's string, or a buffer in front of a C stream.
struct Output
{
    using Ch = char;

    // Large enough that the stream's own cost per call does not count.
    static constexpr size_t kBufferSize = size_t(64) << 10;

    void Put(char c)
    {
        text->push_back(c);
        if (stream && text->size() >= kBufferSize)
            drain();
    }
    void Flush() {}

    void drain()
    {
        good = std::fwrite(text->data(), 1, text->size(), stream) == text->size() && good;
        text->clear();
    }

    std::string buffer;
    std::string *text = &buffer;
    FILE *stream = nullptr;
    bool good = true;
};

using Plain = rapidjson::Writer<Output>;
using Pretty = rapidjson::PrettyWriter<Output>;

constexpr int64_t kLargestIndent = 16;

/// Bytes of the UTF-8 character that `text` begins with, 0 when it begins with none.
size_t characterLength(std::string_view text)
{
    struct
    {
        void Put(char) {}
    } nowhere;
    rapidjson::MemoryStream stream(text.data(), text.size());
    return rapidjson::UTF8<>::Validate(stream, nowhere) ? stream.Tell() : 0;
}

/// `text` itself when it is UTF-8, else a copy in `clean` with the replacement character in place of every stray byte.
std::string_view asUtf8(std::string_view text, std::string &clean)
{
    size_t at = 0;
    const auto length = [&] { return characterLength(text.substr(at)); };
    for (size_t step = 1; at < text.size() && step > 0; at += step)
        step = length();
    if (at == text.size())
        return text;

    clean = text.substr(0, at);
    while (at < text.size())
    {
        const size_t step = length();
        clean += step > 0 ? text.substr(at, step) : std::string_view("\xEF\xBF\xBD");
        at += std::max<size_t>(step, 1);
    }
    return clean;
}
}  // namespace

struct BAS_JSONWriter::Sink
{
    explicit Sink(const BAS_Options &options)
    {
        const int64_t indent = options.get<int64_t>("json:indentstep", 0);
        if (indent < 1)
            return;
        writer.emplace<Pretty>(output);
        std::get<Pretty>(writer).SetIndent(' ', unsigned(std::min(indent, kLargestIndent)));
    }

    // A value may come now: as the root, in an array, or after a key.
    bool mayWrite() const { return !failed && (levels.empty() ? !rootWritten : levels.back() != Level::Key); }

    // Account a value that was just written.
    void wrote()
    {
        if (levels.empty())
            rootWritten = true;
        else if (levels.back() == Level::Value)
            levels.back() = Level::Key;
    }

    bool finish(bool good)
    {
        failed = failed || !good || !output.good;
        return !failed;
    }

    template <class Write> bool value(Write &&write)
    {
        if (!mayWrite())
            return finish(false);
        const bool good = std::visit(write, writer);
        wrote();
        return finish(good);
    }

    // `Array`: in an array; `Key`: in a map, before a key; `Value`: in a map, after a key.
    enum class Level : char
    {
        Array,
        Key,
        Value
    };

    bool begin(Level level)
    {
        const bool good = value([&](auto &to) { return level == Level::Array ? to.StartArray() : to.StartObject(); });
        if (good)
            levels.push_back(level);
        return good;
    }

    bool end(Level level)
    {
        if (failed || levels.empty() || levels.back() != level)
            return finish(false);
        levels.pop_back();
        return finish(std::visit([&](auto &to) { return level == Level::Array ? to.EndArray() : to.EndObject(); }, writer));
    }

    // Numbers and texts of one array share a line also where the text is indented.
    template <class Write> bool row(Write &&write)
    {
        return value([&](auto &to) {
            bool good = to.StartArray();
            if constexpr (std::is_same_v<decltype(to), Pretty &>)
                to.SetFormatOptions(rapidjson::kFormatSingleLineArray);
            write(to, good);
            good = to.EndArray() && good;
            if constexpr (std::is_same_v<decltype(to), Pretty &>)
                to.SetFormatOptions(rapidjson::kFormatDefault);
            return good;
        });
    }

    Output output;
    std::variant<Plain, Pretty> writer{std::in_place_type<Plain>, output};
    std::vector<Level> levels;
    bool rootWritten = false;
    bool failed = false;
};

namespace
{
// 24 characters hold every integer and the shortest form of every float.
constexpr size_t kNumberSize = 32;

template <class Writer, class T> bool writeNumber(Writer &writer, T value)
{
    char text[kNumberSize];
    if constexpr (std::is_floating_point_v<T>)
    {
        if (!std::isfinite(value))
            return writer.String(std::isnan(value) ? "nan" : value > 0 ? "inf" : "-inf");
        // An integer reader would lose the sign of "-0".
        if (value == 0 && std::signbit(value))
            return writer.RawValue("-0.0", 4, rapidjson::kNumberType);
    }
    const std::to_chars_result end = std::to_chars(text, text + kNumberSize, value);
    return writer.RawValue(text, size_t(end.ptr - text), rapidjson::kNumberType);
}

template <class Writer> bool writeText(Writer &writer, std::string_view text)
{
    std::string clean;
    text = asUtf8(text, clean);
    if (text.size() > size_t(rapidjson::SizeType(-1)))
        return false;
    return writer.String(text.empty() ? "" : text.data(), rapidjson::SizeType(text.size()));
}

template <class T> auto numberRow(const T *values, int64_t count)
{
    return [values, count](auto &to, bool &good) {
        for (int64_t i = 0; i < count; ++i)
            good = writeNumber(to, values[i]) && good;
    };
}
}  // namespace

BAS_JSONWriter::BAS_JSONWriter(std::string &text, const BAS_Options &options) : sink_(std::make_unique<Sink>(options))
{
    sink_->output.text = &text;
}

BAS_JSONWriter::BAS_JSONWriter(FILE *stream, const BAS_Options &options) : sink_(std::make_unique<Sink>(options))
{
    sink_->output.stream = stream;
}

BAS_JSONWriter::~BAS_JSONWriter() { flush(); }

bool BAS_JSONWriter::beginArray() { return sink_->begin(Sink::Level::Array); }

bool BAS_JSONWriter::endArray() { return sink_->end(Sink::Level::Array); }

bool BAS_JSONWriter::beginMap() { return sink_->begin(Sink::Level::Key); }

bool BAS_JSONWriter::endMap() { return sink_->end(Sink::Level::Key); }

bool BAS_JSONWriter::key(std::string_view name)
{
    if (sink_->failed || sink_->levels.empty() || sink_->levels.back() != Sink::Level::Key)
        return sink_->finish(false);
    sink_->levels.back() = Sink::Level::Value;
    return sink_->finish(std::visit([&](auto &to) { return writeText(to, name); }, sink_->writer));
}

bool BAS_JSONWriter::writeNull()
{
    return sink_->value([](auto &to) { return to.Null(); });
}

bool BAS_JSONWriter::writeBool(bool value)
{
    return sink_->value([=](auto &to) { return to.Bool(value); });
}

bool BAS_JSONWriter::writeInt(int64_t value)
{
    return sink_->value([=](auto &to) { return writeNumber(to, value); });
}

bool BAS_JSONWriter::writeUInt(uint64_t value)
{
    return sink_->value([=](auto &to) { return writeNumber(to, value); });
}

bool BAS_JSONWriter::writeReal32(float value)
{
    return sink_->value([=](auto &to) { return writeNumber(to, value); });
}

bool BAS_JSONWriter::writeReal64(double value)
{
    return sink_->value([=](auto &to) { return writeNumber(to, value); });
}

bool BAS_JSONWriter::writeString(std::string_view text)
{
    return sink_->value([=](auto &to) { return writeText(to, text); });
}

bool BAS_JSONWriter::uniformArray(const int32_t *values, int64_t count) { return sink_->row(numberRow(values, count)); }

bool BAS_JSONWriter::uniformArray(const int64_t *values, int64_t count) { return sink_->row(numberRow(values, count)); }

bool BAS_JSONWriter::uniformArray(const float *values, int64_t count) { return sink_->row(numberRow(values, count)); }

bool BAS_JSONWriter::uniformArray(const double *values, int64_t count) { return sink_->row(numberRow(values, count)); }

bool BAS_JSONWriter::stringArray(const BAS_StringHolder *values, int64_t count)
{
    return sink_->row([=](auto &to, bool &good) {
        for (int64_t i = 0; i < count; ++i)
            good = writeText(to, values[i].view()) && good;
    });
}

bool BAS_JSONWriter::flush()
{
    Output &output = sink_->output;
    if (output.stream)
    {
        output.drain();
        output.good = std::fflush(output.stream) == 0 && output.good;
    }
    return sink_->finish(true);
}
