#include <rq/bridge/detail/pieces.h>

#include <typeinfo>

#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimPolygonMesh.h>

RQ_PrimitiveHandle rq::collected(const BAS_Array<RQ_PrimitiveHandle> &primitives)
{
    if (primitives.size() < 2)
        return primitives.empty() ? nullptr : primitives[0];
    const BAS_IntrusivePtr<RQ_PrimCollect> all(new RQ_PrimCollect);
    all->reserve(int64_t(primitives.size()));
    for (const RQ_PrimitiveHandle &primitive : primitives)
        all->appendPrimitive(primitive);
    return all;
}

RQ_PrimitiveHandle rq::inPieces(const RQ_PrimitiveHandle &whole, int64_t mostFaces)
{
    if (!whole)
        return whole;
    BAS_Array<RQ_PrimitiveHandle> parts;
    // Not what is derived of a mesh of polygons: a surface in pieces has more boundary.
    if (typeid(*whole) == typeid(RQ_PrimPolygonMesh))
        return static_cast<const RQ_PrimPolygonMesh &>(*whole).splitMesh(mostFaces, parts) ? collected(parts) : whole;
    const auto *several = dynamic_cast<const RQ_PrimCollect *>(whole.get());
    if (!several)
        return whole;
    bool isCut = false;
    for (int64_t i = 0; i < several->entries(); ++i)
    {
        const RQ_PrimitiveHandle &child = several->getPrim(i);
        parts.push_back(inPieces(child, mostFaces));
        isCut |= parts.back() != child;
    }
    return isCut ? collected(parts) : whole;
}
