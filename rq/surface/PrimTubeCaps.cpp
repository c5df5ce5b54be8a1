#include <limits>
#include <vector>

#include <rq/data/DAConstant.h>
#include <rq/data/DANumeric.h>
#include <rq/surface/PrimTube.h>
#include <rq/surface/detail/sweep.h>

/// One end of a tube: a ring of points, and with `hasCentre` one on the axis behind them.
struct RQ_PrimTube::Cap
{
    double v;
    int64_t row;   ///< of the grid, that the ring repeats
    int64_t ring;  ///< points on it
    bool hasCentre;
    bool reversed;  ///< the points run clockwise seen from outside
    double centreU;

    int64_t points() const { return ring + int64_t(hasCentre); }
    BAS_Vec3d centre() const { return {0.0, 0.0, v - 0.5}; }
    BAS_Vec3d normal() const { return {0.0, 0.0, v < 0.5 ? -1.0 : 1.0}; }
};

namespace
{
RQ_DataArrayHandle single(RQ_Storage storage, RQ_Type type, const BAS_Vec3d &value, int64_t size = 3)
{
    const RQ_DataArrayHandle wide(new RQ_DANumeric<double>(&value.x, 1, size, type));
    RQ_DataArrayHandle narrow;
    if (storage != RQ_STORAGE_REAL64)
        wide->getArray<float>(narrow);
    return narrow ? narrow : wide;
}

/// The quads of the grid, and behind them the rings.
template <class Index, class Caps>
RQ_DataArrayHandle withRings(const RQ_DataArray &quads, const Caps &caps, int64_t firstPoint)
{
    const BAS_IntrusivePtr<RQ_DANumeric<Index>> list(new RQ_DANumeric<Index>);
    list->concat(quads);
    for (const auto &cap : caps)
    {
        for (int64_t i = 0; i < cap.points(); ++i)
            list->append(Index(firstPoint + (cap.reversed ? cap.points() - 1 - i : i)));
        firstPoint += cap.points();
    }
    return list;
}
}  // namespace

std::vector<RQ_PrimTube::Cap> RQ_PrimTube::findCaps(int nu, int nv, const RQ_Parametric &range) const
{
    std::vector<Cap> caps;
    const bool isPart = !rq::isWholeTurn(range.umin, range.umax);
    const bool turned = isMirrored() != (range.umax < range.umin);
    for (const double end : {0.0, 1.0})
        if ((range.vmin == end || range.vmax == end) && (end == 0.0 || taper_ != 0.0))
            caps.push_back({end, range.vmin == end ? 0 : int64_t(nv) - 1, isPart ? nu : int64_t(nu) - 1, isPart,
                            (end == 0.0) != turned, 0.5 * (range.umin + range.umax)});
    return caps;
}

RQ_AttributeListHandle RQ_PrimTube::capPoints(const Cap &cap, const RQ_AttributeList &side, int64_t nu) const
{
    const RQ_AttributeListHandle ring = side.createSubArray(cap.row * nu, cap.ring);
    const RQ_AttributeListHandle centre(new RQ_AttributeList(side.getMap(), side.getSegments()));
    const int p = side.getIndex("P"), n = side.getIndex("N"), uv = side.getIndex("uv");
    for (int segment = 0; segment < side.getSegments(); ++segment)
    {
        BAS_Mat4d matrix;
        placement().getMatrix(matrix, segment);
        const RQ_Storage storage = side.get(p)->getStorage();
        centre->set(p, single(storage, RQ_TYPE_POINT, host::transformPoint(cap.centre(), matrix)), segment);
        if (n >= 0)
        {
            const BAS_Vec3d normal = rq::Sweep(rq::Frame::ofNormals(matrix), cap.normal()).at(1.0, 0.0);
            centre->set(n, single(side.get(n)->getStorage(), RQ_TYPE_NORMAL, normal), segment);
            ring->set(n, RQ_DAConstant::createConstant(centre->get(n, segment), 0, cap.ring), segment);
        }
    }
    centre->setAllSegments(uv, single(RQ_STORAGE_REAL32, RQ_TYPE_NONE, {cap.centreU, cap.v, 0.0}, 2));
    return cap.hasCentre ? RQ_AttributeList::concatenateLists({ring, centre}) : ring;
}

RQ_PolygonMeshHandle RQ_PrimTube::createMesh(int nu, int nv, double umin, double umax, double vmin, double vmax,
                                             bool withNormals, bool withUV, RQ_Storage positions, RQ_Storage normals) const
{
    const RQ_PolygonMeshHandle side =
        RQ_PrimQuadric::createMesh(nu, nv, umin, umax, vmin, vmax, withNormals, withUV, positions, normals);
    const auto caps = side && caps_ ? findCaps(nu, nv, {umin, umax, vmin, vmax}) : std::vector<Cap>();
    if (caps.empty())
        return side;

    BAS_Array<RQ_AttributeListHandle> parts{side->getShared()};
    std::vector<int32_t> counts(size_t(side->getFaceCount()), 4);
    int64_t points = side->getPointCount();
    for (const Cap &cap : caps)
    {
        parts.push_back(capPoints(cap, *side->getShared(), nu));
        counts.push_back(int32_t(cap.points()));
        points += cap.points();
    }
    const RQ_AttributeListHandle all = RQ_AttributeList::concatenateLists(parts);
    all->harden();  // one block each, which consumers read without a copy
    const RQ_DataArray &quads = *side->getVertexList();
    const RQ_DataArrayHandle list = points <= std::numeric_limits<int32_t>::max()
                                        ? withRings<int32_t>(quads, caps, side->getPointCount())
                                        : withRings<int64_t>(quads, caps, side->getPointCount());
    const RQ_DataArrayHandle faces(new RQ_DANumeric<int32_t>(counts.data(), int64_t(counts.size())));
    return new RQ_PrimPolygonMesh(RQ_CountArray(faces), list, all, {}, {}, side->getDetail());
}
