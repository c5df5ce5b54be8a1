#include <rq/bridge/detail/PointMotion.h>

#include <algorithm>
#include <bit>

#include <host/bas/Parallel.h>
#include <host/msh/Detail.h>
#include <rq/bridge/MSHElementArray.h>
#include <rq/bridge/detail/PointIds.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/data/convert.h>
#include <rq/data/mixId.h>

namespace
{
const ELM_Attribute *vectors(const MSH_Detail &detail, const char *name)
{
    const ELM_Attribute *attribute = detail.find(ELM_OWNER_POINT, name);
    return attribute && attribute->storageClass() == ELM_STORAGE_CLASS_FLOAT && !attribute->hasArrays() &&
                   attribute->tupleSize() == 3
               ? attribute
               : nullptr;
}

bool isPosition(const ELM_Attribute &attribute) { return attribute.name() == ELM_POSITION_NAME; }

/// The values of an array, to be changed; null when it holds no numbers, or arrays.
RQ_DataArrayHandle ownCopy(const RQ_DataArrayHandle &array)
{
    RQ_DataArrayHandle copy;
    if (!array->hasArrayEntries())
        rq::dispatchStorage(array->getStorage(), [&](auto tag) {
            using T = typename decltype(tag)::type;
            const BAS_IntrusivePtr<RQ_DANumeric<T>> values(
                new RQ_DANumeric<T>(array->entries(), array->getTupleSize(), array->getTypeInfo()));
            array->fillArray(values->data(), 0, array->entries());
            copy = values;
        });
    return copy;
}

/// Take rows over from another array of the same form.
void replaceRows(const RQ_DataArrayHandle &copy, const RQ_DataArrayHandle &other, const std::vector<int64_t> &rows)
{
    rq::dispatchStorage(copy->getStorage(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        T *values = static_cast<RQ_DANumeric<T> &>(*copy).data();
        for (const int64_t row : rows)
            other->fillArray(values + row * copy->getTupleSize(), row, 1);
    });
}

int64_t mixedId(const RQ_DataArrayHandle &a, const RQ_DataArrayHandle &b)
{
    return rq::validId(RQmixId(uint64_t(a->getDataId())) + RQmixId(RQmixId(uint64_t(b->getDataId()))));
}
}  // namespace

std::shared_ptr<const rq::PointMotion> rq::PointMotion::byId(const std::vector<MOD_ConstDetailHandle> &samples,
                                                             double seconds)
{
    const PointIds wanted(samples[0]);
    const auto motion = std::make_shared<PointMotion>();
    motion->first_ = samples[0];
    motion->seconds_ = seconds;
    for (const MOD_ConstDetailHandle &sample : samples)
    {
        const PointIds ids(sample);
        if (!wanted.isValid() || !ids.isValid())
            return nullptr;
        Sample &matched = motion->samples_.emplace_back(Sample{sample, {}});
        matched.points.resize(size_t(samples[0].readLock()->capacity(ELM_OWNER_POINT)));
        for (size_t point = 0; point < matched.points.size(); ++point)
            matched.points[point] = ids.find(wanted.idOf(ELM_Offset(point)));
    }
    return motion;
}

std::shared_ptr<const rq::PointMotion> rq::PointMotion::byVelocity(const MOD_ConstDetailHandle &sample, double seconds)
{
    if (!vectors(*sample.readLock(), "v") || !vectors(*sample.readLock(), ELM_POSITION_NAME))
        return nullptr;
    const auto motion = std::make_shared<PointMotion>();
    motion->first_ = sample;
    motion->seconds_ = seconds;
    return motion;
}

RQ_DataArrayHandle rq::PointMotion::arrayOf(const ELM_Attribute &attribute, const RQ_DataArrayHandle &first,
                                            const RQ_MSHOffsetList &rows, ELM_Owner rowOwner, int segment) const
{
    if (segment == 0 || attribute.owner() != ELM_OWNER_POINT)
        return first;
    if (!samples_.empty())
        return matched(attribute, first, rows, rowOwner, segment);
    return isPosition(attribute) ? moved(first, rows, rowOwner, segment * seconds_) : first;
}

