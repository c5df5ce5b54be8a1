#pragma once

#include <string>

#include <apps/CommonOptions.h>
#include <host/fwd.h>

namespace rq::app
{
/// Which primitives of a detail give way to faces.
struct Exchanged
{
    bool polygons = false;  ///< closed ones, to what the options make of them: subdivided, or cut
    bool shapes = false;    ///< all else that stands for faces, from strips of triangles to spheres and metaballs; cells to
                            ///< the faces outside.  Subdivided or cut as well
};

/// Whether a detail has shapes other than polygons that stand for faces.
bool hasShapes(const MSH_Detail &detail);

/// Put faces into the place of primitives of a detail.
///
/// Shape    what is exchanged goes, with the points that nothing else uses; the new faces follow what is left, with their
///          attributes and groups of primitives.  Normals of a cage that is subdivided do not come along, as they are those
///          of its flat faces; nor do its creases, corners and holes, which have shaped the surface.  Packed geometry stays
///          as it is, with a warning
/// Failure  false with the reason; the detail is of no use then.  `file` names it in complaints, which go to standard error
bool exchangeFaces(const MOD_DetailHandle &detail, Exchanged exchanged, const CommonOptions &options,
                   const std::string &file, std::string &error);
}  // namespace rq::app
