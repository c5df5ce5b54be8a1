#pragma once

#include <vector>

#include <apps/offline/Affine.h>
#include <rq/attrib/AttributeList.h>
#include <rq/data/Positions.h>

namespace rq::offline
{
/// The positions "P" of a primitive in the space that rays search, at every step of its motion.
///
/// Shape      as many steps as the positions or the matrices have segments, whichever are more; one where nothing moves
/// Ownership  holds the arrays
/// Cost       positions that are packed 32-bit floats and stay where they are, are not copied
class PlacedPoints
{
public:
    /// One matrix per segment of the primitive's placement.
    PlacedPoints(const RQ_AttributeListHandle &list, const std::vector<BAS_Mat4d> &matrices);

    int steps() const { return int(steps_.size()); }
    int64_t entries() const { return entries_; }
    const BAS_Vec3f &at(int64_t point, int step) const { return steps_[size_t(step)].points[point]; }
    BAS_Vec3f atTime(int64_t point, float time) const;

    /// All of one step, with readable memory behind the last one for those who read 16 bytes at a time.
    const BAS_Vec3f *data(int step) const { return steps_[size_t(step)].points; }

    /// How many bytes are read where the primitive has them.
    int64_t sharedBytes() const;

private:
    struct Step
    {
        Positions source;
        std::vector<BAS_Vec3f> own;
        const BAS_Vec3f *points = nullptr;
    };
    void share(Step &step, const BAS_Mat4d &matrix) const;

    std::vector<Step> steps_;
    int64_t entries_ = 0;
};
}  // namespace rq::offline
