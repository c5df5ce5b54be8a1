#include <algorithm>
#include <cmath>

#include <host/bas/Parallel.h>
#include <host/msh/Detail.h>
#include <rq/bridge/detail/elementRows.h>
#include <rq/bridge/detail/tripleExtremes.h>
#include <rq/data/detail/TypedArrayImpl.h>

namespace
{
// Rows whose elements are looked up at a time: their offsets stay in the first-level cache.
constexpr int64_t kRowsPerBlock = 1024;
}  // namespace

// The elements of some rows as a block of memory; null when they are not known as one.
template <class Index> const Index *RQ_MSHElementArray::knownElements(int64_t start) const
{
    const ELM_OffsetList &list = offsets_.offsetList();
    const ELM_IndexColumn *column = mapping_ == Mapping::VERTEX_TO_POINT       ? &detail_.readLock()->vertexPoint()
                                    : mapping_ == Mapping::VERTEX_TO_PRIMITIVE ? &detail_.readLock()->vertexPrimitive()
                                                                               : nullptr;
    const Index *elements;
    if constexpr (sizeof(Index) == 4)
        elements = !column ? list.data32() : list.isTrivial() ? column->contiguous32() : nullptr;
    else
        elements = !column ? list.data64() : list.isTrivial() ? column->contiguous64() : nullptr;
    return elements ? elements + start + (column ? list.start() : 0) : nullptr;
}

void RQ_MSHElementArray::findElements(int64_t *elements, int64_t start, int64_t length) const
{
    if (mapping_ == Mapping::VERTEX_TO_POINT)
        detail_.readLock()->vertexPoint().copyOut(elements, offsets_.offsetList(), start, length);
    else if (mapping_ == Mapping::VERTEX_TO_PRIMITIVE)
        detail_.readLock()->vertexPrimitive().copyOut(elements, offsets_.offsetList(), start, length);
    else if (mapping_ == Mapping::DETAIL)
        std::fill_n(elements, length, 0);
    else
        offsets_.offsetList().visit([&](auto offsets) {
            for (int64_t i = 0; i < length; ++i)
                elements[i] = offsets[start + i];
        });
}

void RQ_MSHElementArray::fillRows(const Target &target, int64_t start, int64_t length) const
{
    const ELM_NumericTuple *numbers = attribute_ ? attribute_->numericTuple() : nullptr;
    if (!numbers)
    {
        const uint8_t zero = 0;
        for (int c = 0; c < target.components; ++c)
            rq::convertRows(&zero, RQ_STORAGE_UINT8, 0, target.data + c * RQsizeof(target.storage), target.storage,
                            target.stride, 1, length);
        return;
    }
    if (backing_ && mapping_ == Mapping::DIRECT)
        return target.convert(static_cast<const char *>(backing_) + start * tupleSize_ * RQsizeof(storage_), storage_,
                              tupleSize_, length);
    numbers->visit([&](const auto &pages) {
        if (mapping_ == Mapping::DETAIL)
            target.convert(pages.tuple(0), storage_, 0, length);
        else if (mapping_ == Mapping::DIRECT && offsets_.isTrivial())
            fillRun(pages, target, start, length);
        else
            fillListed(pages, target, start, length);
    });
}

template <class S>
void RQ_MSHElementArray::fillRun(const ELM_PageArray<S> &pages, const Target &target, int64_t start, int64_t length) const
{
    host::parallelForRange(length, Target::kRowsPerTask, [&](int64_t begin, int64_t end) {
        int64_t row = begin;
        pages.forEachRun(offsets_[start + begin], end - begin, [&](const S *tuples, int64_t rows, bool repeated) {
            target.from(row).convert(tuples, storage_, repeated ? 0 : tupleSize_, rows);
            row += rows;
        });
    });
}

// Whether every row has an element.
bool RQ_MSHElementArray::isComplete() const
{
    const MSH_Detail &detail = *detail_.readLock();
    return mapping_ == Mapping::DIRECT || (detail.topologyIsValid() && !detail.hasVacantOffsets(ELM_OWNER_VERTEX));
}

