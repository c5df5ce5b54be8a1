#pragma once

#include <vector>

#include <host/bas/Progress.h>
#include <rq/data/Positions.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq
{
/// Which of the arrays of a convexing somebody will read.
struct ConvexWanted
{
    bool sourceVertex = true;
    bool sourceFace = true;
    bool whole = true;
};

/// One convexing of one mesh: what is cut, how, and who may stop it.
struct ConvexTask
{
    rq::Positions positions;
    const RQ_CountArray &counts;
    const RQ_DataArrayHandle &vertexList;
    int limit;
    bool triangulate;
    const RQ_FaceSet *subset;  ///< the faces to cut, null for all
    ConvexWanted wanted;
    BAS_Progress &progress;

    int64_t faces() const { return counts.entries(); }
    int64_t jobs() const;

    /// First face of a job; of job `jobs()`: one past the last face.
    int64_t firstFace(int64_t job, int64_t jobCount) const { return job * faces() / jobCount; }
};

/// Cut into triangles: every face's share of the output is known beforehand, so jobs write in place.
bool convexToTriangles(const ConvexTask &task, RQ_ConvexArrays &arrays);

/// Cut into pieces of up to `limit` corners, or cut only some faces: jobs collect, and their output is joined in job order.
bool convexToPieces(const ConvexTask &task, RQ_ConvexArrays &arrays);

/// For each corner of each piece 1 when the edge that begins there is one of the face's own, 0 when it is a cut.
RQ_DataArrayHandle convexEdgeFlags(const RQ_CountArray &faces, const RQ_CountArray &pieces, const RQ_ConvexArrays &arrays);
}  // namespace rq
