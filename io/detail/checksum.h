#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include <host/bas/Parallel.h>
#include <host/bas/hashBytes.h>

namespace rq::io
{
/// A number that changes when a byte does: every step is reversible, so no change of a single word goes unnoticed.
///
/// Threads  blocks in parallel; the number does not depend on how many threads there are
/// Cost     reads as fast as memory: one word waits for nothing but the one eight words before
inline uint64_t checksum(std::string_view bytes)
{
    // Some 20 us of work.  The block is part of the result.
    constexpr int64_t kBlock = 256 << 10;
    constexpr size_t kLanes = 8, kStep = kLanes * sizeof(uint64_t);
    const auto ofBlock = [](std::string_view block) {
        std::array<uint64_t, kLanes> lanes{};
        for (; block.size() >= kStep; block.remove_prefix(kStep))
        {
            std::array<uint64_t, kLanes> words;
            std::memcpy(words.data(), block.data(), kStep);
            for (size_t lane = 0; lane < kLanes; ++lane)
                lanes[lane] = host::hashWord(lanes[lane], words[lane]);
        }
        uint64_t sum = host::hashBytes(block);
        for (const uint64_t lane : lanes)
            sum = host::hashWord(sum, lane);
        return sum;
    };
    return host::parallelReduce(
        int64_t(bytes.size()), kBlock, uint64_t(bytes.size()),
        [&](int64_t begin, int64_t end) { return ofBlock(bytes.substr(size_t(begin), size_t(end - begin))); },
        [](uint64_t &sum, uint64_t block) { sum = host::hashWord(sum, block); });
}
}  // namespace rq::io
