#include <host/msh/Volume.h>

#include <cmath>

#include <fmt/format.h>

#include <host/bas/Parallel.h>

namespace
{
constexpr int kTileSize = MSH_VolumeData::kTileSize;

// A tile is 16 KB: a few microseconds.
constexpr int64_t kTilesPerTask = 16;

// Call `visit(row in the tile, row of the dense voxels, voxels)` for the rows of a tile.
template <class Visit> void forEachRow(const MSH_VolumeData &volume, int64_t tile, Visit &&visit)
{
    const int64_t across = volume.tiles(0), down = volume.tiles(1);
    const int64_t x = tile % across * kTileSize, y = tile / across % down * kTileSize, z = tile / across / down * kTileSize;
    const auto inside = [&](int axis, int64_t at) {
        return std::min<int64_t>(kTileSize, volume.resolution[size_t(axis)] - at);
    };
    for (int64_t k = 0; k < inside(2, z); ++k)
        for (int64_t j = 0; j < inside(1, y); ++j)
            visit((k * kTileSize + j) * kTileSize, ((z + k) * volume.resolution[1] + y + j) * volume.resolution[0] + x,
                  inside(0, x));
}

bool hasOneValue(const MSH_VolumeData &volume, int64_t tile, const float *dense, float value)
{
    bool same = true;
    forEachRow(volume, tile, [&](int64_t, int64_t from, int64_t count) {
        same = same && std::all_of(dense + from, dense + from + count, [value](float voxel) { return voxel == value; });
    });
    return same;
}
}  // namespace

MSH_VolumeData::MSH_VolumeData(int32_t x, int32_t y, int32_t z, const float *dense) : resolution{x, y, z}
{
    const int64_t count = tiles(0) * tiles(1) * tiles(2);
    tileValues.resize(size_t(count));
    tileBlocks.resize(size_t(count), -1);
    host::parallelFor(count, kTilesPerTask, [&](int64_t tile) {
        bool isFirst = true;
        forEachRow(*this, tile, [&](int64_t, int64_t from, int64_t) {
            if (isFirst)
                tileValues[size_t(tile)] = dense[from];
            isFirst = false;
        });
        tileBlocks[size_t(tile)] = hasOneValue(*this, tile, dense, tileValues[size_t(tile)]) ? -1 : 0;
    });
    int32_t blocks = 0;
    for (size_t tile = 0; tile < tileBlocks.size(); ++tile)
        if (tileBlocks[tile] == 0)
        {
            tileBlocks[tile] = blocks++;
            tileValues[tile] = 0.0f;
        }
    voxels.resize(size_t(blocks * kTileVoxels));
    host::parallelFor(count, kTilesPerTask, [&](int64_t tile) {
        if (const int64_t block = tileBlocks[size_t(tile)]; block >= 0)
            forEachRow(*this, tile, [&](int64_t row, int64_t from, int64_t rowVoxels) {
                std::copy_n(dense + from, rowVoxels, voxels.begin() + block * kTileVoxels + row);
            });
    });
}

bool MSH_VolumeData::check(const MSH_PayloadUse &, std::string &why) const
{
    if (resolution.size() != 3 || *std::min_element(resolution.begin(), resolution.end()) < 0)
        return why = "a volume needs three resolutions that are not negative", false;
    // Far above any memory, and far below what overflows.
    constexpr double kMostTiles = 1e12;
    if (double(tiles(0)) * double(tiles(1)) * double(tiles(2)) > kMostTiles ||
        int64_t(tileBlocks.size()) != tiles(0) * tiles(1) * tiles(2) || tileValues.size() != tileBlocks.size())
        why = fmt::format("a volume of {} x {} x {} voxels has {} tiles", resolution[0], resolution[1], resolution[2],
                          tileBlocks.size());
    else if (voxels.size() % kTileVoxels != 0 || std::any_of(tileBlocks.begin(), tileBlocks.end(),
                                                             [blocks = int64_t(voxels.size()) / kTileVoxels](int32_t block) {
                                                                 return block < -1 || block >= blocks;
                                                             }))
        why = fmt::format("tiles of a volume refer to blocks that its {} voxels do not make", voxels.size());
    else if (border < 0 || border >= MSH_BORDER_RULES)
        why = fmt::format("{} is no border rule of volumes", border);
    else
        return true;
    return false;
}
