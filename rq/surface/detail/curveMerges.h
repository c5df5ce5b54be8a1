#pragma once

#include <rq/attrib/AttributeMerge.h>
#include <rq/surface/PrimCurveMesh.h>

// How the lists of a curve come from those of the mesh, the same way for all curves.
struct RQ_PrimCurveMesh::CurveMerges : BAS_IntrusiveRefCounter<CurveMerges>
{
    explicit CurveMerges(const RQ_PrimCurveMesh &mesh)
        : whole(mapOf(mesh.uniform_), mapOf(mesh.detail_)), vertex(withUV(mesh, whole))
    {}

    RQ_AttributeMerge whole;       // of uniform and detail attributes
    RQ_AttributeMapHandle vertex;  // of the vertex attributes, and behind them "uv" where no list has it

private:
    static RQ_AttributeMapHandle mapOf(const RQ_AttributeListHandle &list) { return list ? list->getMap() : nullptr; }

    static RQ_AttributeMapHandle withUV(const RQ_PrimCurveMesh &mesh, const RQ_AttributeMerge &whole)
    {
        static const BAS_StringHolder kUV = BAS_StringHolder::literal("uv");
        const RQ_AttributeMapHandle own = mapOf(mesh.vertex_);
        if (!own || own->hasName(kUV) || whole.map->hasName(kUV))
            return own;
        const RQ_AttributeMapHandle map(new RQ_AttributeMap(*own));
        map->add(kUV, false);
        return map;
    }
};
