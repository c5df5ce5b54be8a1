#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include <apps/info.h>
#include <host/bas/JSONWriter.h>

namespace rq::app
{
namespace
{
// By the alternatives of an option's value.
constexpr const char *kTypes[] = {"bool", "int", "float", "text", "ints", "floats"};
static_assert(std::size(kTypes) == std::variant_size_v<BAS_Options::Value>);

const char *typeOf(const RQ_RefineOption &option) { return kTypes[option.defaultValue.index()]; }

// As `-p KEY=VALUE` takes it.
std::string defaultOf(const RQ_RefineOption &option)
{
    if (const bool *on = std::get_if<bool>(&option.defaultValue))
        return *on ? "1" : "0";
    if (const auto *text = std::get_if<BAS_StringHolder>(&option.defaultValue))
        return fmt::format("\"{}\"", text->view());
    if (const int64_t *number = std::get_if<int64_t>(&option.defaultValue))
        return fmt::format("{}", *number);
    // Six digits: angles are kept as 64 bits of a 32-bit number.
    const double *number = std::get_if<double>(&option.defaultValue);
    return number ? fmt::format("{:g}", *number) : "";
}
}  // namespace

void printParms(FILE *stream)
{
    size_t keyWidth = 0, defaultWidth = 0;
    for (const RQ_RefineOption &option : RQ_RefineParms::options())
    {
        keyWidth = std::max(keyWidth, std::string_view(option.key).size());
        defaultWidth = std::max(defaultWidth, defaultOf(option).size());
    }
    for (const RQ_RefineOption &option : RQ_RefineParms::options())
        fmt::print(stream, "{:<{}}  {:<5}  {:<{}}  {}\n", option.key, keyWidth, typeOf(option), defaultOf(option),
                   defaultWidth, option.meaning);
}

bool printParmsJSON(FILE *stream)
{
    BAS_Options layout;
    layout.set("int json:indentstep", int64_t(2));
    BAS_JSONWriter json(stream, layout);
    json.beginArray();
    for (const RQ_RefineOption &option : RQ_RefineParms::options())
    {
        json.beginMap();
        json.writeKeyString("key", option.key);
        json.writeKeyString("type", typeOf(option));
        json.key("default");
        BAS_Options::saveValue(json, option.defaultValue);
        json.writeKeyString("meaning", option.meaning);
        json.endMap();
    }
    json.endArray();
    return json.flush() && std::fputc('\n', stream) != EOF;
}
}  // namespace rq::app
