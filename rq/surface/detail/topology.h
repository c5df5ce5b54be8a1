#pragma once

#include <limits>
#include <type_traits>

#include <rq/data/Counts.h>
#include <rq/data/Values.h>

// Hot loops over faces see plain pointers: the width of the indices and the kind of counts are told apart once per call.

namespace rq
{
/// Faces that all have the same number of corners.
struct UniformFaces
{
    int64_t faces;
    int64_t corners;

    int64_t entries() const { return faces; }
    int64_t begin(int64_t face) const { return face * corners; }
    int64_t end(int64_t face) const { return (face + 1) * corners; }
};

/// Faces and the point of each corner: what the kernels of the host's geometry take.
///
/// `Point` is as wide as the vertex list, and at least wide enough to number the corners.
template <class Faces, class Point> struct FaceTopology
{
    using Index = Point;

    Faces ranges;
    const Point *points;

    int64_t faces() const { return ranges.entries(); }
    int64_t begin(int64_t face) const { return ranges.begin(face); }
    int64_t end(int64_t face) const { return ranges.end(face); }
    int64_t point(int64_t corner) const { return int64_t(points[corner]); }

    /// The number of corners that faces [first, last) have each; 0 when it differs.
    int64_t cornersOfEach(int64_t first, int64_t last) const
    {
        const int64_t corners = end(first) - begin(first);
        if constexpr (!std::is_same_v<Faces, UniformFaces>)
            for (int64_t face = first + 1; face < last; ++face)
                if (end(face) - begin(face) != corners)
                    return 0;
        return corners;
    }
};

/// Call `visit(FaceTopology)` with the plain pointers of counts and vertex list.
template <class Visit> void visitTopology(const RQ_CountArray &countArray, const RQ_DataArray &vertexList, Visit &&visit)
{
    const auto withPoints = [&]<class Point>(const Values<Point> &points) {
        const Counts counts(countArray);
        if (counts.uniform() >= 0)
        {
            const UniformFaces faces{counts.entries(), counts.uniform()};
            visit(FaceTopology<UniformFaces, Point>{faces, points.data()});
        }
        else
            visit(FaceTopology<Counts, Point>{counts, points.data()});
    };
    if (vertexList.getStorage() == RQ_STORAGE_INT64 || countArray.sumCounts() > std::numeric_limits<int32_t>::max())
        withPoints(Values<int64_t>(vertexList));
    else
        withPoints(Values<int32_t>(vertexList));
}
}  // namespace rq
