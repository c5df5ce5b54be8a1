#pragma once

#include <atomic>

#include <host/bas/CornerAdjacency.h>
#include <host/bas/Published.h>

namespace rq
{
/// What follows from the faces of a mesh alone, made when first wanted and shared by all meshes of the same faces.
///
/// Threads  safe from any thread
class SharedTopology : public BAS_IntrusiveRefCounter<SharedTopology>
{
    template <class Index> struct Counted : host::CornerAdjacency<Index>, BAS_IntrusiveRefCounter<Counted<Index>>
    {
        using host::CornerAdjacency<Index>::CornerAdjacency;
    };

public:
    /// The corners around each of `points` points.
    template <class Topology> class Adjacency
    {
    public:
        using Index = typename Topology::Index;
        using Corners = host::CornerAdjacency<Index>;

        Adjacency(const SharedTopology &shared, int64_t points, const Topology &topology)
        {
            const auto build = [&] { return BAS_IntrusivePtr<const Counted<Index>>(new Counted<Index>(points, topology)); };
            const Counted<Index> &cached = shared.place<Index>().getOrBuild(build);
            corners_ = cached.points() == points ? BAS_IntrusivePtr<const Counted<Index>>(&cached) : build();
        }

        const Corners &operator*() const { return *corners_; }

    private:
        BAS_IntrusivePtr<const Counted<Index>> corners_;
    };

    /// Whether some mesh of these faces has found that they use each of so many points.
    bool usesAll(int64_t points) const { return used_.load(std::memory_order_relaxed) == points; }
    void noteUsesAll(int64_t points) const { used_.store(points, std::memory_order_relaxed); }

    int64_t getMemoryUsage() const
    {
        return int64_t(sizeof(*this)) + (narrow_.get() ? narrow_.get()->memoryUsage() : 0) +
               (wide_.get() ? wide_.get()->memoryUsage() : 0);
    }

private:
    template <class Index> const host::Published<Counted<Index>> &place() const
    {
        if constexpr (sizeof(Index) == sizeof(int32_t))
            return narrow_;
        else
            return wide_;
    }

    host::Published<Counted<int32_t>> narrow_;
    host::Published<Counted<int64_t>> wide_;
    mutable std::atomic<int64_t> used_{-1};
};
}  // namespace rq
