#pragma once

#include <host/msh/Volume.h>
#include <rq/bridge/PrimPlacedVolume.h>
#include <rq/surface/PrimPolygonMesh.h>

/// A dense volume of a host detail.
///
/// Shape  voxel x, y, z is a box of the cube that the resolution cuts evenly, its value being that of the box's middle; see
///        `MSH_VolumeData` for how voxels lie in memory
class RQ_API RQ_PrimVolume final : public RQ_PrimPlacedVolume
{
public:
    RQ_PrimVolume(const RQ_MSHDetailList &details, ELM_Offset volume, const RQ_RefineParms *parms = nullptr);
    RQ_PrimVolume(const RQ_PrimVolume &other);
    ~RQ_PrimVolume() override;

    /// The host's voxels, in place.
    const MSH_VolumeData &getVoxels() const { return MSHpayloadData<MSH_VolumeData>(*getPayload()); }
    const BAS_StringHolder &getName() const override { return getVoxels().name; }

    /// The number of voxels along an axis.
    int32_t getResolution(int axis) const { return getVoxels().resolution[size_t(axis)]; }

    /// A voxel; outside, what the volume's border rule says, and 0 where that asks for voxels and there are none.
    float getValue(int64_t x, int64_t y, int64_t z) const;

    /// Whether this is a field of heights: one axis has a single voxel, both others two and more.
    bool isHeightField() const { return flatAxis() >= 0; }

    /// The quads between the middles of a height field's voxels, each moved along the direction that the flat axis is placed
    /// in, by its value in the units of space; they face that way.  Null for other volumes.
    ///
    /// The transform is within the points; there is a segment for each of its own.  Runs in parallel.
    RQ_PolygonMeshHandle createHeightField() const;

    const char *className() const override;
    int getPrimitiveType() const override;

    /// Under the option "heightfieldconvert" height fields become their meshes; all else hands itself on and answers
    /// false.
    bool refine(RQ_Refine &sink, const RQ_RefineParms *parms) const override;

    /// Write [name of the type, name, resolution, border rule, border value, lists]: not the voxels.
    bool save(BAS_JSONWriter &writer) const override;
    RQ_PrimitiveHandle doSoftCopy() const override;

private:
    int flatAxis() const;
};
