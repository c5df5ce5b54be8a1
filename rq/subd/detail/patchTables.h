#pragma once

#include <memory>
#include <vector>

#include <rq/subd/detail/cage.h>

namespace rq
{
struct Refiner;

/// Four numbers that are computed with as one.
struct Four
{
    using Lanes = float __attribute__((vector_size(16)));
    Lanes lanes = {};
};

/// A place in a patch's face and what the surface is there.
struct PatchSample
{
    int32_t face;  ///< as `PatchTables::faceOf` numbers them
    float u, v;
    Four value, du, dv;
};

/// The limit surface of a cage as patches, and how their control points follow from the cage's points, or from the values of
/// one of its channels.
struct PatchTables : BAS_IntrusiveRefCounter<PatchTables>
{
    static constexpr int kPoints = -1;

    PatchTables(const Cage &cage, const Refiner &base, int channel = kPoints);
    ~PatchTables();

    /// The number under which patches know a face, or the quad at a corner of one; -1 where there is none.
    int32_t faceOf(int64_t face, int64_t corner) const;

    /// Number of control points: those of the cage (or values of the channel), and behind them what is computed.
    int64_t controlPoints() const;

    /// Compute the control points behind those of the cage, in parallel.
    void computeControls(Four *controls) const;

    /// Fill in the results of some samples.  False when some of them have no patch: their results stay as they are.
    bool evaluate(const Four *controls, PatchSample *samples, int64_t count) const;

    int64_t getMemoryUsage() const;

    struct Osd;

private:
    bool evaluateVarying(const Four *controls, PatchSample *samples, int64_t count) const;

    std::unique_ptr<Osd> osd_;
    std::vector<int32_t> firstQuad_;  // of each face and one past the last; none for a cage whose faces all count as one
    int32_t faces_;
};
}  // namespace rq
