#include <apps/optionTexts.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <apps/ExitCode.h>
#include <rq/prim/RefineParms.h>

namespace rq::app
{
namespace
{
// Dashes are hyphens unless escaped, and a line that begins with a dot is an order.
std::string escaped(std::string_view text)
{
    std::string result;
    for (const char c : text)
        result += c == '-' ? std::string("\\-") : c == '\\' ? std::string("\\e") : std::string(1, c);
    return result.starts_with('.') || result.starts_with('\'') ? "\\&" + result : result;
}

void appendOption(std::string &page, const OptionText &option)
{
    std::string names;
    for (const std::string &name : option.names)
        names += fmt::format("{}\\fB{}\\fR", names.empty() ? "" : ", ", escaped(name));
    page += ".TP\n" + names + (option.value.empty() ? "" : " \\fI" + escaped(option.value) + "\\fR") + '\n';
    page += escaped(option.description) + ".\n";
    if (!option.choices.empty() && option.value != "KEY=VALUE")
        page += fmt::format("One of {}.\n", escaped(fmt::format("{}", fmt::join(option.choices, ", "))));
    if (!option.initial.empty())
        page += fmt::format("Without it {}.\n", escaped(option.initial));
}

void appendSynopsis(std::string &page, const CommandText &command)
{
    page += fmt::format(".B rq {}\n.RI [ options ]", command.name);
    for (const OptionText &option : command.options)
        if (option.isPositional)
            page += fmt::format("\n.I {}", escaped(option.names[0]));
    page += "\n.br\n";
}

constexpr const char *kExitCodes = R"(.SH EXIT STATUS
.TP
0
Everything was done.
.TP
1
The command line is wrong.
.TP
2
A file cannot be read; the others were.
.TP
3
The work itself failed.
)";
}  // namespace

std::string manPage(const CLI::App &program)
{
    const std::vector<CommandText> commands = allTexts(program);
    std::string page = fmt::format(".TH RQ 1 \"\" \"rq {}\" \"User Commands\"\n", RQ_VERSION);
    page += fmt::format(".SH NAME\nrq \\- {}\n.SH SYNOPSIS\n", escaped(commands[0].description));
    for (size_t i = 1; i < commands.size(); ++i)
        appendSynopsis(page, commands[i]);
    page += ".SH OPTIONS\n";
    for (const OptionText &option : commands[0].options)
        appendOption(page, option);
    page += ".SH COMMANDS\n";
    for (size_t i = 1; i < commands.size(); ++i)
    {
        page += fmt::format(".SS {}\n{}.\n", commands[i].name, escaped(commands[i].description));
        for (const OptionText &option : commands[i].options)
            appendOption(page, option);
    }
    page += ".SH REFINEMENT OPTIONS\nThe keys of\n.BR \\-p .\n";
    for (const RQ_RefineOption &option : RQ_RefineParms::options())
        page += fmt::format(".TP\n\\fB{}\\fR\n{}\n", escaped(option.key), escaped(option.meaning));
    static_assert(ExitUsage == 1 && ExitBadInput == 2 && ExitFailure == 3, "the text has the codes");
    return page + kExitCodes;
}
}  // namespace rq::app
