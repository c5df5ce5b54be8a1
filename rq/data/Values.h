#pragma once

#include <rq/data/DataArray.h>

namespace rq
{
/// Read a whole array as contiguous values of T, for as long as the reader lives.
///
/// Shape      `entries * tupleSize` values, the components of an entry side by side
/// Failure    empty for a null array; strings and dictionaries read as 0
/// Ownership  holds the array's own values, or a converted copy of them
/// Threads    making it may run in parallel; reading is safe from any thread
/// Cost       nothing is copied when the array already holds contiguous values of T
template <RQ_NumericValue T> class Values
{
public:
    Values() = default;
    explicit Values(const RQ_DataArray &array)
        : values_(array.getArray<T>(buffer_)), entries_(array.entries()), tupleSize_(array.getTupleSize())
    {}
    explicit Values(const RQ_DataArrayHandle &array)
    {
        if (array)
            *this = Values(*array);
    }

    int64_t entries() const { return entries_; }
    int64_t tupleSize() const { return tupleSize_; }

    /// Number of values, all components of all entries.
    int64_t size() const { return entries_ * tupleSize_; }

    const T *data() const { return values_; }
    const T *begin() const { return values_; }
    const T *end() const { return values_ + size(); }

    /// Value `i` of all; entry i itself for arrays of one component.
    T operator[](int64_t i) const { return values_[i]; }
    T operator()(int64_t entry, int64_t component) const { return values_[entry * tupleSize_ + component]; }

private:
    RQ_DataArrayHandle buffer_;
    const T *values_ = nullptr;
    int64_t entries_ = 0;
    int64_t tupleSize_ = 0;
};
}  // namespace rq
