#pragma once

#include <host/msh/Placed.h>

/// What a volume is outside of its voxels.
enum MSH_VolumeBorder : int32_t
{
    MSH_BORDER_CONSTANT,  ///< `borderValue`
    MSH_BORDER_REPEAT,
    MSH_BORDER_STREAK,  ///< the nearest voxel
    MSH_BORDER_RULES
};

/// What a dense volume's payload holds: 32-bit voxels in tiles of 16^3, of which those of one value store it once.
///
/// Shape  voxel x, y, z lies in tile (x / 16, y / 16, z / 16), x fastest; tile t repeats tileValues[t] when tileBlocks[t] is
///        -1, else it is block tileBlocks[t] of `voxels`, x fastest again.  Voxels of a tile that lie outside are 0.
///        The volume fills the cube from -1 to 1, which "transform" places.
struct HOST_API MSH_VolumeData
{
    static constexpr int kTileSize = 16;
    static constexpr int64_t kTileVoxels = kTileSize * kTileSize * kTileSize;

    std::vector<int32_t> resolution = {0, 0, 0};
    std::vector<float> tileValues;
    std::vector<int32_t> tileBlocks;
    std::vector<float> voxels;
    int32_t border = MSH_BORDER_STREAK;
    double borderValue = 0.0;
    BAS_StringHolder name;

    MSH_VolumeData() = default;

    /// From voxels x by x, row by row, slice by slice: as many as the resolution says, which must not be negative.  Tiles
    /// are looked through in parallel.
    MSH_VolumeData(int32_t x, int32_t y, int32_t z, const float *dense);

    int64_t tiles(int axis) const { return (int64_t(resolution[size_t(axis)]) + kTileSize - 1) / kTileSize; }

    /// A voxel, which must be inside.
    float value(int64_t x, int64_t y, int64_t z) const
    {
        const size_t tile = size_t((z / kTileSize * tiles(1) + y / kTileSize) * tiles(0) + x / kTileSize);
        const int32_t block = tileBlocks[tile];
        if (block < 0)
            return tileValues[tile];
        const int64_t in = (z % kTileSize * kTileSize + y % kTileSize) * kTileSize + x % kTileSize;
        return voxels[size_t(block * kTileVoxels + in)];
    }

    template <class Self, class Visit> static void describe(Self &self, Visit &&visit)
    {
        visit("resolution", self.resolution);
        visit("tile_values", self.tileValues);
        visit("tile_blocks", self.tileBlocks);
        visit("voxels", self.voxels);
        visit("border", self.border);
        visit("border_value", self.borderValue);
        visit("name", self.name);
    }
    bool check(const MSH_PayloadUse &use, std::string &why) const;
};

/// A primitive seen as a dense volume.
class MSH_Volume : public MSH_Placed
{
public:
    explicit MSH_Volume(const MSH_Primitive &primitive) : MSH_Placed(primitive) {}
    MSH_Volume(const MSH_Detail &detail, ELM_Offset offset) : MSH_Placed(detail, offset) {}

    /// False when the primitive is of another type; nothing else may be asked then.
    bool isValid() const { return type() == ELM_PRIMITIVE_VOLUME; }

    int32_t resolution(int axis) const { return data().resolution[size_t(axis)]; }
    float value(int64_t x, int64_t y, int64_t z) const { return data().value(x, y, z); }
    const MSH_VolumeData &data() const { return payload<MSH_VolumeData>(); }
};
