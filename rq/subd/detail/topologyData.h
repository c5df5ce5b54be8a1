#pragma once

#include <array>
#include <vector>

#include <host/bas/Published.h>
#include <rq/subd/SubdTopology.h>
#include <rq/subd/detail/patchTables.h>
#include <rq/subd/detail/uniformLevels.h>

struct RQ_SubdTopology::Data
{
    /// Ten steps make a million faces of one.
    static constexpr int kDeepestLevel = 10;

    RQ_CountArray counts;  // of the mesh
    RQ_DataArrayHandle vertexList;
    int64_t meshPoints = 0;
    RQ_DataArrayHandle usedPoints;
    rq::Cage cage;
    rq::RefinerHandle refiner;
    std::vector<int32_t> holes;  // faces without a surface

    std::array<host::Published<rq::UniformLevels>, kDeepestLevel + 1> levels;
    host::Published<rq::PatchTables> patches;
    std::vector<host::Published<rq::PatchTables>> channelPatches;  // of each channel of the cage
};
