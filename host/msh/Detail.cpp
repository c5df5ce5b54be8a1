#include <host/msh/Detail.h>

#include <host/msh/detail/caches.h>

MSH_Detail::MSH_Detail(const MSH_DetailData &data, const MSH_Detail *previous)
    : data_(data), positions_(find(ELM_OWNER_POINT, ELM_POSITION_NAME)), uniqueId_(ELM_Attribute::nextDataId())
{
    if (previous && previous->topologyId() == topologyId())
    {
        pointUse_.share(previous->pointUse_);
        vertexOwners_.share(previous->vertexOwners_);
        for (size_t owner = 0; owner < liveOffsets_.size(); ++owner)
            liveOffsets_[owner].share(previous->liveOffsets_[owner]);
    }
}

MSH_Detail::~MSH_Detail() = default;

int64_t MSH_Detail::primitiveCount(ELM_PrimitiveTypeId type) const
{
    return type < 0 || size_t(type) >= data_.typeCounts.size() ? 0 : data_.typeCounts[size_t(type)];
}

ELM_OffsetList MSH_Detail::offsets(ELM_Owner owner) const
{
    if (!hasVacantOffsets(owner))
        return ELM_OffsetList(0, capacity(owner));
    const LiveOffsets &offsets = liveOffsets_[size_t(owner)].getOrBuild([&] {
        const BAS_IntrusivePtr<LiveOffsets> built(new LiveOffsets);
        built->list = ELM_OffsetList(range(owner));
        return BAS_IntrusivePtr<const LiveOffsets>(built);
    });
    return offsets.list;
}

ELM_Range MSH_Detail::range(ELM_Owner owner) const
{
    return data_.live[owner] ? ELM_Range(owner, data_.live[owner]) : ELM_Range(owner, 0, capacity(owner));
}

const ELM_Attribute *MSH_Detail::find(ELM_Owner owner, ELM_Scope scope, std::string_view name) const
{
    return owner < 0 || owner >= ELM_OWNERS ? nullptr : attributes(owner).find(scope, name);
}

bool MSH_Detail::owns(const ELM_Attribute &attribute) const { return attributes(attribute.owner()).holds(attribute); }

const ELM_Attribute *MSH_Detail::instanceFile() const
{
    const ELM_Attribute *file = find(ELM_OWNER_POINT, ELM_INSTANCE_FILE_NAME);
    return file && file->strings() ? file : nullptr;
}

const ELM_GroupDict &MSH_Detail::groups(ELM_Owner owner) const
{
    static const ELM_GroupDict none;
    return owner < 0 || owner >= ELM_ELEMENT_OWNERS ? none : data_.groups[owner];
}

ELM_OffsetList MSH_Detail::vertices(ELM_Offset primitive) const
{
    const VertexRun run = vertexRun(primitive);
    return ELM_OffsetList(run.start, run.count);
}

int64_t MSH_Detail::memoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this)) + data_.memoryUsage();
    if (const PointUse *use = pointUse_.get())
        bytes += int64_t(sizeof(*use)) + use->used.getMemoryUsage();
    if (const VertexOwners *owners = vertexOwners_.get())
        bytes += int64_t(sizeof(*owners)) + owners->primitive.memoryUsage();
    for (const host::Published<LiveOffsets> &offsets : liveOffsets_)
        bytes += offsets.get() ? int64_t(sizeof(LiveOffsets)) + offsets.get()->list.memoryUsage() : 0;
    return bytes;
}
