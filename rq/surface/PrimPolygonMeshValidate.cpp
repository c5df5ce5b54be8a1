#include <rq/surface/PrimPolygonMesh.h>

#include <algorithm>

#include <rq/data/Values.h>
#include <rq/surface/detail/lists.h>

namespace
{
std::string checkTopology(const RQ_PrimPolygonMesh &mesh)
{
    const RQ_DataArrayHandle &list = mesh.getVertexList();
    if ((list ? list->entries() : 0) != mesh.getVertexCount())
        return fmt::format("vertex list has {} entries, the faces have {} corners", list ? list->entries() : 0,
                           mesh.getVertexCount());
    const int64_t counts =
        mesh.getFaceCountArray().isUniform() ? std::min<int64_t>(1, mesh.getFaceCount()) : mesh.getFaceCount();
    for (int64_t face = 0; face < counts; ++face)
        if (mesh.getFaceCountArray().getCount(face) < 0)
            return fmt::format("face {} has {} corners", face, mesh.getFaceCountArray().getCount(face));
    if (!list)
        return {};
    if (list->getTupleSize() != 1 || !RQisInteger(list->getStorage()))
        return "vertex list is not an array of single integers";
    const int64_t points = mesh.getPointCount();
    int64_t least = 0, greatest = 0;
    list->getRange(least, greatest);
    if (list->entries() == 0 || (least >= 0 && greatest < points))
        return {};
    const rq::Values<int64_t> rows(*list);
    for (int64_t i = 0; i < list->entries(); ++i)
        if (rows[i] < 0 || rows[i] >= points)
            return fmt::format("corner {} uses point {}, there are {}", i, rows[i], points);
    return {};
}
}  // namespace

bool RQ_PrimPolygonMesh::validate(std::string *why) const
{
    std::string fault = checkTopology(*this);
    if (fault.empty())
        fault = rq::checkLengths("point", shared_, getPointCount());
    if (fault.empty())
        fault = rq::checkLengths("vertex", vertex_, getVertexCount());
    if (fault.empty())
        fault = rq::checkLengths("uniform", uniform_, getFaceCount());
    if (fault.empty())
        fault = rq::checkLengths("detail", detail_, 1);
    if (why)
        *why = fault;
    return fault.empty();
}
