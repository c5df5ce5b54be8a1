#pragma once

#include <vector>

#include <rq/subd/SubdFault.h>
#include <rq/surface/PrimSubdivisionMesh.h>

namespace rq
{
/// How a surface behaves at its boundary; the order is that of the tag's values.
enum class VertexBoundary
{
    None,
    EdgeOnly,
    EdgeAndCorner
};

/// Where face-varying data is linear; the order is that of the tag's values.
enum class FaceVaryingLinear
{
    None,
    CornersOnly,
    CornersPlus1,
    CornersPlus2,
    Boundaries,
    All
};

/// Values per face corner, with the corners that share one told apart from those with a seam between them.
struct CageChannel
{
    std::vector<BAS_StringHolder> names;  ///< of the vertex attributes with these seams
    std::vector<int32_t> values;          ///< for each corner the number of its value
    std::vector<int32_t> sources;         ///< for each value the first corner that has it
};

/// A checked mesh in plain arrays, as the evaluation wants it.
struct Cage
{
    RQ_Scheme scheme = RQ_SCHEME_CATMULL_CLARK;
    VertexBoundary boundary = VertexBoundary::EdgeAndCorner;
    FaceVaryingLinear linear = FaceVaryingLinear::CornersPlus1;
    bool chaikin = false;
    bool smoothTriangles = false;

    int32_t pointCount = 0;
    bool onlyQuads = false;
    std::vector<int32_t> counts;
    std::vector<int32_t> points;   ///< of each corner
    std::vector<int32_t> creases;  ///< two points each
    std::vector<float> creaseSharpness;
    std::vector<int32_t> corners;
    std::vector<float> cornerSharpness;
    std::vector<int32_t> holes;  ///< faces, in increasing order
    std::vector<CageChannel> channels;

    int32_t faces() const { return int32_t(counts.size()); }
};

/// Check the topology of a mesh as it came.  False when there is a fatal fault.
bool checkCage(const RQ_PrimSubdivisionMesh &mesh, RQ_SubdFaults &faults);

/// Read a mesh that was checked.
void readCage(const RQ_PrimSubdivisionMesh &mesh, Cage &cage, RQ_SubdFaults &faults);

/// Keep the points of some rows only, in increasing order; all faces use no others.
void renumberPoints(Cage &cage, const RQ_DataArrayHandle &rows);

/// Read the tags: whatever names nothing is left out with a fault.
void readCageTags(const RQ_PrimSubdivisionMesh &mesh, Cage &cage, RQ_SubdFaults &faults);

/// The seams of an array with an entry for each corner: corners of one point share a value where their tuples are the same.
CageChannel findSeams(const RQ_DataArray &array, const Cage &cage);

/// Find the seams of all floating-point vertex attributes of the first segment.
void readCageChannels(const RQ_AttributeListHandle &vertex, Cage &cage);
}  // namespace rq
