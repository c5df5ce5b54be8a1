#include <host/bas/Parallel.h>
#include <rq/bridge/detail/elementRows.h>
#include <rq/data/detail/TypedEntriesImpl.h>
#include <rq/data/detail/copyEntries.h>

namespace
{
/// The values of one row that is an array.
struct Run
{
    const void *values = nullptr;
    int64_t count = 0;
};

template <class Value> Run runOf(std::span<const Value> values) { return {values.data(), std::ssize(values)}; }

/// Empty for no element, and for an attribute whose rows are no arrays.
Run runAt(const ELM_Attribute *attribute, ELM_Offset element)
{
    if (!attribute || element < 0)
        return {};
    if (const ELM_NumericArrays *numbers = attribute->numericArrays())
        return numbers->visit([&](const auto &arrays) { return runOf(arrays.get(element)); });
    if (const ELM_StringArrays *strings = attribute->stringArrays())
        return runOf(strings->get(element));
    if (const ELM_DictArrays *dicts = attribute->dictArrays())
        return runOf(dicts->get(element));
    return {};
}
}  // namespace

RQ_DataArrayHandle RQ_MSHElementArray::harden() const
{
    return hasArrayEntries() ? rq::copyEntries(*this) : RQ_DataArray::harden();
}

int64_t RQ_MSHElementArray::itemSize(int64_t offset) const { return runAt(attribute_, elementOf(offset)).count; }

int64_t RQ_MSHElementArray::getTotalArrayEntries() const
{
    // A row costs some nanoseconds.
    constexpr int64_t kRowsPerBlock = 16 * ELM_PAGE_SIZE;
    return host::parallelReduce(
        hasArrayEntries() ? entries() : 0, kRowsPerBlock, int64_t(0),
        [&](int64_t begin, int64_t end) {
            int64_t part = 0;
            visitElements(begin, end - begin,
                          [&](ELM_Offset element, int64_t) { part += runAt(attribute_, element).count; });
            return part;
        },
        [](int64_t &into, int64_t from) { into += from; });
}

template <class Values>
bool RQ_MSHElementArray::copyEntries(int64_t start, int64_t length, Values &values, BAS_Array<int> *sizes) const
{
    if (!hasArrayEntries() || !RQisNumeric(storage_))
        return false;
    values.clear();
    visitElements(start, length, [&](ELM_Offset element, int64_t row) {
        const Run run = runAt(attribute_, element);
        const size_t before = values.size();
        values.resize(before + size_t(run.count));
        rq::convertValues(run.values, storage_, values.data() + before, RQstorageOf<typename Values::value_type>, run.count);
        if (sizes)
            (*sizes)[size_t(row)] = int(run.count);
    });
    return true;
}

template class RQ_TypedEntries<RQ_MSHElementArray>;
