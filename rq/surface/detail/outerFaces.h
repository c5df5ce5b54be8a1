#pragma once

#include <rq/data/CountArray.h>
#include <rq/data/Positions.h>

namespace rq
{
/// The faces on the outside of a mesh of cells, in the order of the cells.
struct OuterFaces : BAS_IntrusiveRefCounter<OuterFaces>
{
    RQ_CountArray counts;
    RQ_DataArrayHandle vertexList;    ///< the point of each corner, as wide as the list of the cells
    RQ_DataArrayHandle sourceVertex;  ///< entry of that list that each corner came from
    RQ_DataArrayHandle sourceCell;    ///< cell that each face came from

    int64_t getMemoryUsage() const;
};
using OuterFacesHandle = BAS_IntrusivePtr<const OuterFaces>;

/// What a shape of cells makes of them.
struct CellKind
{
    int corners;

    /// Find the outer faces; see `FaceMatching` for what counts.  Made again from the same list they have the same data ids.
    OuterFacesHandle (*findOuterFaces)(const RQ_DataArray &vertexList, int64_t points);

    /// Turn about the faces of cells whose corners go the wrong way round at these positions; the same faces when none does.
    OuterFacesHandle (*turnOutward)(const OuterFacesHandle &faces, const RQ_DataArray &vertexList,
                                    const Positions &positions);
};
extern const CellKind kTetrahedra, kHexahedra;

template <class Shape>
OuterFacesHandle turnOutward(const OuterFacesHandle &faces, const RQ_DataArray &vertexList, const Positions &positions);
}  // namespace rq
