#include <rq/bridge/detail/PointIds.h>

#include <algorithm>

#include <host/msh/Detail.h>
#include <rq/bridge/MSHElementArray.h>

rq::PointIds::PointIds(const MOD_ConstDetailHandle &handle)
{
    const MSH_Detail &detail = *handle.readLock();
    const int64_t points = detail.capacity(ELM_OWNER_POINT);
    const ELM_Attribute *attribute = detail.find(ELM_OWNER_POINT, "id");
    if (!attribute || attribute->hasArrays() || attribute->tupleSize() != 1 ||
        !RQisInteger(RQ_Storage(attribute->storage())))
        return;
    isValid_ = true;
    ids_.resize(size_t(points));
    RQ_MSHElementArray(handle, attribute, RQ_MSHOffsetList(ELM_OffsetList(0, points)), ELM_OWNER_POINT)
        .fillArray(ids_.data(), 0, points);
    for (ELM_Offset point = 0; point < points; ++point)
        if (ids_[size_t(point)] < 0 || !detail.isLive(ELM_OWNER_POINT, point))
            ids_[size_t(point)] = -1;
        else
            sorted_.emplace_back(ids_[size_t(point)], point);
    if (!std::is_sorted(sorted_.begin(), sorted_.end()))
        std::sort(sorted_.begin(), sorted_.end());
}

ELM_Offset rq::PointIds::find(int64_t id) const
{
    const auto found = std::lower_bound(sorted_.begin(), sorted_.end(), std::pair(id, ELM_Offset(0)));
    return id >= 0 && found != sorted_.end() && found->first == id ? found->second : -1;
}
