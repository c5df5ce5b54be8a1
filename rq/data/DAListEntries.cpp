#include <rq/data/DAList.h>

#include <numeric>

#include <rq/data/detail/blocks.h>
#include <rq/data/detail/numericTypes.h>

int64_t RQ_DAList::itemSize(int64_t offset) const
{
    const Place place = locate(offset);
    return parts_[place.part]->itemSize(place.entry);
}

BAS_StringHolder RQ_DAList::getS(int64_t offset, int idx) const
{
    const Place place = locate(offset);
    return parts_[place.part]->getS(place.entry, idx);
}

bool RQ_DAList::getSA(BAS_Array<BAS_StringHolder> &strings, int64_t offset) const
{
    const Place place = locate(offset);
    return parts_[place.part]->getSA(strings, place.entry);
}

BAS_OptionsHolder RQ_DAList::getDict(int64_t offset, int idx) const
{
    const Place place = locate(offset);
    return parts_[place.part]->getDict(place.entry, idx);
}

bool RQ_DAList::getDictA(BAS_Array<BAS_OptionsHolder> &dicts, int64_t offset) const
{
    const Place place = locate(offset);
    return parts_[place.part]->getDictA(dicts, place.entry);
}

#define RQ_DEFINE(T, NAME, ARRAY)                                                                                           \
    bool RQ_DAList::get##ARRAY(BAS_ValArray<T> &values, int64_t offset) const                                               \
    {                                                                                                                       \
        const Place place = locate(offset);                                                                                 \
        return parts_[place.part]->get##ARRAY(values, place.entry);                                                         \
    }
RQ_NUMERIC_TYPES(RQ_DEFINE)
#undef RQ_DEFINE

int64_t RQ_DAList::getStringIndex(int64_t offset, int idx) const
{
    const Place place = locate(offset);
    return strings_.number(place.part, parts_[place.part]->getStringIndex(place.entry, idx));
}

int64_t RQ_DAList::getDictIndex(int64_t offset, int idx) const
{
    const Place place = locate(offset);
    return dicts_.number(place.part, parts_[place.part]->getDictIndex(place.entry, idx));
}

void RQ_DAList::getIndexedStrings(BAS_Array<BAS_StringHolder> &strings, BAS_Array<int64_t> &indices) const
{
    strings = strings_.values;
    indices.resize(strings.size());
    std::iota(indices.begin(), indices.end(), int64_t(0));
}

void RQ_DAList::getIndexedDicts(BAS_Array<BAS_OptionsHolder> &dicts, BAS_Array<int64_t> &indices) const
{
    dicts = dicts_.values;
    indices.resize(dicts.size());
    std::iota(indices.begin(), indices.end(), int64_t(0));
}

void RQ_DAList::fillStringArray(BAS_StringHolder *data, int64_t start, int64_t length, int tsize, int stride) const
{
    const rq::BlockShape shape(*this, tsize, stride);
    visitRuns(start, length, [&](const RQ_DataArray &part, int64_t first, int64_t count, int64_t done) {
        part.fillStringArray(data + done * shape.stride, first, count, shape.components, shape.stride);
    });
}

void RQ_DAList::fillDictionaryArray(BAS_OptionsHolder *data, int64_t start, int64_t length, int tsize, int stride) const
{
    const rq::BlockShape shape(*this, tsize, stride);
    visitRuns(start, length, [&](const RQ_DataArray &part, int64_t first, int64_t count, int64_t done) {
        part.fillDictionaryArray(data + done * shape.stride, first, count, shape.components, shape.stride);
    });
}
