#include <rq/bridge/MSHElementId.h>

#include <algorithm>
#include <limits>

#include <host/msh/Detail.h>
#include <rq/data/convert.h>
#include <rq/data/detail/TypedArrayImpl.h>
#include <rq/data/mixId.h>

RQ_MSHElementId::RQ_MSHElementId(const MOD_ConstDetailHandle &detail, const RQ_MSHOffsetList &offsets, ELM_Owner owner,
                                 bool mapFromVertices)
    : detail_(detail)
{
    const MSH_Detail *snapshot = detail_.readLock();
    if (!snapshot)
        return;
    offsets_ = offsets;
    isNarrow_ = offsets.is32Bit();
    uint64_t id = RQmixId(offsets.hash()) + uint64_t(owner);
    if (mapFromVertices)
    {
        const bool toPoints = owner == ELM_OWNER_POINT;
        map_ = toPoints ? &snapshot->vertexPoint() : &snapshot->vertexPrimitive();
        isNarrow_ = isNarrow_ && snapshot->capacity(toPoints ? ELM_OWNER_POINT : ELM_OWNER_PRIMITIVE) <=
                                     std::numeric_limits<int32_t>::max();
        id = RQmixId(id) + RQmixId(uint64_t(snapshot->topologyId()));
    }
    setDataId(rq::validId(id));
}

RQ_MSHElementId::~RQ_MSHElementId() = default;

const char *RQ_MSHElementId::className() const { return "RQ_MSHElementId"; }

const void *RQ_MSHElementId::getBackingData() const
{
    if (map_)
        return nullptr;
    const ELM_OffsetList &list = offsets_.offsetList();
    return isNarrow_ ? static_cast<const void *>(list.data32()) : list.data64();
}

bool RQ_MSHElementId::getPointerAliasing(const void *data) const
{
    const char *first = static_cast<const char *>(getBackingData());
    return first && data >= first && data < first + entries() * RQsizeof(getStorage());
}

template <RQ_NumericValue T> T RQ_MSHElementId::valueAs(int64_t offset, int) const
{
    const ELM_Offset element = offsets_[offset];
    return RQconvert<T>(map_ ? map_->value(element) : element);
}

template <RQ_NumericValue T> void RQ_MSHElementId::fillBlock(T *out, int64_t start, int64_t length, int, int stride) const
{
    constexpr int64_t kRowsPerBlock = 1024;
    int64_t rows[kRowsPerBlock];
    for (int64_t done = 0; done < length; done += kRowsPerBlock)
    {
        const int64_t count = std::min(kRowsPerBlock, length - done);
        if (map_)
            map_->copyOut(rows, offsets_.offsetList(), start + done, count);
        else
            offsets_.offsetList().visit([&](auto offsets) {
                for (int64_t i = 0; i < count; ++i)
                    rows[i] = offsets[start + done + i];
            });
        for (int64_t i = 0; i < count; ++i)
            out[(done + i) * stride] = RQconvert<T>(rows[i]);
    }
}

template class RQ_TypedArray<RQ_MSHElementId, RQ_DANumbers>;
