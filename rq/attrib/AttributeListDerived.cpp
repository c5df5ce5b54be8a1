#include <rq/attrib/AttributeList.h>

#include <algorithm>

#include <rq/data/DAConstant.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DASubArray.h>

template <class Derive> RQ_AttributeListHandle RQ_AttributeList::derived(Derive &&derive) const
{
    RQ_AttributeListHandle list(new RQ_AttributeList(map_, segments_));
    for (size_t i = 0; i < data_.size(); ++i)
    {
        // Segments mostly share an array: what is derived from it is shared too.
        const size_t width = size_t(entries());
        if (i >= width && data_[i] == data_[i - width])
            list->data_[i] = list->data_[i - width];
        else if (data_[i])
            list->data_[i] = derive(data_[i]);
    }
    return list;
}

RQ_AttributeListHandle RQ_AttributeList::createIndirect(const RQ_DataArrayHandle &indices, bool flatten) const
{
    return derived([&](const RQ_DataArrayHandle &array) { return RQ_DAIndirect::createIndirect(array, indices, flatten); });
}

RQ_AttributeListHandle RQ_AttributeList::createSubArray(int64_t start, int64_t count) const
{
    return derived([&](const RQ_DataArrayHandle &array) { return RQ_DASubArray::createSubArray(array, start, count); });
}

RQ_AttributeListHandle RQ_AttributeList::createConstant(int64_t offset, int64_t size) const
{
    return derived([&](const RQ_DataArrayHandle &array) { return RQ_DAConstant::createConstant(array, offset, size); });
}

RQ_AttributeListHandle RQ_AttributeList::addAttribute(const BAS_StringHolder &name, const RQ_DataArrayHandle &array,
                                                      bool replace) const
{
    return addAttribute(name, &array, 1, replace);
}

RQ_AttributeListHandle RQ_AttributeList::addAttribute(const BAS_StringHolder &name, const RQ_DataArrayHandle *arrays, int segments,
                                                      bool replace) const
{
    RQ_AttributeMapHandle map(map_ ? new RQ_AttributeMap(*map_) : new RQ_AttributeMap);
    const int index = map->add(name, replace);
    if (index < 0)
        return const_cast<RQ_AttributeList *>(this);

    RQ_AttributeListHandle list(new RQ_AttributeList(map, std::max(segments, segments_)));
    for (int segment = 0; segment < list->segments_; ++segment)
    {
        for (int i = 0; i < entries(); ++i)
            list->set(i, get(i, segment), segment);
        list->set(index, segments > 0 ? arrays[std::min(segment, segments - 1)] : nullptr, segment);
    }
    return list;
}

RQ_AttributeListHandle RQ_AttributeList::removeAttributes(const BAS_Array<BAS_StringHolder> &names) const
{
    RQ_AttributeMapHandle map(map_ ? new RQ_AttributeMap(*map_) : new RQ_AttributeMap);
    for (const BAS_StringHolder &name : names)
        map->remove(name);
    RQ_AttributeListHandle list(new RQ_AttributeList(map, segments_));
    for (int segment = 0; segment < segments_; ++segment)
        for (int i = 0; i < map->entries(); ++i)
            list->set(i, get(map->getName(i), segment), segment);
    return list;
}

RQ_AttributeListHandle RQ_AttributeList::mergeNewAttributes(const RQ_AttributeList &other) const
{
    RQ_AttributeListHandle list(const_cast<RQ_AttributeList *>(this));
    for (int i = 0; i < other.entries(); ++i)
    {
        if (hasName(other.getName(i)))
            continue;
        BAS_Array<RQ_DataArrayHandle> arrays;
        for (int segment = 0; segment < other.segments_; ++segment)
            arrays.push_back(other.get(i, segment));
        list = list->addAttribute(other.getName(i), arrays.data(), other.segments_, false);
    }
    return list;
}
