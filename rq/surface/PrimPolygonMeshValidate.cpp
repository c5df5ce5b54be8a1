#include <rq/surface/PrimPolygonMesh.h>

#include <fmt/format.h>

#include <rq/data/Values.h>

namespace
{
/// Arrays of one list must all have the length that its owner asks for.
std::string checkList(const char *owner, const RQ_AttributeListHandle &list, int64_t expected)
{
    if (list)
        for (int segment = 0; segment < list->getSegments(); ++segment)
            for (int64_t i = 0; i < list->entries(); ++i)
                if (const RQ_DataArrayHandle &array = list->get(int(i), segment); array && array->entries() != expected)
                    return fmt::format("{} attribute {} has {} entries, expected {}", owner, list->getName(int(i)).view(),
                                       array->entries(), expected);
    return {};
}

std::string checkTopology(const RQ_PrimPolygonMesh &mesh)
{
    const RQ_DataArrayHandle &list = mesh.getVertexList();
    if ((list ? list->entries() : 0) != mesh.getVertexCount())
        return fmt::format("vertex list has {} entries, the faces have {} corners", list ? list->entries() : 0,
                           mesh.getVertexCount());
    for (int64_t face = 0; face < mesh.getFaceCount(); ++face)
        if (mesh.getFaceCountArray().getCount(face) < 0)
            return fmt::format("face {} has {} corners", face, mesh.getFaceCountArray().getCount(face));
    if (!list)
        return {};
    if (list->getTupleSize() != 1 || !RQisInteger(list->getStorage()))
        return "vertex list is not an array of single integers";
    const int64_t points = mesh.getPointCount();
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
        fault = checkList("point", shared_, getPointCount());
    if (fault.empty())
        fault = checkList("vertex", vertex_, getVertexCount());
    if (fault.empty())
        fault = checkList("uniform", uniform_, getFaceCount());
    if (fault.empty())
        fault = checkList("detail", detail_, 1);
    if (why)
        *why = fault;
    return fault.empty();
}
