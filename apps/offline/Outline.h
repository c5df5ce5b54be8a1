#pragma once

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <apps/offline/Affine.h>

namespace rq::offline
{
inline bool isFinite(const BAS_Vec3f &v) { return std::isfinite(v.x + v.y + v.z); }

/// Enough points of a scene to frame it, and the height of its lowest.
class Outline
{
public:
    Outline() = default;

    /// What is added is placed first.
    explicit Outline(const Affine &placing) : placing_(placing) {}

    /// Every how-manieth of `count` elements takes part in framing.
    static int64_t stride(int64_t count)
    {
        constexpr int64_t kMost = 50000;
        return std::max<int64_t>(1, count / kMost);
    }

    /// Take in a ball, unless it lies nowhere; it decides about the height even where it does not frame.
    void add(const BAS_Vec3f &centre, float radius, bool frames);

    const std::vector<BAS_Vec3f> &points() const { return points_; }

    /// -1, the floor of the unit sphere, when nothing was taken in.
    float lowest() const { return std::isfinite(lowest_) ? lowest_ : -1.0f; }

private:
    Affine placing_;
    std::vector<BAS_Vec3f> points_;
    float lowest_ = std::numeric_limits<float>::infinity();
};
}  // namespace rq::offline
