#include <algorithm>
#include <cstring>

#include <bench/arrays.h>
#include <rq/data/DABool.h>
#include <rq/data/DAConstant.h>
#include <rq/data/DAConstantValue.h>
#include <rq/data/DARandom.h>
#include <rq/data/DARange.h>

namespace
{
/// The share of values that are not those of single reads.
template <class T> double fillError(const RQ_DataArray &array, T *to)
{
    array.fillArray(to, 0, array.entries());
    int64_t wrong = 0;
    for (int64_t i = 0; i < array.entries(); ++i)
        wrong += !(to[i] == array.getValue<T>(i));
    return double(wrong) / double(array.entries());
}

/// Read a whole array by `fillArray` into memory that is reused.
template <class T> void addFill(const char *job, RQ_DataArrayHandle (*make)())
{
    bench::add(
        {job, "values16M", "ours", 1, double(bench::kValues), double(bench::kValues) * double(sizeof(T)), false, [make] {
             const RQ_DataArrayHandle array = make();
             const auto to = bench::makeNumbers<T>(bench::kValues);
             return bench::Work{[array, to] {
                                    array->fillArray(to->data(), 0, array->entries());
                                    return std::shared_ptr<void>();
                                },
                                [array, to] { return fillError(*array, to->data()); }};
         }});
}

template <class T> void addPeer(const char *job, const char *who, void (*fill)(T *values))
{
    bench::add({job, "values16M", who, 1, double(bench::kValues), double(bench::kValues) * double(sizeof(T)), false, [fill] {
                    const auto to = bench::makeNumbers<T>(bench::kValues);
                    return bench::Work{[to, fill] {
                                           fill(to->data());
                                           return std::shared_ptr<void>();
                                       },
                                       {}};
                }});
}

/// Beside plain fills of the same output.
template <class T> void addFillAndPeers(const char *job, RQ_DataArrayHandle (*make)())
{
    addFill<T>(job, make);
    addPeer<T>(job, "std::fill", [](T *values) { std::fill_n(values, bench::kValues, T(3)); });
    addPeer<T>(job, "memset", [](T *values) { std::memset(values, 1, size_t(bench::kValues) * sizeof(T)); });
}

RQ_DataArrayHandle makeRange() { return new RQ_DARange(bench::kValues); }
RQ_DataArrayHandle makeValue() { return new RQ_DAConstantValue<float>(bench::kValues, 0.5f); }
RQ_DataArrayHandle makeConstant()
{
    return RQ_DAConstant::createConstant(bench::makeNumbers<float>(4, 1), 1, bench::kValues);
}

RQ_DataArrayHandle makeBits()
{
    const BAS_IntrusivePtr<RQ_DABool> bits(new RQ_DABool(bench::kValues));
    bench::Random random(3);
    for (int64_t i = 0; i < bench::kValues; ++i)
        bits->setBit(i, random.next() & 1);
    return bits;
}

template <class T> RQ_DataArrayHandle makeRandom() { return new RQ_DARandom<T>(bench::kValues, 5, T(0), T(100)); }

RQ_DataArrayHandle makeWideRandom()
{
    return new RQ_DARandom<int64_t>(bench::kValues, 5, -(int64_t(1) << 60), int64_t(1) << 61);
}

const bool registered = [] {
    addFillAndPeers<int32_t>("fill_range_I32", makeRange);
    addFillAndPeers<float>("fill_range_F32", makeRange);
    addFillAndPeers<int64_t>("fill_range_I64", makeRange);
    addFillAndPeers<float>("fill_value_F32", makeValue);
    addFillAndPeers<double>("fill_value_F64", makeValue);
    addFillAndPeers<float>("fill_constant_F32", makeConstant);
    addFill<uint8_t>("fill_bits_U8", makeBits);
    addFill<float>("fill_bits_F32", makeBits);
    addFill<double>("fill_random_F64", makeRandom<double>);
    addFill<float>("fill_random_F32", makeRandom<float>);
    addFill<PLT_Half>("fill_random_F16", makeRandom<PLT_Half>);
    addFill<int64_t>("fill_random_I64", makeRandom<int64_t>);
    addFill<int64_t>("fill_random_wide_I64", makeWideRandom);
    addFill<int32_t>("fill_random_I32", makeRandom<int32_t>);
    addFill<int16_t>("fill_random_I16", makeRandom<int16_t>);
    addFill<int8_t>("fill_random_I8", makeRandom<int8_t>);
    addFill<uint8_t>("fill_random_U8", makeRandom<uint8_t>);
    return true;
}();
}  // namespace
