#pragma once

#include <concepts>
#include <type_traits>

#include <host/plt/types.h>
#include <rq/data/types.h>

/// One of the eight types that hold one component of a numeric value.
template <class T>
concept RQ_NumericValue =
    std::same_as<T, uint8_t> || std::same_as<T, int8_t> || std::same_as<T, int16_t> || std::same_as<T, int32_t> ||
    std::same_as<T, int64_t> || std::same_as<T, PLT_Half> || std::same_as<T, float> || std::same_as<T, double>;

/// The storage whose components are of type T.
template <RQ_NumericValue T>
constexpr RQ_Storage RQstorageOf = std::same_as<T, uint8_t>    ? RQ_STORAGE_UINT8
                                   : std::same_as<T, int8_t>   ? RQ_STORAGE_INT8
                                   : std::same_as<T, int16_t>  ? RQ_STORAGE_INT16
                                   : std::same_as<T, int32_t>  ? RQ_STORAGE_INT32
                                   : std::same_as<T, int64_t>  ? RQ_STORAGE_INT64
                                   : std::same_as<T, PLT_Half> ? RQ_STORAGE_REAL16
                                   : std::same_as<T, float>    ? RQ_STORAGE_REAL32
                                                               : RQ_STORAGE_REAL64;

namespace rq
{
/// Call `visit(std::type_identity<T>())` with the value type T of a storage.  False, and no call, when the storage is not
/// numeric.  For algorithms: dispatch once per array, then loop over plain pointers.
template <class Visitor> bool dispatchStorage(RQ_Storage storage, Visitor &&visit)
{
    switch (storage)
    {
    case RQ_STORAGE_UINT8:
        visit(std::type_identity<uint8_t>());
        return true;
    case RQ_STORAGE_INT8:
        visit(std::type_identity<int8_t>());
        return true;
    case RQ_STORAGE_INT16:
        visit(std::type_identity<int16_t>());
        return true;
    case RQ_STORAGE_INT32:
        visit(std::type_identity<int32_t>());
        return true;
    case RQ_STORAGE_INT64:
        visit(std::type_identity<int64_t>());
        return true;
    case RQ_STORAGE_REAL16:
        visit(std::type_identity<PLT_Half>());
        return true;
    case RQ_STORAGE_REAL32:
        visit(std::type_identity<float>());
        return true;
    case RQ_STORAGE_REAL64:
        visit(std::type_identity<double>());
        return true;
    default:
        return false;
    }
}
}  // namespace rq
