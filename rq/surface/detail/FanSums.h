#pragma once

#include <span>
#include <vector>

#include <rq/surface/detail/TangentLanes.h>
#include <rq/surface/detail/tangentFan.h>

namespace rq
{
/// The tangents of the triangles of fans, whose groups are known.
class FanSums
{
public:
    /// Add up each group of a fan, whose triangles begin at `first` in the lanes.  A triangle's sum leaves out those of its
    /// group whose texture grows exactly the other way.
    void run(std::span<const FanTriangle> fan, const TangentLanes &lanes, int64_t first);

    /// The tangent of a triangle of the fan; of no meaning for one without a group.
    const BAS_Vec3f &tangent(int64_t triangle) const { return tangents_[size_t(triangle)]; }

    /// Of the tangents that the two triangles of a quad leave at one corner.
    static BAS_Vec3f average(const BAS_Vec3f &a, const BAS_Vec3f &b);

private:
    struct Group;

    void listGroups(std::span<const FanTriangle> fan);
    void sum(const Group &group);

    std::vector<int> counting_;  // 0, 1, 2, ...: the members of a group that is all of its fan
    std::vector<int> members_;   // of all groups, group by group, in the order of the fan
    std::vector<BAS_Vec3f> tangents_;
};
}  // namespace rq
