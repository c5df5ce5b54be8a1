#include <algorithm>
#include <cstring>

#include <bench/arrays.h>
#include <rq/data/DAConstant.h>
#include <rq/data/DAConstantValue.h>
#include <rq/data/DARange.h>

namespace
{
/// Read a whole array by `fillArray` into memory that is reused.
template <class T> void addFill(const char *job, const char *mesh, RQ_DataArrayHandle (*make)())
{
    bench::add({job, mesh, "ours", 1, double(bench::kValues), double(bench::kValues) * double(sizeof(T)), false, [make] {
                    const RQ_DataArrayHandle array = make();
                    const auto to = bench::makeNumbers<T>(bench::kValues);
                    return bench::Work{[array, to] {
                                           array->fillArray(to->data(), 0, array->entries());
                                           return std::shared_ptr<void>();
                                       },
                                       {}};
                }});
}

template <class T> void addPlainFill(const char *job)
{
    bench::add(
        {job, "values16M", "std::fill", 1, double(bench::kValues), double(bench::kValues) * double(sizeof(T)), false, [] {
             const auto to = bench::makeNumbers<T>(bench::kValues);
             return bench::Work{[to] {
                                    std::fill_n(to->data(), bench::kValues, T(3));
                                    return std::shared_ptr<void>();
                                },
                                {}};
         }});
}

void addMemset()
{
    bench::add({"fill_F32", "values16M", "memset", 1, double(bench::kValues), double(bench::kValues) * 4.0, false, [] {
                    const auto to = bench::makeNumbers<float>(bench::kValues);
                    return bench::Work{[to] {
                                           std::memset(to->data(), 1, size_t(bench::kValues) * 4);
                                           return std::shared_ptr<void>();
                                       },
                                       {}};
                }});
}

RQ_DataArrayHandle makeRange() { return new RQ_DARange(bench::kValues); }
RQ_DataArrayHandle makeValue() { return new RQ_DAConstantValue<float>(bench::kValues, 0.5f); }
RQ_DataArrayHandle makeConstant()
{
    return RQ_DAConstant::createConstant(bench::makeNumbers<float>(4, 1), 1, bench::kValues);
}

const bool registered = [] {
    addFill<int32_t>("fill_I32", "range", makeRange);
    addFill<float>("fill_F32", "range", makeRange);
    addFill<int64_t>("fill_I64", "range", makeRange);
    addFill<float>("fill_F32", "constant value", makeValue);
    addFill<double>("fill_F64", "constant value", makeValue);
    addFill<float>("fill_F32", "constant entry", makeConstant);
    addMemset();
    addPlainFill<float>("fill_F32");
    addPlainFill<int64_t>("fill_I64");
    return true;
}();
}  // namespace
