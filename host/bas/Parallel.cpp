#include <host/bas/Parallel.h>

#include <tbb/blocked_range.h>
#include <tbb/global_control.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

int BAS_Threads::processors()
{
    return std::max(1, tbb::this_task_arena::max_concurrency());
}

bool BAS_Threads::enabled()
{
    return tbb::global_control::active_value(tbb::global_control::max_allowed_parallelism) > 1;
}

BAS_Threads::Limit::Limit(int workers)
    : control_(new tbb::global_control(tbb::global_control::max_allowed_parallelism, size_t(std::max(1, workers))))
{
}

BAS_Threads::Limit::~Limit()
{
    delete static_cast<tbb::global_control *>(control_);
}

void host::parallelRun(int64_t count, int64_t grain, RangeFunction function, void *context)
{
    if (count <= 0)
        return;
    grain = std::max<int64_t>(1, grain);
    if (count <= grain || !BAS_Threads::enabled())
        return function(context, 0, count);
    tbb::parallel_for(tbb::blocked_range<int64_t>(0, count, size_t(grain)), [=](const tbb::blocked_range<int64_t> &range) {
        function(context, range.begin(), range.end());
    });
}
