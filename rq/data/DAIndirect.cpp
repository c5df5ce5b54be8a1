#include <rq/data/DAIndirect.h>

#include <algorithm>
#include <array>

#include <host/bas/Parallel.h>
#include <host/bas/stream.h>
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
/// The array as a view of another, null when it is none.
const RQ_DAInherit *asView(const RQ_DataArrayHandle &array)
{
    const auto *view = dynamic_cast<const RQ_DAInherit *>(array.get());
    return view && view->source() ? view : nullptr;
}

/// Replace entries of `array` by those that they show at the end of its chain of views; answers the array there.
const RQ_DataArrayHandle &followViews(const RQ_DataArrayHandle &array, int64_t *rows, int64_t count)
{
    const RQ_DAInherit *view = asView(array);
    if (!view)
        return array;
    if (const auto *indirect = dynamic_cast<const RQ_DAIndirect *>(view))
        for (int64_t i = 0; i < count; ++i)
            rows[i] = indirect->getIndirect(rows[i]);
    else
        for (int64_t i = 0; i < count; ++i)
            rows[i] = view->getIndirect(rows[i]);
    return followViews(view->source(), rows, count);
}
}  // namespace

/// A view and those beneath it, down to the array at the end of the chain.
class RQ_DAIndirect::Chain
{
public:
    explicit Chain(const RQ_DAIndirect &view) : view_(view), rest_(&view.source_)
    {
        const RQ_DAIndirect *level = &view;
        for (const int32_t *&indices : fused_)
        {
            if (!level || !level->indices32_)
                break;
            indices = level->indices32_;
            rest_ = &level->source_;
            level = dynamic_cast<const RQ_DAIndirect *>(rest_->get());
        }
        root_ = &followViews(*rest_, nullptr, 0);
    }

    const RQ_DataArrayHandle &root() const { return *root_; }

    /// Call `visit(rows, first, count)` for the entries of the root that a block of the view shows, in parallel.
    template <class Visitor> void visitRows(int64_t start, int64_t length, Visitor &&visit) const
    {
        host::parallelForRange(length, kEntriesPerPiece, [&](int64_t begin, int64_t end) {
            int64_t rows[rq::kBlockEntries];
            for (int64_t count; begin < end; begin += count)
            {
                count = std::min(end - begin, rq::kBlockEntries);
                findRest(start + begin, rows, count);
                followViews(*rest_, rows, count);
                visit(static_cast<const int64_t *>(rows), begin, count);
            }
        });
    }

    /// The entries of the root that all of the view shows.
    RQ_DataArrayHandle compose() const
    {
        const bool narrow = root()->entries() <= std::numeric_limits<int32_t>::max();
        return narrow ? composeAs<int32_t>() : composeAs<int64_t>();
    }

private:
    template <class Row> RQ_DataArrayHandle composeAs() const
    {
        const int64_t size = view_.entries();
        const BAS_IntrusivePtr<RQ_DANumeric<Row>> composed(new RQ_DANumeric<Row>(size));
        Row *const out = composed->data();
        if (rest_ == root_)
            host::parallelForRange(size, kEntriesPerPiece, [&](int64_t begin, int64_t end) {
                const bool streamed = size * int64_t(sizeof(Row)) >= host::kStreamedBytes;
                host::writeBlocks(out + begin, end - begin, streamed,
                                  [&](Row *to, int64_t first, int64_t count) { findRest(begin + first, to, count); });
            });
        else
            visitRows(0, size,
                      [&](const int64_t *rows, int64_t first, int64_t count) { std::copy_n(rows, count, out + first); });
        return composed;
    }

    /// The entries of the rest that a block of the view shows.
    template <class Row> void findRest(int64_t start, Row *rows, int64_t count) const
    {
        const auto [first, second, third] = fused_;
        if (third)
            for (int64_t i = 0; i < count; ++i)
                rows[i] = third[second[first[start + i]]];
        else if (second)
            for (int64_t i = 0; i < count; ++i)
                rows[i] = second[first[start + i]];
        else
            for (int64_t i = 0; i < count; ++i)
                rows[i] = Row(view_.getIndirect(start + i));
    }

    const RQ_DAIndirect &view_;
    // Up to three levels of 32-bit indices are followed in one pass: one load more costs less than writing and reading the
    // rows between them.
    std::array<const int32_t *, 3> fused_ = {};
    const RQ_DataArrayHandle *rest_;  // what they lead to
    const RQ_DataArrayHandle *root_;
};

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
    if (!asView(source_))
        return RQ_DataArrayHandle(const_cast<RQ_DAIndirect *>(this));
    const Chain chain(*this);
    return RQ_DataArrayHandle(new RQ_DAIndirect(chain.root(), chain.compose()));
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
    if (flattened_ || (length >= rq::kBlockEntries && asView(source_)))
        if (const RQ_DAIndirect *flat = flattened())
            return flat->fillBlock(out, start, length, components, stride);
    const Chain chain(*this);
    // An array that gathers its own values is read sooner in one go than row by row, which takes some 20 ns each.
    const RQ_DataArray &root = *chain.root();
    RQ_DataArrayHandle buffer;
    if (!root.getBackingData() && !root.hasArrayEntries() && length >= std::max(rq::kBlockEntries, root.entries() / 4))
        if (const T *values = root.getArray<T>(buffer))
            return chain.visitRows(start, length, [&](const int64_t *rows, int64_t first, int64_t count) {
                rq::gatherRows(values, RQstorageOf<T>, root.getTupleSize(), rows, out + first * stride, RQstorageOf<T>,
                               stride, components, count);
            });
    chain.visitRows(start, length,
                    [&](const int64_t *rows, int64_t first, int64_t count) { gather(root, rows, first, count); });
}

template class RQ_TypedArray<RQ_DAIndirect, RQ_DAInherit>;
