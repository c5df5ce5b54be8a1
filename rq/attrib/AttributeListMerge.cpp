#include <rq/attrib/AttributeList.h>

#include <algorithm>

#include <rq/attrib/AttributeMerge.h>
#include <rq/attrib/detail/viewId.h>
#include <rq/data/DAConstant.h>
#include <rq/data/DAIndexedText.h>
#include <rq/data/DAList.h>
#include <rq/data/DANumericArray.h>
#include <rq/data/DATextArray.h>

namespace
{
RQ_DataArrayHandle repeated(const RQ_DataArrayHandle &array, int64_t count)
{
    const RQ_DataArrayHandle result = RQ_DAConstant::createConstant(array, 0, count);
    rq::setViewId(result, array, rq::viewKey(rq::View::CONSTANT, {0, uint64_t(count)}));
    return result;
}

RQ_DataArrayHandle joined(const BAS_Array<RQ_DataArrayHandle> &parts)
{
    const RQ_DataArrayHandle list = RQ_DAList::createList(parts);
    if (!rq::isFresh(list))
        return list;
    uint64_t key = rq::viewKey(rq::View::LIST, {parts.size()});
    bool known = true;
    for (const RQ_DataArrayHandle &part : parts)
    {
        known = known && part->getDataId() != -1;
        key = RQmixId(key) + RQmixId(uint64_t(part->getDataId()));
    }
    list->setDataId(known ? rq::validId(key) : -1);
    return list;
}

template <class Value> RQ_DataArrayHandle emptyText(const RQ_DataArray &like)
{
    const int64_t tuple = like.getTupleSize();
    if (like.hasArrayEntries())
        return new RQ_DATextArray<Value>({}, RQ_CountArray(1, 0), tuple, like.getTypeInfo());
    return RQ_DAIndexedText<Value>::createIndexed(BAS_Array<Value>(size_t(tuple)).data(), 1, tuple, like.getTypeInfo());
}

// One entry of the form of `like` that holds nothing: zeros, empty texts, no options, or the empty array.
RQ_DataArrayHandle emptyEntry(const RQ_DataArray &like)
{
    const RQ_Storage storage = like.getStorage();
    if (storage == RQ_STORAGE_STRING)
        return emptyText<BAS_StringHolder>(like);
    if (storage == RQ_STORAGE_DICTIONARY)
        return emptyText<BAS_OptionsHolder>(like);
    RQ_DataArrayHandle entry;
    rq::dispatchStorage(storage, [&](auto tag) {
        using T = typename decltype(tag)::type;
        if (like.hasArrayEntries())
            entry = new RQ_DANumericArray<T>({}, RQ_CountArray(1, 0), like.getTupleSize(), like.getTypeInfo());
        else
            entry = new RQ_DANumeric<T>(BAS_Array<T>(size_t(like.getTupleSize())).data(), 1, like.getTupleSize(),
                                        like.getTypeInfo());
    });
    return entry;
}

// Entry 0 of `numbers` in the storage and tuple size of `like`.
RQ_DataArrayHandle convertedEntry(const RQ_DataArray &like, const RQ_DataArrayHandle &numbers)
{
    RQ_DataArrayHandle entry;
    rq::dispatchStorage(like.getStorage(), [&](auto tag) {
        using T = typename decltype(tag)::type;
        const BAS_IntrusivePtr<RQ_DANumeric<T>> converted(new RQ_DANumeric<T>(0, like.getTupleSize(), like.getTypeInfo()));
        converted->concat(*repeated(numbers, 1));
        entry = converted;
    });
    return entry;
}

// `count` entries of the form of `like`: those of entry 0 of `constant` (may be null) where it can be read so, else nothing.
RQ_DataArrayHandle filler(const RQ_DataArray &like, const RQ_DataArrayHandle &constant, int64_t count)
{
    const RQ_Storage storage = like.getStorage();
    const int64_t tuple = like.getTupleSize();
    const bool arrays = like.hasArrayEntries();
    const bool usable = constant && constant->entries() > 0 && constant->hasArrayEntries() == arrays;
    if (usable && constant->getStorage() == storage && constant->getTupleSize() == tuple)
        return repeated(constant, count);

    const bool convert = usable && !arrays && RQisNumeric(storage) && RQisNumeric(constant->getStorage());
    const RQ_DataArrayHandle entry = convert ? convertedEntry(like, constant) : emptyEntry(like);
    if (!entry)
        return {};
    const uint64_t key = rq::viewKey(convert ? rq::View::CONVERTED : rq::View::ZEROS,
                                     {uint64_t(storage), uint64_t(tuple), uint64_t(like.getTypeInfo()), uint64_t(arrays)});
    if (convert)
        rq::setViewId(entry, constant, key);
    else
        entry->setDataId(rq::validId(key));
    return repeated(entry, count);
}

using Arrays = BAS_Array<RQ_DataArrayHandle>;

bool isNull(const RQ_DataArrayHandle &array) { return !array; }

// Fill attribute `i` with make(inputs(segment)): null without inputs, and made once for segments of the same inputs.  False
// when it cannot be made.
template <class Inputs, class Make> bool fillSegments(RQ_AttributeList &list, int i, Inputs &&inputs, Make &&make)
{
    Arrays before;
    for (int segment = 0; segment < list.getSegments(); ++segment)
    {
        Arrays now = inputs(segment);
        if (segment > 0 && now == before)
            list.set(i, list.get(i, segment - 1), segment);
        else if (!std::all_of(now.begin(), now.end(), isNull))
        {
            const RQ_DataArrayHandle array = make(now);
            if (!array)
                return false;
            list.set(i, array, segment);
        }
        before = std::move(now);
    }
    return true;
}

// What one of the two lists gives to a merge.
struct Side
{
    const RQ_AttributeListHandle &list;
    const BAS_Array<int> &numbers;
    int64_t count;
    const RQ_AttributeListHandle &constants;
    bool repeats;

