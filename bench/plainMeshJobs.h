#pragma once

#include <cmath>
#include <cstring>
#include <vector>

#include <Imath/ImathVec.h>

#include <bench/faceMeshes.h>
#include <host/bas/LargeBlocks.h>

// What plain loops in 32-bit floats take for the jobs on meshes: without exactness, without care for ugly input, on one
// thread.  A figure in nanoseconds means something on another machine, or another day, only beside theirs.

namespace bench::plain
{
using Vector = Imath::V3f;
template <class T> using Row = std::vector<T, BAS_BlockAllocator<T>>;

inline Vector at(const FaceMesh &mesh, int32_t point)
{
    const float *p = mesh.position(point);
    return Vector(p[0], p[1], p[2]);
}

inline Vector unit(const Vector &v)
{
    const float squared = v.dot(v);
    return squared > 0.0f ? v * (1.0f / std::sqrt(squared)) : v;
}

/// Twice the area of a face, along its normal.
inline Vector areaVector(const FaceMesh &mesh, const int32_t *points, int64_t count)
{
    const Vector origin = at(mesh, points[0]);
    if (count == 4)
        return (at(mesh, points[2]) - origin) % (at(mesh, points[3]) - at(mesh, points[1]));
    Vector sum(0.0f), last = at(mesh, points[1]) - origin;
    for (int64_t i = 2; i < count; ++i)
    {
        const Vector next = at(mesh, points[i]) - origin;
        sum += last % next;
        last = next;
    }
    return sum;
}

inline Row<Vector> faceNormals(const FaceMesh &mesh)
{
    Row<Vector> normals(size_t(mesh.faces()));
    for (int64_t face = 0; face < mesh.faces(); ++face)
        normals[size_t(face)] = unit(areaVector(mesh, mesh.face(face).data(), mesh.count(face)));
    return normals;
}

/// Weighted by area, which spares the faces' roots.
inline Row<Vector> pointNormals(const FaceMesh &mesh)
{
    Row<Vector> normals(size_t(mesh.points()));
    std::fill(normals.begin(), normals.end(), Vector(0.0f));
    for (int64_t face = 0; face < mesh.faces(); ++face)
    {
        const Vector area = areaVector(mesh, mesh.face(face).data(), mesh.count(face));
        for (const int32_t point : mesh.face(face))
            normals[size_t(point)] += area;
    }
    for (Vector &normal : normals)
        normal = unit(normal);
    return normals;
}

/// The normal of every corner, with creases above 60 degrees.
inline Row<Vector> cuspNormals(const FaceMesh &mesh)
{
    const Row<Vector> faces = faceNormals(mesh);
    Row<int32_t> ends(size_t(mesh.points()) + 1), around(mesh.corners.size());
    std::fill(ends.begin(), ends.end(), 0);
    for (const int32_t point : mesh.corners)
        ++ends[size_t(point) + 1];
    for (size_t point = 1; point < ends.size(); ++point)
        ends[point] += ends[point - 1];
    for (int64_t face = mesh.faces() - 1; face >= 0; --face)
        for (const int32_t point : mesh.face(face))
            around[size_t(--ends[size_t(point) + 1])] = int32_t(face);
    Row<Vector> normals(mesh.corners.size());
    for (int64_t face = 0; face < mesh.faces(); ++face)
        for (int32_t corner = mesh.starts[size_t(face)]; corner < mesh.starts[size_t(face) + 1]; ++corner)
        {
            const size_t point = size_t(mesh.corners[size_t(corner)]);
            const int32_t end = point + 2 < ends.size() ? ends[point + 2] : int32_t(around.size());
            Vector sum(0.0f);
            for (int32_t i = ends[point + 1]; i < end; ++i)
                if (const Vector &other = faces[size_t(around[size_t(i)])]; other.dot(faces[size_t(face)]) >= 0.5f)
                    sum += other;
            normals[size_t(corner)] = unit(sum);
        }
    return normals;
}

/// The corners of all triangles, as points, and where each comes from.
struct Triangles
{
    Row<int32_t> points, corners, faces;
};

/// Cuts off the first ear that no reflex corner lies in, seen along the axis that the face looks along most.
class EarCutter
{
public:
    /// Write the corners of `count - 2` triangles.
    void cut(const FaceMesh &mesh, const int32_t *points, int count, int32_t *corners)
    {
        look(mesh, points, count);
        int left = count, ear = 0, misses = 0;
        while (left > 3)
        {
            if (misses <= left && !isEar(ear))
            {
                ++misses;
                ear = next_[size_t(ear)];
                continue;
            }
            const int from = previous_[size_t(ear)], to = next_[size_t(ear)];
            for (const int corner : {from, ear, to})
                *corners++ = corner;
            next_[size_t(from)] = to;
            previous_[size_t(to)] = from;
            ear = next_[size_t(to)];
            misses = 0;
            --left;
        }
        for (const int corner : {previous_[size_t(ear)], ear, next_[size_t(ear)]})
            *corners++ = corner;
    }

private:
    void look(const FaceMesh &mesh, const int32_t *points, int count)
    {
        const Vector area = areaVector(mesh, points, count);
        int axis = 0;
        for (int i = 1; i < 3; ++i)
            if (std::abs(area[i]) > std::abs(area[axis]))
                axis = i;
        x_.resize(size_t(count));
        y_.resize(size_t(count));
        next_.resize(size_t(count));
        previous_.resize(size_t(count));
        for (int i = 0; i < count; ++i)
        {
            const float *p = mesh.position(points[i]);
            x_[size_t(i)] = area[axis] > 0.0f ? p[(axis + 1) % 3] : -p[(axis + 1) % 3];
            y_[size_t(i)] = p[(axis + 2) % 3];
            next_[size_t(i)] = i + 1 < count ? i + 1 : 0;
            previous_[size_t(i)] = i > 0 ? i - 1 : count - 1;
        }
    }

