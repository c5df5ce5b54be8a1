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
}  // namespace

TEST(LargeBlocks, AreAlignedAndWritable)
{
    // Bytes, and what the address is a multiple of.
    const std::pair<size_t, size_t> kCases[] = {
        {0, 64}, {64 * kKiB - 1, 64}, {64 * kKiB, 4096}, {2 * kMiB - 1, 4096}, {2 * kMiB, 2 * kMiB}};
    for (const auto &[bytes, alignment] : kCases)
    {
        SCOPED_TRACE(bytes);
        void *block = BAS_LargeBlocks::allocate(bytes);
        ASSERT_TRUE(block);
        EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % alignment, 0u);
        std::memset(block, 0x5A, bytes);
        BAS_LargeBlocks::release(block, bytes);
    }
    BAS_LargeBlocks::release(nullptr, kMiB);
    EXPECT_FALSE(BAS_LargeBlocks::allocate(size_t(-1)));
}

TEST(LargeBlocks, AreUsedAgain)
{
    for (const size_t bytes : {64 * kKiB + 70, 9 * kMiB})
    {
        SCOPED_TRACE(bytes);
        BAS_LargeBlocks::trim();
        ASSERT_EQ(BAS_LargeBlocks::pooled(), 0u);
        void *first = BAS_LargeBlocks::allocate(bytes);
        BAS_LargeBlocks::release(first, bytes);
        EXPECT_GE(BAS_LargeBlocks::pooled(), bytes);
        EXPECT_LE(BAS_LargeBlocks::pooled(), 2 * bytes);
        void *again = BAS_LargeBlocks::allocate(bytes - 7);
        EXPECT_EQ(again, first);
        EXPECT_EQ(BAS_LargeBlocks::pooled(), 0u);
        BAS_LargeBlocks::release(again, bytes - 7);
    }
}

TEST(LargeBlocks, ThreadsNeverShareABlock)
{
    const auto work = [](unsigned char mark) {
        for (int i = 0; i < 300; ++i)
        {
            const size_t bytes = (64 + size_t(i) % 5 * 200) * kKiB;
            auto *block = static_cast<unsigned char *>(BAS_LargeBlocks::allocate(bytes));
            block[0] = block[bytes - 1] = mark;
            ASSERT_TRUE(block[0] == mark && block[bytes - 1] == mark);
            BAS_LargeBlocks::release(block, bytes);
        }
    };
    std::thread other(work, 1);
    work(2);
    other.join();
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
    }
}
