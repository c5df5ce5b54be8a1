#pragma once

#include <rq/attrib/AttributeList.h>
#include <rq/surface/detail/UsedPoints.h>

namespace rq
{
/// What is left of the points of a mesh, in their order.
struct KeptPoints
{
    RQ_DataArrayHandle points;      ///< the rows that they were
    RQ_DataArrayHandle vertexList;  ///< the corners with the points that they have now
    RQ_AttributeListHandle shared;  ///< views of the attributes
};

/// Drop what is not used of the points of a vertex list.  Made again of the same list it has the same data ids.
KeptPoints keepUsedPoints(const UsedPoints &used, const RQ_DataArrayHandle &vertexList,
                          const RQ_AttributeListHandle &shared);

/// The used points in order.
RQ_DataArrayHandle usedRows(const UsedPoints &used, bool narrow);

/// Whether 32 bits do for the points of a vertex list.
bool fitNarrow(const UsedPoints &used, const RQ_DataArray &vertexList);
}  // namespace rq
