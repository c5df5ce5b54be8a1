#include <rq/data/DAList.h>

#include <algorithm>
#include <unordered_map>

#include <host/elm/Attribute.h>
#include <rq/data/detail/TypedArrayImpl.h>
#include <rq/data/detail/copyEntries.h>

namespace
{
bool fit(const RQ_DataArray &a, const RQ_DataArray &b)
{
    return a.getStorage() == b.getStorage() && a.getTupleSize() == b.getTupleSize() &&
           a.hasArrayEntries() == b.hasArrayEntries();
}

struct ContentHash
{
    template <class Value> size_t operator()(const Value &value) const { return value.hash(); }
};
}  // namespace

template <class Value>
template <class Read>
void RQ_DAList::Distinct<Value>::merge(const BAS_Array<RQ_DataArrayHandle> &parts, Read &&read)
{
    clear();
    std::unordered_map<Value, int64_t, ContentHash> known;
    for (const RQ_DataArrayHandle &part : parts)
    {
        BAS_Array<Value> own;
        BAS_Array<int64_t> indices;
        if (!read(*part, own, indices))
            return clear();
        BAS_Array<int64_t> &number = numbers.emplace_back();
        for (size_t i = 0; i < own.size(); ++i)
        {
            if (indices[i] < 0)
                continue;
            const auto [place, isNew] = known.try_emplace(own[i], int64_t(values.size()));
            if (isNew)
                values.push_back(own[i]);
            if (indices[i] >= int64_t(number.size()))
                number.resize(size_t(indices[i] + 1), -1);
            number[size_t(indices[i])] = place->second;
        }
    }
    indexed = true;
}

bool RQ_DAList::addPart(const RQ_DataArrayHandle &part)
{
    if (const auto *list = dynamic_cast<const RQ_DAList *>(part.get()))
        return std::all_of(list->parts_.begin(), list->parts_.end(), [&](const auto &inner) { return addPart(inner); });
    if (part->entries() < 1)
        return true;
    int64_t end;
    if (__builtin_add_overflow(entries(), part->entries(), &end))
        return false;
    parts_.push_back(part);
    ends_.push_back(end);
    return true;
}

bool RQ_DAList::init(const BAS_Array<RQ_DataArrayHandle> &parts)
{
    const BAS_Array<RQ_DataArrayHandle> given = parts;  // may be our own
    parts_.clear();
    ends_.clear();
    partIds_.clear();
    strings_.clear();
    dicts_.clear();
    bool good = !given.empty();
    for (size_t i = 0; i < given.size() && good; ++i)
        good = given[i] && fit(*given[0], *given[i]) && addPart(given[i]);
    if (!good)
    {
        parts_.clear();
        ends_.clear();
        return false;
    }
    if (parts_.empty())
    {
        parts_.push_back(given[0]);
        ends_.push_back(0);
    }
    for (const RQ_DataArrayHandle &part : parts_)
        partIds_.push_back(part->getDataId());
    if (getStorage() == RQ_STORAGE_STRING)
        strings_.merge(parts_, [](const RQ_DataArray &part, auto &strings, auto &indices) {
            part.getIndexedStrings(strings, indices);
            return part.getStringIndexCount() >= 0;
        });
    if (getStorage() == RQ_STORAGE_DICTIONARY)
        dicts_.merge(parts_, [](const RQ_DataArray &part, auto &dicts, auto &indices) {
            part.getIndexedDicts(dicts, indices);
            return part.getDictIndexCount() >= 0;
        });
    return true;
}

RQ_DataArrayHandle RQ_DAList::createList(const BAS_Array<RQ_DataArrayHandle> &parts)
{
    const BAS_IntrusivePtr<RQ_DAList> list(new RQ_DAList);
    if (!list->init(parts))
        return {};
    return list->parts_.size() == 1 ? list->parts_[0] : RQ_DataArrayHandle(list);
}

const char *RQ_DAList::className() const { return "RQ_DAList"; }

