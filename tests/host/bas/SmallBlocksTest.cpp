#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <set>
#include <thread>
#include <vector>

#include <host/bas/LargeBlocks.h>
#include <host/bas/MemoryTracker.h>
#include <host/bas/SmallBlocks.h>

namespace
{
constexpr size_t kBytes = BAS_SmallBlocks::kBytes;

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kIsPooled = false;
#else
constexpr bool kIsPooled = true;
#endif

std::vector<void *> take(size_t count)
{
    std::vector<void *> blocks(count);
    for (void *&block : blocks)
        block = BAS_SmallBlocks::allocate(kBytes);
    return blocks;
}

void release(const std::vector<void *> &blocks)
{
    for (void *block : blocks)
        BAS_SmallBlocks::release(block, kBytes);
}

/// Takes and frees blocks as late as a thread, or for a static the program, lets it.
struct Late
{
    void *block = nullptr;
    ~Late()
    {
        BAS_SmallBlocks::release(block, kBytes);
        BAS_SmallBlocks::release(BAS_SmallBlocks::allocate(kBytes), kBytes);
    }
};
Late atEndOfProgram;
}  // namespace

TEST(SmallBlocks, HoldWhatWasAskedFor)
{
    for (const size_t bytes : {size_t(1), kBytes, kBytes + 1, size_t(10000)})
    {
        SCOPED_TRACE(bytes);
        void *block = BAS_SmallBlocks::allocate(bytes);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % (kIsPooled && bytes <= kBytes ? kBytes : 16), 0u);
        std::memset(block, 0x5A, bytes);
        BAS_SmallBlocks::release(block, bytes);
    }
    BAS_SmallBlocks::release(nullptr, kBytes);
    atEndOfProgram.block = BAS_SmallBlocks::allocate(kBytes);
}

TEST(SmallBlocks, GoBackToTheSystem)
{
    if (!kIsPooled)
        GTEST_SKIP() << "the address sanitizer keeps what is freed";
    constexpr int64_t kCount = 300000, kMiB = 1 << 20;
    const std::vector<void *> blocks = take(kCount);
    const int64_t before = BAS_MemoryTracker::current(BAS_MEMORY_POOL);
    release(blocks);
    EXPECT_GE(BAS_MemoryTracker::current(BAS_MEMORY_POOL) - before, (kCount - 4096) * int64_t(kBytes));
    BAS_LargeBlocks::trim();
    EXPECT_LE(BAS_MemoryTracker::current(BAS_MEMORY_POOL) - before, 4 * kMiB);
}

// One thread makes what another frees, and ends; a leak, or blocks that pile up with either, would take ever new ones.
TEST(SmallBlocks, OfEndedThreadsAreUsedAgain)
{
    constexpr size_t kCount = 3000;
    std::set<void *> seen;
    for (int round = 0; round < 50; ++round)
    {
        std::vector<void *> blocks;
        std::thread([&] {
            thread_local Late late;  // made first, so that it goes last
            late.block = nullptr;
            blocks = take(kCount);
            late.block = BAS_SmallBlocks::allocate(kBytes);
        }).join();
        seen.insert(blocks.begin(), blocks.end());
        EXPECT_EQ(std::set<void *>(blocks.begin(), blocks.end()).size(), kCount) << "no block twice";
        release(blocks);
    }
    EXPECT_LE(seen.size(), kIsPooled ? 5 * kCount : 50 * kCount);
}

TEST(SmallBlocks, ManyThreadsNeverShareABlock)
{
    std::array<std::atomic<int64_t *>, 5000> exchange{};
    std::atomic<int64_t> wrong{0};
    const auto work = [&](int64_t number) {
        for (int64_t i = 0; i < 40000; ++i)
        {
            auto *mine = static_cast<int64_t *>(BAS_SmallBlocks::allocate(kBytes));
            mine[0] = mine[7] = number * 100000 + i;
            int64_t *other = exchange[size_t(i * 7 + number * 311) % exchange.size()].exchange(mine);
            wrong += other && other[0] != other[7];
            BAS_SmallBlocks::release(other, kBytes);
        }
    };
    // More than there are processors, but no more than any machine grants.
    const int64_t count = std::clamp<int64_t>(4 * int64_t(std::thread::hardware_concurrency()), 8, 64);
    std::vector<std::thread> threads;
    for (int64_t number = 0; number < count; ++number)
        threads.emplace_back(work, number);
    for (std::thread &thread : threads)
        thread.join();
    for (std::atomic<int64_t *> &left : exchange)
        BAS_SmallBlocks::release(left, kBytes);
    EXPECT_EQ(wrong, 0);
}
