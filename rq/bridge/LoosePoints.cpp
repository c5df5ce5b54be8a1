#include <rq/bridge/detail/LoosePoints.h>

#include <algorithm>

#include <host/msh/Detail.h>
#include <rq/bridge/detail/RunList.h>
#include <rq/data/DAIndexedText.h>
#include <rq/surface/PrimPointMesh.h>

namespace
{
/// The loose points, apart by the file that they name.
struct LoosePoints
{
    rq::RunList plain;
    std::vector<std::pair<int32_t, rq::RunList>> byFile;  // in order of the first point

    LoosePoints(const MSH_Detail &detail, const ELM_StringTuple *files, bool all, BAS_Progress &progress)
    {
        const BAS_BitArray *used = all ? nullptr : &detail.usedPoints();
        std::vector<int32_t> placeOf(files ? files->table().size() : 0, -1);
        const int64_t points = detail.capacity(ELM_OWNER_POINT);
        for (const auto [begin, end] : detail.range(ELM_OWNER_POINT).blocks())
        {
            if (progress.interrupted(double(begin) / double(points)))
                return;
            for (ELM_Offset point = begin; point < end; ++point)
            {
                if (used && used->get(point))
                    continue;
                const int32_t file = files ? files->index(point) : -1;
                if (file < 0 || files->table()[size_t(file)].isEmpty())
                {
                    plain.append(point, 1);
                    continue;
                }
                int32_t &place = placeOf[size_t(file)];
                if (place < 0)
                {
                    place = int32_t(byFile.size());
                    byFile.emplace_back(file, rq::RunList());
                }
                byFile[size_t(place)].second.append(point, 1);
            }
        }
    }
};

RQ_PrimitiveHandle withInstanceFile(const RQ_Primitive &mesh, const BAS_StringHolder &file)
{
    const RQ_AttributeListHandle &detail = mesh.getDetailAttributes();
    const RQ_AttributeListHandle base = detail ? detail : new RQ_AttributeList(new RQ_AttributeMap, 1);
    return new RQ_PrimPointMesh(
        mesh.getPointAttributes(),
        base->addAttribute(ELM_INSTANCE_FILE_NAME, RQ_DAIndexedString::createIndexed(&file, 1, 1), true));
}
}  // namespace

RQ_PrimitiveHandle rq::makePointMesh(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &points,
                                     const RQ_RefineParms *parms)
{
    return new RQ_PrimPointMesh(details.getPointAttributes(nullptr, points, parms),
                                details.getDetailAttributes(nullptr, parms));
}

void rq::makePointMeshes(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &points, const RQ_RefineParms *parms,
                         std::vector<RQ_PrimitiveHandle> &meshes)
{
    const int64_t limit = RQ_RefineParms::getMaxPointMeshSize(parms);
    const int64_t piece = limit > 0 ? limit : std::max<int64_t>(1, points.entries());
    for (int64_t first = 0; first < points.entries(); first += piece)
    {
        const RQ_MSHOffsetList part(points, first, std::min(piece, points.entries() - first));
        meshes.push_back(makePointMesh(details, part, parms));
    }
}

void rq::makeLoosePointMeshes(const RQ_MSHDetailList &details, const RQ_RefineParms *parms, BAS_Progress &progress,
                              std::vector<RQ_PrimitiveHandle> &meshes)
{
    const MSH_Detail &detail = *details.getDetail();
    const bool all = RQ_RefineParms::getShowAllPoints(parms);
    if (!all && !detail.hasUnusedPoints())
        return;
    const bool instances = !all && parms && parms->getPointInstanceEnable() && detail.instanceFile();
    const ELM_StringTuple *files = instances ? detail.instanceFile()->strings() : nullptr;
    LoosePoints loose(detail, files, all, progress);
    loose.plain.flush();
    makePointMeshes(details, loose.plain.list(), parms, meshes);
    for (auto &[file, points] : loose.byFile)
    {
        std::vector<RQ_PrimitiveHandle> ofFile;
        points.flush();
        makePointMeshes(details, points.list(), parms, ofFile);
        for (const RQ_PrimitiveHandle &mesh : ofFile)
            meshes.push_back(withInstanceFile(*mesh, files->table()[size_t(file)]));
    }
}
