#pragma once

#include <io/detail/PLYHeader.h>

namespace rq::io
{
/// Call `visit(from, to)` with values of the file's type and of the storage that keeps them: the type's own, int32 for
/// whole numbers, real32 or real64.
template <class Visit> decltype(auto) visitPLYConversion(PLYType type, ELM_Storage storage, Visit &&visit)
{
    return visitPLYType(type, [&](auto from) {
        using From = decltype(from);
        // The smallest storage that holds them all.
        using Own = std::conditional_t<std::is_same_v<From, uint16_t>, int32_t,
                                       std::conditional_t<std::is_same_v<From, uint32_t>, int64_t, From>>;
        if (storage == storageOf(type))
            return visit(from, Own());
        if constexpr (std::is_integral_v<From>)
        {
            if (storage == ELM_STORAGE_INT32)
                return visit(from, int32_t());
        }
        return storage == ELM_STORAGE_REAL32 ? visit(from, float()) : visit(from, double());
    });
}

template <class To, class From> To convertPLY(From value, double divisor)
{
    if constexpr (std::is_floating_point_v<To> && !std::is_same_v<To, From>)
        return To(double(value) / divisor);
    else
        return To(value);
}
}  // namespace rq::io
