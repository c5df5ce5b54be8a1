#pragma once

#include <string>

#include <apps/CommonOptions.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq::app
{
/// A mesh of a file, subdivided and cut as the options ask; the mesh itself when they ask for nothing.
///
/// A mesh that cannot be subdivided, or not cut, stays as it is.  What is wrong with it goes to standard error.
RQ_PolygonMeshHandle preparedMesh(const RQ_PolygonMeshHandle &mesh, const CommonOptions &options, const std::string &file);

/// The same of a primitive; what is no mesh stays as it is.
RQ_PrimitiveHandle preparedPrimitive(const RQ_PrimitiveHandle &primitive, const CommonOptions &options,
                                     const std::string &file);
}  // namespace rq::app
