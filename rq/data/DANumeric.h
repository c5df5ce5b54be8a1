#pragma once

#include <rq/data/DANumbers.h>
#include <rq/data/TypedArray.h>

/// A growable block of tuples of numbers.
///
/// Shape      tuples lie side by side, their components interleaved
/// Failure    sizes below 0 count as 0; `std::bad_alloc` when memory is exhausted
/// Ownership  owns its values; the block comes from `BAS_LargeBlocks`
/// Threads    written by one thread, or in disjoint pieces through `data`, before it is shared; read-only from then on
/// Cost       `getArray` of the same storage hands out the values themselves
template <RQ_NumericValue T> class RQ_API RQ_DANumeric final : public RQ_TypedArray<RQ_DANumeric<T>, RQ_DANumbers>
{
public:
    /// Allocate `size` entries; their values are unset.
    explicit RQ_DANumeric(int64_t size = 0, int64_t tupleSize = 1, RQ_Type type = RQ_TYPE_NONE);

    /// Copy `size` tuples.
    template <std::same_as<T> U>
    RQ_DANumeric(const U *values, int64_t size, int64_t tupleSize = 1, RQ_Type type = RQ_TYPE_NONE)
        : RQ_DANumeric(size, tupleSize, type)
    {
        copyFrom(values);
    }

    RQ_DANumeric(const RQ_DANumeric &other);
    ~RQ_DANumeric() override;

    const char *className() const override;
    RQ_Storage getStorage() const override { return RQstorageOf<T>; }
    int64_t entries() const override { return size_; }
    int64_t getTupleSize() const override { return tupleSize_; }
    int64_t getMemoryUsage() const override;
    RQ_Type getTypeInfo() const override { return type_; }
    bool getPointerAliasing(const void *data) const override;
    const void *getBackingData() const override { return data_; }

    T *data() { return data_; }
    const T *data() const { return data_; }
    T *getData() { return data_; }
    const T *getData() const { return data_; }

    /// Number of entries that fit without growing.
    int64_t capacity() const { return capacity_; }

    /// Add one entry and set its first component.  The other components stay unset: this form is meant for tuple size 1.
    void append(T value);

    /// Add one entry of `getTupleSize` components.
    template <std::same_as<T> U> void append(const U *tuple) { appendTuple(tuple); }

    /// Add all entries of `other`, converted.  Components that it lacks become 0, those beyond the tuple are dropped.
    void concat(const RQ_DataArray &other);

    /// Overwrite all entries with packed values.
    void copyFrom(const T *values);

    /// Make room for at least `n` entries.  Below 0: for the next size, 4, 8, then steps of 16 and of 128, then an eighth
    /// more.
    void grow(int64_t n = -1);

    /// Set the number of entries, keeping the values of those that stay; new ones are unset.
    void resize(int64_t n);

    /// Give back the room behind the last entry.
    void truncate();

    void set(int64_t offset, T value, int idx = 0) { data_[offset * tupleSize_ + idx] = value; }
    void setTuple(int64_t offset, const T *tuple) { setTupleBlock(offset, 1, tuple); }

    /// Overwrite `count` entries from `offset` on with packed values.
    void setTupleBlock(int64_t offset, int64_t count, const T *tuples);

private:
    friend RQ_TypedArray<RQ_DANumeric<T>, RQ_DANumbers>;

    template <RQ_NumericValue To> To valueAs(int64_t offset, int component) const;
    template <RQ_NumericValue To> void fillBlock(To *out, int64_t start, int64_t length, int components, int stride) const;

    void appendTuple(const T *tuple);
    void reallocate(int64_t capacity);

    T *data_ = nullptr;
    int64_t size_ = 0;
    int64_t capacity_ = 0;
    int64_t tupleSize_ = 1;
    RQ_Type type_ = RQ_TYPE_NONE;
};

extern template class RQ_TypedArray<RQ_DANumeric<double>, RQ_DANumbers>;
extern template class RQ_DANumeric<double>;
extern template class RQ_TypedArray<RQ_DANumeric<float>, RQ_DANumbers>;
extern template class RQ_DANumeric<float>;
extern template class RQ_TypedArray<RQ_DANumeric<PLT_Half>, RQ_DANumbers>;
extern template class RQ_DANumeric<PLT_Half>;
extern template class RQ_TypedArray<RQ_DANumeric<int64_t>, RQ_DANumbers>;
extern template class RQ_DANumeric<int64_t>;
extern template class RQ_TypedArray<RQ_DANumeric<int32_t>, RQ_DANumbers>;
extern template class RQ_DANumeric<int32_t>;
extern template class RQ_TypedArray<RQ_DANumeric<int16_t>, RQ_DANumbers>;
extern template class RQ_DANumeric<int16_t>;
extern template class RQ_TypedArray<RQ_DANumeric<int8_t>, RQ_DANumbers>;
extern template class RQ_DANumeric<int8_t>;
extern template class RQ_TypedArray<RQ_DANumeric<uint8_t>, RQ_DANumbers>;
extern template class RQ_DANumeric<uint8_t>;
