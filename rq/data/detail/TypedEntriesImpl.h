#pragma once

// The bodies of the layer for arrays of arrays.  Include it only where one is instantiated.

#include <algorithm>

#include <rq/data/TypedEntries.h>
#include <rq/data/detail/numericTypes.h>

#define RQ_DEFINE(T, NAME, ARRAY)                                                                                           \
    template <class Derived, class Base>                                                                                    \
    bool RQ_TypedEntries<Derived, Base>::get##ARRAY(BAS_ValArray<T> &values, int64_t offset) const                          \
    {                                                                                                                       \
        return derived().copyEntries(offset, 1, values, nullptr);                                                           \
    }                                                                                                                       \
    template <class Derived, class Base>                                                                                    \
    void RQ_TypedEntries<Derived, Base>::doImportArray(int64_t offset, BAS_ValArray<T> &values) const                       \
    {                                                                                                                       \
        derived().copyEntries(offset, 1, values, nullptr);                                                                  \
    }                                                                                                                       \
    template <class Derived, class Base>                                                                                    \
    void RQ_TypedEntries<Derived, Base>::doFillArrayAttr(BAS_Array<T> &data, BAS_Array<int> &sizes, int64_t start,          \
                                                         int64_t length) const                                              \
    {                                                                                                                       \
        data.clear();                                                                                                       \
        sizes.assign(size_t(std::max<int64_t>(0, length)), 0);                                                              \
        derived().copyEntries(start, int64_t(sizes.size()), data, &sizes);                                                  \
    }
RQ_NUMERIC_TYPES(RQ_DEFINE)
#undef RQ_DEFINE
