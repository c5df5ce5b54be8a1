#include <algorithm>

#include <host/bas/Parallel.h>
#include <host/msh/Detail.h>
#include <rq/bridge/MSHElementArray.h>
#include <rq/data/convert.h>
#include <rq/data/detail/TypedArrayImpl.h>

namespace
{
// Rows that are resolved and gathered at a time: their offsets stay in the first-level cache.
constexpr int64_t kRowsPerBlock = 1024;

// A gathered row costs a few nanoseconds.
constexpr int64_t kRowsPerTask = 16 * kRowsPerBlock;
}  // namespace

void RQ_MSHElementArray::resolveRows(int64_t *rows, int64_t start, int64_t length) const
{
    if (mapping_ == Mapping::DETAIL)
        std::fill_n(rows, length, int64_t(0));
    else if (mapping_ == Mapping::VERTEX_TO_POINT)
        detail_.readLock()->vertexPoint().copyOut(rows, offsets_.offsetList(), start, length);
    else if (mapping_ == Mapping::VERTEX_TO_PRIMITIVE)
        detail_.readLock()->vertexPrimitive().copyOut(rows, offsets_.offsetList(), start, length);
    else
        offsets_.offsetList().visit([&](auto offsets) {
            for (int64_t i = 0; i < length; ++i)
                rows[i] = offsets[start + i];
        });
}

template <RQ_NumericValue T> T RQ_MSHElementArray::valueAs(int64_t offset, int component) const
{
    const ELM_NumericTuple *numbers = attribute_ ? attribute_->numericTuple() : nullptr;
    if (!numbers)
        return T(0);
    const ELM_Offset row = getDataOffset(offset);
    if (row < 0)
        return T(0);
    return numbers->visit([&](const auto &pages) { return RQconvert<T>(pages.value(row, component)); });
}

template <class T, class S>
void RQ_MSHElementArray::fillRows(const ELM_PageArray<S> &pages, T *out, int64_t start, int64_t length, int components,
                                  int stride) const
{
    if constexpr (std::same_as<T, S>)
        if (mapping_ == Mapping::DIRECT)
            return pages.copyOut(out, offsets_.offsetList(), start, length, components, stride);

    const ELM_ReadHandle<S> reader = pages.reader();
    int64_t rows[kRowsPerBlock];
    for (int64_t done = 0; done < length; done += kRowsPerBlock)
    {
        const int64_t count = std::min(kRowsPerBlock, length - done);
        resolveRows(rows, start + done, count);
        for (int64_t i = 0; i < count; ++i)
        {
            if (rows[i] < 0)
            {
                std::fill_n(out + (done + i) * stride, components, T(0));
                continue;
            }
            const S *tuple = reader.tuple(rows[i]);
            for (int c = 0; c < components; ++c)
                out[(done + i) * stride + c] = RQconvert<T>(tuple[c]);
        }
    }
}

template <RQ_NumericValue T>
void RQ_MSHElementArray::fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const
{
    const ELM_NumericTuple *numbers = attribute_ ? attribute_->numericTuple() : nullptr;
    host::parallelForRange(length, kRowsPerTask, [&](int64_t begin, int64_t end) {
        T *to = out + begin * stride;
        if (numbers)
            return numbers->visit(
                [&](const auto &pages) { fillRows(pages, to, start + begin, end - begin, components, stride); });
        for (int64_t i = 0; i < end - begin; ++i)
            std::fill_n(to + i * stride, components, T(0));
    });
}

template class RQ_TypedArray<RQ_MSHElementArray, RQ_DataArray>;
