#pragma once

#include <bench/Job.h>
#include <bench/meshes.h>
#include <rq/data/DANumeric.h>
#include <rq/data/convert.h>

namespace bench
{
/// Values of the jobs on plain arrays: 64 MiB of 32-bit ones, more than the caches of most machines hold.
constexpr int64_t kValues = int64_t(16) << 20;

/// Rows of three floats of the gathering jobs.
constexpr int64_t kRows = int64_t(4) << 20;

/// An array of `entries` tuples in -100 to 100, or 0 to 100 where the type has no sign.
template <RQ_NumericValue T> BAS_IntrusivePtr<RQ_DANumeric<T>> makeNumbers(int64_t entries, int64_t tuple = 1)
{
    const BAS_IntrusivePtr<RQ_DANumeric<T>> array(new RQ_DANumeric<T>(entries, tuple));
    Random random(7);
    for (int64_t i = 0; i < entries * tuple; ++i)
    {
        const float value = 100.0f * random.symmetric();
        array->data()[i] = RQconvert<T>(std::same_as<T, uint8_t> ? std::abs(value) : value);
    }
    return array;
}
}  // namespace bench
