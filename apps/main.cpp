#include <cstdio>
#include <iostream>
#include <optional>

#include <apps/CommandLine.h>
#include <apps/optionTexts.h>
#include <host/bas/Parallel.h>
#include <io/DetailFiles.h>

namespace
{
using namespace rq::app;

ExitCode print(const std::string &text)
{
    if (std::cout << text << std::flush)
        return ExitDone;
    std::fputs("rq: error: standard output cannot be written\n", stderr);
    return ExitFailure;
}

ExitCode run(const CommandLine &line)
{
    if (line.infoCommand->parsed())
        return runInfo(line.common, line.info);
    if (line.convertCommand->parsed())
        return runConvert(line.common, line.convert);
    if (line.renderCommand->parsed())
        return runRender(line.common, line.render);
    if (line.viewCommand->parsed())
        return runView(line.common, line.view);
    if (line.manual)
        return print(manPage(line.program));
    if (!line.shell.empty())
        return print(completion(line.program, line.shell));
    std::fputs("rq: error: a subcommand is required\nRun with --help for more information.\n", stderr);
    return ExitUsage;
}
}  // namespace

int main(int argc, char **argv)
{
    CommandLine line;
    try
    {
        line.program.parse(argc, argv);
    }
    catch (const CLI::ParseError &error)
    {
        return line.program.exit(error) == 0 ? print({}) : ExitUsage;
    }

    std::optional<BAS_Threads::Limit> limit;
    if (line.common.threads > 0)
        limit.emplace(line.common.threads);
    rq::io::registerDetailFiles();
    try
    {
        return run(line);
    }
    catch (const std::exception &error)
    {
        std::fprintf(stderr, "rq: error: %s\n", error.what());
        return ExitFailure;
    }
}
