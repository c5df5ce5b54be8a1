#include <apps/info.h>

#include <apps/TerminalProgress.h>

namespace rq::app
{
ExitCode runInfo(const CommonOptions &common, const InfoOptions &options)
{
    RQ_RefineParms parms;
    std::string error;
    if (!readParms(common, parms, error))
    {
        std::fprintf(stderr, "rq: error: %s\n", error.c_str());
        return ExitUsage;
    }

    if (options.parms && !options.json)
        printParms(stdout);
    const TerminalProgress progress;
    ExitCode code = ExitDone;
    std::vector<FileFacts> facts;
    for (const std::string &file : options.files)
    {
        const BAS_CopyCounter::Totals before = BAS_CopyCounter::totals();
        RefinedFile refined;
        if (const ExitCode result = refineFile(file, common, parms, refined); result != ExitDone)
            code = result;
        else if (options.json)
            facts.push_back(gatherFacts(refined, before));
        else
            printText(gatherFacts(refined, before), stdout);
    }
    bool written = !options.json || facts.empty() || printJSON(facts, options.files.size() > 1, stdout);
    if (options.parms && options.json)
        written = printParmsJSON(stdout);
    if (!written || std::fflush(stdout) != 0)
    {
        std::perror("rq: error: standard output");
        return ExitFailure;
    }
    return code;
}
}  // namespace rq::app
