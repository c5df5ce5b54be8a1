#pragma once

#include <bit>
#include <string>
#include <type_traits>

namespace rq::io
{
static_assert(std::endian::native == std::endian::little, "files are written as memory holds numbers");

/// Append a value as it lies in memory.
template <class T> void appendBytes(std::string &to, const T &value)
{
    static_assert(std::is_trivially_copyable_v<T>);
    to.append(reinterpret_cast<const char *>(&value), sizeof(value));
}
}  // namespace rq::io
