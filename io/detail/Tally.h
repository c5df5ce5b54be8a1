#pragma once

#include <cstdint>
#include <string>

namespace rq::io
{
/// Records of one sort that a warning mentions once.
struct Tally
{
    int64_t count = 0;
    const char *first = nullptr;

    void add(const char *at) { first = count++ == 0 ? at : first; }
    void add(const Tally &later)
    {
        first = count == 0 ? later.first : first;
        count += later.count;
    }
};

/// "1 face is" or "2 faces are".
inline std::string counted(int64_t count, const char *one, const char *many)
{
    return std::to_string(count) + ' ' + (count == 1 ? one : many);
}
}  // namespace rq::io
