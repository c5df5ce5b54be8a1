#pragma once

#include <string>

#include <fmt/format.h>

#include <rq/data/Values.h>

namespace rq
{
/// Why a vertex list does not name the point of each corner, as a message; empty when it does, and without a list.
inline std::string checkVertexList(const RQ_DataArrayHandle &list, int64_t points)
{
    if (!list)
        return {};
    if (list->getTupleSize() != 1 || !RQisInteger(list->getStorage()))
        return "vertex list is not an array of single integers";
    int64_t least = 0, greatest = 0;
    list->getRange(least, greatest);
    if (list->entries() == 0 || (least >= 0 && greatest < points))
        return {};
    const Values<int64_t> rows(*list);
    for (int64_t i = 0; i < list->entries(); ++i)
        if (rows[i] < 0 || rows[i] >= points)
            return fmt::format("corner {} uses point {}, there are {}", i, rows[i], points);
    return {};
}
}  // namespace rq
