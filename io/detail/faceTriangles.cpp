#include <io/detail/faceTriangles.h>

#include <algorithm>
#include <numeric>

#include <host/mod/Edit.h>
#include <rq/bridge/MSHDetail.h>
#include <rq/data/Values.h>
#include <rq/prim/RefineList.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq::io
{
namespace
{
// The vertex that a corner of a piece comes from.
constexpr const char *kSource = "__source";

ELM_Range facesOf(const MSH_Detail &detail)
{
    const ELM_OffsetBitsHandle faces(new ELM_OffsetBits(detail.capacity(ELM_OWNER_PRIMITIVE)));
    for (ELM_Offset primitive = 0; primitive < detail.capacity(ELM_OWNER_PRIMITIVE); ++primitive)
        if (detail.typeOf(primitive) == ELM_PRIMITIVE_POLYGON && detail.isClosed(primitive))
            faces->bits.set(primitive);
    return ELM_Range(ELM_OWNER_PRIMITIVE, faces);
}

/// The same with a number at every vertex, and nothing else that pieces would carry along.
MOD_ConstDetailHandle numbered(const MOD_ConstDetailHandle &detail)
{
    MOD_DetailHandle copy(detail);
    MOD_Edit edit(copy);
    if (int32_t *numbers = edit.attribute(ELM_OWNER_VERTEX, kSource, ELM_STORAGE_INT32)->writeAll<int32_t>())
        std::iota(numbers, numbers + edit.capacity(ELM_OWNER_VERTEX), 0);
    return edit.commit();
}
}  // namespace

std::vector<int32_t> faceTriangles(const MOD_ConstDetailHandle &detail)
{
    const MOD_ConstDetailHandle source = numbered(detail);
    const auto faces = std::make_shared<const ELM_Range>(facesOf(*source.readLock()));
    RQ_RefineParms all;
    all.setSkipHidden(false);
    RQ_RefineList list;
    list.refine(RQ_MSHDetail::makeDetail(source, faces).get(), &all);

    const MSH_Detail &d = *source.readLock();
    const auto isLoose = [&](int32_t vertex) { return d.vertexPoint(vertex) < 0; };
    std::vector<int32_t> corners;
    for (int i = 0; i < list.entries(); ++i)
        if (const auto mesh = boost::dynamic_pointer_cast<RQ_PrimPolygonMesh>(list.getPrimitive(i)))
        {
            const RQ_PolygonMeshHandle cut = mesh->convex(3);
            const RQ_PrimPolygonMesh &pieces = cut ? *cut : *mesh;
            const Values<int32_t> counts(pieces.getFaceCounts());
            const Values<int32_t> vertices(*pieces.getVertex()->get(kSource));
            int64_t first = 0;
            for (int64_t face = 0; face < counts.entries(); first += counts[face++])
                if (const int32_t *piece = vertices.begin() + first;
                    counts[face] == 3 && std::none_of(piece, piece + 3, isLoose))
                    corners.insert(corners.end(), piece, piece + 3);
        }
    return corners;
}
}  // namespace rq::io
