#include <host/bas/Parallel.h>
#include <rq/bridge/detail/elementRows.h>
#include <rq/data/detail/TypedEntriesImpl.h>
#include <rq/data/detail/copyEntries.h>

namespace
{
/// Values in one row; 0 for no element, and for an attribute whose rows are no arrays.
int64_t sizeAt(const ELM_Attribute *attribute, ELM_Offset element)
{
    const auto sizeOf = [element](const auto &arrays) { return int64_t(arrays.get(element).size()); };
    if (!attribute || element < 0)
        return 0;
    if (const ELM_NumericArrays *numbers = attribute->numericArrays())
        return numbers->visit(sizeOf);
    if (const ELM_StringArrays *strings = attribute->stringArrays())
        return sizeOf(*strings);
    return attribute->dictArrays() ? sizeOf(*attribute->dictArrays()) : 0;
}
}  // namespace

RQ_DataArrayHandle RQ_MSHElementArray::harden() const
{
    return hasArrayEntries() ? rq::copyEntries(*this) : RQ_DataArray::harden();
}

int64_t RQ_MSHElementArray::itemSize(int64_t offset) const { return sizeAt(attribute_, elementOf(offset)); }

int64_t RQ_MSHElementArray::getTotalArrayEntries() const
{
    return host::parallelReduce(
        hasArrayEntries() ? entries() : 0, Target::kRowsPerTask, int64_t(0),
        [&](int64_t begin, int64_t end) {
            int64_t part = 0;
            visitElements(begin, end - begin, [&](ELM_Offset element, int64_t) { part += sizeAt(attribute_, element); });
            return part;
        },
        [](int64_t &into, int64_t from) { into += from; });
}

template <class Visit> void RQ_MSHElementArray::visitNumbers(int64_t start, int64_t length, Visit &&visit) const
{
    attribute_->numericArrays()->visit([&](const auto &arrays) {
        visitElements(start, length, [&](ELM_Offset element, int64_t row) {
            visit(element >= 0 ? arrays.get(element) : arrays.array(0), row);  // the empty one
        });
    });
}

int64_t RQ_MSHElementArray::countNumbers(int64_t start, int64_t length, int *sizes) const
{
    int64_t total = 0;
    visitNumbers(start, length, [&](const auto &values, int64_t row) {
        total += std::ssize(values);
        if (sizes)
            sizes[row] = int(values.size());
    });
    return total;
}

void RQ_MSHElementArray::copyNumbers(int64_t start, int64_t length, void *to) const
{
    visitNumbers(start, length, [&]<class T>(std::span<const T> values, int64_t) {
        to = std::copy(values.begin(), values.end(), static_cast<T *>(to));
    });
}

template <class Values>
bool RQ_MSHElementArray::copyEntries(int64_t start, int64_t length, Values &values, BAS_Array<int> *sizes) const
{
    if (!hasArrayEntries() || !RQisNumeric(storage_))
        return false;
    const int64_t total = countNumbers(start, length, sizes ? sizes->data() : nullptr);
    values.resize(size_t(total));
    constexpr RQ_Storage kStorage = RQstorageOf<typename Values::value_type>;
    if (storage_ == kStorage)
        copyNumbers(start, length, values.data());
    else
    {
        std::vector<char> own(size_t(total * RQsizeof(storage_)));
        copyNumbers(start, length, own.data());
        rq::convertValues(own.data(), storage_, values.data(), kStorage, total);
    }
    return true;
}

template class RQ_TypedEntries<RQ_MSHElementArray, rq::HostBound>;
