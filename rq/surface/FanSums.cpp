#include <rq/surface/detail/FanSums.h>

#include <algorithm>
#include <cmath>

#include <rq/surface/detail/tangentFace.h>

namespace rq
{
struct FanSums::Group
{
    std::span<const FanTriangle> fan;
    std::span<const int> members;

    const FanTriangle &triangle(int member) const { return fan[size_t(member)]; }

    /// Whether it is plain that no two textures grow the opposite way: all have a side in common.
    bool isPlain() const
    {
        uint32_t marks = MARK_SIDES_U | MARK_SIDES_V;
        for (const int member : members)
            marks &= triangle(member).isFree ? marks : triangle(member).marks;
        return (marks & MARK_SIDES_U) && (marks & MARK_SIDES_V);
    }

    bool areTogether(int a, int b, const std::vector<Directions> &directions) const
    {
        if (triangle(a).isFree || triangle(b).isFree || triangle(a).face == triangle(b).face)
            return true;
        const Directions &atA = directions[size_t(a)], &atB = directions[size_t(b)];
        return atA.u.dot(atB.u) > -1.0f && atA.v.dot(atB.v) > -1.0f;
    }

    template <class Takes> BAS_Vec3f sum(Takes &&takes) const
    {
        BAS_Vec3f total(0.0f);
        for (const int member : members)
            if (!triangle(member).isFree && takes(member))
                total += triangle(member).weighted;
        return directionOf(total);
    }
};

BAS_Vec3f FanSums::directionOf(const BAS_Vec3f &sum)
{
    const bool hasDirection = std::max({std::abs(sum.x), std::abs(sum.y), std::abs(sum.z)}) > kNoLength;
    const float squared = sum.length2();
    return hasDirection && squared > 0.0f ? sum * (1.0f / std::sqrt(squared)) : sum;
}

BAS_Vec3f FanSums::average(const BAS_Vec3f &a, const BAS_Vec3f &b) { return a == b ? a : directionOf(a + b); }

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
    if (directions_.empty())
    {
        directions_.resize(group.fan.size());
        look_(group.fan, directions_.data());
    }
    for (const int member : group.members)
        tangents_[size_t(member)] = group.sum([&](int other) { return group.areTogether(member, other, directions_); });
}

void FanSums::run(std::span<const FanTriangle> fan)
{
    tangents_.resize(fan.size());
    directions_.clear();
    listGroups(fan);
    const auto groupOf = [&](size_t i) { return fan[size_t(members_[i])].group; };
    for (size_t begin = 0, end = 0; begin < members_.size(); begin = end)
    {
        while (end < members_.size() && groupOf(end) == groupOf(begin))
            ++end;
        sum({fan, std::span<const int>(members_).subspan(begin, end - begin)});
    }
}
}  // namespace rq
