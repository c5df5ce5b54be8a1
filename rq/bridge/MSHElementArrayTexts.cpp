#include <numeric>

#include <rq/bridge/detail/elementRows.h>
#include <rq/data/detail/blocks.h>

namespace
{
/// The column of strings or of dictionaries; null when the attribute holds something else.
template <class Value> const ELM_IndexedTuple<Value> *textsOf(const ELM_Attribute *attribute)
{
    if constexpr (std::same_as<Value, BAS_StringHolder>)
        return attribute ? attribute->strings() : nullptr;
    else
        return attribute ? attribute->dicts() : nullptr;
}

/// The same where rows are arrays.
template <class Value> const ELM_ArrayTuple<Value> *arraysOf(const ELM_Attribute *attribute)
{
    if constexpr (std::same_as<Value, BAS_StringHolder>)
        return attribute ? attribute->stringArrays() : nullptr;
    else
        return attribute ? attribute->dictArrays() : nullptr;
}

template <class Value> Value valueAt(const ELM_Attribute *attribute, ELM_Offset element, int idx)
{
    if (element < 0)
        return Value();
    if (const ELM_IndexedTuple<Value> *texts = textsOf<Value>(attribute))
        return texts->get(element, idx);
    const ELM_ArrayTuple<Value> *arrays = arraysOf<Value>(attribute);
    const std::span<const Value> values = arrays ? arrays->get(element) : std::span<const Value>();
    return idx >= 0 && idx < std::ssize(values) ? values[size_t(idx)] : Value();
}

template <class Value> bool copyArray(const ELM_Attribute *attribute, ELM_Offset element, BAS_Array<Value> &values)
{
    const ELM_ArrayTuple<Value> *arrays = arraysOf<Value>(attribute);
    if (!arrays)
        return false;
    const std::span<const Value> from = element >= 0 ? arrays->get(element) : std::span<const Value>();
    values.assign(from.begin(), from.end());
    return true;
}

template <class Value> int64_t countDistinct(const ELM_Attribute *attribute)
{
    const ELM_IndexedTuple<Value> *texts = textsOf<Value>(attribute);
    return texts ? int64_t(texts->table().size()) : -1;
}

template <class Value> int64_t indexAt(const ELM_Attribute *attribute, ELM_Offset element, int idx)
{
    const ELM_IndexedTuple<Value> *texts = textsOf<Value>(attribute);
    return texts && element >= 0 ? texts->index(element, idx) : -1;
}

template <class Value>
void copyDistinct(const ELM_Attribute *attribute, BAS_Array<Value> &values, BAS_Array<int64_t> &indices)
{
    const ELM_IndexedTuple<Value> *texts = textsOf<Value>(attribute);
    values = texts ? texts->table() : BAS_Array<Value>();
    indices.resize(values.size());
    std::iota(indices.begin(), indices.end(), int64_t(0));
}
}  // namespace

template <class Value>
void RQ_MSHElementArray::fillTexts(Value *data, int64_t start, int64_t length, int tsize, int stride) const
{
    const rq::BlockShape shape(*this, tsize, stride);
    visitElements(start, length, [&](ELM_Offset element, int64_t row) {
        for (int c = 0; c < shape.components; ++c)
            data[row * shape.stride + c] = valueAt<Value>(attribute_, element, c);
    });
}

BAS_StringHolder RQ_MSHElementArray::getS(int64_t offset, int idx) const
{
    return valueAt<BAS_StringHolder>(attribute_, elementOf(offset), idx);
}

bool RQ_MSHElementArray::getSA(BAS_Array<BAS_StringHolder> &strings, int64_t offset) const
{
    return copyArray(attribute_, elementOf(offset), strings);
}

int64_t RQ_MSHElementArray::getStringIndexCount() const { return countDistinct<BAS_StringHolder>(attribute_); }

int64_t RQ_MSHElementArray::getStringIndex(int64_t offset, int idx) const
{
    return indexAt<BAS_StringHolder>(attribute_, elementOf(offset), idx);
}

void RQ_MSHElementArray::getIndexedStrings(BAS_Array<BAS_StringHolder> &strings, BAS_Array<int64_t> &indices) const
{
    copyDistinct(attribute_, strings, indices);
}

void RQ_MSHElementArray::fillStringArray(BAS_StringHolder *data, int64_t start, int64_t length, int tsize, int stride) const
{
    fillTexts(data, start, length, tsize, stride);
}

BAS_OptionsHolder RQ_MSHElementArray::getDict(int64_t offset, int idx) const
{
    return valueAt<BAS_OptionsHolder>(attribute_, elementOf(offset), idx);
}

bool RQ_MSHElementArray::getDictA(BAS_Array<BAS_OptionsHolder> &dicts, int64_t offset) const
{
    return copyArray(attribute_, elementOf(offset), dicts);
}

int64_t RQ_MSHElementArray::getDictIndexCount() const { return countDistinct<BAS_OptionsHolder>(attribute_); }

int64_t RQ_MSHElementArray::getDictIndex(int64_t offset, int idx) const
{
    return indexAt<BAS_OptionsHolder>(attribute_, elementOf(offset), idx);
}

void RQ_MSHElementArray::getIndexedDicts(BAS_Array<BAS_OptionsHolder> &dicts, BAS_Array<int64_t> &indices) const
{
    copyDistinct(attribute_, dicts, indices);
}

void RQ_MSHElementArray::fillDictionaryArray(BAS_OptionsHolder *data, int64_t start, int64_t length, int tsize,
                                             int stride) const
{
    fillTexts(data, start, length, tsize, stride);
}
