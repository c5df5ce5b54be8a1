#pragma once

#include <vector>

#include <host/bas/detail/CornerTree.h>

namespace host
{
/// The corners of one polygon that may lie in an ear: those that are not convex.
///
/// Cost  a list in small polygons, a tree in large ones; buffers are kept from run to run
class EarObstacles
{
public:
    /// None yet.  The points must stay.
    void begin(const BAS_Vec2d *points, int count, bool isLarge);

    void add(int corner);
    void remove(int corner);
    bool empty() const { return count_ == 0; }

    /// Call `visit(corner)` for obstacles in or near the counter-clockwise triangle until it answers false.  None inside or
    /// on the border is missed; some outside are visited.
    template <class Visit> void visitNear(const BAS_Vec2d &a, const BAS_Vec2d &b, const BAS_Vec2d &c, Visit &&visit) const
    {
        if (isLarge_)
            return tree_.visitNear(a, b, c, visit);
        for (const int corner : list_)
            if (!visit(corner))
                return;
    }

private:
    bool isLarge_ = false;
    int count_ = 0;
    std::vector<int> list_, placeInList_;  // small polygons
    CornerTree tree_;                      // large polygons
};

inline void EarObstacles::begin(const BAS_Vec2d *points, int count, bool isLarge)
{
    isLarge_ = isLarge;
    count_ = 0;
    list_.clear();
    if (isLarge)
        tree_.build(points, count);
    else if (placeInList_.size() < size_t(count))
        placeInList_.resize(count);
}

inline void EarObstacles::add(int corner)
{
    ++count_;
    if (isLarge_)
        return tree_.insert(corner);
    placeInList_[corner] = int(list_.size());
    list_.push_back(corner);
}

inline void EarObstacles::remove(int corner)
{
    --count_;
    if (isLarge_)
        return tree_.remove(corner);
    const int place = placeInList_[corner], moved = list_.back();
    list_[place] = moved;
    placeInList_[moved] = place;
    list_.pop_back();
}
}  // namespace host
