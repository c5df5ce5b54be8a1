#include <rq/surface/detail/curveHull.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include <host/bas/clones.h>
#include <rq/surface/detail/boxInBlocks.h>

namespace
{
// A vertex costs 1 ns.
constexpr int64_t kCurvesPerBlock = 2048;

// Values that are worked on together.
using Four = float __attribute__((vector_size(16)));
using Eight = float __attribute__((vector_size(32)));

// Values in a cache line, and how many lie between those that are worked on and those that are fetched: runs have too many
// instructions for the processor to look ahead that far by itself.
constexpr int64_t kLine = 16, kAhead = 1024;

constexpr float kSixth = 1.0f / 6.0f;

/// Values in a row, and a sixth of what lies between their neighbours.
template <class Register> struct Slope
{
    Register at, slope;

    explicit Slope(const float *values)
    {
        Register before, behind;
        std::memcpy(&at, values, sizeof(Register));
        std::memcpy(&before, values - 3, sizeof(Register));
        std::memcpy(&behind, values + 3, sizeof(Register));
        slope = (behind - before) * kSixth;
    }
};

/// The least and the greatest value of each lane, in as many registers as hold whole positions.
template <class Register, int kRegisters> struct Extremes
{
    static constexpr int kLanes = kRegisters * int(sizeof(Register) / sizeof(float));

    Register low[kRegisters], high[kRegisters];

    Extremes()
    {
        for (int i = 0; i < kRegisters; ++i)
        {
            low[i] = Register{} + std::numeric_limits<float>::infinity();
            high[i] = Register{} - std::numeric_limits<float>::infinity();
        }
    }

    // What is no number stays out.
    void take(int i, const Register &less, const Register &more)
    {
        low[i] = less < low[i] ? less : low[i];
        high[i] = more > high[i] ? more : high[i];
    }
    void takeBothWays(int i, const Slope<Register> &around)
    {
        const Register distance = around.slope > -around.slope ? around.slope : -around.slope;
        take(i, around.at - distance, around.at + distance);
    }

    /// Enlarge by the positions in some lanes, of which some may have seen no value.
    void addTo(BAS_BoundingBox &box, int first, int lanes) const
    {
        float lows[kLanes], highs[kLanes];
        std::memcpy(lows, low, sizeof(low));
        std::memcpy(highs, high, sizeof(high));
        BAS_Vec3f least(lows[first], lows[first + 1], lows[first + 2]);
        BAS_Vec3f most(highs[first], highs[first + 1], highs[first + 2]);
        for (int i = 3; i < lanes; ++i)
        {
            least[i % 3] = std::min(least[i % 3], lows[first + i]);
            most[i % 3] = std::max(most[i % 3], highs[first + i]);
        }
        if (least[0] > most[0] || least[1] > most[1] || least[2] > most[2])
            return;
        box.enlarge(least);
        box.enlarge(most);
    }
};
using InnerExtremes = Extremes<Eight, 3>;
using EndExtremes = Extremes<Four, 1>;
constexpr int kLanes = InnerExtremes::kLanes;
constexpr int64_t kLeastRun = 3;  // positions that fill a register

/// Consecutive packed positions that have neighbours on both sides, and more such runs at equal steps.
struct Run
{
    const float *values;
    int64_t count;  // of positions, at least kLeastRun
    int64_t step = 0, repeats = 1;
};

/// Extremes of positions moved both ways by a sixth of what lies between their neighbours.  With `ends` runs stand between
/// two more positions on each side, and what lies next to a run moves towards it only: into `heads`, lanes 0 to 2, and
/// `tails`, lanes 1 to 3.
HOST_CLONES void widenLanes(const Run *runs, int64_t count, bool ends, InnerExtremes &inner, EndExtremes &heads,
                            EndExtremes &tails)
{
    InnerExtremes all = inner;
    EndExtremes head = heads, tail = tails;
    for (const Run *run = runs; run != runs + count; ++run)
    {
        const float *values = run->values;
        for (int64_t repeat = 0; repeat < run->repeats; ++repeat, values += run->step)
        {
            const float *at = values;
            const float *const end = at + 3 * run->count;
            for (const float *line = at + kAhead; line < end + kAhead; line += kLine)
                __builtin_prefetch(line);
            for (; end - at >= kLanes; at += kLanes)
            {
                all.takeBothWays(0, Slope<Eight>(at));
                all.takeBothWays(1, Slope<Eight>(at + 8));
                all.takeBothWays(2, Slope<Eight>(at + 16));
            }
            // Of what is left the last values may be looked at twice: their axes are those of the last register.
            if (end - at > 8)
                all.takeBothWays(0, Slope<Eight>(at));
            if (end - at > 16)
                all.takeBothWays(1, Slope<Eight>(at + 8));
            if (end != at)
                all.takeBothWays(2, Slope<Eight>(end - 8));
            if (!ends)
                continue;
            // Four values at a time; behind the last position of all there may be none, before it there is.
            const Slope<Four> first(values - 3), last(end - 1);
            const Four out = first.at + first.slope, in = last.at - last.slope;
            head.take(0, first.at, first.at);
            head.take(0, out, out);
            tail.take(0, last.at, last.at);
            tail.take(0, in, in);
        }
    }
    inner = all;
    heads = head;
    tails = tail;
}

/// The box of packed Catmull-Rom curves: around each vertex lie the Bezier vertices of the spans that it joins.
class PackedHull
{
public:
    PackedHull(const float *positions, bool closed, int64_t curves) : positions_(positions), closed_(closed)
    {
        runs_.reserve(size_t(curves));
    }

