#pragma once

#include <rq/bridge/MSHDetailList.h>
#include <rq/bridge/detail/hasAllPoints.h>

namespace rq
{
/// The attributes of one host primitive that becomes one of the library: those of its vertices and their points, its own,
/// and the detail's, read in place.  Weights only reach rational primitives.
struct NetLists
{
    NetLists(const RQ_MSHDetailList &details, const MSH_Primitive &primitive, const RQ_RefineParms *parms,
             bool isRational = false)
        : areWhole(hasAllPoints(primitive))
    {
        if (!areWhole)
            return;
        vertex = details.createVertex(nullptr, primitive.offset(), parms, RQ_MSHIncludePoint::INCLUDE);
        if (vertex && !isRational)
            vertex = vertex->removeAttribute("Pw");
        uniform = details.createPrimitive(nullptr, primitive.offset(), parms);
        detail = details.createDetail(nullptr, parms);
    }

    bool areWhole;  ///< false, and there are no lists, when a vertex lost its point
    RQ_AttributeListHandle vertex, uniform, detail;
};
}  // namespace rq
