#include <rq/surface/PrimitiveBuilder.h>

RQ_PolygonMeshHandle RQ_PrimitiveBuilder::polygonMesh(const RQ_DataArrayHandle &counts, const RQ_DataArrayHandle &vertexList,
                                                      const RQ_AttributeListHandle &shared,
                                                      const RQ_AttributeListHandle &vertex,
                                                      const RQ_AttributeListHandle &uniform,
                                                      const RQ_AttributeListHandle &detail)
{
    const int64_t faces = counts ? counts->entries() : 0;
    if (faces < 1)
    {
        status_.addWarning("Polygon mesh with %d polygons", int(faces));
        return {};
    }
    const auto isIntegers = [](const RQ_DataArrayHandle &array) {
        return array && RQisInteger(array->getStorage()) && array->getTupleSize() == 1 && !array->hasArrayEntries();
    };
    if (!isIntegers(counts) || !isIntegers(vertexList))
    {
        status_.addError("Polygon mesh: counts and vertex list must hold one integer an entry");
        return {};
    }
    for (int64_t face = 0; face < faces; ++face)
        if (const int64_t corners = counts->getI64(face); corners < 0)
        {
            status_.addError("Polygon mesh: face %lld has %lld corners", static_cast<long long>(face),
                             static_cast<long long>(corners));
            return {};
        }
    const RQ_PolygonMeshHandle mesh(new RQ_PrimPolygonMesh(counts, vertexList, shared, vertex, uniform, detail));
    if (std::string why; !mesh->validate(&why))
    {
        status_.addError("Polygon mesh: %s", why.c_str());
        return {};
    }
    return mesh;
}

RQ_PolygonHandle RQ_PrimitiveBuilder::polygon(const RQ_AttributeListHandle &vertex, const RQ_AttributeListHandle &uniform)
{
    RQ_PolygonHandle polygon(new RQ_PrimPolygon(vertex, uniform));
    if (polygon->getVertexCount() >= 3)
        return polygon;
    status_.addWarning("Polygon with %d points", int(polygon->getVertexCount()));
    return {};
}
