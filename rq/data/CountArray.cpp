#include <rq/data/CountArray.h>

#include <algorithm>
#include <limits>

#include <host/bas/JSONWriter.h>
#include <host/bas/Parallel.h>
#include <rq/data/Counts.h>
#include <rq/data/DAConstantValue.h>
#include <rq/data/DANumeric.h>
#include <rq/data/DARange.h>

namespace
{
// An item costs some 0.5 ns, so a block is 10 us of work.
constexpr int64_t kItemsPerBlock = 16384;

// From here on an array of item numbers or totals needs 64 bits.
constexpr int64_t kLimit32 = std::numeric_limits<int32_t>::max();

/// Fill an array of `size` values in blocks: `fill(values, begin, end)`.
template <class T, class Fill> RQ_DataArrayHandle makeArray(int64_t size, Fill &&fill)
{
    const BAS_IntrusivePtr<RQ_DANumeric<T>> array(new RQ_DANumeric<T>(size));
    host::parallelForRange(size, kItemsPerBlock, [&](int64_t begin, int64_t end) { fill(array->data(), begin, end); });
    return array;
}

template <class T> RQ_DataArrayHandle repeatItems(const rq::Counts &counts)
{
    constexpr int64_t kElementsPerPiece = 65536;
    const BAS_IntrusivePtr<RQ_DANumeric<T>> items(new RQ_DANumeric<T>(counts.sum()));
    host::parallelForWeighted(
        counts.entries(), kElementsPerPiece, [&](int64_t i) { return counts.end(i); },
        [&](int64_t begin, int64_t end) {
            for (int64_t i = begin; i < end; ++i)
                std::fill(items->data() + counts.begin(i), items->data() + counts.end(i), T(i));
        });
    return items;
}
}  // namespace

void RQ_CountArray::clear() { *this = RQ_CountArray(); }

std::pair<int64_t, int64_t> RQ_CountArray::getOffsetCount(int64_t i) const
{
    const int64_t offset = getOffset(i);
    return {offset, isUniform() ? maxCount_ : offsets_->getI64(i) - offset};
}

int64_t RQ_CountArray::sumCounts() const
{
    const int64_t count = entries();
    return count > 0 ? offsets_->getI64(count - 1) : 0;
}

RQ_DataArrayHandle RQ_CountArray::extractCounts() const
{
    const rq::Counts counts(*this);
    const bool wide = entries() >= kLimit32 || maxCount_ > kLimit32;
    if (isUniform())
        return wide ? RQ_DataArrayHandle(new RQ_DAConstantValue<int64_t>(entries(), maxCount_))
                    : RQ_DataArrayHandle(new RQ_DAConstantValue<int32_t>(entries(), int32_t(maxCount_)));
    const auto fill = [&](auto *values, int64_t begin, int64_t end) {
        using T = std::remove_pointer_t<decltype(values)>;
        for (int64_t i = begin; i < end; ++i)
            values[i] = T(counts.count(i));
    };
    return wide ? makeArray<int64_t>(entries(), fill) : makeArray<int32_t>(entries(), fill);
}

RQ_DataArrayHandle RQ_CountArray::extractOffsets() const
{
    const rq::Counts counts(*this);
    const int64_t size = entries() + 1;
    if (isUniform() && maxCount_ == 0)
        return RQ_DataArrayHandle(new RQ_DAConstantValue<int32_t>(size, 0));
    if (isUniform())
        return RQ_DataArrayHandle(new RQ_DARange(0, size * maxCount_, maxCount_));
    const auto fill = [&](auto *values, int64_t begin, int64_t end) {
        using T = std::remove_pointer_t<decltype(values)>;
        for (int64_t i = begin; i < end; ++i)
            values[i] = T(counts.begin(i));
    };
    return counts.sum() <= kLimit32 ? makeArray<int32_t>(size, fill) : makeArray<int64_t>(size, fill);
}

RQ_DataArrayHandle RQ_CountArray::buildRepeatList() const
{
    const rq::Counts counts(*this);
    return entries() < kLimit32 ? repeatItems<int32_t>(counts) : repeatItems<int64_t>(counts);
}

void RQ_CountArray::harden()
{
    // Equal counts are a range, which views nothing.
    if (!offsets_ || isUniform())
        return;
    if (const RQ_DataArrayHandle copy = offsets_->harden())
        offsets_ = copy;
}

bool RQ_CountArray::isEqual(const RQ_CountArray &other) const
{
    const int64_t count = entries();
    if (count != other.entries())
        return false;
    if (count == 0 || offsets_ == other.offsets_)
        return true;
    if (isUniform() && other.isUniform())
        return maxCount_ == other.maxCount_;
    // The totals may differ in width.
    const rq::Counts left(*this), right(other);
    for (int64_t i = 0; i < count; ++i)
        if (left.end(i) != right.end(i))
            return false;
    return true;
}

bool RQ_CountArray::save(BAS_JSONWriter &writer) const
{
    const rq::Counts counts(*this);
    bool good = writer.beginArray();
    for (int64_t i = 0; i < counts.entries() && good; ++i)
        good = writer.writeInt(counts.count(i));
    return good && writer.endArray();
}
