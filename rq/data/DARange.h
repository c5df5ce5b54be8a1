#pragma once

#include <rq/data/DANumbers.h>
#include <rq/data/TypedArray.h>

/// An arithmetic sequence: entry i is `start + i * step`, up to and without `end`; a negative step counts downward.
///
/// Shape    one component, repeated by whatever asks for more; 32-bit integers when start and end lie within ±(2^27 - 1),
///          else 64-bit
/// Failure  more entries than 64 bits count end there
/// Threads  immutable after construction, safe to read from any thread
/// Cost     56 bytes for any number of entries
class RQ_API RQ_DARange final : public RQ_TypedArray<RQ_DARange, RQ_DANumbers>
{
public:
    /// The empty range.
    explicit RQ_DARange(RQ_Type type = RQ_TYPE_NONE);

    explicit RQ_DARange(int64_t end, RQ_Type type = RQ_TYPE_NONE);
    RQ_DARange(int64_t start, int64_t end, RQ_Type type = RQ_TYPE_NONE);

    /// A step of 0 becomes 1.
    RQ_DARange(int64_t start, int64_t end, int64_t step, RQ_Type type = RQ_TYPE_NONE);

    const char *className() const override;
    RQ_Storage getStorage() const override;
    int64_t entries() const override;
    int64_t getTupleSize() const override { return 1; }
    int64_t getMemoryUsage() const override { return 56; }
    RQ_Type getTypeInfo() const override { return type_; }

    int64_t start() const { return start_; }
    int64_t end() const { return end_; }
    int64_t step() const { return step_; }

    // All components have the same range.
    void getRange(double &min, double &max, int idx = 0) const override;
    void getRange(int64_t &min, int64_t &max, int idx = 0) const override;

    static constexpr bool kRepeatsPastTuple = true;

private:
    friend RQ_TypedArray<RQ_DARange, RQ_DANumbers>;

    template <RQ_NumericValue T> T valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue T> void fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const;
    bool computeMinMax(double *min, double *max) const override;

    int64_t start_ = 0;
    int64_t end_ = 0;
    int64_t step_ = 1;
    RQ_Type type_ = RQ_TYPE_NONE;
};

extern template class RQ_TypedArray<RQ_DARange, RQ_DANumbers>;
