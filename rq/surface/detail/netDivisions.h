#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace rq
{
/// The steps in which a span of `order` is cut under a level of detail: 8, of straight ones 1, times the level and rounded
/// up, between 1 and `most`.
inline int netDivisions(int order, double level, int64_t most)
{
    constexpr double kDivisions = 8.0;
    const double wanted = std::ceil((order == 2 ? 1.0 : kDivisions) * level);
    return wanted > 1.0 ? int(std::min(wanted, double(std::max<int64_t>(1, most)))) : 1;  // not a number is not above 1
}
}  // namespace rq
