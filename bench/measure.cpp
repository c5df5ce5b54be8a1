#include <bench/measure.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>

#include <unistd.h>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include <host/bas/LargeBlocks.h>
#include <host/bas/Parallel.h>

namespace bench
{
namespace
{
double secondsOf(clockid_t clock)
{
    timespec now;
    clock_gettime(clock, &now);
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
double copyTime(double bytes, clockid_t clock)
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
        const double start = secondsOf(clock);
        std::memcpy(to.data(), from.data(), half);
        benchmark::ClobberMemory();
        best = std::min(best, secondsOf(clock) - start);
    }
    return best;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}
}  // namespace

Row measure(const Job &job, Mode mode)
{
    Row row{&job, mode};
    const BAS_Threads::Limit limit(job.threads);
    const Work work = job.prepare();
    row.items = work.items > 0 ? work.items : job.items;
    row.bytes = work.bytes > 0 ? work.bytes : job.bytes;
    row.error = work.check ? work.check() : 0.0;
    if (work.time)
    {
        row.seconds = work.time();
        row.copies = row.seconds / copyTime(row.bytes, CLOCK_MONOTONIC);
        return row;
    }
    const clockid_t clock = job.threads == 1 ? CLOCK_PROCESS_CPUTIME_ID : CLOCK_MONOTONIC;
    std::vector<double> seconds, copies;
    for (int turn = 0; turn < kRepetitions; ++turn)
    {
        if (mode == Mode::cold)
            BAS_LargeBlocks::trim();
        resetPeak();
        const int64_t before = statusBytes("VmRSS:");
        const double start = secondsOf(clock);
        std::shared_ptr<void> result = work.run();
        seconds.push_back(secondsOf(clock) - start);
        row.peakBytes = std::max(row.peakBytes, statusBytes("VmHWM:") - before);
        result.reset();
        if (row.bytes > 0)
            copies.push_back(seconds.back() / copyTime(row.bytes, clock));
    }
    row.seconds = median(seconds);
    row.copies = copies.empty() ? 0.0 : median(copies);
    return row;
}

void measureForParent(size_t index, Mode mode)
{
    const Row row = measure(jobs().at(index), mode);
    std::printf("%a %a %a %a %lld %a\n", row.items, row.bytes, row.seconds, row.copies,
                static_cast<long long>(row.peakBytes), row.error);
}

bool measureApart(size_t index, Mode mode, Row &row)
{
    char program[4096] = {};
    if (readlink("/proc/self/exe", program, sizeof(program) - 1) < 0)
        return false;
    const bool cold = mode == Mode::cold;
    const std::string command = fmt::format("GLIBC_TUNABLES={} '{}' --row {} --mode {}",
                                            cold ? "glibc.malloc.mmap_threshold=131072"
                                                 : "glibc.malloc.mmap_max=0:glibc.malloc.trim_threshold=68719476736",
                                            program, index, cold ? "cold" : "warm");
    FILE *const pipe = popen(command.c_str(), "r");
    if (!pipe)
        return false;
    row.job = &jobs()[index];
    row.mode = mode;
    long long peak = 0;
    const int read =
        std::fscanf(pipe, "%la %la %la %la %lld %la", &row.items, &row.bytes, &row.seconds, &row.copies, &peak, &row.error);
    row.peakBytes = peak;
    return pclose(pipe) == 0 && read == 6;
}
}  // namespace bench
