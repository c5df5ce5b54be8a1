#pragma once

#include <algorithm>

#include <host/bas/Vector.h>

/// An axis-aligned box of 32-bit floats.
///
/// Units    those of the points added
/// Failure  not-a-number coordinates are skipped: they never enlarge a box
class BAS_BoundingBox
{
public:
    /// The bounds of an empty box: minimum +kEmpty, maximum -kEmpty on every axis.
    static constexpr float kEmpty = 1.7014117331926443e38f;

    BAS_BoundingBox() = default;
    BAS_BoundingBox(const BAS_Vec3f &minimum, const BAS_Vec3f &maximum) : min_(minimum), max_(maximum) {}

    const BAS_Vec3f &minimum() const { return min_; }
    const BAS_Vec3f &maximum() const { return max_; }

    /// True while nothing was added.
    bool isEmpty() const { return min_.x > max_.x || min_.y > max_.y || min_.z > max_.z; }

    void makeEmpty() { *this = BAS_BoundingBox(); }

    void enlarge(const BAS_Vec3f &point)
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            // The comparison is false for a not-a-number coordinate.
            min_[axis] = point[axis] < min_[axis] ? point[axis] : min_[axis];
            max_[axis] = point[axis] > max_[axis] ? point[axis] : max_[axis];
        }
    }

    void enlarge(const BAS_BoundingBox &box)
    {
        for (int axis = 0; axis < 3; ++axis)
        {
            min_[axis] = std::min(min_[axis], box.min_[axis]);
            max_[axis] = std::max(max_[axis], box.max_[axis]);
        }
    }

    /// Move every side outward by `margin`.
    void expand(float margin)
    {
        min_ -= BAS_Vec3f(margin);
        max_ += BAS_Vec3f(margin);
    }

    BAS_Vec3f centre() const { return (min_ + max_) * 0.5f; }
    BAS_Vec3f size() const { return max_ - min_; }

    bool operator==(const BAS_BoundingBox &) const = default;

private:
    BAS_Vec3f min_{kEmpty};
    BAS_Vec3f max_{-kEmpty};
};
