#include <host/msh/DetailData.h>

namespace
{
constexpr int32_t kNoPayload = -1;
}  // namespace

MSH_DetailData::MSH_DetailData() : payload(1, &kNoPayload), topologyId(ELM_Attribute::nextDataId())
{
    attributes[ELM_OWNER_POINT].insert(ELM_Attribute::create(ELM_OWNER_POINT, ELM_SCOPE_PUBLIC,
                                                             BAS_StringHolder::literal(ELM_POSITION_NAME),
                                                             ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT, 0));
}

int64_t MSH_DetailData::memoryUsage() const
{
    int64_t bytes = vertexPoint.memoryUsage() + vertexStart.memoryUsage() + vertexCount.memoryUsage();
    bytes += type.memoryUsage() + flags.memoryUsage() + int64_t(typeCounts.capacity() * sizeof(int64_t));
    for (const ELM_OffsetBitsHandle &bits : live)
        bytes += bits ? int64_t(sizeof(*bits)) + bits->bits.getMemoryUsage() : 0;
    bytes += payload.memoryUsage() + payloads.memoryUsage();
    for (const ELM_AttributeDict &dict : attributes)
        for (const ELM_Attribute &attribute : dict)
            bytes += attribute.memoryUsage();
    for (const ELM_GroupDict &dict : groups)
        bytes += dict.memoryUsage();
    return bytes;
}
