#pragma once

#include <vector>

#include <host/bas/Progress.h>
#include <rq/bridge/MSHDetailList.h>
#include <rq/prim/Primitive.h>

namespace rq
{
/// A point mesh of some points of the details, with their attributes and those of the detail.
RQ_PrimitiveHandle makePointMesh(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &points,
                                 const RQ_RefineParms *parms);

/// The same in pieces of as many points as the options allow.
void makePointMeshes(const RQ_MSHDetailList &details, const RQ_MSHOffsetList &points, const RQ_RefineParms *parms,
                     std::vector<RQ_PrimitiveHandle> &meshes);

/// The points that no primitive uses, or all points when the options say so, as point meshes.  Where points are to be
/// instances, those that name a file make a mesh of their own for each file, in order of the first point, which has the
/// name as an attribute of the detail.
void makeLoosePointMeshes(const RQ_MSHDetailList &details, const RQ_RefineParms *parms, BAS_Progress &progress,
                          std::vector<RQ_PrimitiveHandle> &meshes);
}  // namespace rq
