#pragma once

#include <bench/Job.h>

namespace bench
{
enum class Mode
{
    warm,  ///< memory that was touched before: judges the code
    cold   ///< every large block fresh from the system: judges the allocation policy
};

/// What was measured of a job.
struct Row
{
    const Job *job = nullptr;
    Mode mode = Mode::warm;
    double items = 0.0;
    double bytes = 0.0;
    double seconds = 0.0;
    double copies = 0.0;  ///< the job's time over that of a memory copy of the same traffic
    int64_t peakBytes = 0;
    double error = 0.0;
};

/// Time a job in this process: the median processor time on one thread, the median wall time on more.
Row measure(const Job &job, Mode mode);

/// The same in a process of its own, whose heap keeps or returns large blocks as the mode asks.  False when it failed.
bool measureApart(size_t index, Mode mode, Row &row);

/// What that process does: measure the job and print the row for `measureApart`.
void measureForParent(size_t index, Mode mode);
}  // namespace bench
