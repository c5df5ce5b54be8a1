#include <apps/optionTexts.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace rq::app
{
namespace
{
std::string namesOf(const CommandText &command)
{
    std::string names;
    for (const OptionText &option : command.options)
        if (!option.isPositional)
            for (const std::string &name : option.names)
                names += (names.empty() ? "" : " ") + name;
    return names;
}

std::string commandNames(const std::vector<CommandText> &commands, const char *separator)
{
    std::string names;
    for (size_t i = 1; i < commands.size(); ++i)
        names += (names.empty() ? "" : separator) + commands[i].name;
    return names;
}

// The program itself counts as the command without a name.
std::string wordOf(const std::vector<CommandText> &commands, size_t i) { return i == 0 ? "" : commands[i].name; }

std::string forBash(const std::vector<CommandText> &commands)
{
    std::string values, options;
    for (size_t i = 0; i < commands.size(); ++i)
    {
        options += fmt::format("        '{}') words='{}' ;;\n", wordOf(commands, i), namesOf(commands[i]));
        for (const OptionText &option : commands[i].options)
            for (const std::string &name : option.names)
                if (!option.choices.empty())
                    values += fmt::format("    '{} {}') words='{}' ;;\n", wordOf(commands, i), name,
                                          fmt::join(option.choices, " "));
    }
    std::string script = R"(# Completion of rq for bash.
_rq()
{
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} command= words= word
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in
        COMMAND_PATTERN) command=$word; break ;;
        esac
    done
    case "$command $previous" in
VALUES    esac
    if [[ -z $words && $current == -* ]]; then
        case $command in
OPTIONS        esac
    elif [[ -z $words && -z $command ]]; then
        words='COMMAND_NAMES'
    fi
    if [[ -n $words ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
    else
        mapfile -t COMPREPLY < <(compgen -f -- "$current")
        compopt -o filenames 2>/dev/null
    fi
    [[ ${COMPREPLY[0]-} == *= ]] && compopt -o nospace 2>/dev/null
    return 0
}
complete -F _rq rq
)";
    const auto put = [&](std::string_view mark, const std::string &text) {
        script.replace(script.find(mark), mark.size(), text);
    };
    put("COMMAND_PATTERN", commandNames(commands, " | "));
    put("VALUES", values);
    put("OPTIONS", options);
    put("COMMAND_NAMES", commandNames(commands, " "));
    return script;
}

std::string quoted(const std::string &text)
{
    std::string result = "'";
    for (const char c : text)
        result += c == '\'' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    return result + '\'';
}

std::string forFish(const std::vector<CommandText> &commands)
{
    std::string script = "# Completion of rq for fish.\n";
    for (size_t i = 1; i < commands.size(); ++i)
        script += fmt::format("complete -c rq -n __fish_use_subcommand -f -a {} -d {}\n", commands[i].name,
                              quoted(commands[i].description));
    for (size_t i = 0; i < commands.size(); ++i)
        for (const OptionText &option : commands[i].options)
        {
            if (option.isPositional)
                continue;
            script += "complete -c rq -n " +
                      (i == 0 ? "__fish_use_subcommand" : quoted("__fish_seen_subcommand_from " + commands[i].name));
            for (const std::string &name : option.names)
                script += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
            if (!option.value.empty())
                script += option.choices.empty() ? " -r" : fmt::format(" -xa '{}'", fmt::join(option.choices, " "));
            script += " -d " + quoted(option.description) + '\n';
        }
    return script;
}
}  // namespace

std::string completion(const CLI::App &program, const std::string &shell)
{
    const std::vector<CommandText> commands = allTexts(program);
    if (shell == "fish")
        return forFish(commands);
    // The other one has what this one needs.
    const std::string script = forBash(commands);
    return shell == "zsh" ? "#compdef rq\nautoload -U +X bashcompinit && bashcompinit\n" + script : script;
}
}  // namespace rq::app
