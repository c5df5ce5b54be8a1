#include <rq/data/DANumeric.h>

#include <algorithm>
#include <cstring>
#include <new>

#include <host/bas/LargeBlocks.h>
#include <host/bas/MemoryTracker.h>
#include <rq/data/convert.h>
#include <rq/data/detail/TypedArrayImpl.h>

template <RQ_NumericValue T>
RQ_DANumeric<T>::RQ_DANumeric(int64_t size, int64_t tupleSize, RQ_Type type)
    : tupleSize_(std::max<int64_t>(0, tupleSize)), type_(type)
{
    resize(size);
}

template <RQ_NumericValue T>
RQ_DANumeric<T>::RQ_DANumeric(const RQ_DANumeric &other)
    : RQ_TypedArray<RQ_DANumeric<T>, RQ_DANumbers>(other), tupleSize_(other.tupleSize_), type_(other.type_)
{
    resize(other.size_);
    copyFrom(other.data_);
}

template <RQ_NumericValue T> RQ_DANumeric<T>::~RQ_DANumeric() { reallocate(0); }

template <RQ_NumericValue T> const char *RQ_DANumeric<T>::className() const { return "RQ_DANumeric"; }

template <RQ_NumericValue T> int64_t RQ_DANumeric<T>::getMemoryUsage() const
{
    return int64_t(sizeof(*this)) + capacity_ * tupleSize_ * int64_t(sizeof(T));
}

template <RQ_NumericValue T> bool RQ_DANumeric<T>::getPointerAliasing(const void *data) const
{
    const uintptr_t address = reinterpret_cast<uintptr_t>(data), begin = reinterpret_cast<uintptr_t>(data_);
    return address - begin < uintptr_t(capacity_ * tupleSize_) * sizeof(T);
}

template <RQ_NumericValue T> void RQ_DANumeric<T>::append(T value)
{
    if (size_ == capacity_)
        grow();
    if (tupleSize_ > 0)
        data_[size_ * tupleSize_] = value;
    ++size_;
}

template <RQ_NumericValue T> void RQ_DANumeric<T>::appendTuple(const T *tuple)
{
    if (size_ == capacity_)
    {
        // The tuple may lie in the block that is about to be released.
        const int64_t inside = getPointerAliasing(tuple) ? tuple - data_ : -1;
        grow();
        tuple = inside < 0 ? tuple : data_ + inside;
    }
    setTuple(size_++, tuple);
}

template <RQ_NumericValue T> void RQ_DANumeric<T>::concat(const RQ_DataArray &other)
{
    const int64_t first = size_, count = other.entries();
    resize(first + count);
    T *values = data_ + first * tupleSize_;
    if (other.getTupleSize() < tupleSize_)
        std::fill_n(values, count * tupleSize_, T(0));
    if (tupleSize_ > 0)
        other.fillArray(values, 0, count, int(tupleSize_), int(tupleSize_));
}

template <RQ_NumericValue T> void RQ_DANumeric<T>::copyFrom(const T *values) { setTupleBlock(0, size_, values); }

template <RQ_NumericValue T> void RQ_DANumeric<T>::grow(int64_t n)
{
    if (n >= 0)
    {
        if (n > capacity_)
            reallocate(n);
        return;
    }
    const int64_t c = capacity_ + 1;
    if (c < 4)
        reallocate(4);
    else if (c < 8)
        reallocate(8);
    else if (c < 128)
        reallocate((capacity_ + 17) & ~int64_t(15));
    else if (c < 1024)
        reallocate((capacity_ + 129) & ~int64_t(127));
    else
        reallocate(c + c / 8);
}

template <RQ_NumericValue T> void RQ_DANumeric<T>::resize(int64_t n)
{
    n = std::max<int64_t>(0, n);
    grow(n);
    size_ = n;
}

template <RQ_NumericValue T> void RQ_DANumeric<T>::truncate() { reallocate(size_); }

template <RQ_NumericValue T> void RQ_DANumeric<T>::setTupleBlock(int64_t offset, int64_t count, const T *tuples)
{
    rq::convertValues(tuples, RQstorageOf<T>, data_ + offset * tupleSize_, RQstorageOf<T>, count * tupleSize_);
}

template <RQ_NumericValue T> void RQ_DANumeric<T>::reallocate(int64_t capacity)
{
    const int64_t oldBytes = capacity_ * tupleSize_ * int64_t(sizeof(T));
    int64_t values, bytes;
    if (__builtin_mul_overflow(capacity, tupleSize_, &values) || __builtin_mul_overflow(values, int64_t(sizeof(T)), &bytes))
        throw std::bad_alloc();
    T *data = nullptr;
    if (bytes > 0)
    {
        data = static_cast<T *>(BAS_LargeBlocks::allocate(size_t(bytes)));
        if (!data)
            throw std::bad_alloc();
        rq::convertValues(data_, RQstorageOf<T>, data, RQstorageOf<T>, std::min(size_, capacity) * tupleSize_);
    }
    BAS_LargeBlocks::release(data_, size_t(oldBytes));
    BAS_MemoryTracker::add(BAS_MEMORY_ARRAY, bytes - oldBytes);
    data_ = data;
    capacity_ = capacity;
}

template <RQ_NumericValue T> template <RQ_NumericValue To> To RQ_DANumeric<T>::valueAs(int64_t offset, int component) const
{
    return RQconvert<To>(data_[offset * tupleSize_ + component]);
}

template <RQ_NumericValue T>
template <RQ_NumericValue To>
void RQ_DANumeric<T>::fillBlock(To *out, int64_t start, int64_t length, int components, int stride) const
{
    rq::convertRows(data_ + start * tupleSize_, RQstorageOf<T>, tupleSize_, out, RQstorageOf<To>, stride, components,
                    length);
}

#define RQ_INSTANTIATE(T, NAME, ARRAY)                                                                                      \
    template class RQ_TypedArray<RQ_DANumeric<T>, RQ_DANumbers>;                                                            \
    template class RQ_DANumeric<T>;
RQ_NUMERIC_TYPES(RQ_INSTANTIATE)