RQ_DataArrayHandle RQ_DAList::harden() const { return hasArrayEntries() ? rq::copyEntries(*this) : RQ_TypedArray::harden(); }

RQ_Storage RQ_DAList::getStorage() const { return parts_.empty() ? RQ_STORAGE_INVALID : parts_[0]->getStorage(); }
int64_t RQ_DAList::getTupleSize() const { return parts_.empty() ? 0 : parts_[0]->getTupleSize(); }
RQ_Type RQ_DAList::getTypeInfo() const { return parts_.empty() ? RQ_TYPE_NONE : parts_[0]->getTypeInfo(); }
bool RQ_DAList::hasArrayEntries() const { return !parts_.empty() && parts_[0]->hasArrayEntries(); }
const void *RQ_DAList::getBackingData() const { return parts_.size() == 1 ? parts_[0]->getBackingData() : nullptr; }

bool RQ_DAList::isValid() const
{
    return !parts_.empty() && std::all_of(parts_.begin(), parts_.end(), [](const auto &part) { return part->isValid(); });
}

bool RQ_DAList::getPointerAliasing(const void *data) const
{
    return std::any_of(parts_.begin(), parts_.end(), [&](const auto &part) { return part->getPointerAliasing(data); });
}

int64_t RQ_DAList::getTotalArrayEntries() const
{
    int64_t total = 0;
    for (const RQ_DataArrayHandle &part : parts_)
        total += part->getTotalArrayEntries();
    return total;
}

int64_t RQ_DAList::getMemoryUsage() const
{
    size_t bytes = sizeof(*this) + parts_.capacity() * sizeof(RQ_DataArrayHandle) + ends_.capacity() * sizeof(int64_t) +
                   strings_.values.capacity() * sizeof(BAS_StringHolder) +
                   dicts_.values.capacity() * sizeof(BAS_OptionsHolder);
    for (const auto *numbers : {&strings_.numbers, &dicts_.numbers})
        for (const BAS_Array<int64_t> &number : *numbers)
            bytes += sizeof(number) + number.capacity() * sizeof(int64_t);
    return int64_t(bytes);
}

void RQ_DAList::updateGeoDetail(const MOD_ConstDetailHandle &detail, const char *name, RQ_Owner owner, int segment)
{
    for (const RQ_DataArrayHandle &part : parts_)
        part->updateGeoDetail(detail, name, owner, segment);
    const BAS_Array<int64_t> before = std::move(partIds_);
    init(parts_);
    if (partIds_ != before)
        setDataId(ELM_Attribute::nextDataId());
}

RQ_DAList::Place RQ_DAList::locate(int64_t offset) const
{
    const size_t part = size_t(std::upper_bound(ends_.begin(), ends_.end() - 1, offset) - ends_.begin());
    return {part, offset - beginOf(part)};
}

template <RQ_NumericValue T> T RQ_DAList::valueAs(int64_t offset, int component) const
{
    const Place place = locate(offset);
    return parts_[place.part]->getValue<T>(place.entry, component);
}

template <RQ_NumericValue T>
void RQ_DAList::fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const
{
    visitRuns(start, length, [&](const RQ_DataArray &part, int64_t first, int64_t count, int64_t done) {
        part.fillArray(out + done * stride, first, count, components, stride);
    });
}

bool RQ_DAList::computeMinMax(double *min, double *max) const
{
    const size_t tuple = size_t(getTupleSize());
    std::vector<double> low(tuple), high(tuple);
    for (const RQ_DataArrayHandle &part : parts_)
    {
        part->getMinMax(low.data(), high.data());
        for (size_t c = 0; c < tuple; ++c)
        {
            // A minimum above the maximum is no bound but means that there is no value: infinity lies beyond it.
            if (low[c] > high[c])
                continue;
            const bool first = min[c] > max[c];
            min[c] = first ? low[c] : std::min(min[c], low[c]);
            max[c] = first ? high[c] : std::max(max[c], high[c]);
        }
    }
    return true;
}

template class RQ_TypedArray<RQ_DAList>;
