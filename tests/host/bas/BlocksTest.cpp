#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include <host/bas/BitArray.h>
#include <host/bas/LargeBlocks.h>
#include <host/bas/MemoryTracker.h>

namespace
{
constexpr size_t kKiB = 1024;
constexpr size_t kMiB = 1024 * kKiB;

bool isAligned(const void *block, size_t to) { return reinterpret_cast<uintptr_t>(block) % to == 0; }
}  // namespace

TEST(LargeBlocks, AreAlignedAndWritable)
{
    const struct
    {
        size_t bytes, alignment;
    } kCases[] = {
        {0, 64},
        {1, 64},
        {64 * kKiB - 1, 64},
        {64 * kKiB, 4096},
        {64 * kKiB + 1, 4096},
        {kMiB, 4096},
        {2 * kMiB - 1, 4096},
        {2 * kMiB, 2 * kMiB},
        {2 * kMiB + 1, 2 * kMiB},
        {5 * kMiB + 17, 2 * kMiB},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.bytes);
        void *block = BAS_LargeBlocks::allocate(c.bytes);
        ASSERT_TRUE(block);
        EXPECT_TRUE(isAligned(block, c.alignment));
        std::memset(block, 0x5A, c.bytes);
        BAS_LargeBlocks::release(block, c.bytes);
    }
    BAS_LargeBlocks::release(nullptr, kMiB);
    EXPECT_FALSE(BAS_LargeBlocks::allocate(size_t(-1)));
    EXPECT_FALSE(BAS_LargeBlocks::allocate(size_t(1) << 60));
}

TEST(LargeBlocks, AreUsedAgain)
{
    for (const size_t bytes : {64 * kKiB + 70, 100 * kKiB, 2 * kMiB + 70, 9 * kMiB})
    {
        SCOPED_TRACE(bytes);
        BAS_LargeBlocks::trim();
        ASSERT_EQ(BAS_LargeBlocks::pooled(), 0u);
        void *first = BAS_LargeBlocks::allocate(bytes);
        BAS_LargeBlocks::release(first, bytes);
        EXPECT_GE(BAS_LargeBlocks::pooled(), bytes);
        EXPECT_LE(BAS_LargeBlocks::pooled(), 2 * bytes);
        EXPECT_EQ(BAS_MemoryTracker::current(BAS_MEMORY_POOL), int64_t(BAS_LargeBlocks::pooled()));
        void *again = BAS_LargeBlocks::allocate(bytes - 7);
        EXPECT_EQ(again, first);
        EXPECT_EQ(BAS_LargeBlocks::pooled(), 0u);
        BAS_LargeBlocks::release(again, bytes - 7);
    }
}

TEST(LargeBlocks, ThePoolIsBounded)
{
    constexpr size_t kBytes = 48 * kMiB;
    std::vector<void *> blocks(64);
    for (void *&block : blocks)
        block = BAS_LargeBlocks::allocate(kBytes);
    for (void *block : blocks)
        BAS_LargeBlocks::release(block, kBytes);
    EXPECT_LE(BAS_LargeBlocks::pooled(), size_t(1) << 30);
    BAS_LargeBlocks::trim(64 * kMiB);
    EXPECT_LE(BAS_LargeBlocks::pooled(), 64 * kMiB);
    BAS_LargeBlocks::trim();
    EXPECT_EQ(BAS_MemoryTracker::current(BAS_MEMORY_POOL), 0);
}

TEST(LargeBlocks, ThreadsNeverShareABlock)
{
    const auto work = [](unsigned char mark) {
        for (int i = 0; i < 300; ++i)
        {
            const size_t bytes = (64 + size_t(i) % 5 * 200) * kKiB;
            auto *block = static_cast<unsigned char *>(BAS_LargeBlocks::allocate(bytes));
            block[0] = block[bytes - 1] = mark;
            if (i % 64 == 0)
                BAS_LargeBlocks::trim(256 * kKiB);
            ASSERT_EQ(block[0], mark);
            ASSERT_EQ(block[bytes - 1], mark);
            BAS_LargeBlocks::release(block, bytes);
        }
    };
    std::thread other(work, 1);
    work(2);
    other.join();
}

TEST(LargeBlocks, ServeVectors)
{
    std::vector<int, BAS_BlockAllocator<int>> values(100000, 3);
    values.resize(1000000, 4);
    EXPECT_EQ(values[99999], 3);
    EXPECT_EQ(values[999999], 4);
}

TEST(BitArray, KeepsTheBitsPastItsSizeClear)
{
    for (const int64_t size : {0, 1, 63, 64, 65, 200})
    {
        SCOPED_TRACE(size);
        BAS_BitArray bits(size, true);
        EXPECT_EQ(bits.count(), size);
        EXPECT_EQ(bits.next(0), 0);
        bits.resize(size + 70, false);
        EXPECT_EQ(bits.count(), size);
        EXPECT_EQ(bits.next(size), size + 70) << "none behind";
        bits.resize(size + 100, true);
        EXPECT_EQ(bits.count(), size + 30);
        EXPECT_EQ(bits.next(size), size + 70);
        bits.resize(size);
        EXPECT_EQ(bits, BAS_BitArray(size, true));
        bits.setAll(false);
        EXPECT_EQ(bits.next(0), size);
        bits.setAll(true);
        EXPECT_EQ(bits.count(), size);
    }
}

TEST(BitArray, WalksSetBits)
{
    BAS_BitArray bits(300);
    const std::vector<int64_t> set = {0, 63, 64, 130, 299};
    for (const int64_t i : set)
        bits.set(i);
    bits.set(70);
    bits.set(70, false);
    std::vector<int64_t> seen;
    for (int64_t i = bits.next(-5); i < bits.size(); i = bits.next(i + 1))
        seen.push_back(i);
    EXPECT_EQ(seen, set);
    EXPECT_TRUE(bits.get(130));
    EXPECT_FALSE(bits.get(131));
}
