#include <rq/data/DAIndirect.h>

#include <algorithm>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/data/convert.h>
#include <rq/data/detail/TypedArrayImpl.h>

namespace
{
// A row costs 1 to 5 ns through stacked views, so a piece is some 20 to 80 us of work.
constexpr int64_t kEntriesPerPiece = 16384;
}  // namespace

RQ_DAIndirect::RQ_DAIndirect(const RQ_DataArrayHandle &source, const RQ_DataArrayHandle &indices)
    : RQ_TypedArray(source), size_(indices->entries())
{
    if (indices->getStorage() == RQ_STORAGE_INT64)
        indices64_ = indices->getI64Array(indices_);
    else
        indices32_ = indices->getI32Array(indices_);
}

namespace
{
/// The entries that `indices` show in the array at the end of a chain of views, outermost view first.
template <class T>
RQ_DataArrayHandle composeIndices(const RQ_DataArray &indices, const BAS_Array<const RQ_DAInherit *> &views)
{
    const rq::Values<int64_t> outer(indices);
    const BAS_IntrusivePtr<RQ_DANumeric<T>> inner(new RQ_DANumeric<T>(outer.size()));
    host::parallelForRange(outer.size(), kEntriesPerPiece, [&](int64_t begin, int64_t end) {
        for (int64_t i = begin; i < end; ++i)
        {
            int64_t index = outer[i];
            for (const RQ_DAInherit *view : views)
                index = view->getIndirect(index);
            inner->data()[i] = T(index);
        }
    });
    return inner;
}
}  // namespace

RQ_DataArrayHandle RQ_DAIndirect::createIndirect(const RQ_DataArrayHandle &source, const RQ_DataArrayHandle &indices,
                                                 bool flatten)
{
    if (!source || !indices || !indices->checkIndexing(RQ_INDEXING_AUTO))
        return {};
    BAS_Array<const RQ_DAInherit *> views;
    RQ_DataArrayHandle root = source;
    for (const RQ_DAInherit *view; flatten && (view = dynamic_cast<const RQ_DAInherit *>(root.get())) && view->source();)
    {
        views.push_back(view);
        root = view->source();
    }
    if (views.empty())
        return RQ_DataArrayHandle(new RQ_DAIndirect(source, indices));
    const bool narrow = root->entries() <= std::numeric_limits<int32_t>::max();
    const RQ_DataArrayHandle composed =
        narrow ? composeIndices<int32_t>(*indices, views) : composeIndices<int64_t>(*indices, views);
    return RQ_DataArrayHandle(new RQ_DAIndirect(root, composed));
}

const char *RQ_DAIndirect::className() const { return "RQ_DAIndirect"; }
int64_t RQ_DAIndirect::getMemoryUsage() const { return int64_t(sizeof(*this)) + indices_->getMemoryUsage(); }

template <RQ_NumericValue T> T RQ_DAIndirect::valueAs(int64_t offset, int component) const
{
    return source_->getValue<T>(getIndirect(offset), component);
}

template <RQ_NumericValue T>
void RQ_DAIndirect::fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const
{
    const void *values = source_->getBackingData();
    const int64_t tuple = getTupleSize();
    if (values && indices32_)
        rq::gatherRows(values, getStorage(), tuple, indices32_ + start, out, RQstorageOf<T>, stride, components, length);
    else if (values)
        rq::gatherRows(values, getStorage(), tuple, indices64_ + start, out, RQstorageOf<T>, stride, components, length);
    else
        host::parallelForRange(length, kEntriesPerPiece, [&](int64_t begin, int64_t end) {
            for (int64_t i = begin; i < end; i += rq::kBlockEntries)
                fillThroughViews(out + i * stride, start + i, std::min(end - i, rq::kBlockEntries), components, stride);
        });
}

template <RQ_NumericValue T>
void RQ_DAIndirect::fillThroughViews(T *out, int64_t start, int64_t length, int components, int stride) const
{
    int64_t rows[rq::kBlockEntries];
    for (int64_t i = 0; i < length; ++i)
        rows[i] = getIndirect(start + i);
    const RQ_DataArray *source = source_.get();
    while (const auto *view = source->getBackingData() ? nullptr : dynamic_cast<const RQ_DAInherit *>(source))
    {
        if (const auto *indirect = dynamic_cast<const RQ_DAIndirect *>(view))
            for (int64_t i = 0; i < length; ++i)
                rows[i] = indirect->getIndirect(rows[i]);
        else
            for (int64_t i = 0; i < length; ++i)
                rows[i] = view->getIndirect(rows[i]);
        source = view->source().get();
    }
    if (const void *values = source->getBackingData())
        rq::gatherRows(values, getStorage(), getTupleSize(), rows, out, RQstorageOf<T>, stride, components, length);
    else
        for (int64_t i = 0; i < length; ++i)
            source->import(rows[i], out + i * stride, components);
}

template class RQ_TypedArray<RQ_DAIndirect, RQ_DAInherit>;
