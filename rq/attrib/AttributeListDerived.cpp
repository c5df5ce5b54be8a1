#include <rq/attrib/AttributeList.h>

#include <algorithm>
#include <bit>

#include <rq/attrib/detail/viewId.h>
#include <rq/data/DAConstant.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DAParametric.h>
#include <rq/data/DASubArray.h>

namespace
{
RQ_AttributeMapHandle copyOf(const RQ_AttributeMapHandle &map)
{
    return map ? new RQ_AttributeMap(*map) : new RQ_AttributeMap;
}
}  // namespace

template <class Make> void RQ_AttributeList::makeSlots(Slots &to, Make &&make) const
{
    const size_t width = size_t(entries_);
    to.resize(data_.size());
    for (size_t i = 0; i < data_.size(); ++i)
    {
        if (i >= width && data_[i] == data_[i - width])
            to[i] = to[i - width];
        else if (data_[i])
            to[i] = make(data_[i]);
    }
}

template <class Make> RQ_AttributeListHandle RQ_AttributeList::derived(Make &&make) const
{
    RQ_AttributeListHandle list(new RQ_AttributeList(map_, segments_));
    makeSlots(list->data_, make);
    return list;
}

void RQ_AttributeList::harden()
{
    Slots hard;
    makeSlots(hard, [](const RQ_DataArrayHandle &array) {
        const RQ_DataArrayHandle copy = array->harden();
        return copy ? copy : array;
    });
    data_.swap(hard);
}

void RQ_AttributeList::harden(int segment)
{
    for (int i = 0; i < entries_; ++i)
        if (const RQ_DataArrayHandle &array = get(i, segment))
            if (const RQ_DataArrayHandle copy = array->harden())
                set(i, copy, segment);
}

RQ_AttributeListHandle RQ_AttributeList::createIndirect(const RQ_DataArrayHandle &indices, bool flatten) const
{
    const int64_t id = indices ? indices->getDataId() : -1;
    const uint64_t key = rq::viewKey(rq::View::INDIRECT, {uint64_t(id)});
    // Computed or narrow indices are written to memory once, not by each view.
    RQ_DataArrayHandle held = indices;
    if (indices && indices->checkIndexing(RQ_INDEXING_64))
        indices->getI64Array(held);
    else if (indices && indices->checkIndexing(RQ_INDEXING_AUTO))
        indices->getI32Array(held);
    return derived([&](const RQ_DataArrayHandle &array) {
        const RQ_DataArrayHandle view = RQ_DAIndirect::createIndirect(array, held, flatten);
        rq::setViewId(view, array, key);
        if (id == -1 && rq::isFresh(view))
            view->setDataId(-1);
        return view;
    });
}

RQ_AttributeListHandle RQ_AttributeList::createSubArray(int64_t start, int64_t count) const
{
    const uint64_t key = rq::viewKey(rq::View::WINDOW, {uint64_t(start), uint64_t(count)});
    return derived([&](const RQ_DataArrayHandle &array) {
        const RQ_DataArrayHandle view = RQ_DASubArray::createSubArray(array, start, count);
        rq::setViewId(view, array, key);
        return view;
    });
}

RQ_AttributeListHandle RQ_AttributeList::createConstant(int64_t offset, int64_t size) const
{
    const uint64_t key = rq::viewKey(rq::View::CONSTANT, {uint64_t(offset), uint64_t(size)});
    return derived([&](const RQ_DataArrayHandle &array) {
        const RQ_DataArrayHandle view = RQ_DAConstant::createConstant(array, offset, size);
        rq::setViewId(view, array, key);
        return view;
    });
}

RQ_AttributeListHandle RQ_AttributeList::createUV(int64_t nu, int64_t nv, double u0, double u1, double v0, double v1,
                                                  const BAS_StringHolder &name) const
{
    const RQ_DataArrayHandle grid(new RQ_DAParametric({nu, u0, u1}, {nv, v0, v1}));
    const auto bits = [](double value) { return std::bit_cast<uint64_t>(value); };
    grid->setDataId(rq::validId(
        rq::viewKey(rq::View::PARAMETRIC, {uint64_t(nu), uint64_t(nv), bits(u0), bits(u1), bits(v0), bits(v1)})));
    return addAttribute(name, grid, true);
}

RQ_AttributeListHandle RQ_AttributeList::addAttribute(const BAS_StringHolder &name, const RQ_DataArrayHandle &array,
                                                      bool replace) const
{
    return addAttribute(name, &array, 1, replace);
}

RQ_AttributeListHandle RQ_AttributeList::addAttribute(const BAS_StringHolder &name, const RQ_DataArrayHandle *arrays,
                                                      int segments, bool replace) const
{
    RQ_AttributeMapHandle map = copyOf(map_);
    const int index = map->add(name, replace);
    if (index < 0)
        return const_cast<RQ_AttributeList *>(this);

    RQ_AttributeListHandle list(new RQ_AttributeList(map, std::max(segments, segments_)));
    for (int segment = 0; segment < list->segments_; ++segment)
    {
        for (int i = 0; i < entries_; ++i)
            list->set(i, get(i, segment), segment);
        list->set(index, segments > 0 ? arrays[std::min(segment, segments - 1)] : nullptr, segment);
    }
    return list;
}

RQ_AttributeListHandle RQ_AttributeList::removeAttributes(const BAS_Array<BAS_StringHolder> &names) const
{
    RQ_AttributeMapHandle map = copyOf(map_);
    for (const BAS_StringHolder &name : names)
        map->remove(name);
    if (map->entries() == entries_)
        return const_cast<RQ_AttributeList *>(this);
    RQ_AttributeListHandle list(new RQ_AttributeList(map, segments_));
    for (int segment = 0; segment < segments_; ++segment)
        for (int i = 0; i < map->entries(); ++i)
            list->set(i, get(map->getName(i), segment), segment);
    return list;
}

RQ_AttributeListHandle RQ_AttributeList::mergeNewAttributes(const RQ_AttributeListHandle &other) const
{
    if (!other)
        return const_cast<RQ_AttributeList *>(this);
    RQ_AttributeMapHandle map = copyOf(map_);
    BAS_Array<int> added;  // their numbers in the other list
    for (int i = 0; i < other->entries_; ++i)
    {
        const int index = map->add(other->getName(i), false);
        if (index < 0)
            continue;
        added.push_back(i);
        map->setOriginalOwner(index, other->getOriginalOwner(i));
        map->addExportName(index, other->getExportName(i));
    }
    if (added.empty())
        return const_cast<RQ_AttributeList *>(this);

    RQ_AttributeListHandle list(new RQ_AttributeList(map, std::max(segments_, other->segments_)));
    for (int segment = 0; segment < list->segments_; ++segment)
    {
        for (int i = 0; i < entries_; ++i)
            list->set(i, get(i, segment), segment);
        for (size_t i = 0; i < added.size(); ++i)
            list->set(entries_ + int(i), other->get(added[i], segment), segment);
    }
    return list;
}
