#include <apps/CommonOptions.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <string_view>

#include <fmt/format.h>

namespace rq::app
{
namespace
{
// How many characters must be put in, left out or exchanged to turn one word into the other.
size_t editDistance(std::string_view a, std::string_view b)
{
    std::vector<size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), size_t(0));
    for (size_t i = 0; i < a.size(); ++i)
    {
        size_t diagonal = row[0];
        row[0] = i + 1;
        for (size_t j = 0; j < b.size(); ++j)
        {
            const size_t exchanged = diagonal + (a[i] != b[j]);
            diagonal = row[j + 1];
            row[j + 1] = std::min({exchanged, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

const char *nearestKey(std::string_view key)
{
    const auto options = RQ_RefineParms::options();
    const auto nearest =
        std::min_element(options.begin(), options.end(), [&](const RQ_RefineOption &a, const RQ_RefineOption &b) {
            return editDistance(key, a.key) < editDistance(key, b.key);
        });
    return nearest->key;
}

template <class T> bool parseNumber(std::string_view text, T &value)
{
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size();
}

bool parseBool(std::string_view text, bool &value)
{
    value = text == "1" || text == "true" || text == "on" || text == "yes";
    return value || text == "0" || text == "false" || text == "off" || text == "no";
}

// Read a value of the type that an option is kept as; answers what was expected when it is no such value.
struct ValueReader
{
    std::string_view text;
    BAS_Options::Value &value;

    const char *operator()(bool) const
    {
        bool parsed;
        return parseBool(text, parsed) ? (value = parsed, nullptr) : "0 or 1";
    }
    const char *operator()(int64_t) const
    {
        int64_t parsed;
        return parseNumber(text, parsed) ? (value = parsed, nullptr) : "a whole number";
    }
    const char *operator()(double) const
    {
        double parsed;
        return parseNumber(text, parsed) && std::isfinite(parsed) ? (value = parsed, nullptr) : "a number";
    }
    const char *operator()(const BAS_StringHolder &) const { return value = BAS_StringHolder(text), nullptr; }
    template <class Array> const char *operator()(const std::vector<Array> &) const { return "an option of a single value"; }
};
}  // namespace

bool readParms(const CommonOptions &options, RQ_RefineParms &parms, std::string &error)
{
    BAS_Options values;
    for (const std::string &parm : options.parms)
    {
        const size_t equals = parm.find('=');
        const std::string key = parm.substr(0, equals);
        const RQ_RefineOption *option = RQ_RefineParms::findOption(key);
        if (!option)
        {
            error = fmt::format("-p {}: there is no option \"{}\"; the nearest is \"{}\"", parm, key, nearestKey(key));
            return false;
        }
        const std::string text = equals == parm.npos ? std::string() : parm.substr(equals + 1);
        BAS_Options::Value value;
        const char *expected =
            equals == parm.npos ? "KEY=VALUE" : std::visit(ValueReader{text, value}, option->defaultValue);
        if (expected)
        {
            error = fmt::format("-p {}: expected {}, found \"{}\"", parm, expected, equals == parm.npos ? parm : text);
            return false;
        }
        values.set(option->key, value);
    }
    return parms.load(values);
}
}  // namespace rq::app
