#pragma once

// The bodies of the typed layer.  Include it only where a layer is instantiated.

#include <algorithm>

#include <rq/data/TypedArray.h>
#include <rq/data/detail/blocks.h>
#include <rq/data/detail/numericTypes.h>

#define RQ_DEFINE(T, NAME, ARRAY)                                                                                           \
    template <class Derived, class Base> T RQ_TypedArray<Derived, Base>::get##NAME(int64_t offset, int idx) const           \
    {                                                                                                                       \
        return derived().template valueAs<T>(offset, idx);                                                                  \
    }                                                                                                                       \
    template <class Derived, class Base> const T *RQ_TypedArray<Derived, Base>::get(int64_t offset, T *out, int size) const \
    {                                                                                                                       \
        return getRow(offset, out, size);                                                                                   \
    }                                                                                                                       \
    template <class Derived, class Base>                                                                                    \
    void RQ_TypedArray<Derived, Base>::doImport(int64_t offset, T *data, int size) const                                    \
    {                                                                                                                       \
        importRow(offset, data, size);                                                                                      \
    }                                                                                                                       \
    template <class Derived, class Base>                                                                                    \
    void RQ_TypedArray<Derived, Base>::doFillArray(T *data, int64_t start, int64_t length, int tsize, int stride) const     \
    {                                                                                                                       \
        fillRows(data, start, length, tsize, stride);                                                                       \
    }
RQ_NUMERIC_TYPES(RQ_DEFINE)
#undef RQ_DEFINE

template <class Derived, class Base>
template <RQ_NumericValue T>
void RQ_TypedArray<Derived, Base>::fillBlock(T *out, int64_t start, int64_t length, int components, int stride) const
{
    for (int64_t i = 0; i < length; ++i)
        for (int c = 0; c < components; ++c)
            out[i * stride + c] = derived().template valueAs<T>(start + i, c);
}

template <class Derived, class Base>
template <class T>
const T *RQ_TypedArray<Derived, Base>::getRow(int64_t offset, T *out, int size) const
{
    const int64_t known = Derived::kRepeatsPastTuple ? size : std::min<int64_t>(size, this->getTupleSize());
    for (int c = 0; c < size; ++c)
        out[c] = c < known ? derived().template valueAs<T>(offset, c) : T(0);
    return out;
}

template <class Derived, class Base>
template <class T>
void RQ_TypedArray<Derived, Base>::importRow(int64_t offset, T *data, int size) const
{
    const int64_t tuple = this->getTupleSize();
    const int64_t count = size != 0 && tuple >= size ? size : tuple;
    for (int64_t c = 0; c < count; ++c)
        data[c] = derived().template valueAs<T>(offset, int(c));
}

template <class Derived, class Base>
template <class T>
void RQ_TypedArray<Derived, Base>::fillRows(T *data, int64_t start, int64_t length, int tsize, int stride) const
{
    const rq::BlockShape shape(*this, tsize, stride);
    if (length > 0 && shape.components > 0)
        derived().template fillBlock<T>(data, start, length, shape.components, shape.stride);
}
