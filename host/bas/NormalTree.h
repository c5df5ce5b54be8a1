#pragma once

#include <span>
#include <vector>

#include <host/bas/Vector.h>
#include <host/plt/types.h>

namespace host
{
/// Unit vectors that each carry a part of a sum, for the question what those near a direction carry together.
///
/// A tree of boxes, halved along the longest side (Bentley, "Multidimensional binary search trees used for associative
/// searching", 1975): boxes that lie wholly within the angle answer with their sum.
///
/// Threads  one object per thread
/// Cost     building takes n log n; a question about vectors along a curve log n, about such that cover the sphere the
///          square root of n
class NormalTree
{
public:
    /// Build over vectors and parts of equal number, copied; what was built before is forgotten.
    HOST_API void build(std::span<const BAS_Vec3d> vectors, std::span<const BAS_Vec3d> parts);

    /// The sum of the parts of all vectors whose dot product with `direction` is at least `cosine`.  Which these are is
    /// exact; the order in which they are added follows from the tree.
    HOST_API BAS_Vec3d sumWithin(const BAS_Vec3d &direction, double cosine) const;

private:
    struct Entry
    {
        BAS_Vec3d vector, part;
    };
    struct Node
    {
        BAS_Vec3d least, greatest;  // of the box
        BAS_Vec3d sum{0.0};
        size_t begin, end;    // of its entries
        size_t children = 0;  // the first of two that follow each other; 0 for a leaf
    };

    void split(size_t node);

    std::vector<Entry> entries_;
    std::vector<Node> nodes_;
};
}  // namespace host
