#include <functional>
#include <set>

#include <rq/attrib/AttributeMerge.h>
#include <rq/data/DAIndexedText.h>
#include <rq/data/DANumericArray.h>
#include <rq/data/DARange.h>
#include <rq/data/DATextArray.h>

#include "lists.h"

namespace
{
using Floats = std::vector<float>;

Floats valuesOf(const RQ_AttributeListHandle &list, const char *name)
{
    return ::valuesOf<float>(list ? list->get(name) : nullptr);
}
}  // namespace

TEST(AttributeListMerge, ConcatenatesListsOfTheSameNames)
{
    const auto a = listOf({{"x", makeArray<float>({1, 2})}, {"v", makeArray<float>({1, 2, 3, 4, 5, 6}, 3, RQ_TYPE_VECTOR)}});
    const auto b = listOf({{"x", makeArray<float>({3})}, {"v", makeArray<float>({7, 8, 9}, 3, RQ_TYPE_VECTOR)}});
    const auto wide = listOf({{"x", makeArray<double>({3})}, {"v", makeArray<float>({7, 8, 9}, 3, RQ_TYPE_VECTOR)}}),
               fewer = listOf({{"x", makeArray<float>({3})}});
    const RQ_AttributeListHandle gone(new RQ_AttributeList(*b)), none;
    gone->set(0, nullptr);
    const struct
    {
        const char *what;
        BAS_Array<RQ_AttributeListHandle> lists;
        Floats x;
    } kCases[] = {
        {"nothing", {}, {}},
        {"only null", {none, none}, {}},
        {"one", {none, a}, {1, 2}},
        {"other names", {a, fewer}, {}},
        {"other storage", {a, wide}, {}},
        {"some arrays null", {a, gone}, {}},
        {"null lists between", {a, none, b, a}, {1, 2, 3, 1, 2}},
    };
    for (const auto &c : kCases)
    {
        const RQ_AttributeListHandle list = RQ_AttributeList::concatenateLists(c.lists);
        EXPECT_EQ(valuesOf(list, "x"), c.x) << c.what;
        EXPECT_EQ(bool(list), !c.x.empty()) << c.what;
    }
    const auto empty = RQ_AttributeList::concatenateLists({gone, gone});
    EXPECT_FALSE(empty->get("x"));
    EXPECT_EQ(empty->get("v")->entries(), 2);
}

TEST(AttributeListMerge, FillsWhatASideLacks)
{
    const auto a = listOf({{"x", makeArray<float>({1, 2})}, {"v", makeArray<float>({1, 2, 3, 4, 5, 6}, 3, RQ_TYPE_VECTOR)}});
    const auto b = listOf({{"y", makeArray<float>({8})}, {"x", makeArray<float>({3})}});
    const auto twins = listOf({{"v", makeArray<double>({9})}, {"y", makeArray<float>({7})}}),
               clash = listOf({{"x", makeArray<int32_t>({3})}});
    const RQ_AttributeMerge merge(a->getMap(), b->getMap());
    EXPECT_EQ(merge.map->getLabel(), "x v y");

    const auto plain = RQ_AttributeList::createMerged(merge, a, 2, b, 1);
    EXPECT_EQ(valuesOf(plain, "x"), (Floats{1, 2, 3}));
    EXPECT_EQ(valuesOf(plain, "v"), (Floats{1, 2, 3, 4, 5, 6, 0, 0, 0}));
    EXPECT_EQ(valuesOf(plain, "y"), (Floats{0, 0, 8}));
    EXPECT_EQ(plain->get("v")->getTypeInfo(), RQ_TYPE_VECTOR);

    const auto filled = RQ_AttributeList::createMerged(merge, a, 2, b, 1, twins, twins);
    EXPECT_EQ(valuesOf(filled, "y"), (Floats{7, 7, 8}));
    EXPECT_EQ(valuesOf(filled, "v"), (Floats{1, 2, 3, 4, 5, 6, 9, 0, 0})) << "converted, the rest is zero";

    EXPECT_EQ(valuesOf(RQ_AttributeList::createMerged(merge, a, 2, nullptr, 2), "x"), (Floats{1, 2, 0, 0}));
    EXPECT_FALSE(RQ_AttributeList::createMerged(merge, a, 3, b, 1)) << "the count is another";
    EXPECT_FALSE(RQ_AttributeList::createMerged({a->getMap(), clash->getMap()}, a, 2, clash, 1));

    const auto constant = RQ_AttributeList::createConstantMerge(merge, a, 2);
    EXPECT_EQ(valuesOf(constant, "x"), (Floats{1, 1}));
    EXPECT_FALSE(constant->get("y"));
    const auto expanded = RQ_AttributeList::expandConstantMerge(merge, constant, b, 3);
    EXPECT_EQ(valuesOf(expanded, "x"), (Floats{1, 1, 3, 3, 3}));
    EXPECT_EQ(valuesOf(expanded, "y"), (Floats{0, 0, 8, 8, 8}));
    EXPECT_EQ(valuesOf(RQ_AttributeList::expandConstantMerge(merge, nullptr, b, 1, 2), "y"), (Floats{0, 0, 8}));
}

