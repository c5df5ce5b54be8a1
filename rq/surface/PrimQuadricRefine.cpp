#include <algorithm>
#include <cmath>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>
#include <rq/prim/RefineParms.h>
#include <rq/surface/PrimQuadric.h>
#include <rq/surface/detail/gridFaces.h>
#include <rq/surface/detail/levelOptions.h>
#include <rq/surface/detail/sweep.h>

namespace
{
constexpr double kFewestSamples = 9.0;
constexpr double kMostSamples = 16384.0;

// A vector costs about 3 ns: a task is some 25 us of work.
constexpr int64_t kVectorsPerTask = 8192;

int samples(double wanted)
{
    return std::isnan(wanted) ? int(kFewestSamples)
                              : int(std::clamp(std::floor(wanted + 0.5), kFewestSamples, kMostSamples));
}

double finiteOr(double value, double fallback) { return std::isfinite(value) ? value : fallback; }

/// Limit what there is along one parameter to what is wanted.  The default wants everything, of a surface that goes beyond
/// the usual bounds too.
void limit(double &begin, double &end, double wantedBegin, double wantedEnd)
{
    if (wantedBegin == 0.0 && wantedEnd == 1.0)
        return;
    const bool whole = begin == 0.0 && end == 1.0;
    const auto [low, high] = std::minmax(wantedBegin, wantedEnd);
    begin = whole ? wantedBegin : std::clamp(begin, low, high);
    end = whole ? wantedEnd : std::clamp(end, low, high);
}

double sample(int64_t i, int64_t count, double begin, double end)
{
    return i + 1 == count ? end : begin + (end - begin) * (double(i) / double(count - 1));
}

rq::Columns columnsOf(int64_t count, double begin, double end)
{
    rq::Columns columns(count);
    for (int64_t i = 0; i < count; ++i)
        columns.set(i, rq::Turn(sample(i, count, begin, end)));
    // Bounds that are one turn apart can differ in the last digit of what is left of them.
    if (rq::isWholeTurn(begin, end))
        columns.set(count - 1, rq::Turn(begin));
    return columns;
}

template <class T>
RQ_DataArrayHandle sweepRows(const std::vector<BAS_Vec3d> &starts, const rq::Columns &columns, const rq::Frame &frame,
                             RQ_Type type)
{
    const int64_t nu = int64_t(columns.cosines.size()), nv = int64_t(starts.size());
    const BAS_IntrusivePtr<RQ_DANumeric<T>> grid(new RQ_DANumeric<T>(nu * nv, 3, type));
    host::parallelFor(nv, std::max<int64_t>(1, kVectorsPerTask / nu),
                      [&](int64_t j) { rq::Sweep(frame, starts[size_t(j)]).fill(grid->data() + 3 * nu * j, columns); });
    return grid;
}

template <class Vector> void sweepOne(Vector *out, const BAS_Vec3d &start, int64_t count, const double *u)
{
    const rq::Sweep sweep(rq::Frame(), start);
    for (int64_t i = 0; i < count; ++i)
    {
        const rq::Turn turn(u[i]);
        out[i] = Vector(sweep.at(turn.cosine, turn.sine));
    }
}
}  // namespace

void RQ_PrimQuadric::extractRefineParms(const RQ_RefineParms *parms, int &nu, int &nv, double &umin, double &umax,
                                        double &vmin, double &vmax)
{
    const double divisions = RQ_RefineParms::getQuadricDivs(parms), lod = RQ_RefineParms::getLOD(parms);
    nu = samples(divisions * RQ_RefineParms::getULOD(parms) * lod);
    nv = samples(divisions * RQ_RefineParms::getVLOD(parms) * lod);
    umin = finiteOr(RQ_RefineParms::getURange0(parms), 0.0);
    umax = finiteOr(RQ_RefineParms::getURange1(parms), 1.0);
    vmin = finiteOr(RQ_RefineParms::getVRange0(parms), 0.0);
    vmax = finiteOr(RQ_RefineParms::getVRange1(parms), 1.0);
}

void RQ_PrimQuadric::adjustTesselationCounts(int &, int &) const {}

const RQ_ViewportRefineOptions &RQ_PrimQuadric::viewportRefineOptions() const { return rq::levelRefineOptions(); }

bool RQ_PrimQuadric::refine(RQ_Refine &sink, const RQ_RefineParms *parms) const
{
    const RQ_PolygonMeshHandle mesh = refineToPolygonMesh(parms);
    if (mesh)
        sink.addPrimitive(mesh);
    return bool(mesh);
}

