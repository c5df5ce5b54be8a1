#include <regex>
#include <set>

#include <tests/apps/Program.h>

using namespace tests;

namespace
{
// The words that a help text begins its lines with: options and subcommands.
std::set<std::string> wordsOfHelp(const std::string &help)
{
    std::set<std::string> words;
    const std::regex word(R"(\n  ((?:-{1,2}[\w-]+,?)+|[a-z]+)(?:\{\w+\})?[ \n])");
    for (auto match = std::sregex_iterator(help.begin(), help.end(), word); match != std::sregex_iterator(); ++match)
    {
        std::string names = (*match)[1];
        for (size_t comma; (comma = names.find(',')) != std::string::npos; names.erase(0, comma + 1))
            words.insert(names.substr(0, comma));
        words.insert(names);
    }
    return words;
}

std::string replaced(std::string text, const std::string &what, const std::string &with)
{
    for (size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += with.size())
        text.replace(at, what.size(), with);
    return text;
}

// A word by itself, not as a part of another.
bool hasWord(const std::string &text, const std::string &word)
{
    return std::regex_search(text, std::regex("(^|[^\\w-])" + word + "([^\\w-]|$)"));
}

TEST_F(Program, ManualAndCompletionHaveEveryOptionOfTheHelp)
{
    const std::string manual = replaced(Outcome("--man").out, "\\-", "-");
    const std::string bash = Outcome("--completion bash").out, zsh = Outcome("--completion zsh").out;
    const std::string fish = Outcome("--completion fish").out;
    std::set<std::string> words = wordsOfHelp(Outcome("--help").out);
    ASSERT_TRUE(words.contains("convert") && words.contains("--man"));
    for (const std::string &command : std::set<std::string>(words))
        if (command[0] != '-')
            words.merge(wordsOfHelp(Outcome(command + " --help").out));
    ASSERT_TRUE(words.contains("--to") && words.contains("-p") && words.contains("--no-ground"));
    for (const std::string &word : words)
    {
        for (const std::string &text : {manual, bash, zsh})
            EXPECT_TRUE(hasWord(replaced(text, "\\fB", " "), word)) << word;
        const std::string inFish = word.starts_with("--") ? "-l " + word.substr(2)
                                   : word[0] == '-'       ? "-s " + word.substr(1)
                                                          : word;
        EXPECT_TRUE(hasWord(fish, inFish)) << inFish;
    }
}

TEST_F(Program, CompletesInAShell)
{
    const std::pair<const char *, const char *> cases[] = {
        {"rq con", "convert"},        {"rq convert --asc", "--ascii"},    {"rq convert a b --to gl", "glb gltf"},
        {"rq render --up a", "auto"}, {"rq info -p cuspa", "cuspangle="}, {"rq --completion f", "fish"}};
    std::ofstream(testFolder() + "complete") << Outcome("--completion bash").out
                                             << "COMP_WORDS=($1); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _rq\n"
                                                "echo \"${COMPREPLY[*]}\"\n";
    for (const auto &[line, expected] : cases)
    {
        const std::string out = testFolder() + "completed";
        ASSERT_EQ(std::system(("bash " + testFolder() + "complete '" + line + "' > " + out).c_str()), 0);
        EXPECT_EQ(contentOf(out), expected + std::string("\n")) << line;
    }
}
}  // namespace
