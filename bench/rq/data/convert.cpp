#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <bench/arrays.h>
#include <rq/data/detail/numericTypes.h>

namespace
{
/// The share of values that differ from those of the scalar conversion.
template <class To, class From> double conversionError(const RQ_DANumeric<From> &from, const To *to)
{
    int64_t wrong = 0;
    for (int64_t i = 0; i < bench::kValues; ++i)
        wrong += !(to[i] == RQconvert<To>(from.data()[i]));
    return double(wrong) / double(bench::kValues);
}

template <class To, class From> void addConversion(const char *fromName, const char *toName)
{
    bench::add({std::string("convert/") + fromName + "_to_" + toName, "values16M", "ours", 1, double(bench::kValues),
                double(bench::kValues) * double(sizeof(From) + sizeof(To)), true, [] {
                    const auto from = bench::makeNumbers<From>(bench::kValues);
                    return bench::Work{[from] {
                                           RQ_DataArrayHandle buffer;
                                           from->template getArray<To>(buffer);
                                           return bench::keep(buffer);
                                       },
                                       [from] {
                                           RQ_DataArrayHandle buffer;
                                           return conversionError<To>(*from, from->template getArray<To>(buffer));
                                       }};
                }});
}

/// A plain allocation and a memory copy of the same output: what a conversion is held against in fresh memory.
void addPlainCopy(const char *job, int64_t bytes)
{
    bench::add({job, "values16M", "malloc+memcpy", 1, double(bench::kValues), 2.0 * double(bytes), true, [bytes] {
                    const auto from = std::make_shared<std::vector<char>>(size_t(bytes), 1);
                    return bench::Work{[from] {
                                           void *to = std::malloc(from->size());
                                           std::memcpy(to, from->data(), from->size());
                                           return std::shared_ptr<void>(to, std::free);
                                       },
                                       {}};
                }});
}

const bool registered = [] {
#define RQ_FROM(T, NAME, ARRAY) addFrom(std::type_identity<T>(), #NAME);
#define RQ_TO(T, NAME, ARRAY)                                                                                               \
    if constexpr (!std::same_as<From, T>)                                                                                   \
        addConversion<T, From>(fromName, #NAME);
    const auto addFrom = [](auto tag, const char *fromName) {
        using From = typename decltype(tag)::type;
        RQ_NUMERIC_TYPES(RQ_TO)
    };
    RQ_NUMERIC_TYPES(RQ_FROM)
    addPlainCopy("convert/I32_to_F32", bench::kValues * 4);
    addPlainCopy("convert/F64_to_F32", bench::kValues * 4);
    addPlainCopy("convert/F32_to_F64", bench::kValues * 8);
    addPlainCopy("convert/F32_to_U8", bench::kValues);
    return true;
}();
}  // namespace
