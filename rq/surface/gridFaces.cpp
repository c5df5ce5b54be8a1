#include <rq/surface/detail/gridFaces.h>

#include <limits>
#include <mutex>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>

namespace
{
// A quad costs 1.5 ns: a task is some 20 us of work.
constexpr int64_t kQuadsPerTask = 16384;

// Faces of grids of up to this many points, some 250 kB, are kept.
constexpr int64_t kKeptPoints = 16384;

struct Grid
{
    int64_t nu, nv;
    bool alongU, wrapsU, wrapsV;

    int64_t quadsU() const { return nu - !wrapsU; }
    int64_t quadsV() const { return nv - !wrapsV; }
};

template <class Index> RQ_DataArrayHandle vertexListOf(const Grid &grid)
{
    const int64_t quads = grid.quadsU();
    const BAS_IntrusivePtr<RQ_DANumeric<Index>> list(new RQ_DANumeric<Index>(4 * quads * grid.quadsV()));
    host::parallelFor(grid.quadsV(), std::max<int64_t>(1, kQuadsPerTask / quads), [&](int64_t j) {
        Index *out = list->data() + 4 * quads * j;
        const Index begin = Index(grid.nu * j), row = j + 1 < grid.nv ? Index(grid.nu) : Index(-begin);
        const auto add = [&](Index point, Index next) {
            out[0] = point;
            out[1] = grid.alongU ? next : Index(point + row);
            out[2] = Index(next + row);
            out[3] = grid.alongU ? Index(point + row) : next;
            out += 4;
        };
        for (int64_t i = 0; i + 1 < grid.nu; ++i)
            add(Index(begin + i), Index(begin + i + 1));
        if (grid.wrapsU)
            add(Index(begin + grid.nu - 1), begin);
    });
    return list;
}

RQ_PolygonMeshHandle makeFaces(const Grid &grid)
{
    const bool wide = grid.nu > std::numeric_limits<int32_t>::max() / grid.nv;
    return new RQ_PrimPolygonMesh(RQ_CountArray(grid.quadsU() * grid.quadsV(), 4),
                                  wide ? vertexListOf<int64_t>(grid) : vertexListOf<int32_t>(grid), {});
}

/// The small grid that was asked for last.
class LastGrid
{
public:
    RQ_PolygonMeshHandle find(int64_t nu, int64_t nv)
    {
        const std::lock_guard lock(mutex_);
        return nu == nu_ && nv == nv_ ? mesh_ : nullptr;
    }

    void keep(int64_t nu, int64_t nv, RQ_PolygonMeshHandle mesh)
    {
        const std::lock_guard lock(mutex_);
        nu_ = nu;
        nv_ = nv;
        mesh_.swap(mesh);  // the one before is dropped outside the lock
    }

private:
    std::mutex mutex_;
    int64_t nu_ = 0, nv_ = 0;
    RQ_PolygonMeshHandle mesh_;
};
}  // namespace

RQ_PolygonMeshHandle rq::gridFaces(int64_t nu, int64_t nv, bool alongU)
{
    if (nu > kKeptPoints / nv)
        return makeFaces({nu, nv, alongU, false, false});
    // Never destroyed: quadrics may be refined while the process ends.
    static LastGrid *const lasts = new LastGrid[2];
    LastGrid &last = lasts[alongU];
    if (RQ_PolygonMeshHandle mesh = last.find(nu, nv))
        return mesh;
    const RQ_PolygonMeshHandle mesh = makeFaces({nu, nv, alongU, false, false});
    last.keep(nu, nv, mesh);
    return mesh;
}

RQ_PolygonMeshHandle rq::gridFaces(int64_t nu, int64_t nv, bool wrapsU, bool wrapsV)
{
    return wrapsU || wrapsV ? makeFaces({nu, nv, true, wrapsU, wrapsV}) : gridFaces(nu, nv, true);
}
