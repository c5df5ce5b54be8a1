#pragma once

#include <rq/subd/SubdTopology.h>

namespace rq
{
struct PatchTables;
class PatchValues;
}  // namespace rq

class RQ_SubdLimit;
using RQ_SubdLimitHandle = BAS_IntrusivePtr<const RQ_SubdLimit>;

/// A place on a subdivision surface.
///
/// Units  u and v in 0 to 1, clamped.  On a quad (0, 0) is its first corner, (1, 0) the second, (0, 1) the last; on a
///        triangle of the Loop scheme (0, 0) is the first, (1, 0) the second, (0, 1) the third, and u + v is at most 1.  A
///        face of another number of corners, and a triangle of the other schemes, is made of a quad at each corner: (0, 0)
///        is the corner, (1, 0) the middle of the edge that starts there, (1, 1) the middle of the face
struct RQ_SubdSample
{
    int32_t face;
    int32_t corner;  ///< which of a face's quads; ignored on faces that have none
    float u, v;
};

/// The limit surface of one array of values: where endless subdivision leads to.
///
/// Near an irregular point the surface is followed through some levels of subdivision; what is left around the point is one
/// patch that meets its neighbours with the exact positions and tangents of the limit (Loop, Schaefer, Ni, Castano,
/// "Approximating subdivision surfaces with Gregory patches", 2009).
///
/// Ownership  shares the topology; keeps the values at the patches' control points, not the array
/// Threads    immutable, safe to use from any thread; evaluation runs in parallel over samples
class RQ_API RQ_SubdLimit : public BAS_IntrusiveRefCounter<RQ_SubdLimit>
{
public:
    /// `values` has an entry for each point of the mesh, such as "P" of a segment, of 1 to 4 numbers.  Null for anything
    /// else, and when memory does not suffice.
    static RQ_SubdLimitHandle create(const RQ_SubdTopologyHandle &topology, const RQ_DataArrayHandle &values);

    /// The same for values with an entry for each vertex of the mesh, such as texture coordinates.
    ///
    /// Where the values of two faces differ along their edge lies a seam, which the tag of face-varying data tells how to
    /// treat.  Patches are kept for the seams of the vertex attributes that the topology was made with, and made anew for
    /// others.
    static RQ_SubdLimitHandle createFaceVarying(const RQ_SubdTopologyHandle &topology, const RQ_DataArrayHandle &values);
    ~RQ_SubdLimit();

    int64_t getTupleSize() const;

    /// Where the results of each sample go, packed; null where they are not wanted.
    struct Results
    {
        float *values = nullptr;   ///< `getTupleSize` numbers a sample
        float *du = nullptr;       ///< the derivative along u of the face (or quad), as many
        float *dv = nullptr;       ///< along v
        float *normals = nullptr;  ///< the unit normal of a surface in space, 3 numbers a sample; zero where there is none
    };

    /// Evaluate `count` samples.  False when some name no place of the surface (no such face, a hole): these get zeros.
    bool evaluate(const RQ_SubdSample *samples, int64_t count, const Results &results) const;

private:
    using PatchesHandle = BAS_IntrusivePtr<const rq::PatchTables>;

    RQ_SubdLimit(const RQ_SubdTopologyHandle &topology, const PatchesHandle &patches,
                 std::unique_ptr<rq::PatchValues> values);

    RQ_SubdTopologyHandle topology_;
    PatchesHandle patches_;
    std::unique_ptr<rq::PatchValues> values_;
};
