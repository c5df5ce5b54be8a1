#include <thread>

#include <gtest/gtest.h>

#include <host/elm/Attribute.h>
#include <host/elm/Group.h>
#include <host/elm/PrimitiveFactory.h>

namespace
{
std::vector<int64_t> entriesOf(const ELM_OffsetList &list)
{
    std::vector<int64_t> entries;
    for (int64_t i = 0; i < list.size(); ++i)
        entries.push_back(list[i]);
    return entries;
}

TEST(OffsetList, KeepsRunsTrivialAndExplicitOnesNarrow)
{
    const int64_t k30 = ELM_INDEX32_LIMIT;
    const struct
    {
        const char *what;
        std::vector<int64_t> offsets;
        bool trivial, narrow;
    } cases[] = {{"empty", {}, true, false},
                 {"run", {5, 6, 7}, true, false},
                 {"repeats", {5, 5}, false, true},
                 {"first wide offset", {0, k30}, false, false},
                 {"breaks a wide run", {k30, k30 + 1, 0}, false, false},
                 {"no element", {-1, 5, -1}, false, true}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        ELM_OffsetList list;
        for (const int64_t offset : c.offsets)
            list.append(offset);
        EXPECT_EQ(entriesOf(list), c.offsets);
        EXPECT_EQ(list, ELM_OffsetList(c.offsets));
        EXPECT_EQ(list.isTrivial(), c.trivial);
        EXPECT_EQ(list.data32() != nullptr, c.narrow);

        ELM_OffsetList twice = list;
        twice.append(twice);
        twice.append(77);
        std::vector<int64_t> expected = c.offsets;
        expected.insert(expected.end(), c.offsets.begin(), c.offsets.end());
        expected.push_back(77);
        EXPECT_EQ(entriesOf(twice), expected);
        twice.set(0, 78);
        EXPECT_EQ(entriesOf(twice.subList(0, 1)), std::vector<int64_t>{78});
        EXPECT_EQ(entriesOf(list), c.offsets) << "a copy was changed";
    }
}

TEST(Range, WalksMembersInBlocksWithinPages)
{
    ELM_Group group(ELM_OWNER_PRIMITIVE, "some");
    std::vector<bool> model(5000);
    const auto put = [&](int64_t first, int64_t count, bool member) {
        group.setRange(first, count, member);
        std::fill_n(model.begin() + first, count, member);
    };
    put(60, 10, true);
    put(1000, 3000, true);
    put(1100, 200, false);
    group.set(-5);

    const struct
    {
        const char *what;
        ELM_Range range;
        int64_t begin, end;
        bool all;
    } cases[] = {{"empty run", ELM_Range(ELM_OWNER_POINT, 7, 7), 0, 0, true},
                 {"run", ELM_Range(ELM_OWNER_POINT, 10, 3000), 10, 3000, true},
                 {"group", group.range(), 0, 5000, false},
                 {"slice of a group", group.range().slice(65, 1150), 65, 1150, false},
                 {"slice beyond", group.range().slice(4500, 4800), 0, 0, false}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        std::vector<bool> seen(5000);
        for (const auto [begin, end] : c.range.blocks())
        {
            EXPECT_LT(begin, end);
            EXPECT_EQ(begin >> ELM_PAGE_BITS, (end - 1) >> ELM_PAGE_BITS);
            std::fill(seen.begin() + begin, seen.begin() + end, true);
        }
        for (int64_t i = 0; i < 5000; ++i)
        {
            const bool expected = i >= c.begin && i < c.end && (c.all || model[size_t(i)]);
            ASSERT_EQ(seen[size_t(i)], expected) << "offset " << i;
            ASSERT_EQ(c.range.contains(i), expected) << "offset " << i;
        }
        EXPECT_EQ(c.range.size(), std::count(seen.begin(), seen.end(), true));
    }
}

TEST(Attribute, StringsShareOneTable)
{
    const ELM_AttributeHandle names =
        ELM_Attribute::create(ELM_OWNER_POINT, ELM_SCOPE_PUBLIC, "name", ELM_STORAGE_STRING, 1, ELM_TYPE_NONE, 2000);
    ELM_StringTuple &strings = *names->strings();
    EXPECT_TRUE(strings.get(0).isEmpty());
    strings.set(3, "left");
    strings.set(1500, "right");
    strings.set(4, "left");
    EXPECT_EQ(strings.table().size(), 2u);

    const ELM_AttributeHandle old = names->clone();
    strings.fill(0, 2000, strings.add("both"));
    EXPECT_EQ(strings.get(1500).view(), "both");
    EXPECT_EQ(old->strings()->get(1500).view(), "right");
    EXPECT_EQ(old->strings()->find("both"), -1);

    const int32_t beyond[] = {0, 3}, good[] = {1, -1};
    EXPECT_FALSE(strings.writeIndices(0, 2, beyond));
    EXPECT_FALSE(strings.writeIndices(1999, 2, good));
    EXPECT_EQ(strings.get(0).view(), "both");
    EXPECT_TRUE(strings.writeIndices(0, 2, good));
    EXPECT_EQ(strings.get(0).view(), "right");
    EXPECT_TRUE(strings.get(1).isEmpty());
}

TEST(Attribute, EqualArraysAreKeptOnce)
{
    const ELM_AttributeHandle arrays =
        ELM_Attribute::createArrays(ELM_OWNER_POINT, ELM_SCOPE_PUBLIC, "a", ELM_STORAGE_INT32, 2, ELM_TYPE_NONE, 3000);
    ELM_ArrayTuple<int32_t> &values = *arrays->numericArrays()->as<int32_t>();
    const std::vector<int32_t> some = {1, 2, 3, 4}, odd = {1, 2, 3};
    EXPECT_TRUE(values.set(5, some));
    EXPECT_TRUE(values.set(2000, some));
    EXPECT_TRUE(values.set(6, {}));
    EXPECT_FALSE(values.set(7, odd)) << "no multiple of the tuple size";
    EXPECT_EQ(values.arrayCount(), 2);
    EXPECT_TRUE(values.get(7).empty());

    const ELM_AttributeHandle old = arrays->clone();
    EXPECT_TRUE(values.set(5, values.get(5).subspan(2)));
    EXPECT_EQ(values.get(5).front(), 3);
    EXPECT_EQ(old->numericArrays()->as<int32_t>()->get(5).size(), 4u);
    EXPECT_EQ(old->numericArrays()->as<int32_t>()->arrayCount(), 2);
    const int32_t places[] = {2, 3};
    EXPECT_FALSE(values.writeIndices(0, 2, places));
    EXPECT_TRUE(values.writeIndices(0, 1, places));
    EXPECT_EQ(values.get(0).back(), 4);
    EXPECT_TRUE(arrays->hasArrays());
    EXPECT_EQ(arrays->storage(), ELM_STORAGE_INT32);
    EXPECT_EQ(arrays->numericTuple(), nullptr);
}

TEST(PrimitiveFactory, FixedTypesComeFirstAndAddedOnesAreSeenByAll)
{
    EXPECT_EQ(ELM_PrimitiveFactory::find("polygon")->id, 1);
    std::vector<ELM_PrimitiveTypeId> ids(4);
    const auto name = [](size_t t) { return "type " + std::to_string(t); };
    std::vector<std::thread> threads;
    for (size_t t = 0; t < ids.size(); ++t)
        threads.emplace_back([&, t] { ids[t] = ELM_PrimitiveFactory::add(name(t), "Type", t % 2 == 1); });
    for (std::thread &thread : threads)
        thread.join();
    for (size_t t = 0; t < ids.size(); ++t)
    {
        EXPECT_GE(ids[t], ELM_PRIMITIVE_FIRST_FREE);
        EXPECT_EQ(ELM_PrimitiveFactory::find(name(t))->id, ids[t]);
    }
    EXPECT_EQ(ELM_PrimitiveFactory::add("polygon", "Again", false), ELM_PRIMITIVE_NONE);
}
}  // namespace
