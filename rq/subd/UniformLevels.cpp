#include <rq/subd/detail/uniformLevels.h>

#include <algorithm>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/subd/detail/cornerValues.h>
#include <rq/subd/detail/faceVarying.h>

namespace
{
template <class T> using Block = std::vector<T, BAS_BlockAllocator<T>>;
template <class T> using Numbers = BAS_IntrusivePtr<RQ_DANumeric<T>>;

/// Values with seams, one for each of the channel's.
template <class T>
RQ_DataArrayHandle faceVarying(const rq::Refiner &refiner, const rq::CageChannel &channel, int number,
                               const RQ_DataArray &array)
{
    const int64_t tuple = array.getTupleSize();
    const rq::Values<T> corners(array);
    Block<T> values;
    values.reserve(channel.sources.size() * size_t(tuple));
    for (const int32_t corner : channel.sources)
        values.insert(values.end(), corners.data() + corner * tuple, corners.data() + (corner + 1) * tuple);
    return rq::interpolateFaceVarying<T>(refiner, number, values.data(), tuple, array.getTypeInfo());
}

/// Half floats are refined as floats and rounded at the end.
RQ_DataArrayHandle inStorageOf(const RQ_DataArray &source, const RQ_DataArrayHandle &refined)
{
    if (source.getStorage() != RQ_STORAGE_REAL16)
        return refined;
    RQ_DataArrayHandle halfs;
    refined->getArray<PLT_Half>(halfs);
    return halfs;
}
}  // namespace

rq::UniformLevels::UniformLevels(const Cage &cage, const Refiner &base, int level)
    : cage_(cage), level_(level), refiner_(copyRefiner(base)), base_(std::max(0, level - RegularPatches::kMostSteps)),
      channels_(cage.channels.size())
{
    refineUniformly(*refiner_, level - 1, !cage.channels.empty());
    size_ = sizeOfChild(*refiner_, level - 1);
    const Numbers<int32_t> list(new RQ_DANumeric<int32_t>(size_.faces * corners()));
    childPoints(*refiner_, level - 1, list->data());
    vertexList_ = list;
    if (cage.scheme != RQ_SCHEME_CATMULL_CLARK)
        return;
    patches_ = RegularPatches(*refiner_, base_, level, list->data(), size_);
    if (!patches_.isEmpty())
        others_ = selectPoints(*refiner_, base_, level, patches_.missingPoints());
}

/// Walk down the levels; only the values of two are in memory at a time, and those of the last beside them.
template <class T> RQ_DataArrayHandle rq::UniformLevels::interpolate(const RQ_DataArray &array) const
{
    const int64_t tuple = array.getTupleSize();
    const Values<T> cage(array);
    const T *from = cage.data();
    Numbers<T> values;
    const auto allocate = [&](int step) {
        return Numbers<T>(new RQ_DANumeric<T>(sizeOfChild(*refiner_, step).points, tuple, array.getTypeInfo()));
    };
    const auto take = [&](int step, const Numbers<T> &next, const StepPoints *only) {
        interpolateLevel(*refiner_, step, from, tuple, next->data(), only);
        values = next;
        from = next->data();
    };
    for (int step = 0; step < (patches_.isEmpty() ? level_ : base_); ++step)
        take(step, allocate(step), nullptr);
    if (patches_.isEmpty())
        return values;
    const Numbers<T> last = allocate(level_ - 1);
    patches_.interpolate(from, tuple, last->data());
    for (int step = base_; step < level_ && !others_.back().isEmpty(); ++step)
        take(step, step == level_ - 1 ? last : allocate(step), &others_[size_t(step - base_)]);
    return last;
}

RQ_DataArrayHandle rq::UniformLevels::interpolatePoints(const RQ_DataArray &array) const
{
    return inStorageOf(array,
                       array.getStorage() == RQ_STORAGE_REAL64 ? interpolate<double>(array) : interpolate<float>(array));
}

RQ_DataArrayHandle rq::UniformLevels::interpolateCorners(const BAS_StringHolder &name, const RQ_DataArray &array) const
{
    const bool wide = array.getStorage() == RQ_STORAGE_REAL64;
    for (size_t i = 0; i < cage_.channels.size(); ++i)
    {
        const CageChannel &channel = cage_.channels[i];
        if (std::find(channel.names.begin(), channel.names.end(), name) == channel.names.end())
            continue;
        const RQ_DataArrayHandle values = wide ? faceVarying<double>(*refiner_, channel, int(i), array)
                                               : faceVarying<float>(*refiner_, channel, int(i), array);
        const RQ_DataArrayHandle &indices = channels_[i].get([&] { return faceVaryingIndices(*refiner_, int(i)); });
        return RQ_DAIndirect::createIndirect(inStorageOf(array, values), indices);
    }
    return inStorageOf(array, linearCorners(cage_, level_, array));
}

const RQ_DataArrayHandle &rq::UniformLevels::sourceCorners() const
{
    return corners_.get([this] { return nearestCorners(cage_, level_); });
}

RQ_DataArrayHandle rq::UniformLevels::makeSourceFaces() const
{
    const Numbers<int32_t> sources(new RQ_DANumeric<int32_t>(size_.faces));
    const bool loop = cage_.scheme == RQ_SCHEME_LOOP;
    const int64_t perChild = int64_t(1) << (2 * (level_ - 1));
    int32_t *out = sources->data();
    for (int32_t face = 0; face < cage_.faces(); ++face)
        out = std::fill_n(out, perChild * (loop ? 4 : cage_.counts[size_t(face)]), face);
    return sources;
}

RQ_DataArrayHandle rq::UniformLevels::makeSourcePoints() const
{
    Numbers<int32_t> sources;
    for (int step = 0; step < level_; ++step)
    {
        const Numbers<int32_t> next(new RQ_DANumeric<int32_t>(sizeOfChild(*refiner_, step).points));
        childSources(*refiner_, step, next->data());
        for (int64_t i = 0; sources && i < next->entries(); ++i)
            next->set(i, sources->data()[next->data()[i]]);
        sources = next;
    }
    return sources;
}

int64_t rq::UniformLevels::getMemoryUsage() const
{
    int64_t bytes = int64_t(sizeof(*this)) + vertexList_->getMemoryUsage() + memoryOf(*refiner_) + patches_.getMemoryUsage();
    for (const StepPoints &step : others_)
        bytes += step.getMemoryUsage();
    for (const Lazy *lazy : {&faces_, &points_, &corners_})
        bytes += lazy->getMemoryUsage();
    for (const Lazy &channel : channels_)
        bytes += channel.getMemoryUsage();
    return bytes;
}
