#include <cstdio>
#include <cstdlib>
#include <exception>

#include <fmt/format.h>

#include <bench/report.h>

namespace
{
constexpr const char *kHelp =
    "rq_bench [--mode warm|cold|all] [--list] [FILTER]\n"
    "Run the jobs whose \"job/mesh/who\" contains FILTER; write bench-report.md and bench-report.json.\n"
    "  --mode   memory that was touched before (warm), fresh from the system (cold), or both (all, the default)\n"
    "  --list   print the names of the jobs\n";

std::vector<bench::Job> &jobList()
{
    static std::vector<bench::Job> list;
    return list;
}

struct Arguments
{
    std::string filter;
    std::string mode = "all";
    const char *row = nullptr;
    bool list = false;
    bool help = false;
    bool good = true;
};

Arguments parse(int argc, char **argv)
{
    Arguments result;
    for (int i = 1; i < argc; ++i)
    {
        const std::string word = argv[i];
        if (word == "--help")
            result.help = true;
        else if (word == "--list")
            result.list = true;
        else if (word == "--mode" && i + 1 < argc)
            result.mode = argv[++i];
        else if (word == "--row" && i + 1 < argc)  // for the program itself
            result.row = argv[++i];
        else if (word.empty() || word[0] != '-')
            result.filter = word;
        else
            result.good = false;
    }
    result.good = result.good && (result.mode == "all" || result.mode == "warm" || result.mode == "cold");
    return result;
}

/// Measure what the arguments ask for; the names of jobs that failed go to `failed`.
std::vector<bench::Row> measureAll(const Arguments &arguments, std::vector<std::string> &failed)
{
    std::vector<bench::Row> rows;
    for (const bench::Mode mode : {bench::Mode::warm, bench::Mode::cold})
    {
        const bool cold = mode == bench::Mode::cold;
        if (arguments.mode != "all" && cold != (arguments.mode == "cold"))
            continue;
        for (size_t i = 0; i < jobList().size(); ++i)
        {
            const bench::Job &job = jobList()[i];
            if (job.name().find(arguments.filter) == std::string::npos || (cold && !job.cold))
                continue;
            bench::Row row;
            if (bench::measureApart(i, mode, row))
                rows.push_back(row);
            else
                failed.push_back(job.name());
        }
    }
    return rows;
}

int run(int argc, char **argv)
{
    const Arguments arguments = parse(argc, argv);
    if (!arguments.good || arguments.help)
    {
        std::fputs(kHelp, arguments.good ? stdout : stderr);
        return arguments.good ? 0 : 1;
    }
    if (arguments.row)
    {
        bench::measureForParent(std::strtoul(arguments.row, nullptr, 10),
                                arguments.mode == "cold" ? bench::Mode::cold : bench::Mode::warm);
        return 0;
    }
    if (arguments.list)
    {
        for (const bench::Job &job : jobList())
            fmt::print("{} {}\n", job.name(), job.threads);
        return 0;
    }
    std::vector<std::string> failed;
    const std::vector<bench::Row> rows = measureAll(arguments, failed);
    if (rows.empty() && failed.empty())
    {
        fmt::print(stderr, "rq_bench: no job matches '{}'\n", arguments.filter);
        return 1;
    }
    fmt::print("{}", bench::formatTable(rows));
    for (const std::string &name : failed)
        fmt::print(stderr, "rq_bench: {} failed\n", name);
    if (bench::writeReport(rows))
        return failed.empty() ? 0 : 3;
    fmt::print(stderr, "rq_bench: cannot write bench-report.md and bench-report.json\n");
    return 3;
}
}  // namespace

void bench::add(Job job) { jobList().push_back(std::move(job)); }

const std::vector<bench::Job> &bench::jobs() { return jobList(); }

int main(int argc, char **argv)
{
    try
    {
        return run(argc, argv);
    }
    catch (const std::exception &failure)
    {
        fmt::print(stderr, "rq_bench: {}\n", failure.what());
        return 3;
    }
}
