#pragma once

#include <array>
#include <initializer_list>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>

#include <bench/meshes.h>

namespace bench
{
/// A mesh of faces with any number of corners which, seen from above, cover a rectangle without gaps or overlaps.
struct FaceMesh
{
    std::vector<float> positions;
    std::vector<int32_t> starts{0};  // of each face among the corners, and behind the last their number
    std::vector<int32_t> corners;
    double area = 0.0;  // seen from above

    int64_t points() const { return int64_t(positions.size() / 3); }
    int64_t faces() const { return int64_t(starts.size()) - 1; }
    int64_t triangles() const { return int64_t(corners.size()) - 2 * faces(); }
    const float *position(int64_t point) const { return positions.data() + 3 * point; }
    std::span<const int32_t> face(int64_t i) const { return {corners.data() + starts[size_t(i)], size_t(count(i))}; }
    int64_t count(int64_t face) const { return starts[size_t(face) + 1] - starts[size_t(face)]; }

    void addFace(std::span<const int32_t> points)
    {
        corners.insert(corners.end(), points.begin(), points.end());
        starts.push_back(int32_t(corners.size()));
    }
    void addFace(std::initializer_list<int32_t> points) { addFace({points.begin(), points.size()}); }

    /// Keep the first faces only, and all points.
    void keepFaces(int64_t count)
    {
        starts.resize(size_t(count) + 1);
        corners.resize(size_t(starts.back()));
    }

    /// Put a point that no face uses behind each.
    void scatterPoints()
    {
        std::vector<float> scattered;
        for (int64_t point = 0; point < points(); ++point)
            for (int turn = 0; turn < 2; ++turn)
                scattered.insert(scattered.end(), position(point), position(point) + 3);
        positions = std::move(scattered);
        for (int32_t &corner : corners)
            corner *= 2;
    }
};

inline FaceMesh quadFaces(int cells)
{
    QuadMesh quads(cells);
    FaceMesh mesh;
    mesh.area = double(cells) * cells;
    for (int64_t face = 1; face <= quads.faces(); ++face)
        mesh.starts.push_back(int32_t(4 * face));
    mesh.positions = std::move(quads.positions);
    mesh.corners = std::move(quads.indices);
    return mesh;
}

/// Each quad cut in two, along either diagonal in turn.
inline FaceMesh triangleFaces(int cells)
{
    const FaceMesh quads = quadFaces(cells);
    FaceMesh mesh;
    mesh.positions = quads.positions;
    mesh.area = quads.area;
    for (int64_t face = 0; face < quads.faces(); ++face)
    {
        const auto q = quads.face(face);
        const size_t turn = size_t(face % cells + face / cells) % 2;
        mesh.addFace({q[0], q[1], q[2 + turn]});
        mesh.addFace({q[turn], q[2], q[3]});
    }
    return mesh;
}

/// A tenth of the faces have 5 to 12 corners, many of them reflex; a fiftieth are quads with a reflex corner or their
/// neighbours.
class MixedFaces
{
public:
    explicit MixedFaces(int cells) : random_(3)
    {
        const QuadMesh quads(cells);
        mesh_.positions = quads.positions;
        mesh_.area = double(cells) * cells;
        for (int row = 0; row < cells; ++row)
            for (int column = 0; column < cells; ++column)
            {
                const int32_t *q = quads.indices.data() + 4 * (int64_t(row) * cells + column);
                // Faces across a step are too steep to be judged from above.
                const bool level = row % 64 < 63 && column % 64 < 62 && column + 1 < cells;
                const float pick = 0.5f + 0.5f * random_.symmetric();
                if (level && pick < 0.05f)
                {
                    addPair(q);
                    ++column;
                }
                else if (level && pick > 0.99f)
                    addDart(q);
                else
                    mesh_.addFace({q[0], q[1], q[2], q[3]});
            }
    }

    FaceMesh take() { return std::move(mesh_); }

private:
    /// Two neighbours whose common edge becomes a zigzag.
    void addPair(const int32_t *q)
    {
        const int steps = 1 + int(random_.next() % 8);
        std::vector<int32_t> left{q[0], q[1]}, right{q[1] + 1, q[2] + 1, q[2]}, zigzag;
        for (int i = 0; i < steps; ++i)
        {
            const float along = float(i + 1) / float(steps + 1);
            // Lower towards the ends, so that it keeps away from the edges that meet there.
            const float height = (0.675f + 0.225f * random_.symmetric()) * along * (1.0f - along);
            zigzag.push_back(addPoint(q[1], q[2], along, i % 2 ? height : -height));
        }
        left.insert(left.end(), zigzag.begin(), zigzag.end());
        left.insert(left.end(), {q[2], q[3]});
        right.insert(right.end(), zigzag.rbegin(), zigzag.rend());
        right.push_back(q[1]);
        mesh_.addFace(left);
        mesh_.addFace(right);
    }

    /// A quad in two quads, through a point near the first corner.
    void addDart(const int32_t *q)
    {
        const int32_t inner = addPoint(q[0], q[2], 0.35f + 0.05f * random_.symmetric(), 0.0f);
        mesh_.addFace({q[0], q[1], inner, q[3]});
        mesh_.addFace({inner, q[1], q[2], q[3]});
    }

    int32_t addPoint(int32_t from, int32_t to, float along, float aside)
    {
        std::array<float, 3> at;
        for (int axis = 0; axis < 3; ++axis)
            at[size_t(axis)] = mesh_.position(from)[axis] * (1.0f - along) + mesh_.position(to)[axis] * along;
        at[0] += aside;
        mesh_.positions.insert(mesh_.positions.end(), at.begin(), at.end());
        return int32_t(mesh_.points() - 1);
    }

    FaceMesh mesh_;
    Random random_;
};

/// Those faces of a mesh that have more than four corners.
inline FaceMesh onlyLargeFaces(const FaceMesh &whole)
{
    FaceMesh mesh;
    mesh.positions = whole.positions;
    for (int64_t face = 0; face < whole.faces(); ++face)
        if (whole.count(face) > 4)
        {
            const auto points = whole.face(face);
            mesh.addFace(points);
            for (size_t i = 0; i < points.size(); ++i)
            {
                const float *a = whole.position(points[i]), *b = whole.position(points[(i + 1) % points.size()]);
                mesh.area += 0.5 * (double(a[0]) * b[1] - double(a[1]) * b[0]);
            }
        }
    return mesh;
}

/// The mesh of a name that jobs use.
inline std::shared_ptr<const FaceMesh> faceMesh(const std::string &name)
{
    const auto make = [&name] {
        if (name == "quads100")
            return quadFaces(10);
        if (name == "quads1M")
            return quadFaces(1000);
        if (name == "quads4M")
            return quadFaces(2000);
        if (name == "tris2M")
            return triangleFaces(1000);
        if (name == "mixed1M")
            return MixedFaces(1000).take();
        if (name == "ngons")
            return onlyLargeFaces(MixedFaces(1000).take());
        throw std::invalid_argument("no mesh " + name);
    };
    return std::make_shared<const FaceMesh>(make());
}
}  // namespace bench
