#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace bench
{
/// One measured job.  Rows of equal `job` and `mesh` are set side by side in the report.
struct Job
{
    std::string job;
    std::string mesh;
    std::string who;
    int threads;
    double items;  ///< what nanoseconds are counted over
    double bytes;  ///< the job's own input read once and its own output written once

    /// Does the whole job once and returns what must be freed untimed.
    std::function<std::function<void()>()> run;

    /// Runs once before timing: the correctness figure of the row (an error, 0 is perfect).
    std::function<double()> check;
};

/// Enter a job.  A program's jobs run in the order of entry.
void add(Job job);
}  // namespace bench
