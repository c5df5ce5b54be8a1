#pragma once

#include <algorithm>
#include <cstdint>
#include <numbers>
#include <vector>

#include <host/bas/NormalTree.h>
#include <host/bas/faceGeometry.h>

namespace host
{
/// The least cosine of the angle between two normals that count as one surface, and between one and the mean of all.
struct CuspCosines
{
    double pair;
    double mean;

    /// The cosines of 60 and 90 degrees are not exact, and 32-bit positions add 1e-7: the test includes its border.
    /// Angles below 0 count as 0, such above 180 as 180.
    explicit CuspCosines(double degrees)
        : pair(std::cos(std::clamp(degrees, 0.0, 180.0) * std::numbers::pi / 180.0) - 1e-6),
          mean(std::cos(std::clamp(degrees, 0.0, 180.0) * std::numbers::pi / 360.0) + 1e-6)
    {}

    /// True when unit vectors of such weights, whose sum has this length, surely lie within the angle of each other.
    ///
    /// What the sum lacks of the weights' sum is the sum of what each lacks of pointing its way.  Two that lie further than
    /// the angle from each other lack least together when both lie half of it from the sum; a millionth is for rounding.
    bool isSmooth(double length, double weights, double least) const
    {
        return kRounding * weights - length < slack() * least;
    }
    static constexpr double kRounding = 1.0 + 1e-6;
    double slack() const { return 2.0 * (1.0 - mean); }
};

/// The corners around one point, some of which may stand on different sides of a crease.
///
/// Threads  one object per thread, used for one point after the other
/// Cost     n log n for the n corners of a point whose faces lie around an axis, even where all stand on different sides
class CornerFan
{
public:
    void resize(int64_t corners)
    {
        normals_.resize(size_t(corners));
        parts_.resize(size_t(corners));
    }

    /// The unit normal of a corner's face, and what it adds to the normals of all corners on its side.
    void set(int64_t corner, const BAS_Vec3d &normal, double weight)
    {
        normals_[size_t(corner)] = normal;
        parts_[size_t(corner)] = normal * weight;
    }

    /// Call `write(corner, normal)` for every corner: the sum over those within the cusp angle of its own.
    template <class Write> void separate(const CuspCosines &cusp, bool normalize, Write &&write)
    {
        const size_t count = normals_.size();
        if (isNearMean(cusp.mean))
            return writeOne(normalize, write);
        if (count > kMany)
            tree_.build(normals_, parts_);
        for (size_t own = 0; own < count; ++own)
        {
            const BAS_Vec3d sum = count > kMany ? tree_.sumWithin(normals_[own], cusp.pair) : sumAround(own, cusp.pair);
            write(int64_t(own), normalize ? direction(sum) : sum);
        }
    }

private:
    // More than so many take less time with a tree than pair by pair.
    static constexpr size_t kMany = 512;

    // All corners of a smooth point share one sum, which spares a point of many faces the look at every pair.
    template <class Write> void writeOne(bool normalize, Write &&write) const
    {
        BAS_Vec3d sum(0.0);
        for (const BAS_Vec3d &part : parts_)
            sum += part;
        const BAS_Vec3d normal = normalize ? direction(sum) : sum;
        for (size_t i = 0; i < parts_.size(); ++i)
            write(int64_t(i), normal);
    }

    BAS_Vec3d sumAround(size_t own, double leastCosine) const
    {
        BAS_Vec3d sum(0.0);
        for (size_t i = 0; i < normals_.size(); ++i)
            if (i == own || normals_[own].dot(normals_[i]) >= leastCosine)
                sum += parts_[i];
        return sum;
    }

    bool isNearMean(double least) const
    {
        BAS_Vec3d mean(0.0);
        for (const BAS_Vec3d &normal : normals_)
            mean += normal;
        mean = direction(mean);
        return std::all_of(normals_.begin(), normals_.end(),
                           [&](const BAS_Vec3d &normal) { return mean.dot(normal) >= least; });
    }

    std::vector<BAS_Vec3d> normals_, parts_;
    NormalTree tree_;
};
}  // namespace host
