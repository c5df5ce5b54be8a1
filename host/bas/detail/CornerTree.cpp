#include <host/bas/detail/CornerTree.h>

#include <algorithm>
#include <bit>
#include <numeric>

namespace host
{
namespace
{
// Eight corners are tested about as fast as one more level is descended.
constexpr int kCornersPerLeaf = 8;
}  // namespace

void CornerTree::build(const BAS_Vec2d *points, int count)
{
    leaves_ = int(std::bit_ceil(unsigned(std::max(1, count / kCornersPerLeaf))));
    nodes_.assign(2 * size_t(leaves_), Node());
    order_.resize(count);
    std::iota(order_.begin(), order_.end(), 0);
    leafOf_.resize(count);
    member_.assign(count, 0);
    divide(1, 0, leaves_, points);
}

void CornerTree::divide(int node, int begin, int end, const BAS_Vec2d *points)
{
    const auto first = order_.begin() + leafBegin(begin), last = order_.begin() + leafBegin(end);
    Node &box = nodes_[node];
    box.min = box.max = points[*first];
    for (auto corner = first; corner != last; ++corner)
    {
        const BAS_Vec2d &p = points[*corner];
        box.min = {std::min(box.min.x, p.x), std::min(box.min.y, p.y)};
        box.max = {std::max(box.max.x, p.x), std::max(box.max.y, p.y)};
    }
    if (end - begin == 1)
    {
        for (auto corner = first; corner != last; ++corner)
            leafOf_[*corner] = begin;
        return;
    }
    const int middle = (begin + end) / 2;
    const bool byX = box.max.x - box.min.x > box.max.y - box.min.y;
    std::nth_element(first, order_.begin() + leafBegin(middle), last,
                     [points, byX](int a, int b) { return byX ? points[a].x < points[b].x : points[a].y < points[b].y; });
    divide(2 * node, begin, middle, points);
    divide(2 * node + 1, middle, end, points);
}
}  // namespace host
