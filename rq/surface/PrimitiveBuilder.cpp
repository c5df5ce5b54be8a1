#include <rq/surface/PrimitiveBuilder.h>

#include <rq/surface/detail/lists.h>

namespace
{
bool isIntegers(const RQ_DataArrayHandle &array)
{
    return array && RQisInteger(array->getStorage()) && array->getTupleSize() == 1 && !array->hasArrayEntries();
}
}  // namespace

bool RQ_PrimitiveBuilder::checkCounts(const char *mesh, const char *item, const char *element,
                                      const RQ_DataArrayHandle &counts)
{
    for (int64_t i = 0; i < counts->entries(); ++i)
        if (const int64_t count = counts->getI64(i); count < 0)
        {
            status_.addError("%s: %s %lld has %lld %s", mesh, item, static_cast<long long>(i), static_cast<long long>(count),
                             element);
            return false;
        }
    if (RQ_CountArray(counts).entries() == counts->entries())
        return true;
    status_.addError("%s: more %s than can be numbered", mesh, element);
    return false;
}

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
    if (!isIntegers(counts) || !isIntegers(vertexList))
    {
        status_.addError("Polygon mesh: counts and vertex list must hold one integer an entry");
        return {};
    }
    if (!checkCounts("Polygon mesh", "face", "corners", counts))
        return {};
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
    const RQ_PolygonHandle polygon(new RQ_PrimPolygon(vertex, uniform));
    const int64_t corners = polygon->getVertexCount();
    std::string why = rq::checkLengths("vertex", vertex, corners);
    if (why.empty())
        why = rq::checkLengths("uniform", uniform, 1);
    if (corners < 3)
        status_.addWarning("Polygon with %d points", int(corners));
    else if (!why.empty())
        status_.addError("Polygon: %s", why.c_str());
    else
        return polygon;
    return {};
}

RQ_CurveMeshHandle RQ_PrimitiveBuilder::curveMesh(RQ_Basis basis, const RQ_DataArrayHandle &counts,
                                                  const RQ_AttributeListHandle &vertex,
                                                  const RQ_AttributeListHandle &uniform,
                                                  const RQ_AttributeListHandle &detail, bool wrap)
{
    const int64_t curves = counts ? counts->entries() : 0;
    if (curves < 1)
    {
        status_.addWarning("Curve mesh with %d curves", int(curves));
        return {};
    }
    if (!isIntegers(counts))
    {
        status_.addError("Curve mesh: counts must hold one integer an entry");
        return {};
    }
    if (!checkCounts("Curve mesh", "curve", "vertices", counts))
        return {};
    const RQ_CurveMeshHandle mesh(new RQ_PrimCurveMesh(basis, counts, vertex, uniform, detail, wrap));
    if (std::string why; !mesh->validate(&why))
    {
        status_.addError("Curve mesh: %s", why.c_str());
        return {};
    }
    return mesh;
}

RQ_CurveHandle RQ_PrimitiveBuilder::curve(RQ_Basis basis, const RQ_AttributeListHandle &vertex,
                                          const RQ_AttributeListHandle &uniform, bool wrap)
{
    const RQ_CurveHandle curve(new RQ_PrimCurve);
    const bool fits = curve->init(basis, vertex, uniform, wrap);
    if (curve->getVertexCount() < 3)
        // Curves share the words of polygons.
        status_.addWarning("Polygon with %d points", int(curve->getVertexCount()));
    else if (!fits)
        status_.addError("Curve: its attributes differ in length");
    else if (RQbasis(RQbasis(basis)) < 0)
        status_.addError("Curve: basis %d is none", int(basis));
    else
        return curve;
    return {};
}
