#include <rq/bridge/MSHElementArray.h>

#include <host/msh/Detail.h>
#include <rq/bridge/typeFromHost.h>
#include <rq/data/mixId.h>

namespace
{
const ELM_Attribute *findIn(const MSH_Detail *detail, const ELM_Attribute &like)
{
    return detail ? detail->find(like.owner(), like.scope(), like.name().view()) : nullptr;
}
}  // namespace

RQ_MSHElementArray::RQ_MSHElementArray(const MOD_ConstDetailHandle &detail, const ELM_Attribute *attribute,
                                       const RQ_MSHOffsetList &offsets, ELM_Owner owner)
    : detail_(detail), offsets_(offsets), owner_(owner)
{
    const MSH_Detail *snapshot = detail_.readLock();
    if (attribute && snapshot && !snapshot->owns(*attribute))
        attribute = findIn(snapshot, *attribute);
    initAttribute(snapshot ? attribute : nullptr);
}

RQ_MSHElementArray::RQ_MSHElementArray(const MOD_ConstDetailHandle &detail, const RQ_MSHOffsetList &offsets, ELM_Owner owner)
    : detail_(detail), offsets_(offsets), owner_(owner)
{}

RQ_MSHElementArray::~RQ_MSHElementArray() = default;

void RQ_MSHElementArray::initAttribute(const ELM_Attribute *attribute)
{
    attribute_ = nullptr;
    storage_ = RQ_STORAGE_INVALID;
    tupleSize_ = 0;
    backing_ = nullptr;
    if (!attribute || !chooseMapping(attribute->owner()))
        return;
    storage_ = RQ_Storage(attribute->storage());
    tupleSize_ = attribute->tupleSize();
    type_ = RQtypeFromHost(attribute->typeInfo(), attribute->tupleSize());
    readFrom(attribute);
}

void RQ_MSHElementArray::readFrom(const ELM_Attribute *attribute)
{
    attribute_ = attribute;
    backing_ = findBackingData();
    setDataId(computeDataId());
}

bool RQ_MSHElementArray::chooseMapping(ELM_Owner attributeOwner)
{
    if (attributeOwner == ELM_OWNER_DETAIL)
        mapping_ = Mapping::DETAIL;
    else if (attributeOwner == owner_)
        mapping_ = Mapping::DIRECT;
    else if (owner_ == ELM_OWNER_VERTEX && attributeOwner == ELM_OWNER_POINT)
        mapping_ = Mapping::VERTEX_TO_POINT;
    else if (owner_ == ELM_OWNER_VERTEX && attributeOwner == ELM_OWNER_PRIMITIVE)
        mapping_ = Mapping::VERTEX_TO_PRIMITIVE;
    else
        return false;
    return true;
}

const void *RQ_MSHElementArray::findBackingData() const
{
    const bool one = mapping_ == Mapping::DETAIL && offsets_.entries() == 1;
    const bool run = mapping_ == Mapping::DIRECT && offsets_.isTrivial() && offsets_.entries() > 0;
    const void *block = one || run ? attribute_->contiguousData() : nullptr;
    if (!block || one)
        return block;
    return static_cast<const char *>(block) + offsets_[0] * tupleSize_ * RQsizeof(storage_);
}

int64_t RQ_MSHElementArray::computeDataId() const
{
    const bool whole = offsets_.isTrivial() && offsets_.entries() == attribute_->size();
    if (mapping_ == Mapping::DETAIL || (mapping_ == Mapping::DIRECT && whole))
        return attribute_->dataId();

    // Views that are made anew from the same inputs get the same id, so that caches keep what they know.
    uint64_t id = RQmixId(uint64_t(attribute_->dataId())) + RQmixId(offsets_.hash());
    if (mapping_ != Mapping::DIRECT)
        id = RQmixId(id) + RQmixId(uint64_t(detail_.readLock()->topologyId()));
    return rq::validId(id);
}

ELM_Offset RQ_MSHElementArray::getDataOffset(int64_t i) const
{
    switch (mapping_)
    {
    case Mapping::DETAIL:
        return 0;
    case Mapping::VERTEX_TO_POINT:
        return detail_.readLock()->vertexPoint(offsets_[i]);
    case Mapping::VERTEX_TO_PRIMITIVE:
        return detail_.readLock()->vertexPrimitive().value(offsets_[i]);
    default:
        return offsets_[i];
    }
}

const char *RQ_MSHElementArray::className() const { return "RQ_MSHElementArray"; }

bool RQ_MSHElementArray::getPointerAliasing(const void *data) const
{
    const char *first = static_cast<const char *>(backing_), *asked = static_cast<const char *>(data);
    return first && asked >= first && asked < first + entries() * tupleSize_ * RQsizeof(storage_);
}

RQ_DataArrayHandle RQ_MSHElementArray::boundTo(const MOD_ConstDetailHandle &detail) const
{
    const RQ_DataArrayHandle array(
        new RQ_MSHElementArray(detail, attribute_ ? findIn(detail.readLock(), *attribute_) : nullptr, offsets_, owner_));
    return array->isValid() ? array : nullptr;
}

bool RQ_MSHElementArray::hasSameElements(const MSH_Detail &newer) const
{
    const MSH_Detail &older = *detail_.readLock();
    return newer.capacity(owner_) == older.capacity(owner_) && newer.count(owner_) == older.count(owner_);
}

void RQ_MSHElementArray::follow(const MOD_ConstDetailHandle &newer)
{
    replaced_ = std::move(detail_);
    detail_ = newer;
}

bool RQ_MSHElementArray::hasTopologyOf(const MOD_ConstDetailHandle &detail) const
{
    const MSH_Detail *own = detail_.readLock(), *other = detail.readLock();
    return own && other && own->topologyId() == other->topologyId();
}

void RQ_MSHElementArray::updateGeoDetail(const MOD_ConstDetailHandle &handle, const char *name, RQ_Owner, int)
{
    const MSH_Detail *newer = handle.readLock();
    if (!newer || !attribute_ || isBoundTo(handle) || !hasSameElements(*newer))
        return;
    const ELM_Attribute *attribute = newer->find(attribute_->owner(), attribute_->scope(), name);
    const bool mapped = mapping_ == Mapping::VERTEX_TO_POINT || mapping_ == Mapping::VERTEX_TO_PRIMITIVE;
    if (!attribute || (mapped && newer->topologyId() != detail_.readLock()->topologyId()))
        return;
    // Snapshots share what did not change: of the very same attribute everything known still holds.
    const bool isShared = attribute == attribute_;
    if (!isShared && (RQ_Storage(attribute->storage()) != storage_ || attribute->tupleSize() != tupleSize_ ||
                      attribute->typeInfo() != attribute_->typeInfo() || attribute->hasArrays() != attribute_->hasArrays()))
        return;
    follow(handle);
    if (!isShared)
        readFrom(attribute);
}
