#pragma once

#include <algorithm>

#include <host/bas/Parallel.h>
#include <rq/bridge/MSHElementArray.h>
#include <rq/data/convert.h>
#include <rq/data/detail/quantiseRows.h>

// How the sources of element arrays go through rows.

/// Where rows are written to.
struct RQ_MSHElementArray::Target
{
    /// A gathered row costs a few nanoseconds.
    static constexpr int64_t kRowsPerTask = 16 * ELM_PAGE_SIZE;

    char *data;
    RQ_Storage storage;
    int components;
    int64_t stride;

    /// What becomes 0 and what 255 of values that are quantised, into uint8.
    struct Scale
    {
        double black, white;
    };
    const Scale *scale = nullptr;

    Target from(int64_t row) const { return {data + row * stride * RQsizeof(storage), storage, components, stride, scale}; }

    void convert(const void *rows, RQ_Storage rowStorage, int64_t rowStride, int64_t count) const
    {
        if (scale)
            rq::quantiseRows(rows, rowStorage, rowStride, reinterpret_cast<uint8_t *>(data), stride, components, count,
                             scale->black, scale->white);
        else
            rq::convertRows(rows, rowStorage, rowStride, data, storage, stride, components, count);
    }

    template <class Index>
    void gather(const void *rows, RQ_Storage rowStorage, int64_t rowStride, const Index *indices, int64_t count) const
    {
        if (!scale)
            return rq::gatherRows(rows, rowStorage, rowStride, indices, data, storage, stride, components, count);
        host::parallelForRange(count, kRowsPerTask, [&](int64_t begin, int64_t end) {
            std::vector<char> block(size_t(ELM_PAGE_SIZE * components * RQsizeof(rowStorage)));
            for (int64_t first = begin; first < end; first += ELM_PAGE_SIZE)
            {
                const int64_t length = std::min(ELM_PAGE_SIZE, end - first);
                rq::gatherRows(rows, rowStorage, rowStride, indices + first, block.data(), rowStorage, components,
                               components, length);
                from(first).convert(block.data(), rowStorage, components, length);
            }
        });
    }
};

template <class Visit> void RQ_MSHElementArray::visitElements(int64_t start, int64_t length, Visit &&visit) const
{
    int64_t elements[ELM_PAGE_SIZE];
    for (int64_t first = 0; first < length; first += ELM_PAGE_SIZE)
    {
        const int64_t count = std::min(ELM_PAGE_SIZE, length - first);
        findElements(elements, start + first, count);
        for (int64_t i = 0; i < count; ++i)
            visit(elements[i], first + i);
    }
}
