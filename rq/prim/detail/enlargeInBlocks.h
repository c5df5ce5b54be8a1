#pragma once

#include <algorithm>
#include <vector>

#include <host/bas/BoundingBox.h>
#include <host/bas/Parallel.h>

namespace rq
{
/// Enlarge one box per segment by `count` items, in parallel: `enlarge(boxes, begin, end)` adds some of them to boxes of its
/// own.  Merging boxes is exact, so neither the block nor the number of threads shows.
template <class Enlarge>
void enlargeInBlocks(BAS_BoundingBox *boxes, int segments, int64_t count, int64_t block, Enlarge &&enlarge)
{
    // All blocks' boxes lie in one piece of memory: blocks are small, and an allocation each costs as much as their work.
    const int64_t blocks = (count + block - 1) / block;
    std::vector<BAS_BoundingBox> partial(static_cast<size_t>(blocks * segments));
    host::parallelFor(blocks, 1, [&](int64_t b) {
        enlarge(partial.data() + b * segments, b * block, std::min(count, (b + 1) * block));
    });
    for (size_t i = 0; i < partial.size(); ++i)
        boxes[i % size_t(segments)].enlarge(partial[i]);
}
}  // namespace rq
