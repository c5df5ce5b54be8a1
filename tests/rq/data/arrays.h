#pragma once

#include <gtest/gtest.h>

#include <rq/data/DANumeric.h>
#include <rq/data/Values.h>

// What the tests of arrays share.

using RQ_NumericTestTypes = testing::Types<uint8_t, int8_t, int16_t, int32_t, int64_t, PLT_Half, float, double>;

/// `body(T())` for every numeric type, in the order of storages.
template <class... T, class Body> void forEachType(testing::Types<T...>, Body body) { (body(T()), ...); }

/// Entries of `tuple` values that count up and wrap at 100, so that every storage holds them exactly.
template <class T> BAS_IntrusivePtr<RQ_DANumeric<T>> countingArray(int64_t entries, int64_t tuple)
{
    BAS_IntrusivePtr<RQ_DANumeric<T>> array(new RQ_DANumeric<T>(entries, tuple));
    for (int64_t i = 0; i < entries * tuple; ++i)
        array->data()[i] = T(float(i % 100));
    return array;
}

template <class T> RQ_DataArrayHandle makeArray(std::vector<T> values, int64_t tuple = 1, RQ_Type type = RQ_TYPE_NONE)
{
    return RQ_DataArrayHandle(new RQ_DANumeric<T>(values.data(), int64_t(values.size()) / tuple, tuple, type));
}

/// All values in a row; none of a null array.
template <class T = double> std::vector<T> valuesOf(const RQ_DataArrayHandle &array)
{
    const rq::Values<T> values(array);
    return {values.begin(), values.end()};
}
