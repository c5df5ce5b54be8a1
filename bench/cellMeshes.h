#pragma once

#include <algorithm>
#include <array>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <bench/Job.h>

namespace bench
{
/// A block of cubes as hexahedra, or each cut into six tetrahedra around its diagonal.
struct CellMesh
{
    std::vector<float> positions;
    std::vector<int32_t> corners;
    int cornersOfEach = 8;
    int64_t outerFaces = 0;

    int64_t cells() const { return int64_t(corners.size()) / cornersOfEach; }
    int64_t points() const { return int64_t(positions.size()) / 3; }
};
using CellMeshPtr = std::shared_ptr<const CellMesh>;

/// `side` cubes each way, in rows; shuffled, both points and cells lie in any order.
inline CellMeshPtr makeCellBlock(int side, int cornersOfEach, bool shuffled)
{
    const auto mesh = std::make_shared<CellMesh>();
    mesh->cornersOfEach = cornersOfEach;
    mesh->outerFaces = int64_t(6) * side * side * (cornersOfEach == 4 ? 2 : 1);
    const int wide = side + 1;
    std::mt19937 random(1);
    std::vector<int32_t> number(size_t(wide) * size_t(wide) * size_t(wide)),
        order(size_t(side) * size_t(side) * size_t(side));
    std::iota(number.begin(), number.end(), 0);
    std::iota(order.begin(), order.end(), 0);
    if (shuffled)
    {
        std::shuffle(number.begin(), number.end(), random);
        std::shuffle(order.begin(), order.end(), random);
    }
    mesh->positions.resize(3 * number.size());
    for (size_t i = 0; i < number.size(); ++i)
        for (int axis = 0, rest = int(i); axis < 3; ++axis, rest /= wide)
            mesh->positions[3 * size_t(number[i]) + size_t(axis)] = float(rest % wide);
    for (const int32_t cube : order)
    {
        const auto at = [&](int x, int y, int z) {
            return number[size_t(cube % side + x + wide * (cube / side % side + y + wide * (cube / side / side + z)))];
        };
        if (cornersOfEach == 8)
            for (const int z : {0, 1})
                mesh->corners.insert(mesh->corners.end(), {at(0, 0, z), at(1, 0, z), at(1, 1, z), at(0, 1, z)});
        else
            for (const std::array<int, 6> &c : {std::array{1, 0, 0, 1, 1, 0},
                                                {1, 1, 0, 0, 1, 0},
                                                {0, 1, 0, 0, 1, 1},
                                                {0, 1, 1, 0, 0, 1},
                                                {0, 0, 1, 1, 0, 1},
                                                {1, 0, 1, 1, 0, 0}})
                mesh->corners.insert(mesh->corners.end(),
                                     {at(0, 0, 0), at(c[0], c[1], c[2]), at(c[3], c[4], c[5]), at(1, 1, 1)});
    }
    return mesh;
}

/// Enter the rows of finding the faces outside of about a million cells.  Read: the corners of the cells.  Written: point
/// and source of each corner outside, and the source of each face.  The check is the number of faces.
inline void addOuterFaces(const char *who, int threads, const std::function<Work(const CellMeshPtr &)> &prepare)
{
    struct Input
    {
        const char *name;
        int side, cornersOfEach;
        bool shuffled;
    };
    for (const Input &input : {Input{"hexes1M", 100, 8, false}, Input{"tets1M", 55, 4, false},
                               Input{"hexes1M-shuffled", 100, 8, true}, Input{"tets1M-shuffled", 55, 4, true}})
        add({"outer-faces", input.name, who, threads, 0.0, 0.0, false, [=] {
                 const CellMeshPtr mesh = makeCellBlock(input.side, input.cornersOfEach, input.shuffled);
                 Work work = prepare(mesh);
                 work.items = double(mesh->cells());
                 work.bytes = 4.0 * double(mesh->corners.size()) +
                              double(mesh->outerFaces) * (4.0 + 8.0 * (input.cornersOfEach == 4 ? 3.0 : 4.0));
                 return work;
             }});
}
}  // namespace bench