    float side(int a, int b, int c) const
    {
        const auto x = [this](int i) { return x_[size_t(i)]; };
        const auto y = [this](int i) { return y_[size_t(i)]; };
        return (x(b) - x(a)) * (y(c) - y(a)) - (y(b) - y(a)) * (x(c) - x(a));
    }

    bool isEar(int ear) const
    {
        const int a = previous_[size_t(ear)], c = next_[size_t(ear)];
        if (!(side(a, ear, c) > 0.0f))
            return false;
        for (int p = next_[size_t(c)]; p != a; p = next_[size_t(p)])
            if (side(previous_[size_t(p)], p, next_[size_t(p)]) <= 0.0f && side(a, ear, p) >= 0.0f &&
                side(ear, c, p) >= 0.0f && side(c, a, p) >= 0.0f)
                return false;
        return true;
    }

    std::vector<float> x_, y_;
    std::vector<int> next_, previous_;
};

inline Triangles cutFaces(const FaceMesh &mesh)
{
    const size_t count = size_t(mesh.triangles());
    Triangles made{Row<int32_t>(3 * count), Row<int32_t>(3 * count), Row<int32_t>(count)};
    EarCutter cutter;
    size_t triangle = 0;
    for (int64_t face = 0; face < mesh.faces(); ++face)
    {
        const int32_t *const points = mesh.face(face).data();
        const int corners = int(mesh.count(face));
        int32_t *const to = made.corners.data() + 3 * triangle;
        if (corners == 4)
        {
            const Vector a = at(mesh, points[0]), diagonal = at(mesh, points[2]) - a;
            const bool is02 = ((at(mesh, points[1]) - a) % diagonal).dot(diagonal % (at(mesh, points[3]) - a)) > 0.0f;
            static constexpr int32_t kOrders[2][6] = {{0, 1, 3, 1, 2, 3}, {0, 1, 2, 2, 3, 0}};
            std::memcpy(to, kOrders[is02], sizeof(kOrders[0]));
        }
        else if (corners > 2)
            cutter.cut(mesh, points, corners, to);
        for (int i = 0; i < 3 * (corners - 2); ++i)
        {
            made.points[3 * triangle + size_t(i)] = points[to[i]];
            to[i] += mesh.starts[size_t(face)];
        }
        for (int i = 0; i < corners - 2; ++i)
            made.faces[triangle++] = int32_t(face);
    }
    return made;
}

/// The corners by their new points, and the positions that are left.
struct UsedPoints
{
    Row<int32_t> corners;
    Row<Vector> positions;
};

inline UsedPoints removeUnused(const FaceMesh &mesh)
{
    Row<int32_t> rows(size_t(mesh.points()));
    std::fill(rows.begin(), rows.end(), 0);
    for (const int32_t point : mesh.corners)
        rows[size_t(point)] = 1;
    int32_t used = 0;
    for (int32_t &row : rows)
    {
        const int32_t isUsed = row;
        row = isUsed ? used : -1;
        used += isUsed;
    }
    UsedPoints made{Row<int32_t>(mesh.corners.size()), Row<Vector>(size_t(used))};
    for (size_t corner = 0; corner < mesh.corners.size(); ++corner)
        made.corners[corner] = rows[size_t(mesh.corners[corner])];
    for (size_t point = 0; point < rows.size(); ++point)
        if (rows[point] >= 0)
            made.positions[size_t(rows[point])] = at(mesh, int32_t(point));
    return made;
}
}  // namespace bench::plain
