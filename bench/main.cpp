#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <map>
#include <memory>
#include <vector>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <bench/Job.h>
#include <host/bas/JSONWriter.h>
#include <host/bas/LargeBlocks.h>
#include <host/bas/Parallel.h>

namespace
{
constexpr int kRepetitions = 7;

struct Row
{
    bench::Job job;
    const char *mode;
    double seconds = 0.0;
    double copies = 0.0;  // the job's time over that of a memory copy of the same traffic
    int64_t peakBytes = 0;
    double error = 0.0;
};

std::vector<bench::Job> &jobs()
{
    static std::vector<bench::Job> list;
    return list;
}

double wallTime() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

double processorTime()
{
    timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + 1e-9 * double(now.tv_nsec);
}

int64_t statusBytes(const char *key)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(key, 0) == 0)
            return 1024 * std::strtoll(line.c_str() + std::strlen(key), nullptr, 10);
    return 0;
}

void resetPeak() { std::ofstream("/proc/self/clear_refs") << "5"; }

/// The fastest of three copies that move as many bytes as the job, in memory that was touched before.
double copyTime(double bytes)
{
    const size_t half = size_t(bytes / 2.0);
    static std::vector<char> from, to;
    if (from.size() < half)
    {
        from.assign(half, 1);
        to.assign(half, 2);
    }
    double best = 1e9;
    for (int turn = 0; turn < 3; ++turn)
    {
        const double start = wallTime();
        std::memcpy(to.data(), from.data(), half);
        benchmark::ClobberMemory();
        best = std::min(best, wallTime() - start);
    }
    return best;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

/// Time a job: processor time on one thread, wall time on more; right after each turn the memory copy it is held against.
Row measure(const bench::Job &job, bool cold)
{
    Row row{job, cold ? "cold" : "warm"};
    const BAS_Threads::Limit limit(job.threads);
    row.error = job.check();
    std::vector<double> seconds, copies;
    for (int turn = 0; turn < kRepetitions; ++turn)
    {
        if (cold)
            BAS_LargeBlocks::trim();
        resetPeak();
        const int64_t before = statusBytes("VmRSS:");
        const auto clock = job.threads == 1 ? processorTime : wallTime;
        const double start = clock();
        const std::function<void()> release = job.run();
        seconds.push_back(clock() - start);
        row.peakBytes = std::max(row.peakBytes, statusBytes("VmHWM:") - before);
        if (release)
            release();
        copies.push_back(seconds.back() / copyTime(job.bytes));
    }
    row.seconds = median(seconds);
    row.copies = median(copies);
    return row;
}

void writeJSON(const std::vector<Row> &rows, const char *path)
{
    std::string text;
    BAS_Options indent;
    indent.set("int json:indentstep", int64_t(2));
    BAS_JSONWriter writer(text, indent);
    writer.beginArray();
    for (const Row &row : rows)
    {
        writer.beginMap();
        writer.writeKeyString("job", row.job.job);
        writer.writeKeyString("mesh", row.job.mesh);
        writer.writeKeyString("who", row.job.who);
        writer.writeKeyInt("threads", row.job.threads);
        writer.writeKeyString("mode", row.mode);
        writer.writeKeyReal("seconds", row.seconds);
        writer.writeKeyReal("items", row.job.items);
        writer.writeKeyReal("bytes", row.job.bytes);
        writer.writeKeyReal("xM", row.copies);
        writer.writeKeyInt("peak_bytes", row.peakBytes);
        writer.writeKeyReal("correct", row.error);
        writer.endMap();
    }
    writer.endArray();
    writer.flush();
    std::ofstream(path) << text << "\n";
}

std::string formatTable(const std::vector<Row> &rows)
{
    std::string text = "| Job | Mesh | Who | Threads | Mode | ms | ns an item | xM | Peak MB | Error | Against ours |\n"
                       "|---|---|---|---|---|---|---|---|---|---|---|\n";
    std::map<std::string, double> ours;
    const auto key = [](const Row &row) {
        return fmt::format("{}/{}/{}/{}", row.job.job, row.job.mesh, row.job.threads, row.mode);
    };
    for (const Row &row : rows)
        if (row.job.who == "ours")
            ours[key(row)] = row.seconds;
    for (const Row &row : rows)
    {
        const auto base = ours.find(key(row));
        text += fmt::format("| {} | {} | {} | {} | {} | {:.2f} | {:.2f} | {:.2f} | {:.0f} | {:.1e} | {} |\n", row.job.job,
                            row.job.mesh, row.job.who, row.job.threads, row.mode, 1e3 * row.seconds,
                            1e9 * row.seconds / row.job.items, row.copies, double(row.peakBytes) / 1048576.0, row.error,
                            base != ours.end() ? fmt::format("{:.2f}", row.seconds / base->second) : "");
    }
    return text;
}
}  // namespace

void bench::add(Job job) { jobs().push_back(std::move(job)); }

/// rq_bench [FILTER]: run the jobs whose "job/mesh/who" contains FILTER, write bench-report.json and bench-report.md.
int main(int argc, char **argv)
{
    const std::string filter = argc > 1 ? argv[1] : "";
    std::vector<Row> rows;
    for (const bool cold : {false, true})
        for (const bench::Job &job : jobs())
            if (fmt::format("{}/{}/{}", job.job, job.mesh, job.who).find(filter) != std::string::npos)
                rows.push_back(measure(job, cold));
    if (rows.empty())
    {
        fmt::print(stderr, "rq_bench: no job matches '{}'\n", filter);
        return 1;
    }
    const std::string table = formatTable(rows);
    writeJSON(rows, "bench-report.json");
    std::ofstream("bench-report.md")
        << "# Benchmarks\n\n"
        << "xM: the job's time over that of a memory copy that moves as many bytes, taken right "
           "after it.  One thread: median processor time; more: median wall time.\n\n"
        << table;
    fmt::print("{}", table);
    return 0;
}
