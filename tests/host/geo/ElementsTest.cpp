#include <random>
#include <thread>

#include <gtest/gtest.h>

#include <host/elm/AttributeDict.h>
#include <host/elm/PrimitiveFactory.h>
#include <host/elm/Range.h>
#include <host/msh/viewportLOD.h>

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
                 {"one", {5}, true, false},
                 {"run", {5, 6, 7}, true, false},
                 {"run of large offsets", {k30 * 8, k30 * 8 + 1}, true, false},
                 {"repeats", {5, 5}, false, true},
                 {"descends", {5, 4}, false, true},
                 {"last narrow offset", {0, k30 - 1}, false, true},
                 {"first wide offset", {0, k30}, false, false},
                 {"breaks a wide run", {k30, k30 + 1, 0}, false, false},
                 {"no element", {-1, 5, -1}, false, true}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        ELM_OffsetList appended;
        for (const int64_t offset : c.offsets)
            appended.append(offset);
        const ELM_OffsetList copied(c.offsets);
        for (const ELM_OffsetList &list : {appended, copied})
        {
            EXPECT_EQ(entriesOf(list), c.offsets);
            EXPECT_EQ(list.isTrivial(), c.trivial);
            EXPECT_EQ(list.data32() != nullptr, c.narrow);
            EXPECT_EQ(list.memoryUsage() > 0, !c.trivial);
        }
        EXPECT_EQ(appended, copied);
    }
}

