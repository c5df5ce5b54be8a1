#include <rq/surface/detail/FanSums.h>

#include <algorithm>
#include <numeric>

#include <rq/surface/detail/tangentFace.h>

namespace rq
{
namespace
{
BAS_Vec3f unit(const BAS_Vec3f &v)
{
    const bool hasDirection = std::max({std::abs(v.x), std::abs(v.y), std::abs(v.z)}) > kNoLength;
    const float squared = v.length2();
    return hasDirection && squared > 0.0f ? v * (1.0f / std::sqrt(squared)) : v;
}
}  // namespace

struct FanSums::Group
{
    std::span<const FanTriangle> fan;
    const TangentLanes &lanes;
    int64_t first;
    std::span<const int> members;

    const FanTriangle &triangle(int member) const { return fan[size_t(member)]; }

    float cosineU(int a, int b) const { return lanes.alongU(first + a).dot(lanes.alongU(first + b)); }
    float cosineV(int a, int b) const { return lanes.alongV(first + a).dot(lanes.alongV(first + b)); }

    /// Whether it is plain that no two textures grow the opposite way: all are on one side of the first.
    bool isPlain() const
    {
        constexpr float kOneSide = 0.1f;
        return std::all_of(members.begin() + 1, members.end(), [&](int member) {
            return triangle(member).isFree ||
                   (cosineU(members[0], member) > kOneSide && cosineV(members[0], member) > kOneSide);
        });
    }

    bool areTogether(int a, int b) const
    {
        if (triangle(a).isFree || triangle(b).isFree || triangle(a).face == triangle(b).face)
            return true;
        return cosineU(a, b) > -1.0f && cosineV(a, b) > -1.0f;
    }

    template <class Takes> BAS_Vec3f sum(Takes &&takes) const
    {
        BAS_Vec3f total(0.0f);
        for (const int member : members)
            if (!triangle(member).isFree && takes(member))
                total += lanes.weighted(first + member);
        return unit(total);
    }
};

BAS_Vec3f FanSums::average(const BAS_Vec3f &a, const BAS_Vec3f &b) { return a == b ? a : unit(a + b); }

void FanSums::listGroups(std::span<const FanTriangle> fan)
{
    members_.clear();
    for (size_t i = 0; i < fan.size(); ++i)
        if (fan[i].group >= 0)
            members_.push_back(int(i));
    std::stable_sort(members_.begin(), members_.end(),
                     [&](int a, int b) { return fan[size_t(a)].group < fan[size_t(b)].group; });
}

void FanSums::sum(const Group &group)
{
    // Each triangle of a group that is not plain looks at all others.  No vertex of a model has so many.
    constexpr size_t kMost = 1024;
    if (group.isPlain() || group.members.size() > kMost)
    {
        const BAS_Vec3f tangent = group.sum([](int) { return true; });
        for (const int member : group.members)
            tangents_[size_t(member)] = tangent;
        return;
    }
    for (const int member : group.members)
        tangents_[size_t(member)] = group.sum([&](int other) { return group.areTogether(member, other); });
}

void FanSums::run(std::span<const FanTriangle> fan, const TangentLanes &lanes, int64_t first)
{
    if (tangents_.size() < fan.size())
    {
        tangents_.resize(fan.size());
        counting_.resize(fan.size());
        std::iota(counting_.begin(), counting_.end(), 0);
    }
    if (std::all_of(fan.begin(), fan.end(), [](const FanTriangle &triangle) { return triangle.group == 0; }))
    {
        if (!fan.empty())
            sum({fan, lanes, first, std::span<const int>(counting_).first(fan.size())});
        return;
    }
    listGroups(fan);
    const auto groupOf = [&](size_t i) { return fan[size_t(members_[i])].group; };
    for (size_t begin = 0, end = 0; begin < members_.size(); begin = end)
    {
        while (end < members_.size() && groupOf(end) == groupOf(begin))
            ++end;
        sum({fan, lanes, first, std::span<const int>(members_).subspan(begin, end - begin)});
    }
}
}  // namespace rq
