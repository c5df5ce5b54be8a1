#pragma once

#include <cstdint>
#include <vector>

#include <host/bas/LargeBlocks.h>

namespace rq
{
struct LevelSize;
struct Refiner;

/// The faces of a level that lie among quads only, four around each of their points, without creases: what a few steps make
/// of such a face follows from the sixteen points around it, without the levels between.
///
/// Threads  runs in parallel over faces; the bits do not depend on the number of threads
/// Cost     4 bytes a point that is made, and 64 a face
class RegularPatches
{
public:
    /// The most steps a patch takes: its points stay in the first-level cache.
    static constexpr int kMostSteps = 3;

    RegularPatches() = default;

    /// Of the Catmull-Clark level `base`.  `corners` are those of the faces of `level`, 1 to kMostSteps below, and as
    /// `childPoints` numbers them; `size` is that level's.  Empty when few faces are regular.
    RegularPatches(const Refiner &refiner, int base, int level, const int32_t *corners, const LevelSize &size);

    bool isEmpty() const { return faces_.empty(); }

    /// For each point of the last level whether it remains to be made by other means; empty when all do.
    std::vector<uint8_t> missingPoints() const;

    /// Write the values of all points that patches make: `tuple` components a point.
    void interpolate(const float *from, int64_t tuple, float *to) const { run(from, tuple, to); }
    void interpolate(const double *from, int64_t tuple, double *to) const { run(from, tuple, to); }

    int64_t getMemoryUsage() const;

private:
    using Numbers = std::vector<int32_t, BAS_BlockAllocator<int32_t>>;

    static constexpr int kControls = 16;

    template <class T> void run(const T *from, int64_t tuple, T *to) const;
    template <class T, int N> void runComponents(const T *from, int64_t tuple, T *to) const;

    int side() const { return (1 << steps_) + 1; }

    int steps_ = 0;
    int64_t points_ = 0;          // of the last level
    std::vector<int32_t> faces_;  // of the base level
    Numbers controls_;            // a grid of four by four points a face
    Numbers made_;                // for each face a grid of its points of the last level, -1 where another makes it
};
}  // namespace rq
