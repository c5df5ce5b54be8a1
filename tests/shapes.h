#pragma once

#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace tests
{
/// A polygon mesh in plain arrays: what every layer's tests, the benchmarks and the peers can build from.
///
/// Shape  three floats per point, one corner count per face, the faces' point numbers one after the other
struct MeshShape
{
    std::string name;
    std::vector<float> positions;
    std::vector<int> counts;
    std::vector<int> indices;

    int addPoint(float x, float y, float z)
    {
        positions.insert(positions.end(), {x, y, z});
        return int(positions.size() / 3) - 1;
    }

    void addFace(const std::vector<int> &corners)
    {
        counts.push_back(int(corners.size()));
        indices.insert(indices.end(), corners.begin(), corners.end());
    }

    int pointCount() const { return int(positions.size() / 3); }

    MeshShape scaled(std::string newName, float x, float y, float z) const
    {
        MeshShape result = *this;
        result.name = std::move(newName);
        for (size_t i = 0; i < result.positions.size(); i += 3)
        {
            result.positions[i] *= x;
            result.positions[i + 1] *= y;
            result.positions[i + 2] *= z;
        }
        return result;
    }
};

/// One face through the points (x, y, z) in order.
inline MeshShape faceShape(std::string name, const std::vector<std::vector<float>> &points)
{
    MeshShape shape;
    shape.name = std::move(name);
    std::vector<int> corners;
    for (const std::vector<float> &p : points)
        corners.push_back(shape.addPoint(p[0], p[1], p.size() > 2 ? p[2] : 0.0f));
    if (!corners.empty())
        shape.addFace(corners);
    return shape;
}

/// Side 1 around the origin, faces wound counter-clockwise seen from outside.
inline MeshShape cubeShape()
{
    MeshShape shape;
    shape.name = "cube";
    for (int i = 0; i < 8; ++i)
        shape.addPoint(i & 1 ? 0.5f : -0.5f, i & 2 ? 0.5f : -0.5f, i & 4 ? 0.5f : -0.5f);
    for (const std::vector<int> &face :
         {std::vector<int>{0, 2, 3, 1}, {4, 5, 7, 6}, {0, 1, 5, 4}, {2, 6, 7, 3}, {0, 4, 6, 2}, {1, 3, 7, 5}})
        shape.addFace(face);
    return shape;
}

/// Half a globe of 8 meridians whose quads at the pole have two corners in one place.
inline MeshShape poleShape()
{
    MeshShape shape;
    shape.name = "pole";
    constexpr int kAround = 8, kRows = 4;
    for (int row = 0; row <= kRows; ++row)
        for (int i = 0; i < kAround; ++i)
        {
            const double up = row == kRows ? M_PI_2 : M_PI_2 * row / kRows;
            const double across = row == kRows ? 0.0 : std::cos(up);
            const double turn = 2.0 * M_PI * i / kAround;
            shape.addPoint(float(across * std::cos(turn)), float(across * std::sin(turn)), float(std::sin(up)));
        }
    for (int row = 0; row < kRows; ++row)
        for (int i = 0; i < kAround; ++i)
        {
            const int right = (i + 1) % kAround;
            shape.addFace({row * kAround + i, row * kAround + right, (row + 1) * kAround + right, (row + 1) * kAround + i});
        }
    return shape;
}

/// A row of quads that rises like stairs, so that normals differ.
inline MeshShape stripShape(int quads)
{
    MeshShape shape;
    shape.name = "strip";
    for (int i = 0; i <= quads; ++i)
    {
        shape.addPoint(float(i), 0.0f, float(i / 2));
        shape.addPoint(float(i), 1.0f, float(i / 2));
    }
    for (int i = 0; i < quads; ++i)
        shape.addFace({2 * i, 2 * i + 2, 2 * i + 3, 2 * i + 1});
    return shape;
}

inline MeshShape starShape(int spikes)
{
    std::vector<std::vector<float>> points;
    for (int i = 0; i < 2 * spikes; ++i)
    {
        const double radius = i % 2 ? 0.35 : 1.0, turn = M_PI * i / spikes;
        points.push_back({float(radius * std::cos(turn)), float(radius * std::sin(turn))});
    }
    return faceShape("star", points);
}

/// A ribbon that winds inwards `turns` times.
inline MeshShape spiralShape(int turns, int perTurn)
{
    std::vector<std::vector<float>> points;
    const int steps = turns * perTurn;
    for (int i = 0; i <= 2 * steps + 1; ++i)
    {
        const bool back = i > steps;
        const int k = back ? 2 * steps + 1 - i : i;
        const double radius = 1.0 + double(k) / perTurn + (back ? 0.0 : 0.5), turn = 2.0 * M_PI * k / perTurn;
        points.push_back({float(radius * std::cos(turn)), float(radius * std::sin(turn))});
    }
    return faceShape("spiral", points);
}

/// A square whose square hole is joined to the outline by an edge that is walked twice.
inline MeshShape keyholeShape()
{
    MeshShape shape = faceShape("keyhole", {{0, 0}, {4, 0}, {4, 4}, {0, 4}, {1, 1}, {1, 3}, {3, 3}, {3, 1}});
    shape.counts = {10};
    shape.indices = {0, 1, 2, 3, 0, 4, 5, 6, 7, 4};
    return shape;
}

/// A triangle fan around one point.
inline MeshShape fanShape(int faces)
{
    MeshShape shape;
    shape.name = "fan";
    shape.addPoint(0.0f, 0.0f, 0.1f);
    for (int i = 0; i < faces; ++i)
        shape.addPoint(float(std::cos(2.0 * M_PI * i / faces)), float(std::sin(2.0 * M_PI * i / faces)), 0.0f);
    for (int i = 0; i < faces; ++i)
        shape.addFace({0, 1 + i, 1 + (i + 1) % faces});
    return shape;
}

/// The shapes that every operation on polygon meshes must survive, the degenerate ones first.
inline const std::vector<MeshShape> &meshShapes()
{
    static const std::vector<MeshShape> shapes = [] {
        std::vector<MeshShape> all;
        all.push_back({"empty", {}, {}, {}});
        all.push_back({"points only", {0, 0, 0, 1, 0, 0, 0, 1, 0}, {}, {}});
        all.push_back({"faces of no, one and two corners", {0, 0, 0, 1, 0, 0, 0, 1, 0}, {0, 1, 2, 3}, {2, 0, 1, 0, 1, 2}});
        all.push_back(faceShape("all corners in one place", {{1, 2, 3}, {1, 2, 3}, {1, 2, 3}, {1, 2, 3}, {1, 2, 3}}));
        all.push_back(faceShape("line", {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {1.5f, 0}}));
        all.push_back(faceShape("repeated points", {{0, 0}, {0, 0}, {2, 0}, {2, 0}, {2, 0}, {2, 2}, {0, 2}, {0, 2}}));
        all.push_back(
            faceShape("collinear runs", {{0, 0}, {1, 0}, {2, 0}, {3, 0}, {3, 1}, {3, 2}, {2, 2}, {1, 2}, {0, 2}, {0, 1}}));
        all.push_back(faceShape("bow tie", {{0, 0}, {2, 2}, {2, 0}, {0, 2}}));
        all.push_back(
            faceShape("bow tie of eight corners", {{0, 0}, {1, 1}, {2, 2}, {3, 1}, {3, 0}, {1, 1.5f}, {0, 2}, {-1, 1}}));
        all.push_back(
            faceShape("not a number", {{0, 0}, {std::numeric_limits<float>::quiet_NaN(), 0}, {1, 1}, {0.5f, 2}, {0, 1}}));
        all.push_back(faceShape("triangle", {{0, 0}, {1, 0}, {0, 1}}));
        all.push_back(faceShape("non-planar quad", {{0, 0, 0}, {1, 0, 0.5f}, {1, 1, 0}, {0, 1, 0.5f}}));
        all.push_back(faceShape("dart", {{0, 0}, {2, 1}, {0, 2}, {0.5f, 1}}));
        all.push_back(
            faceShape("tilted hexagon", {{2, 0, 0}, {1, 2, 1}, {-1, 2, 1}, {-2, 0, 0}, {-1, -2, -1}, {1, -2, -1}}));
        all.push_back(cubeShape());
        all.push_back(cubeShape().scaled("mirrored cube", -1.0f, 1.0f, 1.0f));
        all.push_back(cubeShape().scaled("tiny cube", 1e-18f, 1e-18f, 1e-18f));
        all.push_back(cubeShape().scaled("huge cube", 1e18f, 1e18f, 1e18f));
        all.push_back(poleShape());
        all.push_back(stripShape(6));
        all.push_back(starShape(7));
        all.push_back(spiralShape(3, 12));
        all.push_back(keyholeShape());
        all.push_back(
            {"non-manifold edge", {0, 0, 0, 0, 0, 1, 1, 0, 0, 0, 1, 0, -1, 0, 0}, {3, 3, 3}, {0, 1, 2, 0, 1, 3, 0, 1, 4}});
        all.push_back({"two triangles that meet in a point",
                       {0, 0, 0, 1, 0, 0, 1, 1, 0, -1, 0, 0, -1, -1, 0},
                       {3, 3},
                       {0, 1, 2, 0, 3, 4}});
        all.push_back({"unused points", {9, 9, 9, 0, 0, 0, 1, 0, 0, 8, 8, 8, 1, 1, 0, 0, 1, 0, 7, 7, 7}, {4}, {1, 2, 4, 5}});
        MeshShape open = cubeShape();
        open.name = "cube without a lid";
        open.counts.pop_back();
        open.indices.resize(open.indices.size() - 4);
        all.push_back(open);
        all.push_back(fanShape(10000));
        return all;
    }();
    return shapes;
}

/// The shape of that name, the empty one when there is none.
inline const MeshShape &meshShape(const std::string &name)
{
    for (const MeshShape &shape : meshShapes())
        if (shape.name == name)
            return shape;
    return meshShapes().front();
}
}  // namespace tests
