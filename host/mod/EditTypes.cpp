#include <host/mod/Edit.h>

#include <fmt/format.h>

#include <host/elm/PrimitiveFactory.h>
#include <host/mod/PackedImpl.h>
#include <host/msh/Channel.h>
#include <host/msh/Curve.h>
#include <host/msh/Faces.h>
#include <host/msh/Meta.h>
#include <host/msh/Patch3.h>
#include <host/msh/Quadric.h>
#include <host/msh/SparseVolume.h>
#include <host/msh/Surface.h>
#include <host/msh/Volume.h>

namespace
{
template <class Data> MSH_PayloadHandle payloadOf(Data &data) { return new MSH_PayloadOf<Data>(std::move(data)); }

std::span<const MSH_PayloadHandle> oneOrNone(const MSH_PayloadHandle &payload)
{
    return {&payload, size_t(payload ? 1 : 0)};
}
}  // namespace

// As many as the points make.
bool MOD_Edit::appendEach(ELM_PrimitiveTypeId type, int32_t corners, MSH_PayloadHandle payload, const MOD_Indices &points,
                          const MOD_Matrices &transforms)
{
    if (corners < 1 || points.size() % corners != 0)
        return fail(fmt::format("{} points do not make primitives of {} vertices", points.size(), corners));
    return append({type, points.size() / corners, {}, corners, points, false, oneOrNone(payload), transforms});
}

bool MOD_Edit::appendRuns(ELM_PrimitiveTypeId type, std::span<const int32_t> corners, MSH_PayloadHandle payload,
                          const MOD_Indices &points)
{
    return append({type, int64_t(corners.size()), corners, 0, points, false, oneOrNone(payload), {}});
}

bool MOD_Edit::appendOne(ELM_PrimitiveTypeId type, MSH_PayloadHandle payload, const MOD_Indices &points)
{
    if (points.size() > INT32_MAX)
        return fail(fmt::format("{} vertices are too many for one primitive", points.size()));
    return append({type, 1, {}, int32_t(points.size()), points, false, oneOrNone(payload), {}});
}

bool MOD_Edit::appendParticles(const MOD_Indices &points) { return appendOne(ELM_PRIMITIVE_PARTICLES, nullptr, points); }

bool MOD_Edit::appendTetrahedra(const MOD_Indices &points)
{
    return appendEach(ELM_PRIMITIVE_TETRAHEDRON, 4, nullptr, points);
}

bool MOD_Edit::appendHexahedra(const MOD_Indices &points)
{
    return appendEach(ELM_PRIMITIVE_HEXAHEDRON, 8, nullptr, points);
}

bool MOD_Edit::appendTriangleFans(std::span<const int32_t> corners, const MOD_Indices &points)
{
    return appendRuns(ELM_PRIMITIVE_TRIANGLE_FAN, corners, nullptr, points);
}

bool MOD_Edit::appendTriangleStrips(std::span<const int32_t> corners, const MOD_Indices &points)
{
    return appendRuns(ELM_PRIMITIVE_TRIANGLE_STRIP, corners, nullptr, points);
}

bool MOD_Edit::appendSoup(MSH_SoupData soup, const MOD_Indices &points)
{
    return appendOne(ELM_PRIMITIVE_SOUP, payloadOf(soup), points);
}

bool MOD_Edit::appendGrids(MSH_GridData grid, const MOD_Indices &points)
{
    const int64_t corners = std::clamp<int64_t>(int64_t(grid.rows) * grid.columns, 0, INT32_MAX);
    return appendEach(ELM_PRIMITIVE_GRID, int32_t(corners), payloadOf(grid), points);
}

bool MOD_Edit::appendTriangularPatches(MSH_Patch3Data patch, const MOD_Indices &points)
{
    const int64_t corners = std::clamp<int64_t>((int64_t(patch.degree) + 1) * (int64_t(patch.degree) + 2) / 2, 0, INT32_MAX);
    return appendEach(ELM_PRIMITIVE_TRIANGULAR_PATCH, int32_t(corners), payloadOf(patch), points);
}

bool MOD_Edit::appendNURBSCurves(MSH_CurveData curve, std::span<const int32_t> corners, const MOD_Indices &points)
{
    return appendRuns(ELM_PRIMITIVE_NURBS_CURVE, corners, payloadOf(curve), points);
}

bool MOD_Edit::appendBezierCurves(MSH_CurveData curve, std::span<const int32_t> corners, const MOD_Indices &points)
{
    return appendRuns(ELM_PRIMITIVE_BEZIER_CURVE, corners, payloadOf(curve), points);
}

bool MOD_Edit::appendNURBSSurface(MSH_SurfaceData surface, const MOD_Indices &points)
{
    return appendOne(ELM_PRIMITIVE_NURBS_SURFACE, payloadOf(surface), points);
}

bool MOD_Edit::appendBezierSurface(MSH_SurfaceData surface, const MOD_Indices &points)
{
    return appendOne(ELM_PRIMITIVE_BEZIER_SURFACE, payloadOf(surface), points);
}

bool MOD_Edit::appendCircles(const MOD_Indices &points, const MOD_Matrices &transforms)
{
    return appendEach(ELM_PRIMITIVE_CIRCLE, 1, nullptr, points, transforms);
}

bool MOD_Edit::appendSpheres(const MOD_Indices &points, const MOD_Matrices &transforms)
{
    return appendEach(ELM_PRIMITIVE_SPHERE, 1, nullptr, points, transforms);
}

bool MOD_Edit::appendTubes(MSH_TubeData tube, const MOD_Indices &points, const MOD_Matrices &transforms)
{
    return appendEach(ELM_PRIMITIVE_TUBE, 1, payloadOf(tube), points, transforms);
}

bool MOD_Edit::appendVolumes(MSH_VolumeData volume, const MOD_Indices &points, const MOD_Matrices &transforms)
{
    return appendEach(ELM_PRIMITIVE_VOLUME, 1, payloadOf(volume), points, transforms);
}

bool MOD_Edit::appendSparseVolumes(MSH_SparseVolumeData volume, const MOD_Indices &points, const MOD_Matrices &transforms)
{
    return appendEach(ELM_PRIMITIVE_SPARSE_VOLUME, 1, payloadOf(volume), points, transforms);
}

bool MOD_Edit::appendBlobs(ELM_PrimitiveTypeId type, MSH_BlobData blob, const MOD_Indices &points,
                           const MOD_Matrices &transforms)
{
    return appendEach(type, 1, payloadOf(blob), points, transforms);
}

bool MOD_Edit::appendBlobExpression(MSH_BlobExpressionData expression)
{
    return appendOne(ELM_PRIMITIVE_BLOB_EXPRESSION, payloadOf(expression), {});
}

bool MOD_Edit::appendChannel(MSH_ChannelData channel, const MOD_Indices &points)
{
    return appendOne(ELM_PRIMITIVE_CHANNEL, payloadOf(channel), points);
}

bool MOD_Edit::appendPacked(BAS_IntrusivePtr<const MOD_PackedImpl> implementation, const MOD_Indices &points,
                            const MOD_Matrices &transforms, const BAS_Vec3d &pivot, int32_t viewportLOD)
{
    if (!implementation)
        return fail("a packed primitive needs an implementation");
    const ELM_PrimitiveTypeId type = implementation->type();
    return appendEach(type, 1, new MOD_PackedPayload(std::move(implementation), pivot, viewportLOD), points, transforms);
}