    void add(int64_t first, int64_t count)
    {
        if (closed_)
            addClosed(first, count);
        else
            addOpen(first, count);
    }

    /// Some curves of `count` vertices each.
    void addAlike(int64_t first, int64_t count, int64_t curves)
    {
        if (!closed_ && count - 4 >= kLeastRun)
            return runs_.push_back({positions_ + 3 * (first + 2), count - 4, 3 * count, curves});
        for (int64_t curve = 0; curve < curves; ++curve)
            add(first + curve * count, count);
    }

    BAS_BoundingBox box()
    {
        EndExtremes heads, tails;
        widenLanes(runs_.data(), int64_t(runs_.size()), !closed_, lanes_, heads, tails);
        runs_.clear();
        BAS_BoundingBox box = box_;
        lanes_.addTo(box, 0, kLanes);
        heads.addTo(box, 0, 3);
        tails.addTo(box, 1, 3);
        return box;
    }

private:
    void addOpen(int64_t first, int64_t count)
    {
        if (count < 4)
            return;
        const int64_t inner = count - 4, last = first + count - 1;
        if (inner >= kLeastRun)
            return runs_.push_back({positions_ + 3 * (first + 2), inner});
        addVertex(first, first + 1, first + 2, 0.0f, 1.0f);
        addVertex(last - 2, last - 1, last, 1.0f, 0.0f);
        addInner(first + 2, inner);
    }

    void addClosed(int64_t first, int64_t count)
    {
        if (count < 3)
            return;
        const int64_t inner = count - 2, last = first + count - 1;
        addVertex(last, first, first + 1, 1.0f, 1.0f);
        addVertex(last - 1, last, first, 1.0f, 1.0f);
        if (inner >= kLeastRun)
            runs_.push_back({positions_ + 3 * (first + 1), inner});
        else
            addInner(first + 1, inner);
    }

    void addInner(int64_t first, int64_t count)
    {
        for (int64_t i = first; i < first + count; ++i)
            addVertex(i - 1, i, i + 1, 1.0f, 1.0f);
    }

    /// `in` and `out` are 1 where a span ends and begins, 0 where none does.
    void addVertex(int64_t before, int64_t at, int64_t behind, float in, float out)
    {
        BAS_Vec3f ends[2];
        for (int axis = 0; axis < 3; ++axis)
        {
            const float value = positions_[3 * at + axis];
            const float slope = (positions_[3 * behind + axis] - positions_[3 * before + axis]) * kSixth;
            ends[0][axis] = value - in * slope;
            ends[1][axis] = value + out * slope;
        }
        box_.enlarge(ends[0]);
        box_.enlarge(ends[1]);
    }

    const float *positions_;
    bool closed_;
    BAS_BoundingBox box_;
    InnerExtremes lanes_;
    std::vector<Run> runs_;
};
}  // namespace

void rq::enlargeByHull(BAS_BoundingBox &box, const SpanShapes &shapes, const float *positions)
{
    addInBlocks(box, shapes.curves(), kCurvesPerBlock, [&](BAS_BoundingBox &part, int64_t begin, int64_t end) {
        PackedHull hull(positions, shapes.wraps(), end - begin);
        if (shapes.uniform())
            hull.addAlike(shapes.firstVertex(begin), shapes.vertices(begin), end - begin);
        for (int64_t curve = begin; curve < end && !shapes.uniform(); ++curve)
            hull.add(shapes.firstVertex(curve), shapes.vertices(curve));
        part = hull.box();
    });
}
