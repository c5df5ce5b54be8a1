#pragma once

#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace rq::app
{
/// What the description of the command line says of one option.
struct OptionText
{
    std::vector<std::string> names{};    ///< with their dashes, short ones first; one without for a positional argument
    std::string value{};                 ///< what follows it, empty for a flag
    std::vector<std::string> choices{};  ///< the values that there are; empty when they cannot be told
    std::string initial{};               ///< what it is unless told, empty where the description has it
    std::string description{};
    bool isPositional = false;
};

/// What it says of the program, or of a subcommand.
struct CommandText
{
    std::string name;
    std::string description;
    std::vector<OptionText> options;
};

CommandText textOf(const CLI::App &command);

/// The program first, its subcommands after it.
std::vector<CommandText> allTexts(const CLI::App &program);

/// The man page, in the language of troff.
std::string manPage(const CLI::App &program);

/// The shells that `completion` writes for.
inline constexpr const char *kShells[] = {"bash", "zsh", "fish"};

/// A script that lets a shell complete subcommands, options, their values and names of files.
std::string completion(const CLI::App &program, const std::string &shell);
}  // namespace rq::app
