#include <rq/bridge/PrimVolume.h>

#include <algorithm>

#include <rq/prim/PrimitiveJSON.h>
#include <rq/prim/PrimitiveType.h>

RQ_PrimVolume::RQ_PrimVolume(const RQ_MSHDetailList &details, ELM_Offset volume, const RQ_RefineParms *parms)
    : RQ_PrimPlacedVolume(details, volume, parms)
{}

RQ_PrimVolume::RQ_PrimVolume(const RQ_PrimVolume &other) = default;
RQ_PrimVolume::~RQ_PrimVolume() = default;

float RQ_PrimVolume::getValue(int64_t x, int64_t y, int64_t z) const
{
    const MSH_VolumeData &voxels = getVoxels();
    int64_t at[] = {x, y, z};
    for (int axis = 0; axis < 3; ++axis)
    {
        const int64_t count = getResolution(axis);
        if (at[axis] >= 0 && at[axis] < count)
            continue;
        if (voxels.border == MSH_BORDER_CONSTANT)
            return float(voxels.borderValue);
        if (count == 0)
            return 0.0f;
        at[axis] = voxels.border == MSH_BORDER_STREAK ? std::clamp<int64_t>(at[axis], 0, count - 1)
                                                      : (at[axis] % count + count) % count;
    }
    return voxels.value(at[0], at[1], at[2]);
}

int RQ_PrimVolume::flatAxis() const
{
    int flat = -1, wide = 0;
    for (int axis = 0; axis < 3; ++axis)
    {
        flat = getResolution(axis) == 1 ? axis : flat;
        wide += getResolution(axis) > 1;
    }
    return wide == 2 ? flat : -1;
}

const char *RQ_PrimVolume::className() const { return "RQ_PrimVolume"; }
int RQ_PrimVolume::getPrimitiveType() const { return RQ_PRIM_VOLUME; }

bool RQ_PrimVolume::refine(RQ_Refine &sink, const RQ_RefineParms *parms) const
{
    const RQ_PolygonMeshHandle heights =
        RQ_RefineParms::getHeightFieldConvert(parms) ? createHeightField() : RQ_PolygonMeshHandle();
    if (!heights)
        return RQ_PrimPlacedVolume::refine(sink, parms);
    sink.addPrimitive(heights);
    return true;
}

bool RQ_PrimVolume::save(BAS_JSONWriter &writer) const
{
    const MSH_VolumeData &voxels = getVoxels();
    const jsonWriter record(writer, RQprimitiveType(RQ_PRIM_VOLUME));
    return record->writeString(voxels.name.view()) && record->uniformArray(voxels.resolution.data(), 3) &&
           record->writeInt(voxels.border) && record->writeReal64(voxels.borderValue) && saveAttributeLists(*record);
}

RQ_PrimitiveHandle RQ_PrimVolume::doSoftCopy() const { return new RQ_PrimVolume(*this); }
