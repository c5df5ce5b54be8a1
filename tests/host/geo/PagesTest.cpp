#include <random>

#include <gtest/gtest.h>

#include <host/bas/MemoryTracker.h>
#include <host/elm/IndexColumn.h>

namespace
{
template <class T> std::vector<T> valuesOf(const ELM_PageArray<T> &pages)
{
    std::vector<T> values(size_t(pages.size() * pages.tupleSize()));
    pages.copyOut(values.data(), ELM_OffsetList(0, pages.size()), 0, pages.size(), pages.tupleSize(), pages.tupleSize());
    return values;
}

template <class T> std::vector<T> counting(int64_t count, int64_t first = 0)
{
    std::vector<T> values(static_cast<size_t>(count));
    for (int64_t i = 0; i < count; ++i)
        values[size_t(i)] = T(float((first + i) % 101));
    return values;
}

template <class T> class EveryValueType : public testing::Test
{};
using ValueTypes = testing::Types<uint8_t, int8_t, int16_t, int32_t, int64_t, PLT_Half, float, double>;
TYPED_TEST_SUITE(EveryValueType, ValueTypes);

// Random writes of every kind, against a plain vector; copies made on the way must never change.
TYPED_TEST(EveryValueType, PagesBehaveLikeAVectorAndCopiesStayAsTheyWere)
{
    using T = TypeParam;
    for (unsigned seed = 0; seed < 12; ++seed)
    {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&](int64_t limit) { return std::uniform_int_distribution<int64_t>(0, limit - 1)(random); };
        const int tuple = 1 + int(seed % 4);
        const std::vector<T> defaults = counting<T>(tuple, 7);
        ELM_PageArray<T> pages(tuple, defaults.data());
        std::vector<T> model;
        std::vector<std::pair<ELM_PageArray<T>, std::vector<T>>> copies;
        for (int step = 0; step < 60; ++step)
        {
            const int64_t rows = pages.size(), first = below(rows + 1);
            const int64_t count = below(std::min<int64_t>(rows - first, below(3) ? 1500 : 5) + 1);
            const auto at = model.begin() + first * tuple;
            switch (below(9))
            {
            case 0:
            case 1: {
                const int64_t size = below(4) ? rows + below(2000) : below(rows + 1);
                pages.resize(size);
                while (int64_t(model.size()) < size * tuple)
                    model.insert(model.end(), defaults.begin(), defaults.end());
                model.resize(size_t(size * tuple));
                break;
            }
            case 2: {
                const std::vector<T> value = counting<T>(tuple, step);
                pages.fill(first, count, value.data());
                for (int64_t i = 0; i < count * tuple; ++i)
                    at[i] = value[size_t(i % tuple)];
                break;
            }
            case 3:
            case 4: {
                const std::vector<T> values =
                    below(3) ? counting<T>(count * tuple, step) : std::vector<T>(size_t(count * tuple), T(float(step)));
                below(2) ? pages.write(first, count, values.data()) : pages.writeCompact(first, count, values.data());
                std::copy(values.begin(), values.end(), at);
                break;
            }
            case 5:
                if (rows > 0)
                {
                    const std::vector<T> values = counting<T>(rows * tuple, step);
                    std::copy(values.begin(), values.end(), below(2) ? pages.writeAll() : pages.modifyAll());
                    model = values;
                }
                break;
            case 6:
                if (first < rows)
                    pages.writableTuple(first)[0] = model[size_t(first * tuple)] = T(float(step));
                break;
            case 7:
                below(2) ? pages.compress() : pages.defragment();
                break;
            default:
                copies.emplace_back(pages, model);
            }
            ASSERT_EQ(valuesOf(pages), model) << "step " << step;
            const T *block = pages.contiguous();
            ASSERT_TRUE(!block || std::equal(model.begin(), model.end(), block)) << "step " << step;
        }
        for (size_t i = 0; i < copies.size(); ++i)
            EXPECT_EQ(valuesOf(copies[i].first), copies[i].second) << "copy " << i;
    }
}

TYPED_TEST(EveryValueType, CopyOutPadsSkipsAndGathers)
{
    using T = TypeParam;
    ELM_PageArray<T> pages(2);
    pages.resize(3000);
    const std::vector<T> source = counting<T>(2000);
    pages.write(0, 1000, source.data());  // the first page raw, the others repeated zeros
    const struct
    {
        const char *what;
        ELM_OffsetList rows;
        int64_t first, count;
    } cases[] = {{"none of some", ELM_OffsetList(3, 2), 1, 0},
                 {"run across pages", ELM_OffsetList(990, 1500), 5, 1400},
                 {"scattered", ELM_OffsetList(std::vector<int64_t>{2999, 5, 5, 0, 1500}), 1, 4}};
    for (const auto &c : cases)
        for (const int components : {1, 2, 3})
        {
            SCOPED_TRACE(testing::Message() << c.what << ", components " << components);
            const int stride = components + 1;
            std::vector<T> out(size_t(c.count * stride), T(99.0f));
            pages.copyOut(out.data(), c.rows, c.first, c.count, components, stride);
            for (int64_t i = 0; i < c.count; ++i)
                for (int k = 0; k < stride; ++k)
                {
                    const T inside = k < 2 ? pages.value(c.rows[c.first + i], k) : T(0.0f);
                    ASSERT_EQ(out[size_t(i * stride + k)], k < components ? inside : T(99.0f)) << "row " << i;
                }
        }
}

