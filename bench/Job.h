#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace bench
{
/// How often a job is run; its median counts.
constexpr int kRepetitions = 7;

/// What a job does, with its inputs made.
struct Work
{
    /// Does the whole job once and returns what is to be freed untimed.
    std::function<std::shared_ptr<void>()> run;

    /// Runs once before timing: the correctness figure of the row (an error, 0 is perfect).
    std::function<double()> check;

    /// In place of the job's, where they are known only with the input.
    double items = 0.0;
    double bytes = 0.0;

    /// In place of `run`: how many seconds the job takes a program that times itself.
    std::function<double()> time = nullptr;
};

/// One measured job.  Rows of equal `job`, `mesh` and `threads` are set side by side in the report.
struct Job
{
    std::string job;
    std::string mesh;
    std::string who;
    int threads;
    double items;  ///< what nanoseconds are counted over
    double bytes;  ///< the job's own input read once and its own output written once; 0 when it is no matter of memory
    bool cold;     ///< whether it is worth timing in memory that is fresh from the system

    /// Makes the inputs.
    std::function<Work()> prepare;

    std::string name() const { return job + "/" + mesh + "/" + who; }
};

/// Enter a job.  Jobs run in the order of entry, each in a process of its own.
void add(Job job);

const std::vector<Job> &jobs();

/// Hold a result until it may be freed.
template <class T> std::shared_ptr<void> keep(T value) { return std::make_shared<T>(std::move(value)); }
}  // namespace bench
