#include <host/bas/CopyCounter.h>
#include <host/bas/JSONWriter.h>

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
    const struct
    {
        const char *what;
        int index, segment;
        RQ_DataArrayHandle array;
    } cases[] = {
        {"before the first index", -1, 0, kNone},
        {"behind the last index", 1, 0, kNone},
        {"before the first segment", 0, -3, kFirst},
        {"behind the last segment", 0, 7, kSecond},
    };
    for (const auto &c : cases)
        EXPECT_EQ(list->get(c.index, c.segment), c.array) << c.what;
    EXPECT_FALSE(list->get("N", 1));
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
    EXPECT_EQ(less->getIndex("id"), 1);
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
    EXPECT_EQ(window->get("P")->getF32Array(buffer), list->get("P")->getF32Array(buffer) + 3);
    EXPECT_FALSE(window->get("gone"));
    EXPECT_FALSE(list->createSubArray(2, 3)->get("P")) << "the window does not fit";
    EXPECT_EQ(BAS_CopyCounter::totals(), before);
}

TEST(AttributeList, SegmentsThatShareKeepSharing)
{
    const RQ_DataArrayHandle moving[] = {kFirst, kSecond, kFirst};
    const RQ_AttributeListHandle window = sampleList()->addAttribute("v", moving, 3, false)->createSubArray(1, 2);
    EXPECT_EQ(window->get("P", 0), window->get("P", 2));
    EXPECT_NE(window->get("v", 0), window->get("v", 1));
}

TEST(AttributeList, MergesOnlyNewNames)
{
    const RQ_AttributeListHandle list = sampleList();
    EXPECT_EQ(list->mergeNewAttributes(nullptr), list);
    const RQ_AttributeListHandle merged = list->mergeNewAttributes(listOf({{"width", kFirst}, {"Cd", kSecond}}, 2));
    EXPECT_EQ(merged->getSegments(), 2);
    EXPECT_EQ(merged->get("width", 1), list->get("width"));
    EXPECT_EQ(merged->get("Cd", 1), kSecond);
}

TEST(AttributeList, SavesInTheFixedForm)
{
    std::string text;
    BAS_JSONWriter writer(text);
    EXPECT_TRUE(listOf({{"P", makeArray<float>({1, 2, 3}, 3, RQ_TYPE_POINT)}, {"gone", kNone}}, 2)->save(writer));
    writer.flush();
    const std::string array = R"({"class":"RQ_DANumeric","storage":"real32","type":"point","size":3,"values":[[1,2,3]]})";
    EXPECT_EQ(text, "{\"P\":[" + array + "," + array + "],\"gone\":[null,null]}");
}
}  // namespace
