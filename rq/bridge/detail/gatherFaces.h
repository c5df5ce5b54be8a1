#pragma once

#include <host/bas/Progress.h>
#include <host/elm/Range.h>
#include <rq/bridge/detail/FaceLists.h>

namespace rq
{
/// The faces of some primitives, and their open polygons.
struct GatheredFaces
{
    FaceLists closed;
    FaceLists open;
    bool hasParts = false;  ///< some faces are not whole primitives

    bool isEmpty() const { return closed.faces() == 0 && open.faces() == 0; }

    /// Append what was gathered of the primitives that follow.
    void append(GatheredFaces &following);
};

/// Append the polygons of a range, and the faces of its fans, strips, soups and grids.
///
/// A face with a vertex that has no point is left out.  Counts and then fills blocks of primitives, so the result is the
/// same for any number of threads.  An interruption leaves `all` as it was.
void gatherFaces(const MSH_Detail &detail, const ELM_Range &range, GatheredFaces &all, BAS_Progress &progress);
}  // namespace rq