bool RQ_PrimQuadric::chooseSamples(const RQ_RefineParms *parms, int &nu, int &nv, RQ_Parametric &range) const
{
    RQ_Parametric wanted;
    extractRefineParms(parms, nu, nv, wanted.umin, wanted.umax, wanted.vmin, wanted.vmax);
    adjustTesselationCounts(nu, nv);
    range = range_;
    limit(range.umin, range.umax, wanted.umin, wanted.umax);
    limit(range.vmin, range.vmax, wanted.vmin, wanted.vmax);
    return range.umin != range.umax && range.vmin != range.vmax;
}

RQ_PolygonMeshHandle RQ_PrimQuadric::refineToPolygonMesh(const RQ_RefineParms *parms) const
{
    int nu, nv;
    RQ_Parametric range;
    if (!chooseSamples(parms, nu, nv, range))
        return nullptr;
    return createMesh(nu, nv, range.umin, range.umax, range.vmin, range.vmax, true, true, RQ_STORAGE_REAL32,
                      RQ_STORAGE_REAL32);
}

RQ_AttributeListHandle RQ_PrimQuadric::sweepGrid(int nu, int nv, const RQ_Parametric &range, RQ_Storage positions,
                                                 RQ_Storage normals) const
{
    const rq::Columns columns = columnsOf(nu, range.umin, range.umax);
    std::vector<BAS_Vec3d> points, directions;
    for (int64_t j = 0; j < nv; ++j)
    {
        const Profile row = profile(sample(j, nv, range.vmin, range.vmax));
        points.push_back(row.point);
        directions.push_back(row.normal);
    }

    const RQ_AttributeMapHandle map(new RQ_AttributeMap);
    map->add("P", true);
    if (normals != RQ_STORAGE_INVALID)
        map->add("N", true);
    const RQ_Transform &transform = placement();
    const RQ_AttributeListHandle list(new RQ_AttributeList(map, transform.getSegments()));
    const auto sweep = [&](const std::vector<BAS_Vec3d> &starts, const rq::Frame &frame, RQ_Storage storage, RQ_Type type) {
        return storage == RQ_STORAGE_REAL64 ? sweepRows<double>(starts, columns, frame, type)
                                            : sweepRows<float>(starts, columns, frame, type);
    };
    for (int segment = 0; segment < list->getSegments(); ++segment)
    {
        BAS_Mat4d matrix;
        transform.getMatrix(matrix, segment);
        list->set(0, sweep(points, rq::Frame::ofPoints(matrix), positions, RQ_TYPE_POINT), segment);
        if (map->entries() > 1)
            list->set(1, sweep(directions, rq::Frame::ofNormals(matrix), normals, RQ_TYPE_NORMAL), segment);
    }
    return list;
}

RQ_PolygonMeshHandle RQ_PrimQuadric::createMesh(int nu, int nv, double umin, double umax, double vmin, double vmax,
                                                bool withNormals, bool withUV, RQ_Storage positions,
                                                RQ_Storage normals) const
{
    const RQ_Parametric range{umin, umax, vmin, vmax};
    if (nu < 2 || nv < 2 || !range.isFinite())
        return nullptr;
    RQ_AttributeListHandle list = sweepGrid(nu, nv, range, positions, withNormals ? normals : RQ_STORAGE_INVALID);
    if (withUV)
        list = list->createUV(nu, nv, umin, umax, vmin, vmax);

    // Each of these turns the faces inside out.
    const bool turned = isMirrored() != ((umax < umin) != (vmax < vmin));
    const RQ_PolygonMeshHandle faces = rq::gridFaces(nu, nv, isRightHanded() != turned);
    return new RQ_PrimPolygonMesh(*faces, list, {}, {}, attributes_);
}

const RQ_Transform &RQ_PrimQuadric::placement() const
{
    return getPrimitiveTransform() ? *getPrimitiveTransform() : *RQ_Transform::identity();
}

bool RQ_PrimQuadric::isMirrored() const
{
    BAS_Mat4d matrix;
    placement().getMatrix(matrix, 0);
    return rq::Frame::isMirror(matrix);
}

void RQ_PrimQuadric::fillQP(BAS_Vec3f *positions, int64_t count, const double *u, double v) const
{
    sweepOne(positions, profile(v).point, count, u);
}

void RQ_PrimQuadric::fillQP(BAS_Vec3d *positions, int64_t count, const double *u, double v) const
{
    sweepOne(positions, profile(v).point, count, u);
}

void RQ_PrimQuadric::fillQN(BAS_Vec3f *normals, int64_t count, const double *u, double v) const
{
    sweepOne(normals, profile(v).normal, count, u);
}

void RQ_PrimQuadric::fillQN(BAS_Vec3d *normals, int64_t count, const double *u, double v) const
{
    sweepOne(normals, profile(v).normal, count, u);
}
