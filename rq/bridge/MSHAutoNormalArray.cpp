#include <rq/bridge/MSHAutoNormalArray.h>

#include <bit>

#include <host/mod/normals.h>
#include <rq/data/mixId.h>

RQ_MSHAutoNormalArray::RQ_MSHAutoNormalArray(const MOD_ConstDetailHandle &detail, ELM_Owner normalOwner,
                                             const RQ_MSHOffsetList &offsets, ELM_Owner owner, float cuspAngle)
    : RQ_MSHElementArray(detail, offsets, owner), rowOwner_(owner), normalOwner_(normalOwner), cuspAngle_(cuspAngle)
{
    compute();
}

RQ_MSHAutoNormalArray::RQ_MSHAutoNormalArray(const RQ_MSHAutoNormalArray &other, const MOD_ConstDetailHandle &detail)
    : RQ_MSHElementArray(detail, other.getOffsets(), other.rowOwner_), rowOwner_(other.rowOwner_),
      normalOwner_(other.normalOwner_), cuspAngle_(other.cuspAngle_), faces_(other.faces_)
{
    const MSH_Detail *newer = detail.readLock();
    if (newer && newer->positionId() == other.stamps_.position && newer->topologyId() == other.stamps_.topology)
    {
        normals_ = other.normals_;
        stamps_ = other.stamps_;
        bind();
    }
    else
        compute();
}

RQ_DataArrayHandle RQ_MSHAutoNormalArray::boundTo(const MOD_ConstDetailHandle &detail) const
{
    const RQ_DataArrayHandle array(new RQ_MSHAutoNormalArray(*this, detail));
    return array->isValid() ? array : nullptr;
}

RQ_MSHAutoNormalArray::~RQ_MSHAutoNormalArray() = default;

void RQ_MSHAutoNormalArray::compute()
{
    const MSH_Detail *detail = getGeoDetail().readLock();
    if (!detail)
        return;
    stamps_ = {detail->positionId(), detail->topologyId(), detail->metaCacheCount()};
    replaced_ = normals_;
    if (!faces_ || faces_->topologyId() != stamps_.topology)
        faces_ = MOD_NormalFaces::create(*detail);
    normals_ = faces_ ? MODcomputeNormals(*detail, *faces_, normalOwner_, cuspAngle_) : nullptr;
    bind();
}

void RQ_MSHAutoNormalArray::bind()
{
    initAttribute(normals_.get());
    // Positions, faces and the angle make the normals: whoever computes them again recognises them.
    uint64_t id = RQmixId(uint64_t(stamps_.position)) + RQmixId(uint64_t(stamps_.topology));
    id = RQmixId(id) + std::bit_cast<uint32_t>(cuspAngle_);
    setDataId(rq::validId(RQmixId(id) + uint64_t(normalOwner_) + RQmixId(getOffsets().hash())));
}

const char *RQ_MSHAutoNormalArray::className() const { return "RQ_MSHAutoNormalArray"; }

int64_t RQ_MSHAutoNormalArray::getMemoryUsage() const
{
    const int64_t own = int64_t(sizeof(*this)) - int64_t(sizeof(RQ_MSHElementArray));
    return RQ_MSHElementArray::getMemoryUsage() + own + (normals_ ? normals_->memoryUsage() : 0) +
           (faces_ ? faces_->memoryUsage() : 0);
}

void RQ_MSHAutoNormalArray::updateGeoDetail(const MOD_ConstDetailHandle &handle, const char *, RQ_Owner, int)
{
    const MSH_Detail *newer = handle.readLock();
    if (!newer || !isValid() || isBoundTo(handle) || !hasSameElements(*newer))
        return;
    follow(handle);
    const Stamps stamps{newer->positionId(), newer->topologyId(), newer->metaCacheCount()};
    if (!(stamps == stamps_))
        compute();
}
