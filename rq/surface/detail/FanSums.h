#pragma once

#include <functional>
#include <span>
#include <vector>

#include <rq/surface/detail/tangentFan.h>

namespace rq
{
/// The tangents of the triangles of fans, whose groups are known.
class FanSums
{
public:
    /// The directions in which u and v grow at a triangle, in the plane of the vertex's normal.
    struct Directions
    {
        BAS_Vec3f u, v;
    };

    /// Finds those of all triangles of a fan.
    using Look = std::function<void(std::span<const FanTriangle> fan, Directions *directions)>;

    explicit FanSums(Look look) : look_(std::move(look)) {}

    /// Add up each group of a fan.  A triangle's sum leaves out those of its group whose texture grows exactly the other
    /// way.
    void run(std::span<const FanTriangle> fan);

    /// The tangent of a triangle of the fan; of no meaning for one without a group.
    const BAS_Vec3f &tangent(int64_t triangle) const { return tangents_[size_t(triangle)]; }

    /// The unit vector along a sum; the sum itself when that is nothing.
    static BAS_Vec3f directionOf(const BAS_Vec3f &sum);

    /// Of the tangents that the two triangles of a quad leave at one corner.
    static BAS_Vec3f average(const BAS_Vec3f &a, const BAS_Vec3f &b);

private:
    struct Group;

    void listGroups(std::span<const FanTriangle> fan);
    void sum(const Group &group);

    Look look_;
    std::vector<Directions> directions_;  // of the fan at hand, empty as long as no group of it needs them
    std::vector<int> members_;            // of all groups, group by group, in the order of the fan
    std::vector<BAS_Vec3f> tangents_;
};
}  // namespace rq
