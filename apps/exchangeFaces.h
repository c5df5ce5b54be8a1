#pragma once

#include <string>

#include <apps/CommonOptions.h>
#include <host/fwd.h>

namespace rq::app
{
/// Put what the options make of the faces of a detail into their place: subdivided, or cut.
///
/// Shape    every closed polygon goes, with the points that nothing else uses; the new faces follow what is left. Attributes
///          and groups of primitives come along.  Normals of a cage that is subdivided do not, as they are those of its flat
///          faces; nor do its creases, corners and holes, which have shaped the surface.  Packed geometry stays as it is,
///          with a warning
/// Failure  false with the reason; the detail is of no use then.  `file` names it in complaints, which go to standard error
bool exchangeFaces(const MOD_DetailHandle &detail, const CommonOptions &options, const std::string &file,
                   std::string &error);
}  // namespace rq::app
