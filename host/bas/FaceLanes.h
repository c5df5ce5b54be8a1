#pragma once

#include <cstdint>

#include <host/bas/Vector.h>
#include <host/plt/types.h>

namespace host
{
/// Cut faces of a few corners into triangles, up to eight of one size at a time.
///
/// Shape    n corners leave as n - 2 triangles, as `BAS_Convex` cuts the face as seen along its Newell vector
/// Failure  faces that need exact numbers or cross themselves are not cut, and `BAS_Convex` has to
/// Threads  one object per thread
/// Cost     hardly depends on how many of the eight there are; no memory beyond the object
class FaceLanes
{
public:
    static constexpr int kCount = 8;
    static constexpr int kMostCorners = 16;

    struct Triangle
    {
        int a, b, c;
    };

    void setCorner(int face, int corner, const BAS_Vec3d &position)
    {
        for (int axis = 0; axis < 3; ++axis)
            corners_[corner][axis][face] = position[axis];
    }

    /// Cut the first `faces` faces, of which `corners` corners each have been set, 3 to `kMostCorners`.  Answers with a bit
    /// for each: 0 when it has not been cut.
    HOST_API uint32_t cut(int corners, int faces);

    /// Triangle `i` of `corners - 2` of a face that has been cut.
    Triangle triangle(int face, int i) const
    {
        const auto &corners = triangles_[i];
        return {corners[0][face], corners[1][face], corners[2][face]};
    }

private:
    alignas(64) double corners_[kMostCorners][3][kCount] = {};
    alignas(64) int32_t triangles_[kMostCorners - 2][3][kCount];
};
}  // namespace host
