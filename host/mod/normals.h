#pragma once

#include <host/mod/NormalFaces.h>

/// Compute normals of points, or of vertices with edges sharper than `cuspAngle` kept hard.
///
/// Shape    a detached attribute of `owner` (point or vertex): 3 x real32, type info normal, a row for each offset.  Rows of
///          elements that no face uses are 0.
/// Units    `cuspAngle` in degrees, for vertices only: 0 and below is faceted, 180 and above smooth
/// Failure  null for another owner, faces of another topology, and when memory is exhausted.  A face with a vertex that has
///          no point counts for nothing.
/// Threads  runs in parallel; the result does not depend on the number of threads
/// Cost     two passes over the faces' corners, about 30 bytes of temporary memory a corner where faces differ in size
HOST_API ELM_AttributeHandle MODcomputeNormals(const MSH_Detail &detail, ELM_Owner owner, double cuspAngle);

/// The same, with what is known of the faces from another snapshot.
HOST_API ELM_AttributeHandle MODcomputeNormals(const MSH_Detail &detail, const MOD_NormalFaces &faces, ELM_Owner owner,
                                               double cuspAngle);
