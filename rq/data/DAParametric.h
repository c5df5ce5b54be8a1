#pragma once

#include <rq/data/DANumbers.h>
#include <rq/data/TypedArray.h>

/// Parametric coordinates (u, v) of a grid, computed from the entry's place.
///
/// Shape    two 32-bit floats; u runs fastest: entry i lies in column i % nu of row i / nu.  Column k of n has the parameter
///          begin + (end - begin) * k / (n - 1), the last one `end` exactly, the only one `begin`; rows likewise
/// Failure  counts below 0 count as 0; more entries than 64 bits hold end there
/// Threads  immutable after construction, safe to read from any thread
/// Cost     the same few bytes for any grid
class RQ_API RQ_DAParametric final : public RQ_TypedArray<RQ_DAParametric, RQ_DANumbers>
{
public:
    /// The parameters of one direction: `count` samples from `begin` to `end`.
    struct Samples
    {
        int64_t count;
        double begin = 0.0;
        double end = 1.0;

        float at(int64_t i) const
        {
            return float(i > 0 && i + 1 == count ? end
                         : i == 0                ? begin
                                                 : begin + (end - begin) * (double(i) / double(count - 1)));
        }
    };

    RQ_DAParametric(const Samples &u, const Samples &v, RQ_Type type = RQ_TYPE_NONE);

    /// Along a curve: (u, 0).
    explicit RQ_DAParametric(const Samples &u, RQ_Type type = RQ_TYPE_NONE);

    const char *className() const override;
    RQ_Storage getStorage() const override { return RQ_STORAGE_REAL32; }
    int64_t entries() const override { return entries_; }
    int64_t getTupleSize() const override { return 2; }
    int64_t getMemoryUsage() const override { return sizeof(*this); }
    RQ_Type getTypeInfo() const override { return type_; }

private:
    friend RQ_TypedArray<RQ_DAParametric, RQ_DANumbers>;

    template <RQ_NumericValue T> T valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue T> void fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const;

    Samples u_, v_;
    int64_t entries_;
    RQ_Type type_;
};

extern template class RQ_TypedArray<RQ_DAParametric, RQ_DANumbers>;
