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

template <class Index> RQ_DataArrayHandle vertexListOf(int64_t nu, int64_t nv, bool alongU)
{
    const int64_t quads = nu - 1;
    const BAS_IntrusivePtr<RQ_DANumeric<Index>> list(new RQ_DANumeric<Index>(4 * quads * (nv - 1)));
    const Index row = Index(nu), second = alongU ? 1 : row, fourth = alongU ? row : 1;
    host::parallelFor(nv - 1, std::max<int64_t>(1, kQuadsPerTask / quads), [&](int64_t j) {
        Index *out = list->data() + 4 * quads * j;
        Index point = Index(nu * j);
        for (int64_t i = 0; i < quads; ++i, ++point, out += 4)
        {
            out[0] = point;
            out[1] = point + second;
            out[2] = point + row + 1;
            out[3] = point + fourth;
        }
    });
    return list;
}

RQ_PolygonMeshHandle makeFaces(int64_t nu, int64_t nv, bool alongU)
{
    const bool wide = nu > std::numeric_limits<int32_t>::max() / nv;
    return new RQ_PrimPolygonMesh(RQ_CountArray((nu - 1) * (nv - 1), 4),
                                  wide ? vertexListOf<int64_t>(nu, nv, alongU) : vertexListOf<int32_t>(nu, nv, alongU), {});
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
        return makeFaces(nu, nv, alongU);
    // Never destroyed: quadrics may be refined while the process ends.
    static LastGrid *const lasts = new LastGrid[2];
    LastGrid &last = lasts[alongU];
    if (RQ_PolygonMeshHandle mesh = last.find(nu, nv))
        return mesh;
    const RQ_PolygonMeshHandle mesh = makeFaces(nu, nv, alongU);
    last.keep(nu, nv, mesh);
    return mesh;
}
