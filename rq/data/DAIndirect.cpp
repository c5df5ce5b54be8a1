#include <rq/data/DAIndirect.h>

#include <algorithm>

#include <host/bas/Parallel.h>
#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>
#include <rq/data/convert.h>
#include <rq/data/detail/TypedArrayImpl.h>
#include <rq/data/detail/copyEntries.h>

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
/// Replace entries of `array` by those that they show at the end of its chain of views; answers the array there.
const RQ_DataArrayHandle &followViews(const RQ_DataArrayHandle &array, int64_t *rows, int64_t count)
{
    const auto *view = dynamic_cast<const RQ_DAInherit *>(array.get());
    if (!view || !view->source())
        return array;
    const auto *indirect = dynamic_cast<const RQ_DAIndirect *>(view);
    const auto *next = indirect ? dynamic_cast<const RQ_DAIndirect *>(indirect->source().get()) : nullptr;
    if (next)
    {
        // Two at once spare a pass over the rows.
        for (int64_t i = 0; i < count; ++i)
            rows[i] = next->getIndirect(indirect->getIndirect(rows[i]));
        return followViews(next->source(), rows, count);
    }
    if (indirect)
        for (int64_t i = 0; i < count; ++i)
            rows[i] = indirect->getIndirect(rows[i]);
    else
        for (int64_t i = 0; i < count; ++i)
            rows[i] = view->getIndirect(rows[i]);
    return followViews(view->source(), rows, count);
}

/// Call `visit(rows, first, count)` for the entries at the end of the chain that a block of indices shows, in parallel.
template <class Visitor> void visitRows(const RQ_DAIndirect &view, int64_t start, int64_t length, Visitor &&visit)
{
    host::parallelForRange(length, kEntriesPerPiece, [&](int64_t begin, int64_t end) {
        int64_t rows[rq::kBlockEntries];
        for (int64_t count; begin < end; begin += count)
        {
            count = std::min(end - begin, rq::kBlockEntries);
            for (int64_t i = 0; i < count; ++i)
                rows[i] = view.getIndirect(start + begin + i);
            followViews(view.source(), rows, count);
            visit(static_cast<const int64_t *>(rows), begin, count);
        }
    });
}

template <class T> RQ_DataArrayHandle composeIndices(const RQ_DAIndirect &view)
{
    const BAS_IntrusivePtr<RQ_DANumeric<T>> composed(new RQ_DANumeric<T>(view.entries()));
    visitRows(view, 0, view.entries(), [&](const int64_t *rows, int64_t first, int64_t count) {
        std::copy_n(rows, count, composed->data() + first);
    });
    return composed;
}
}  // namespace

RQ_DataArrayHandle RQ_DAIndirect::createIndirect(const RQ_DataArrayHandle &source, const RQ_DataArrayHandle &indices,
                                                 bool flatten)
{
    if (!source || !indices || !indices->checkIndexing(RQ_INDEXING_AUTO))
        return {};
    const BAS_IntrusivePtr<RQ_DAIndirect> view(new RQ_DAIndirect(source, indices));
    return flatten ? view->flatten() : RQ_DataArrayHandle(view);
}

RQ_DataArrayHandle RQ_DAIndirect::flatten() const
{
    const RQ_DataArrayHandle &root = followViews(source_, nullptr, 0);
    if (root == source_)
        return RQ_DataArrayHandle(const_cast<RQ_DAIndirect *>(this));
    const bool narrow = root->entries() <= std::numeric_limits<int32_t>::max();
    return RQ_DataArrayHandle(
        new RQ_DAIndirect(root, narrow ? composeIndices<int32_t>(*this) : composeIndices<int64_t>(*this)));
}

const RQ_DAIndirect *RQ_DAIndirect::flattened() const
{
    if (!flattened_ && !claimed_.test_and_set())
    {
        // The others read the long way meanwhile: nobody waits for a parallel loop.
        flat_ = flatten();
        flat_->copyDataId(*source_);
        flattened_ = static_cast<const RQ_DAIndirect *>(flat_.get());
    }
    const RQ_DAIndirect *flat = flattened_;
    return flat && flat->getDataId() == source_->getDataId() ? flat : nullptr;
}

RQ_DataArrayHandle RQ_DAIndirect::harden() const
{
    return hasArrayEntries() ? rq::copyEntries(*this) : RQ_TypedArray::harden();
}

void RQ_DAIndirect::updateGeoDetail(const MOD_ConstDetailHandle &detail, const char *name, RQ_Owner owner, int segment)
{
    RQ_DAInherit::updateGeoDetail(detail, name, owner, segment);
    if (flattened_ && source_ && !flattened())
    {
        flattened_ = nullptr;
        flat_ = nullptr;
        claimed_.clear();
    }
}

const char *RQ_DAIndirect::className() const { return "RQ_DAIndirect"; }

int64_t RQ_DAIndirect::getMemoryUsage() const
{
    const RQ_DAIndirect *flat = flattened_;
    return int64_t(sizeof(*this)) + indices_->getMemoryUsage() + (flat ? flat->getMemoryUsage() : 0);
}

template <RQ_NumericValue T> T RQ_DAIndirect::valueAs(int64_t offset, int component) const
{
    return source_->getValue<T>(getIndirect(offset), component);
}

template <RQ_NumericValue T>
void RQ_DAIndirect::fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const
{
    const auto gather = [&](const RQ_DataArray &from, const auto *rows, int64_t first, int64_t count) {
        T *to = out + first * stride;
        if (const void *values = from.getBackingData())
            rq::gatherRows(values, getStorage(), getTupleSize(), rows, to, RQstorageOf<T>, stride, components, count);
        else
            for (int64_t i = 0; i < count; ++i)
                from.import(rows[i], to + i * stride, components);
    };
    if (source_->getBackingData() && indices32_)
        return gather(*source_, indices32_ + start, 0, length);
    if (source_->getBackingData())
        return gather(*source_, indices64_ + start, 0, length);
    const RQ_DataArrayHandle &root = followViews(source_, nullptr, 0);
    const RQ_DAIndirect *flat = root != source_ && length >= rq::kBlockEntries ? flattened() : nullptr;
    if (flat)
        return flat->fillBlock(out, start, length, components, stride);
    visitRows(*this, start, length,
              [&](const int64_t *rows, int64_t first, int64_t count) { gather(*root, rows, first, count); });
}

template class RQ_TypedArray<RQ_DAIndirect, RQ_DAInherit>;