TEST(PageArray, BulkAndSteadyAppendsStayOneBlock)
{
    ELM_PageArray<int32_t> pages;
    EXPECT_EQ(pages.contiguous(), nullptr);
    for (const int64_t chunk : {1, 1, 700, 322, 1, 5000, 3, 100000})
    {
        const int64_t first = pages.size();
        const std::vector<int32_t> values = counting<int32_t>(chunk, 1);
        pages.resize(first + chunk);
        pages.write(first, chunk, values.data());
        ASSERT_NE(pages.contiguous(), nullptr) << "after " << pages.size();
    }
    const ELM_PageArray<int32_t> snapshot = pages;
    *pages.writableTuple(50000) = -1;
    EXPECT_EQ(pages.contiguous(), nullptr) << "one page of the copy lies elsewhere";
    EXPECT_NE(snapshot.contiguous(), nullptr);
    EXPECT_EQ(pages.tuple(0), snapshot.tuple(0)) << "untouched pages are shared";
    EXPECT_NE(pages.tuple(50000), snapshot.tuple(50000));
    ASSERT_NE(pages.modifyAll(), nullptr);
    EXPECT_EQ(pages.contiguous()[50000], -1);
}

TEST(PageArray, EqualRowsTakeNoMemoryUntilOneDiffers)
{
    const int64_t before = BAS_MemoryTracker::current(BAS_MEMORY_HOST_PAGE);
    ELM_PageArray<int32_t> pages;
    const int64_t size = int64_t(1) << 24;
    pages.resize(size);
    const int32_t three = 3;
    pages.fill(0, size, &three);
    EXPECT_LT(BAS_MemoryTracker::current(BAS_MEMORY_HOST_PAGE) - before, 1024);
    EXPECT_EQ(pages.value(size - 1), 3);
    *pages.writableTuple(5000) = 4;
    EXPECT_FALSE(pages.isConstantPage(5000 >> ELM_PAGE_BITS));
    *pages.writableTuple(5000) = 3;
    pages.compress();
    EXPECT_LT(BAS_MemoryTracker::current(BAS_MEMORY_HOST_PAGE) - before, 1024);
}

TEST(PageArray, DefragmentJoinsScatteredPages)
{
    ELM_PageArray<int32_t> pages;
    pages.resize(16 * ELM_PAGE_SIZE);
    std::fill_n(pages.writeAll(), pages.size(), 1);
    for (int64_t page = 0; page < 8; ++page)
    {
        const ELM_PageArray<int32_t> snapshot = pages;
        *pages.writableTuple(page << ELM_PAGE_BITS) = 2;
    }
    EXPECT_EQ(pages.contiguous(), nullptr);
    pages.defragment();
    ASSERT_NE(pages.contiguous(), nullptr);
    EXPECT_EQ(pages.contiguous()[7 << ELM_PAGE_BITS], 2);
}

TEST(IndexColumn, WidensWhenAValueNeedsIt)
{
    const int64_t kLimit = int64_t(1) << 31;
    ELM_IndexColumn column;
    column.resize(3000);
    EXPECT_EQ(column.value(2999), -1);
    column.set(7, kLimit - 1);
    const ELM_IndexColumn snapshot = column;
    column.set(2000, kLimit);
    EXPECT_TRUE(column.isWide());
    EXPECT_FALSE(snapshot.isWide());
    column.resize(4000);
    EXPECT_EQ(column.value(7), kLimit - 1);
    EXPECT_EQ(column.value(2000), kLimit);
    EXPECT_EQ(column.value(3999), -1);
}

TEST(IndexColumn, ChecksWhatIsWrittenInBulk)
{
    const int64_t kLimit = int64_t(1) << 31;
    const struct
    {
        const char *what;
        std::vector<int64_t> values;
        int64_t high;
        bool good, wide;
    } cases[] = {{"inside", {0, 9, 3}, 10, true, false},
                 {"too large", {0, 10}, 10, false, false},
                 {"negative", {0, -1}, 10, false, false},
                 {"would wrap to a good one", {0, (kLimit * 2) + 3}, 10, false, false},
                 {"large values", {0, kLimit + 9}, kLimit * 4, true, true}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        ELM_IndexColumn column;
        column.resize(int64_t(c.values.size()) + 1);
        EXPECT_EQ(column.write(1, c.values, 0, c.high), c.good);
        EXPECT_EQ(column.isWide(), c.wide);
        for (size_t i = 0; i < c.values.size() && c.good; ++i)
            EXPECT_EQ(column.value(int64_t(i) + 1), c.values[i]);
        EXPECT_EQ(column.value(0), -1);
    }
}
}  // namespace
