#pragma once

#include <string>

#include <apps/CommonOptions.h>
#include <host/fwd.h>

namespace rq::app
{
/// Which primitives of a detail give way to polygons.
struct Exchanged
{
    bool polygons = false;  ///< closed polygons, to what the options make of them: subdivided, or cut
    bool shapes = false;    ///< all else that stands for faces, from strips of triangles to spheres and metaballs; cells to
                            ///< the faces outside.  Subdivided or cut as well
    bool curves = false;    ///< curves and channels, to open polygons
};

/// Put polygons into the place of primitives of a detail that has such.
///
/// Shape    what is exchanged goes, with the points that nothing else uses; the new polygons follow what is left, with their
///          attributes and groups of primitives.  Normals of a cage that is subdivided do not come along, as they are those
///          of its flat faces; nor do its creases, corners and holes, which have shaped the surface.  Packed geometry stays
///          as it is, with a warning where polygons are to be exchanged
/// Failure  false with the reason; the detail is of no use then.  `file` names it in complaints, which go to standard error
bool exchangeShapes(const MOD_DetailHandle &detail, Exchanged exchanged, const CommonOptions &options,
                    const std::string &file, std::string &error);
}  // namespace rq::app