    int segments() const { return std::max(list ? list->getSegments() : 1, constants ? constants->getSegments() : 1); }

    RQ_DataArrayHandle own(int i, int segment) const { return list ? list->get(numbers[size_t(i)], segment) : nullptr; }
    RQ_DataArrayHandle constant(const BAS_StringHolder &name, int segment) const
    {
        return constants ? constants->get(name, segment) : nullptr;
    }

    // Null when it does not have `count` entries.
    RQ_DataArrayHandle part(const RQ_DataArrayHandle &array, const RQ_DataArrayHandle &constant,
                            const RQ_DataArray &like) const
    {
        if (!array)
            return filler(like, constant, count);
        if (repeats)
            return repeated(array, count);
        return array->entries() == count ? array : nullptr;
    }
};

RQ_AttributeListHandle merged(const RQ_AttributeMerge &merge, const Side &a, const Side &b)
{
    RQ_AttributeListHandle list(new RQ_AttributeList(merge.map, std::max(a.segments(), b.segments())));
    for (int i = 0; i < list->entries(); ++i)
    {
        const BAS_StringHolder &name = list->getName(i);
        const auto inputs = [&](int segment) {
            const RQ_DataArrayHandle first = a.own(i, segment), second = b.own(i, segment);
            return first || second ? Arrays{first, second, a.constant(name, segment), b.constant(name, segment)} : Arrays();
        };
        const auto make = [&](const Arrays &given) {
            const RQ_DataArray &like = given[0] ? *given[0] : *given[1];
            return joined({a.part(given[0], given[2], like), b.part(given[1], given[3], like)});
        };
        if (!fillSegments(*list, i, inputs, make))
            return {};
    }
    return list;
}

int64_t lengthOf(const RQ_AttributeListHandle &list)
{
    for (int i = 0; list && i < list->entries(); ++i)
        if (list->get(i))
            return list->get(i)->entries();
    return 0;
}
}  // namespace

RQ_AttributeListHandle RQ_AttributeList::concatenateLists(const BAS_Array<RQ_AttributeListHandle> &lists)
{
    BAS_Array<RQ_AttributeListHandle> given;
    std::copy_if(lists.begin(), lists.end(), std::back_inserter(given), [](const auto &list) { return bool(list); });
    if (given.size() < 2)
        return given.empty() ? nullptr : given[0];
    for (const RQ_AttributeListHandle &list : given)
        if (!matchDefinition(given[0], list))
            return {};

    RQ_AttributeListHandle result(new RQ_AttributeList(given[0]->getMap(), given[0]->getSegments()));
    for (int i = 0; i < result->entries(); ++i)
    {
        const auto inputs = [&](int segment) {
            Arrays parts;
            for (const RQ_AttributeListHandle &list : given)
                parts.push_back(list->get(i, segment));
            return parts;
        };
        if (!fillSegments(*result, i, inputs, joined))
            return {};
    }
    return result;
}

RQ_AttributeListHandle RQ_AttributeList::createMerged(const RQ_AttributeMerge &merge, const RQ_AttributeListHandle &a,
                                                      int64_t aCount, const RQ_AttributeListHandle &b, int64_t bCount,
                                                      const RQ_AttributeListHandle &aConstants,
                                                      const RQ_AttributeListHandle &bConstants)
{
    return merged(merge, {a, merge.first, aCount, aConstants, false}, {b, merge.second, bCount, bConstants, false});
}

RQ_AttributeListHandle RQ_AttributeList::createConstantMerge(const RQ_AttributeMerge &merge, const RQ_AttributeListHandle &a,
                                                             int64_t count)
{
    RQ_AttributeListHandle list(new RQ_AttributeList(merge.map, a ? a->getSegments() : 1));
    for (int i = 0; a && i < list->entries(); ++i)
        if (!fillSegments(
                *list, i, [&](int segment) { return Arrays{a->get(merge.first[size_t(i)], segment)}; },
                [&](const Arrays &given) { return repeated(given[0], count); }))
            return {};
    return list;
}

RQ_AttributeListHandle RQ_AttributeList::expandConstantMerge(const RQ_AttributeMerge &merge, const RQ_AttributeListHandle &a,
                                                             const RQ_AttributeListHandle &b, int64_t count, int64_t aCount)
{
    const RQ_AttributeListHandle none;
    return merged(merge, {a, merge.first, aCount < 0 ? lengthOf(a) : aCount, none, false},
                  {b, merge.second, count, none, true});
}
