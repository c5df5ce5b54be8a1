#include <rq/surface/PrimPolygonMesh.h>

#include <algorithm>

#include <rq/surface/detail/checkVertexList.h>
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
    return rq::checkVertexList(list, mesh.getPointCount());
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