TEST(AttributeListMerge, FillsTextsAndArraysByEmptyOnes)
{
    const RQ_CountArray counts(makeArray<int32_t>({2, 1}));
    const BAS_StringHolder texts[] = {"p", "q", "r"};
    const BAS_OptionsHolder dicts[2];
    const auto a = listOf({{"texts", RQ_DAIndexedString::createIndexed(texts, 2)},
                           {"dicts", RQ_DAIndexedDict::createIndexed(dicts, 2)},
                           {"numbers", new RQ_DANumericArray<float>(countingArray<float>(3, 1), counts)},
                           {"words", new RQ_DAStringArray({texts, texts + 3}, counts)}}),
               b = listOf({{"x", makeArray<float>({3})}});
    const auto list = RQ_AttributeList::createMerged({b->getMap(), a->getMap()}, b, 1, a, 2);
    ASSERT_TRUE(list);
    EXPECT_EQ(list->get("dicts")->entries(), 3);
    EXPECT_EQ(list->get("texts")->getS(0).view(), "");
    EXPECT_EQ(list->get("texts")->getS(2).view(), "q");
    for (const char *name : {"numbers", "words"})
        for (int64_t i = 0; i < 3; ++i)
            EXPECT_EQ(list->get(name)->itemSize(i), (3 - i) % 3) << name;
}

TEST(AttributeListMerge, TheSameListMadeAgainHasTheSameIds)
{
    const auto a = listOf({{"x", makeArray<float>({1, 2, 3, 4})}}),
               b = listOf({{"v", makeArray<float>({7, 8, 9}, 3, RQ_TYPE_VECTOR)}});
    const RQ_DataArrayHandle order(new RQ_DARange(1, 3)), other(new RQ_DARange(1, 3));
    const RQ_AttributeMerge merge(a->getMap(), b->getMap());
    const std::function<RQ_AttributeListHandle()> kMakers[] = {
        [&] { return a; },
        [&] { return a->createIndirect(order); },
        [&] { return a->createIndirect(other); },
        [&] { return a->createSubArray(0, 2); },
        [&] { return a->createSubArray(2, 0); },
        [&] { return a->createConstant(0, 2); },
        [&] { return a->createUV(2, 3, 0, 1, 0, 1); },
        [&] { return a->createUV(3, 2, 0, 1, 0, 1); },
        [&] {
            return RQ_AttributeList::concatenateLists({a, a});
        },
        [&] { return RQ_AttributeList::createMerged(merge, a, 4, b, 1); },
    };
    std::set<uint64_t> hashes;
    for (const auto &make : kMakers)
    {
        uint64_t first = 0, second = 0;
        ASSERT_TRUE(make()->getDataIdHash(first, 0));
        ASSERT_TRUE(make()->getDataIdHash(second, 0));
        EXPECT_EQ(first, second) << "maker " << &make - kMakers;
        EXPECT_TRUE(hashes.insert(first).second) << "maker " << &make - kMakers;
    }
    uint64_t hash;
    EXPECT_EQ(a->createUV(3, 1, 0, 2, 5, 6)->get("uv")->getF32(1, 0), 1.0f);
    order->setDataId(-1);
    EXPECT_FALSE(a->createIndirect(order)->getDataIdHash(hash, 0)) << "what has no id gives none";
}
