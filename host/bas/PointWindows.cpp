#include <host/bas/PointWindows.h>

#include <limits>

#include <host/bas/clones.h>

namespace
{
template <class Index> HOST_CLONES void extremes(const Index *points, int64_t count, Index &leastTo, Index &greatestTo)
{
    Index least = std::numeric_limits<Index>::max(), greatest = 0;
    for (int64_t i = 0; i < count; ++i)
    {
        least = std::min(least, points[i]);
        greatest = std::max(greatest, points[i]);
    }
    leastTo = std::min(least, greatest);
    greatestTo = greatest;
}

template <class Index> host::PointSpan span(const Index *points, int64_t count)
{
    Index least, greatest;
    extremes(points, count, least, greatest);
    return {least, greatest};
}
}  // namespace

namespace host
{
PointSpan spanOf(const int32_t *points, int64_t count) { return span(points, count); }
PointSpan spanOf(const int64_t *points, int64_t count) { return span(points, count); }
}  // namespace host
