#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include <host/bas/predicates.h>

namespace host
{
/// A set of corners of one polygon that answers which of them may lie in a triangle.
///
/// A binary tree over all corners, halved along the longer side of each box; every node counts its members, so that corners
/// enter and leave the set without touching the tree.
/// Cost  building n log n; a query reads about sqrt(n) nodes plus the members near the triangle
class CornerTree
{
public:
    /// Sort `count` corners into the tree; the set is empty.
    void build(const BAS_Vec2d *points, int count);

    void insert(int corner) { addToMembers(corner, 1); }
    void remove(int corner) { addToMembers(corner, -1); }

    /// Call `visit(corner)` for members in or near the counter-clockwise triangle until it answers false.  None inside or on
    /// the border is missed; some outside are visited.
    template <class Visit> void visitNear(const BAS_Vec2d &a, const BAS_Vec2d &b, const BAS_Vec2d &c, Visit &&visit) const;

private:
    struct Node
    {
        BAS_Vec2d min, max;
        int members = 0;
    };

    void addToMembers(int corner, int change);
    void divide(int node, int begin, int end, const BAS_Vec2d *points);
    int leafBegin(int leaf) const { return int(int64_t(order_.size()) * leaf / leaves_); }
    static bool beyond(const Node &node, const BAS_Vec2d &a, const BAS_Vec2d &b);

    int leaves_ = 1;           // a power of two; the children of node k are 2 k and 2 k + 1, the root is 1
    std::vector<Node> nodes_;  // leaf l is node leaves_ + l
    std::vector<int> order_;   // corners, leaf by leaf
    std::vector<int> leafOf_;
    std::vector<uint8_t> member_;
};

inline void CornerTree::addToMembers(int corner, int change)
{
    member_[corner] = change > 0;
    for (int node = leaves_ + leafOf_[corner]; node > 0; node /= 2)
        nodes_[node].members += change;
}

/// True when the whole box lies to the right of the line from a to b, by more than rounding could hide.
inline bool CornerTree::beyond(const Node &node, const BAS_Vec2d &a, const BAS_Vec2d &b)
{
    const double dx = b.x - a.x, dy = b.y - a.y;
    const double up = dx * ((dx > 0.0 ? node.max.y : node.min.y) - a.y);
    const double across = dy * ((dy > 0.0 ? node.min.x : node.max.x) - a.x);
    return up - across < -1e-15 * (std::abs(up) + std::abs(across));
}

template <class Visit>
void CornerTree::visitNear(const BAS_Vec2d &a, const BAS_Vec2d &b, const BAS_Vec2d &c, Visit &&visit) const
{
    const double minX = std::min({a.x, b.x, c.x}), maxX = std::max({a.x, b.x, c.x});
    const double minY = std::min({a.y, b.y, c.y}), maxY = std::max({a.y, b.y, c.y});
    int stack[64], depth = 0;
    stack[depth++] = 1;
    while (depth > 0)
    {
        const int k = stack[--depth];
        const Node &node = nodes_[k];
        if (node.members == 0 || node.min.x > maxX || node.max.x < minX || node.min.y > maxY || node.max.y < minY ||
            beyond(node, a, b) || beyond(node, b, c) || beyond(node, c, a))
            continue;
        if (k < leaves_)
        {
            stack[depth++] = 2 * k + 1;
            stack[depth++] = 2 * k;
            continue;
        }
        for (int i = leafBegin(k - leaves_), end = leafBegin(k - leaves_ + 1); i < end; ++i)
            if (member_[order_[i]] && !visit(order_[i]))
                return;
    }
}
}  // namespace host
