#include <fmt/format.h>

#include <host/bas/CopyCounter.h>
#include <host/bas/MemoryTracker.h>
#include <rq/data/mixId.h>
#include <tests/json.h>

#include "lists.h"

namespace
{
// Arrays that can be told apart.
const RQ_DataArrayHandle kFirst = makeArray<float>({1, 2, 3, 4}), kSecond = makeArray<float>({5, 6, 7, 8}),
                         kThird = makeArray<int32_t>({1, 2}), kNone;

TEST(AttributeList, ClampsSegmentsAndAnswersNullForBadIndices)
{
    const RQ_AttributeListHandle list = listOf({{"P", kFirst}}, 2);
    list->set(0, kSecond, 7);
    list->set(1, kThird, 0);
    list->set(-1, kThird, 0);
    EXPECT_EQ(list->get(-1, 0), kNone);
    EXPECT_EQ(list->get(1, 0), kNone);
    EXPECT_EQ(list->get(0, -3), kFirst);
    EXPECT_EQ(list->get(0, 0), kFirst);
    EXPECT_EQ(list->get(0, 7), kSecond);
    EXPECT_FALSE(list->get("N", 1));
    EXPECT_EQ(listOf({{"P", kFirst}}, 0)->getSegments(), 1);

    const RQ_AttributeListHandle none(new RQ_AttributeList(nullptr, 3));
    EXPECT_EQ(none->getIndex("P"), -1);
    EXPECT_TRUE(none->getNames().empty());
    EXPECT_TRUE(none->begin().atEnd());
    EXPECT_EQ(none->addAttribute("P", kFirst, false)->get("P", 2), kFirst);
}

TEST(AttributeList, AddsAndReplaces)
{
    const RQ_AttributeListHandle list = sampleList();
    EXPECT_EQ(list->addAttribute("width", kFirst, false), list) << "a duplicate leaves the list";
    const RQ_AttributeListHandle replaced = list->addAttribute("P", kFirst, true);
    EXPECT_EQ(replaced->get(0), kFirst);
    EXPECT_NE(list->get(0), kFirst) << "the source stays";

    const RQ_DataArrayHandle moving[] = {kFirst, kSecond, kThird};
    const RQ_AttributeListHandle wide = list->addAttribute("v", moving, 3, false)->addAttribute("w", moving, 2, false);
    EXPECT_EQ(wide->getSegments(), 3);
    for (int segment = 0; segment < 3; ++segment)
    {
        EXPECT_EQ(wide->get("P", segment), list->get("P"));
        EXPECT_EQ(wide->get("v", segment), moving[segment]);
        EXPECT_EQ(wide->get("w", segment), moving[std::min(segment, 1)]) << "the shorter side repeats its last";
    }
    EXPECT_FALSE(list->addAttribute("empty", nullptr, 0, false)->get("empty"));
}

TEST(AttributeList, RemovesTheArrayWithTheName)
{
    const RQ_AttributeListHandle list = sampleList()->addAttribute("id", kThird, false);
    EXPECT_EQ(list->removeAttribute("absent"), list);
    const RQ_AttributeListHandle less = list->removeAttribute("width");
    EXPECT_EQ(less->get(1), kThird);
    EXPECT_EQ(list->removeAttributes({"P", "id", "absent", "width"})->entries(), 0);
    EXPECT_EQ(list->entries(), 3) << "the source stays";
}

TEST(AttributeList, DerivedListsShareWithoutCopying)
{
    const RQ_AttributeListHandle list = sampleList()->addAttribute("gone", kNone, false);
    const BAS_CopyCounter::Totals before = BAS_CopyCounter::totals();
    const RQ_AttributeListHandle window = list->createSubArray(1, 2);
    EXPECT_EQ(list->createSubArray(0, 4)->get(0), list->get(0)) << "the whole window is the array itself";
    EXPECT_EQ(list->createIndirect(makeArray<int32_t>({3, 3, 0}))->get("width")->getF32(1), 103.0f);
    EXPECT_EQ(list->createConstant(2, 1000000)->get("width")->getF32(999999), 102.0f);
    RQ_DataArrayHandle buffer;
    EXPECT_EQ(window->get("P")->entries(), 2);
    EXPECT_EQ(window->get("P")->getF32Array(buffer), list->get("P")->getF32Array(buffer) + 3);
    EXPECT_FALSE(window->get("gone"));
    EXPECT_FALSE(list->createSubArray(2, 3)->get("P")) << "the window does not fit";
    EXPECT_EQ(BAS_CopyCounter::totals(), before);
}

TEST(AttributeList, SegmentsThatShareKeepSharing)
{
    const RQ_DataArrayHandle moving[] = {kFirst, kSecond, makeArray<float>({9, 9, 9, 9})};
    const RQ_AttributeListHandle window = sampleList()->addAttribute("v", moving, 3, false)->createSubArray(1, 2);
    EXPECT_EQ(window->get("P", 0), window->get("P", 2));
    EXPECT_NE(window->get("v", 0), window->get("v", 2));

    const RQ_AttributeListHandle all(new RQ_AttributeList(*window)), one(new RQ_AttributeList(*window));
    all->harden();
    EXPECT_EQ(all->get("P", 0), all->get("P", 2));
    EXPECT_NE(all->get("P", 0), window->get("P", 0));
    EXPECT_TRUE(all->get("P", 0)->isEqual(*window->get("P", 0)));
    one->harden(1);
    EXPECT_EQ(one->get("P", 0), window->get("P", 0));
    EXPECT_NE(one->get("P", 1), window->get("P", 1));
}

TEST(AttributeList, CopiesASegmentOfTheSameNames)
{
    const RQ_AttributeListHandle list = listOf({{"P", kNone}, {"width", kNone}}, 2);
    list->getMap()->setOriginalOwner(0, RQ_OWNER_VERTEX);
    list->getMap()->addExportName(0, "position");
    EXPECT_TRUE(list->copySegment(5, *sampleList(), 0));
    EXPECT_FALSE(list->get("P", 0));
    EXPECT_EQ(list->get("P", 1)->getF32(1, 0), 3.0f);
    EXPECT_FALSE(list->copySegment(0, *listOf({{"width", kNone}, {"P", kNone}}), 0));
    EXPECT_TRUE(RQ_AttributeList::matchDefinition(nullptr, RQ_AttributeListHandle()));
    EXPECT_FALSE(RQ_AttributeList::matchDefinition(list, RQ_AttributeListHandle()));
}

TEST(AttributeList, MergesOnlyNewNames)
{
    const RQ_AttributeListHandle list = sampleList();
    EXPECT_EQ(list->mergeNewAttributes(nullptr), list);
    EXPECT_EQ(list->mergeNewAttributes(sampleList()), list);
    const RQ_AttributeListHandle other = listOf({{"width", kFirst}, {"Cd", kFirst}}, 2);
    other->set(1, kSecond, 1);
    other->getMap()->setOriginalOwner(1, RQ_OWNER_VERTEX);
    other->getMap()->addExportName(1, "color");
    const RQ_AttributeListHandle merged = list->mergeNewAttributes(other);
    EXPECT_EQ(merged->getSegments(), 2);
    EXPECT_EQ(merged->get("width", 1), list->get("width"));
    EXPECT_EQ(merged->get("Cd", 1), kSecond);
    EXPECT_EQ(merged->getOriginalOwner(2), RQ_OWNER_VERTEX);
    EXPECT_EQ(merged->getExportName(2).view(), "color");
}

TEST(AttributeList, HashFollowsTheDataIds)
{
    const RQ_AttributeListHandle list = sampleList();
    list->get(0)->setDataId(11);
    list->get(1)->setDataId(12);
    uint64_t hash = 0;
    ASSERT_TRUE(list->addAttribute("gone", kNone, false)->getDataIdHash(hash, 0));
    EXPECT_EQ(hash, RQmixId(RQmixId(3) + RQmixId(11)) + RQmixId(12)) << "a null array counts in the start only";
    list->get(1)->setDataId(-1);
    EXPECT_FALSE(list->getDataIdHash(hash, 0));
}

TEST(AttributeList, CountsMemoryByTheFixedFormulas)
{
    const auto tracked = [] { return BAS_MemoryTracker::current(BAS_MEMORY_LIST); };
    const int64_t before = tracked();
    {
        const RQ_AttributeListHandle list = listOf({{"P", kFirst}, {"gone", kNone}}, 3), copy(new RQ_AttributeList(*list));
        EXPECT_EQ(tracked() - before, 2 * (2 * 3 * 8 + 24));
        const int64_t map = list->getMap()->getMemoryUsage(true);
        EXPECT_EQ(map - list->getMap()->getMemoryUsage(false), 88);
        EXPECT_EQ(list->getMemoryUsage(), map + 24 + 3 * kFirst->getMemoryUsage()) << "null counts nothing";
    }
    EXPECT_EQ(tracked(), before);
}

TEST(AttributeList, DumpsAndSavesInTheFixedForm)
{
    const RQ_AttributeListHandle list = listOf({{"P", makeArray<float>({1, 2, 3}, 3, RQ_TYPE_POINT)}, {"gone", kNone}}, 2);
    testing::internal::CaptureStdout();
    list->dumpList("points");
    std::fflush(stdout);
    const std::string body = fmt::format("  real32:3 point P [1] (RQ_DANumeric) id={} {}b\n  gone <null>\n",
                                         list->get(0)->getDataId(), list->get(0)->getMemoryUsage());
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "points 2 segments\n--- segment 0 ---\n" + body + "--- segment 1 ---\n" + body);

    const std::string array = R"({"class":"RQ_DANumeric","storage":"real32","type":"point","size":3,"values":[[1,2,3]]})";
    EXPECT_EQ(tests::jsonOf(*list), "{\"P\":[" + array + "," + array + "],\"gone\":[null,null]}");

    const auto dumpToFullDevice = [&] {
        std::setvbuf(std::freopen("/dev/full", "w", stdout), nullptr, _IONBF, 0);
        list->dumpList("points");
        std::_Exit(0);
    };
    EXPECT_EXIT(dumpToFullDevice(), testing::ExitedWithCode(0), "");
}
}  // namespace