TEST(OffsetList, CopiesAreIndependent)
{
    for (unsigned seed = 0; seed < 30; ++seed)
    {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        ELM_OffsetList list(int64_t(random() % 10), int64_t(random() % 5));
        std::vector<int64_t> model = entriesOf(list);
        std::vector<std::pair<ELM_OffsetList, std::vector<int64_t>>> copies;
        for (int step = 0; step < 40; ++step)
        {
            const int64_t offset = random() % 8 ? int64_t(random() % 20) : int64_t(random()) << 2;
            const unsigned what = random() % 6;
            if (what == 0 && !model.empty())
            {
                const size_t i = random() % model.size();
                list.set(int64_t(i), model[i] = offset);
            }
            else if (what == 1 && model.size() < 1000)
            {
                list.append(list);
                const std::vector<int64_t> twice = model;
                model.insert(model.end(), twice.begin(), twice.end());
            }
            else if (what == 2)
            {
                const size_t first = random() % (model.size() + 1), count = random() % (model.size() - first + 1);
                EXPECT_EQ(entriesOf(list.subList(int64_t(first), int64_t(count))),
                          std::vector<int64_t>(model.begin() + long(first), model.begin() + long(first + count)));
            }
            else if (what == 3)
                copies.emplace_back(list, model);
            else
            {
                model.push_back(random() % 2 && !model.empty() ? model.back() + 1 : offset);
                list.append(model.back());
            }
            ASSERT_EQ(entriesOf(list), model) << "step " << step;
        }
        for (const auto &[copy, was] : copies)
            EXPECT_EQ(entriesOf(copy), was);
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
    put(3, 1, true);
    put(60, 10, true);
    put(1000, 3000, true);
    put(1100, 200, false);
    put(2047, 2, false);
    group.set(-5);
    EXPECT_EQ(group.count(), std::count(model.begin(), model.end(), true));
    EXPECT_FALSE(group.contains(-1));
    EXPECT_FALSE(group.contains(1 << 20));

    const struct
    {
        const char *what;
        ELM_Range range;
        int64_t begin, end;
        bool all;
    } cases[] = {{"empty run", ELM_Range(ELM_OWNER_POINT, 7, 7), 0, 0, true},
                 {"reversed run", ELM_Range(ELM_OWNER_POINT, 7, 3), 0, 0, true},
                 {"run", ELM_Range(ELM_OWNER_POINT, 10, 3000), 10, 3000, true},
                 {"group", ELM_Range(group), 0, 5000, false},
                 {"slice of a group", ELM_Range(group).slice(65, 1150), 65, 1150, false},
                 {"slice beyond", ELM_Range(group).slice(4500, 4800), 0, 0, false}};
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

    int32_t number = 0;
    EXPECT_FALSE(names->copyOut(&number, ELM_OffsetList(0, 1), 0, 1, 1, 1)) << "strings are no numbers";
}

TEST(Attribute, DictionaryKeepsOrderAndKnowsItsOwn)
{
    const auto make = [](ELM_Scope scope, const char *name) {
        return ELM_Attribute::create(ELM_OWNER_POINT, scope, name, ELM_STORAGE_REAL32, 3, ELM_TYPE_NONE, 1);
    };
    ELM_AttributeDict dict;
    for (const char *name : {"z", "a", "m"})
        dict.insert(make(ELM_SCOPE_PUBLIC, name));
    dict.insert(make(ELM_SCOPE_PRIVATE, "a"));
    const ELM_AttributeDict old = dict;

    ELM_Attribute *written = dict.writable(ELM_SCOPE_PUBLIC, "a");
    *written->writeAll<float>() = 5.0f;
    EXPECT_EQ(dict.writable(ELM_SCOPE_PUBLIC, "a"), written) << "once it is ours it stays";
    EXPECT_EQ(old.find(ELM_SCOPE_PUBLIC, "a")->pages<float>()->value(0), 0.0f);
    EXPECT_TRUE(dict.holds(*written));
    EXPECT_FALSE(old.holds(*written));
    EXPECT_TRUE(old.holds(dict[0]));
    EXPECT_EQ(dict.find(ELM_SCOPE_GROUP, "a"), nullptr);

    dict.insert(make(ELM_SCOPE_PUBLIC, "z"));
    std::string order;
    for (const ELM_Attribute &attribute : dict)
        order += attribute.name().c_str();
    EXPECT_EQ(order, "zama");
    EXPECT_EQ(ELM_Attribute::create(ELM_OWNER_POINT, ELM_SCOPE_PUBLIC, "x", ELM_STORAGE_INVALID, 1, ELM_TYPE_NONE, 1),
              nullptr);
}

TEST(PrimitiveFactory, FixedTypesComeFirstAndAddedOnesAreSeenByAll)
{
    EXPECT_EQ(ELM_PrimitiveFactory::find(ELM_PrimitiveTypeId(0)), nullptr);
    EXPECT_EQ(ELM_PrimitiveFactory::find("polygon")->id, 1);
    EXPECT_EQ(ELM_PrimitiveFactory::find(ELM_PRIMITIVE_CHANNEL)->id, 25);
    EXPECT_EQ(ELM_PrimitiveFactory::find(-1), nullptr);

    const int64_t before = ELM_PrimitiveFactory::count();
    std::vector<ELM_PrimitiveTypeId> ids(4);
    const auto name = [](size_t t) { return "type " + std::to_string(t); };
    std::vector<std::thread> threads;
    for (size_t t = 0; t < ids.size(); ++t)
        threads.emplace_back([&, t] { ids[t] = ELM_PrimitiveFactory::add(name(t), "Type", t % 2 == 1); });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(ELM_PrimitiveFactory::count(), before + 4);
    for (size_t t = 0; t < ids.size(); ++t)
    {
        EXPECT_GE(ids[t], ELM_PRIMITIVE_FIRST_FREE);
        EXPECT_EQ(ELM_PrimitiveFactory::find(name(t))->id, ids[t]);
        EXPECT_EQ(ELM_PrimitiveFactory::find(ids[t])->isPacked, t % 2 == 1);
    }
    EXPECT_EQ(ELM_PrimitiveFactory::add("polygon", "Again", false), ELM_PRIMITIVE_NONE);
    EXPECT_EQ(ELM_PrimitiveFactory::add("", "Nameless", false), ELM_PRIMITIVE_NONE);
}

TEST(ViewportLOD, ReadsNamesAndNumbersAndWritesThemBack)
{
    const std::pair<const char *, int> cases[] = {{nullptr, -1}, {"", -1},   {"boxes", -1}, {"box", 2},   {"2", 2},
                                                  {"-3", -3},    {"99", -1}, {"2x", -1},    {"unset", -1}};
    for (const auto &[name, level] : cases)
        EXPECT_EQ(MSHviewportLOD(name), level) << (name ? name : "null");
    for (int level = -16; level < 16; ++level)
        EXPECT_EQ(MSHviewportLOD(MSHviewportLOD(level).c_str()), level);
    EXPECT_EQ(MSHviewportLOD(7), "own");
    EXPECT_EQ(MSHviewportLOD(8), "8");
}
}  // namespace
