#pragma once

#include <host/bas/FaceLanes.h>
#include <rq/surface/Convexer.h>
#include <rq/surface/detail/convexing.h>

namespace rq
{
/// The arrays of a convexing; null pointers are those that nobody wants.
template <class Index> struct TriangleOutputs
{
    Index *points;
    Index *sourceVertex;
    Index *sourceFace;
    uint8_t *whole;
};

/// Cuts faces of any size into triangles and writes these where they belong: few corners in groups of one size, which form
/// as the faces come, many corners one face after the other.
template <class Topology, class Index> class NgonWriter
{
public:
    NgonWriter(const ConvexTask &task, const Topology &topology, const TriangleOutputs<Index> &outputs)
        : topology_(topology), positions_(task.positions), flat_(task.positions.flat()), outputs_(outputs)
    {
        convexer_.setSource(task.positions, task.vertexList);
    }

    /// Cut a face of three and more corners, now or later; `triangle` is its first one's place.
    void add(int64_t face, int64_t triangle)
    {
        const int64_t begin = topology_.begin(face), corners = topology_.end(face) - begin;
        if (corners == 3)
            put(triangle, face, begin, begin + 1, begin + 2);
        else if (corners > host::FaceLanes::kMostCorners)
            cutAlone({face, triangle});
        else
            addToGroup({face, triangle}, begin, int(corners));
    }

    /// Cut those that still wait.
    void finish()
    {
        for (int corners = 0; corners <= host::FaceLanes::kMostCorners; ++corners)
            if (groups_[corners].count > 0)
                cutGroup(corners);
    }

    /// Triangles for which no proper cut was left.
    int64_t forcedCount() const { return forced_; }

private:
    struct Face
    {
        int64_t face;
        int64_t triangle;
    };

    struct Group
    {
        int count = 0;
        Face faces[host::FaceLanes::kCount];
    };

    void addToGroup(const Face &face, int64_t begin, int corners)
    {
        // By the time that the group is full, the positions have come from memory.
        if (flat_)
            for (int64_t i = begin; i < begin + corners; ++i)
                __builtin_prefetch(flat_ + 3 * topology_.point(i));
        Group &group = groups_[corners];
        group.faces[group.count++] = face;
        if (group.count == host::FaceLanes::kCount)
            cutGroup(corners);
    }

    void cutGroup(int corners)
    {
        Group &group = groups_[corners];
        for (int i = 0; i < group.count; ++i)
            gather(i, topology_.begin(group.faces[i].face), corners);
        const uint32_t done = lanes_.cut(corners, group.count);
        for (int i = 0; i < group.count; ++i)
        {
            const Face &face = group.faces[i];
            if (!(done >> i & 1))
            {
                cutAlone(face);
                continue;
            }
            const int64_t begin = topology_.begin(face.face);
            for (int k = 0; k + 2 < corners; ++k)
            {
                const host::FaceLanes::Triangle t = lanes_.triangle(i, k);
                put(face.triangle + k, face.face, begin + t.a, begin + t.b, begin + t.c);
            }
        }
        group.count = 0;
    }

    void gather(int lane, int64_t begin, int corners)
    {
        for (int i = 0; i < corners; ++i)
        {
            const int64_t point = topology_.point(begin + i), at = 3 * point;
            lanes_.setCorner(lane, i, flat_ ? BAS_Vec3d(flat_[at], flat_[at + 1], flat_[at + 2]) : positions_[point]);
        }
    }

    void cutAlone(const Face &face)
    {
        const int64_t begin = topology_.begin(face.face), corners = topology_.end(face.face) - begin;
        convexer_.processFace(corners, begin, 3, true);
        forced_ += convexer_.getForcedCount();
        const int64_t *list = convexer_.getVertexList(0);
        for (int64_t i = 0; i < corners - 2; ++i, list += 3)
            put(face.triangle + i, face.face, list[0], list[1], list[2]);
    }

    /// Write a triangle: its corners, their points and its face.
    void put(int64_t triangle, int64_t face, int64_t a, int64_t b, int64_t c) const
    {
        Index *const point = outputs_.points + 3 * triangle;
        point[0] = topology_.points[a];
        point[1] = topology_.points[b];
        point[2] = topology_.points[c];
        if (outputs_.sourceVertex)
        {
            Index *const corner = outputs_.sourceVertex + 3 * triangle;
            corner[0] = Index(a);
            corner[1] = Index(b);
            corner[2] = Index(c);
        }
        if (outputs_.sourceFace)
            outputs_.sourceFace[triangle] = Index(face);
    }

    const Topology &topology_;
    const Positions &positions_;
    const float *const flat_;
    const TriangleOutputs<Index> &outputs_;
    host::FaceLanes lanes_;
    RQ_Convexer convexer_;
    int64_t forced_ = 0;
    Group groups_[host::FaceLanes::kMostCorners + 1];  // by number of corners
};
}  // namespace rq
