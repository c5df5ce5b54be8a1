#include <apps/offline/PlacedPoints.h>

#include <cstdint>

#include <host/bas/Parallel.h>

namespace rq::offline
{
namespace
{
// A point costs about 5 ns.
constexpr int64_t kPointsPerTask = 16384;

/// Whether 4 bytes behind the end of a buffer may be read: they may when they lie in one page with its last.
bool isPadded(const float *end)
{
    constexpr uintptr_t kSmallestPage = 4096;
    return reinterpret_cast<uintptr_t>(end) % kSmallestPage != 0;
}

/// The segments of the list that differ in their positions.
int movingSegments(const RQ_AttributeList &list)
{
    for (int segment = 1; segment < list.getSegments(); ++segment)
        if (list.get("P", segment) != list.get("P", 0))
            return list.getSegments();
    return 1;
}
}  // namespace

PlacedPoints::PlacedPoints(const RQ_AttributeListHandle &list, const std::vector<BAS_Mat4d> &matrices)
    : steps_(size_t(std::max(movingSegments(*list), int(matrices.size()))))
{
    entries_ = Positions(list->get("P")).entries();
    for (size_t i = 0; i < steps_.size(); ++i)
    {
        steps_[i].source = Positions(list->get("P", int(i)));
        if (steps_[i].source.entries() != entries_)
            steps_[i].source = Positions(list->get("P"));
        share(steps_[i], matrices[std::min(i, matrices.size() - 1)]);
    }
}

void PlacedPoints::share(Step &step, const BAS_Mat4d &matrix) const
{
    if (const float *flat = step.source.flat(); flat && matrix == BAS_Mat4d() && isPadded(flat + 3 * entries_))
    {
        step.points = reinterpret_cast<const BAS_Vec3f *>(flat);
        return;
    }
    step.own.resize(size_t(entries_) + 1);
    step.source.visit([&](auto &&read) {
        host::parallelFor(entries_, kPointsPerTask,
                          [&](int64_t i) { step.own[size_t(i)] = BAS_Vec3f(BAS_Vec3d(read(i)) * matrix); });
    });
    step.points = step.own.data();
    step.source = Positions();
}

BAS_Vec3f PlacedPoints::atTime(int64_t point, float time) const
{
    const Moment moment(time, steps());
    const BAS_Vec3f &first = at(point, moment.step);
    return moment.part > 0.0f ? first + (at(point, moment.step + 1) - first) * moment.part : first;
}

int64_t PlacedPoints::sharedBytes() const
{
    int64_t bytes = 0;
    for (const Step &step : steps_)
        bytes += step.own.empty() ? entries_ * int64_t(sizeof(BAS_Vec3f)) : 0;
    return bytes;
}
}  // namespace rq::offline