template <class S>
void RQ_MSHElementArray::fillListed(const ELM_PageArray<S> &pages, const Target &target, int64_t start, int64_t length) const
{
    // Where the elements lie in one block, and their rows, this is a plain gather.
    if (const S *flat = isComplete() ? pages.contiguous() : nullptr)
    {
        if (const auto *narrow = knownElements<int32_t>(start))
            return target.gather(flat, storage_, tupleSize_, narrow, length);
        if (const auto *wide = knownElements<int64_t>(start))
            return target.gather(flat, storage_, tupleSize_, wide, length);
    }
    host::parallelForRange(length, Target::kRowsPerTask, [&](int64_t begin, int64_t end) {
        const ELM_ReadHandle<S> reader = pages.reader();
        const int64_t components = target.components;
        int64_t elements[kRowsPerBlock];
        std::vector<S> rows(size_t(std::min(kRowsPerBlock, end - begin) * components));
        for (int64_t done = begin; done < end; done += kRowsPerBlock)
        {
            const int64_t count = std::min(kRowsPerBlock, end - done);
            findElements(elements, start + done, count);
            for (int64_t i = 0; i < count; ++i)
                if (elements[i] >= 0)
                    std::copy_n(reader.tuple(elements[i]), components, rows.data() + i * components);
                else
                    std::fill_n(rows.data() + i * components, components, S(0));
            target.from(done).convert(rows.data(), storage_, components, count);
        }
    });
}

template <class Index>
bool RQ_MSHElementArray::findListedExtremes(const float *rows, const Index *indices, double *min, double *max) const
{
    constexpr int64_t kRowsPerTask = 65536;  // of some 0.5 ns each
    const auto all = host::parallelReduce(
        entries(), kRowsPerTask, rq::TripleExtremes(),
        [&](int64_t begin, int64_t end) { return rq::findExtremes(rows, indices + begin, end - begin); },
        [](rq::TripleExtremes &into, const rq::TripleExtremes &from) { into.merge(from); });
    for (size_t c = 0; c < 3; ++c)
        if (all.low[c] <= all.high[c])
        {
            min[c] = double(all.low[c]);
            max[c] = double(all.high[c]);
        }
    return true;
}

bool RQ_MSHElementArray::computeMinMax(double *min, double *max) const
{
    const bool isTriple = attribute_ && tupleSize_ == 3 && mapping_ != Mapping::DETAIL && isComplete();
    if (const float *positions = isTriple ? attribute_->contiguousData<float>() : nullptr)
    {
        if (const auto *narrow = knownElements<int32_t>(0))
            return findListedExtremes(positions, narrow, min, max);
        if (const auto *wide = knownElements<int64_t>(0))
            return findListedExtremes(positions, wide, min, max);
    }
    if (mapping_ != Mapping::DETAIL || hasArrayEntries())
        return RQ_DataArray::computeMinMax(min, max);
    // One row, however often it is shown.
    for (int c = 0; c < tupleSize_; ++c)
        if (const double value = getF64(0, c); !std::isnan(value))
            min[c] = max[c] = value;
    return RQisNumeric(storage_);
}

template <RQ_NumericValue T> T RQ_MSHElementArray::valueAs(int64_t offset, int component) const
{
    const ELM_Offset element = elementOf(offset);
    if (element < 0)
        return T(0);
    if (const ELM_NumericTuple *numbers = attribute_->numericTuple())
        return numbers->visit([&](const auto &pages) { return RQconvert<T>(pages.value(element, component)); });
    const ELM_NumericArrays *arrays = attribute_->numericArrays();
    return !arrays ? T(0) : arrays->visit([&](const auto &typed) {
        const auto values = typed.get(element);
        return component >= 0 && component < std::ssize(values) ? RQconvert<T>(values[size_t(component)]) : T(0);
    });
}

template <RQ_NumericValue T>
void RQ_MSHElementArray::fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const
{
    if (hasArrayEntries())
        RQ_TypedArray::fillBlock(out, start, length, components, stride);
    else
        fillRows({reinterpret_cast<char *>(out), RQstorageOf<T>, components, stride}, start, length);
}

template class RQ_TypedArray<RQ_MSHElementArray, RQ_TypedEntries<RQ_MSHElementArray, rq::HostBound>>;
