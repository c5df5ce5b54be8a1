#include <algorithm>

#include <host/bas/Diagnostics.h>
#include <host/msh/sameTopology.h>
#include <rq/bridge/MSHDetailList.h>
#include <rq/bridge/detail/PointIds.h>
#include <rq/bridge/detail/PointMotion.h>

namespace
{
using Handles = std::vector<MOD_ConstDetailHandle>;

const ELM_Attribute *ids(const MOD_ConstDetailHandle &detail) { return detail.readLock()->find(ELM_OWNER_POINT, "id"); }

bool hasSameIds(const MOD_ConstDetailHandle &a, const MOD_ConstDetailHandle &b)
{
    const ELM_Attribute *left = ids(a), *right = ids(b);
    // Where one side does not name its points, the topology tells which are the same.
    return !left || !right || left->dataId() == right->dataId() || rq::PointIds(a) == rq::PointIds(b);
}

bool isSampleOf(const MOD_ConstDetailHandle &first, const MOD_ConstDetailHandle &other)
{
    return first == other || (MSHhasSameTopology(*first.readLock(), *other.readLock()) && hasSameIds(first, other));
}
}  // namespace

RQ_MSHDetailList::RQ_MSHDetailList(const MOD_ConstDetailHandle &detail)
    : RQ_MSHDetailList(std::vector<MOD_ConstDetailHandle>{detail})
{}

RQ_MSHDetailList::RQ_MSHDetailList(Handles details, double secondsApart) : details_(std::move(details))
{
    std::erase_if(details_, [](const MOD_ConstDetailHandle &detail) { return !detail; });
    const auto fits = [this](const MOD_ConstDetailHandle &detail) { return isSampleOf(details_[0], detail); };
    if (std::all_of(details_.begin(), details_.end(), fits))
        return;
    std::shared_ptr<const rq::PointMotion> motion = rq::PointMotion::byId(details_, secondsApart);
    setMotion(motion ? std::move(motion) : rq::PointMotion::byVelocity(details_[0], secondsApart));
}

RQ_MSHDetailList::RQ_MSHDetailList(const MOD_ConstDetailHandle &detail, int segments, double secondsApart)
    : details_(detail ? size_t(std::max(1, segments)) : 0, detail)
{
    if (getSegments() > 1)
        setMotion(rq::PointMotion::byVelocity(detail, secondsApart));
}

void RQ_MSHDetailList::setMotion(std::shared_ptr<const rq::PointMotion> motion)
{
    motion_ = std::move(motion);
    details_.resize(motion_ ? details_.size() : 1);
    std::fill(details_.begin(), details_.end(), MOD_ConstDetailHandle(details_[0]));
    if (!motion_)
        BAS_Diagnostics::warn("motion samples differ in topology and have neither ids nor velocities: nothing moves");
}
