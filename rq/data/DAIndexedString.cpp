#include <rq/data/DAIndexedString.h>

#include <algorithm>
#include <unordered_map>

#include <rq/data/detail/blocks.h>

RQ_DAIndexedString::RQ_DAIndexedString(BAS_Array<BAS_StringHolder> strings, BAS_ValArray<int32_t> indices, int64_t tupleSize,
                                       RQ_Type type)
    : strings_(std::move(strings)), indices_(std::move(indices)), tupleSize_(std::max<int64_t>(1, tupleSize)), type_(type)
{}

RQ_DataArrayHandle RQ_DAIndexedString::createIndexed(const BAS_StringHolder *values, int64_t entries, int64_t tupleSize,
                                                     RQ_Type type)
{
    BAS_Array<BAS_StringHolder> strings;
    BAS_ValArray<int32_t> indices(size_t(std::max<int64_t>(0, entries) * std::max<int64_t>(1, tupleSize)), -1);
    std::unordered_map<BAS_StringHolder, int32_t> known;
    for (size_t i = 0; i < indices.size(); ++i)
        if (!values[i].isEmpty())
        {
            const auto [place, isNew] = known.try_emplace(values[i], int32_t(strings.size()));
            if (isNew)
                strings.push_back(values[i]);
            indices[i] = place->second;
        }
    return RQ_DataArrayHandle(new RQ_DAIndexedString(std::move(strings), std::move(indices), tupleSize, type));
}

const char *RQ_DAIndexedString::className() const { return "RQ_DAIndexedString"; }
int64_t RQ_DAIndexedString::entries() const { return int64_t(indices_.size()) / tupleSize_; }

int64_t RQ_DAIndexedString::getMemoryUsage() const
{
    int64_t bytes =
        int64_t(sizeof(*this) + strings_.capacity() * sizeof(BAS_StringHolder) + indices_.capacity() * sizeof(int32_t));
    for (const BAS_StringHolder &text : strings_)
        bytes += text.getMemoryUsage();
    return bytes;
}

BAS_StringHolder RQ_DAIndexedString::getS(int64_t offset, int idx) const
{
    const size_t index = size_t(getStringIndex(offset, idx));
    return index < strings_.size() ? strings_[index] : BAS_StringHolder();
}

int64_t RQ_DAIndexedString::getStringIndex(int64_t offset, int idx) const
{
    return indices_[size_t(offset * tupleSize_ + idx)];
}

void RQ_DAIndexedString::getIndexedStrings(BAS_Array<BAS_StringHolder> &strings, BAS_Array<int64_t> &indices) const
{
    strings = strings_;
    indices.resize(strings_.size());
    for (size_t i = 0; i < indices.size(); ++i)
        indices[i] = int64_t(i);
}

void RQ_DAIndexedString::fillStringArray(BAS_StringHolder *data, int64_t start, int64_t length, int tsize, int stride) const
{
    const rq::BlockShape shape(*this, tsize, stride);
    for (int64_t i = 0; i < length; ++i)
        for (int c = 0; c < shape.components; ++c)
            data[i * shape.stride + c] = getS(start + i, c);
}

void RQ_DAIndexedString::getIndexedDicts(BAS_Array<BAS_OptionsHolder> &dicts, BAS_Array<int64_t> &indices) const
{
    dicts.clear();
    indices.clear();
}