RQ_DataArrayHandle rq::PointMotion::matched(const ELM_Attribute &attribute, const RQ_DataArrayHandle &first,
                                            const RQ_MSHOffsetList &rows, ELM_Owner rowOwner, int segment) const
{
    const Sample &sample = samples_[size_t(segment)];
    const RQ_MSHOffsetList points = rowOwner == ELM_OWNER_VERTEX ? RQ_MSHOffsetList::pointFromVertex(first_, rows) : rows;
    ELM_OffsetList::Values<int64_t> there(size_t(points.entries()));
    std::vector<int64_t> gone;
    for (int64_t row = 0; row < points.entries(); ++row)
    {
        const ELM_Offset point = points[row] < 0 ? -1 : sample.points[size_t(points[row])];
        there[size_t(row)] = std::max<ELM_Offset>(0, point);
        if (point < 0)
            gone.push_back(row);
    }
    if (int64_t(gone.size()) == points.entries())
        return isPosition(attribute) ? moved(first, rows, rowOwner, segment * seconds_) : first;
    const RQ_DataArrayHandle found(new RQ_MSHElementArray(
        sample.detail, sample.detail.readLock()->find(ELM_OWNER_POINT, attribute.scope(), attribute.name().view()),
        RQ_MSHOffsetList(ELM_OffsetList(std::move(there))), ELM_OWNER_POINT));
    const bool fits = found->isValid() && found->getStorage() == first->getStorage() &&
                      found->getTupleSize() == first->getTupleSize() && found->hasArrayEntries() == first->hasArrayEntries();
    if (!fits || gone.empty())
        return fits ? found : first;
    const RQ_DataArrayHandle all = ownCopy(found);
    if (!all)
        return first;
    const RQ_DataArrayHandle last = isPosition(attribute) ? moved(first, rows, rowOwner, segment * seconds_) : first;
    replaceRows(all, last, gone);
    all->setDataId(mixedId(found, last));
    return all;
}

RQ_DataArrayHandle rq::PointMotion::moved(const RQ_DataArrayHandle &positions, const RQ_MSHOffsetList &rows,
                                          ELM_Owner rowOwner, double seconds) const
{
    // A point costs about 2 ns.
    constexpr int64_t kPointsPerTask = 16384;
    const MSH_Detail &detail = *first_.readLock();
    const ELM_Attribute *v = vectors(detail, "v"), *accel = vectors(detail, "accel");
    if (!v || !vectors(detail, ELM_POSITION_NAME))
        return positions;
    const auto arrayOfRows = [&](const ELM_Attribute *attribute) {
        return RQ_DataArrayHandle(attribute ? new RQ_MSHElementArray(first_, attribute, rows, rowOwner) : nullptr);
    };
    const RQ_DataArrayHandle velocities = arrayOfRows(v), accelerations = arrayOfRows(accel);
    const Values<float> velocity(velocities), acceleration(accelerations);
    const RQ_DataArrayHandle result = ownCopy(positions);
    dispatchStorage(result->getStorage(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        T *values = static_cast<RQ_DANumeric<T> &>(*result).data();
        host::parallelForRange(3 * result->entries(), 3 * kPointsPerTask, [&](int64_t begin, int64_t end) {
            for (int64_t i = begin; i < end; ++i)
            {
                const double change = acceleration.size() > 0 ? 0.5 * seconds * double(acceleration[i]) : 0.0;
                values[i] = RQconvert<T>(double(values[i]) + seconds * (double(velocity[i]) + change));
            }
        });
    });
    int64_t id = mixedId(positions, velocities);
    if (accelerations)
        id = validId(RQmixId(uint64_t(id)) + uint64_t(accelerations->getDataId()));
    result->setDataId(validId(RQmixId(uint64_t(id) + std::bit_cast<uint64_t>(seconds))));
    return result;
}
