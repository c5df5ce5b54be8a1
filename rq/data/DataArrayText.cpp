#include <algorithm>

#include <rq/data/DataArray.h>

namespace
{
// Each value at its index.  Indices come from the array itself, so a negative one is no place.
template <class Value>
void placeByIndex(const BAS_Array<Value> &values, const BAS_Array<int64_t> &indices, BAS_Array<Value> &placed)
{
    int64_t size = 0;
    for (const int64_t index : indices)
        size = std::max(size, index + 1);
    placed.assign(size_t(size), Value());
    for (size_t i = 0; i < indices.size(); ++i)
        if (indices[i] >= 0)
            placed[size_t(indices[i])] = values[i];
}
}  // namespace

bool RQ_DataArray::getSA(BAS_Array<BAS_StringHolder> &, int64_t) const { return false; }
BAS_OptionsHolder RQ_DataArray::getDict(int64_t, int) const { return BAS_OptionsHolder::empty(); }
bool RQ_DataArray::getDictA(BAS_Array<BAS_OptionsHolder> &, int64_t) const { return false; }

void RQ_DataArray::fillStringArray(BAS_StringHolder *, int64_t, int64_t, int, int) const {}
void RQ_DataArray::fillDictionaryArray(BAS_OptionsHolder *, int64_t, int64_t, int, int) const {}

void RQ_DataArray::getStrings(BAS_Array<BAS_StringHolder> &strings) const
{
    BAS_Array<BAS_StringHolder> distinct;
    BAS_Array<int64_t> indices;
    getIndexedStrings(distinct, indices);
    placeByIndex(distinct, indices, strings);
}

void RQ_DataArray::getDictionaries(BAS_Array<BAS_OptionsHolder> &dicts) const
{
    BAS_Array<BAS_OptionsHolder> distinct;
    BAS_Array<int64_t> indices;
    getIndexedDicts(distinct, indices);
    placeByIndex(distinct, indices, dicts);
}

void RQ_DataArray::fillStrings(BAS_Array<BAS_StringHolder> &strings, int idx) const
{
    strings.resize(size_t(entries()));
    for (size_t i = 0; i < strings.size(); ++i)
        strings[i] = getS(int64_t(i), idx);
}
