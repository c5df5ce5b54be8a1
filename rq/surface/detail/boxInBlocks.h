#pragma once

#include <host/bas/BoundingBox.h>
#include <host/bas/Parallel.h>

namespace rq
{
/// Enlarge a box by the parts that `add(part, begin, end)` makes of blocks of curves, in parallel.
template <class Add> void addInBlocks(BAS_BoundingBox &box, int64_t curves, int64_t block, Add &&add)
{
    box.enlarge(host::parallelReduce(
        curves, block, BAS_BoundingBox(),
        [&](int64_t begin, int64_t end) {
            BAS_BoundingBox part;
            add(part, begin, end);
            return part;
        },
        [](BAS_BoundingBox &into, const BAS_BoundingBox &from) { into.enlarge(from); }));
}
}  // namespace rq
