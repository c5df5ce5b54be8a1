#include <apps/optionTexts.h>

#include <CLI/CLI.hpp>

#include <rq/prim/RefineParms.h>

namespace rq::app
{
namespace
{
// The library tells the members of a set as "TYPE:{a,b}".
std::vector<std::string> choicesIn(const std::string &type)
{
    const size_t begin = type.find('{'), end = type.find('}');
    return begin == type.npos || end == type.npos ? std::vector<std::string>()
                                                  : CLI::detail::split(type.substr(begin + 1, end - begin - 1), ',');
}

std::vector<std::string> refinementKeys()
{
    std::vector<std::string> keys;
    for (const RQ_RefineOption &option : RQ_RefineParms::options())
        keys.push_back(std::string(option.key) + '=');
    return keys;
}

OptionText textOf(const CLI::Option &option)
{
    OptionText text;
    text.isPositional = option.get_positional();
    for (const std::string &name : option.get_snames())
        text.names.push_back('-' + name);
    for (const std::string &name : option.get_lnames())
        text.names.push_back("--" + name);
    if (text.isPositional)
        text.names = {option.get_name(true)};
    text.description = option.get_description();
    text.initial = option.get_default_str();
    if (option.get_items_expected_max() == 0 || text.isPositional)
        return text;
    const std::string type = option.get_type_name();
    text.value = type.substr(0, type.find(':'));
    text.choices = text.value == "KEY=VALUE" ? refinementKeys() : choicesIn(type);
    return text;
}
}  // namespace

CommandText textOf(const CLI::App &command)
{
    CommandText text{command.get_name(), command.get_description(), {}};
    for (const CLI::Option *option : command.get_options())
        text.options.push_back(textOf(*option));
    return text;
}

std::vector<CommandText> allTexts(const CLI::App &program)
{
    std::vector<CommandText> texts = {textOf(program)};
    for (const CLI::App *command : program.get_subcommands(nullptr))
        texts.push_back(textOf(*command));
    return texts;
}
}  // namespace rq::app
