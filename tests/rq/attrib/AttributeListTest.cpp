#include <gtest/gtest.h>

#include <fmt/format.h>

#include <host/bas/CopyCounter.h>
#include <host/bas/JSONValue.h>
#include <host/bas/JSONWriter.h>
#include <host/bas/MemoryTracker.h>
#include <rq/attrib/AttributeList.h>
#include <rq/data/DANumeric.h>
#include <rq/data/mixId.h>

namespace
{
/// Values first, first + 1, ... in `size` entries of `tupleSize` components.
RQ_DataArrayHandle counting(float first, int64_t size, int64_t tupleSize = 1, RQ_Type type = RQ_TYPE_NONE)
{
    auto *array = new RQ_DANumeric<float>(size, tupleSize, type);
    for (int64_t i = 0; i < size * tupleSize; ++i)
        array->data()[i] = first + float(i);
    return RQ_DataArrayHandle(array);
}

RQ_DataArrayHandle indexArray(std::initializer_list<int32_t> values)
{
    return RQ_DataArrayHandle(new RQ_DANumeric<int32_t>(values.begin(), int64_t(values.size())));
}

RQ_AttributeListHandle listOf(std::initializer_list<const char *> names, int segments = 1)
{
    RQ_AttributeMapHandle map(new RQ_AttributeMap);
    for (const char *name : names)
        map->add(name, false);
    return RQ_AttributeListHandle(new RQ_AttributeList(map, segments));
}

/// "P" with 4 entries of 3 components, and "width".
RQ_AttributeListHandle sample()
{
    const RQ_AttributeListHandle list = listOf({"P", "width"});
    list->set(0, counting(0, 4, 3, RQ_TYPE_POINT));
    list->set(1, counting(100, 4));
    return list;
}

int64_t copiedBytes()
{
    int64_t sum = 0;
    for (const int64_t bytes : BAS_CopyCounter::totals())
        sum += bytes;
    return sum;
}
}  // namespace

TEST(AttributeList, ClampsSegmentsAndAnswersNullForBadIndices)
{
    const RQ_AttributeListHandle list = listOf({"P"}, 2);
    const RQ_DataArrayHandle first = counting(0, 3), second = counting(5, 3);
    list->set(0, first, 0);
    list->set(0, second, 7);
    list->set(1, first, 0);
    list->set(-1, first, 0);
    const struct
    {
        const char *what;
        int index, segment;
        const RQ_DataArray *array;
    } kCases[] = {
        {"before the first index", -1, 0, nullptr},
        {"behind the last index", 1, 0, nullptr},
        {"first segment", 0, 0, first.get()},
        {"before the first segment", 0, -3, first.get()},
        {"behind the last segment", 0, 7, second.get()},
    };
    for (const auto &c : kCases)
        EXPECT_EQ(list->get(c.index, c.segment).get(), c.array) << c.what;
    EXPECT_EQ(list->get("P", 1).get(), second.get());
    EXPECT_FALSE(list->get("N", 1));

    EXPECT_EQ(listOf({"P"}, 0)->getSegments(), 1);
    EXPECT_EQ(listOf({"P"}, -4)->getSegments(), 1);
    const RQ_AttributeListHandle none(new RQ_AttributeList(nullptr, 3));
    EXPECT_EQ(none->entries(), 0);
    EXPECT_EQ(none->getIndex("P"), -1);
    EXPECT_TRUE(none->getNames().empty());
    EXPECT_TRUE(none->begin().atEnd());
    EXPECT_EQ(none->addAttribute("P", first, false)->get("P", 2).get(), first.get());
}

TEST(AttributeList, AddsAndReplaces)
{
    const RQ_AttributeListHandle list = sample();
    const RQ_DataArrayHandle other = counting(7, 4);
    EXPECT_EQ(list->addAttribute("width", other, false).get(), list.get()) << "a duplicate leaves the list";
    const RQ_AttributeListHandle replaced = list->addAttribute("P", other, true);
    EXPECT_EQ(replaced->getIndex("P"), 0);
    EXPECT_EQ(replaced->get(0).get(), other.get());
    EXPECT_NE(list->get(0).get(), other.get()) << "the source stays";

    const RQ_DataArrayHandle moving[] = {counting(0, 4), counting(1, 4), counting(2, 4)};
    const RQ_AttributeListHandle wide = list->addAttribute("v", moving, 3, false);
    EXPECT_EQ(wide->getSegments(), 3);
    for (int segment = 0; segment < 3; ++segment)
    {
        EXPECT_EQ(wide->get("P", segment).get(), list->get("P").get());
        EXPECT_EQ(wide->get("v", segment).get(), moving[segment].get());
    }
    const RQ_AttributeListHandle repeated = wide->addAttribute("w", moving, 2, false);
    EXPECT_EQ(repeated->get("w", 2).get(), moving[1].get()) << "the shorter side repeats its last";
    EXPECT_FALSE(list->addAttribute("empty", nullptr, 0, false)->get("empty"));
}

TEST(AttributeList, RemovesTheArrayWithTheName)
{
    const RQ_AttributeListHandle list = sample()->addAttribute("id", counting(0, 4), false);
    EXPECT_EQ(list->removeAttribute("absent").get(), list.get());
    const RQ_AttributeListHandle less = list->removeAttribute("width");
    EXPECT_EQ(less->entries(), 2);
    EXPECT_EQ(less->get("id").get(), list->get("id").get());
    EXPECT_EQ(less->getIndex("id"), 1);
    EXPECT_EQ(list->entries(), 3);
    EXPECT_EQ(list->removeAttributes({"P", "id", "absent", "width"})->entries(), 0);
}

TEST(AttributeList, DerivedListsShareWithoutCopying)
{
    const RQ_AttributeListHandle list = sample()->addAttribute("gone", nullptr, false);
    const int64_t before = copiedBytes();
    const RQ_AttributeListHandle window = list->createSubArray(1, 2);
    const RQ_AttributeListHandle indirect = list->createIndirect(indexArray({3, 3, 0}));
    const RQ_AttributeListHandle constant = list->createConstant(2, 1000000);
    EXPECT_EQ(list->createSubArray(0, 4)->get(0).get(), list->get(0).get()) << "the whole window is the array itself";

    EXPECT_EQ(window->get("P")->entries(), 2);
    EXPECT_EQ(window->get("P")->getF32(0, 2), 5.0f);
    EXPECT_EQ(indirect->get("width")->getF32(1), 103.0f);
    EXPECT_EQ(constant->get("width")->getF32(999999), 102.0f);
    RQ_DataArrayHandle buffer;
    EXPECT_EQ(window->get("P")->getF32Array(buffer), list->get("P")->getF32Array(buffer) + 3);
    EXPECT_FALSE(window->get("gone"));
    EXPECT_FALSE(list->createSubArray(2, 3)->get("P")) << "the window does not fit";
    EXPECT_EQ(copiedBytes(), before);
}

TEST(AttributeList, SegmentsThatShareKeepSharing)
{
    const RQ_AttributeListHandle list = listOf({"P", "Cd"}, 3);
    list->setAllSegments(0, counting(0, 4));
    for (int segment = 0; segment < 3; ++segment)
        list->set(1, counting(float(segment), 4), segment);
    const RQ_AttributeListHandle window = list->createSubArray(1, 2);
    EXPECT_EQ(window->get(0, 0).get(), window->get(0, 2).get());
    EXPECT_NE(window->get(1, 0).get(), window->get(1, 2).get());

    const RQ_AttributeListHandle hard(new RQ_AttributeList(*window));
    hard->harden();
    EXPECT_EQ(hard->get(0, 0).get(), hard->get(0, 2).get());
    EXPECT_NE(hard->get(0, 0).get(), window->get(0, 0).get());
    EXPECT_TRUE(hard->get(0, 0)->isEqual(*window->get(0, 0)));
    EXPECT_EQ(hard->get(0, 0)->getDataId(), window->get(0, 0)->getDataId());

    const RQ_AttributeListHandle one(new RQ_AttributeList(*window));
    one->harden(1);
    EXPECT_EQ(one->get(0, 0).get(), window->get(0, 0).get());
    EXPECT_NE(one->get(0, 1).get(), window->get(0, 1).get());
}

TEST(AttributeList, CopiesASegmentOfTheSameNames)
{
    const RQ_AttributeListHandle list = listOf({"P", "width"}, 2), other = listOf({"width", "P"});
    EXPECT_TRUE(list->copySegment(5, *sample(), 0));
    EXPECT_FALSE(list->get("P", 0));
    EXPECT_EQ(list->get("P", 1)->getF32(1, 0), 3.0f);
    EXPECT_FALSE(list->copySegment(0, *other, 0));
    EXPECT_TRUE(RQ_AttributeList::matchDefinition(nullptr, RQ_AttributeListHandle()));
    EXPECT_FALSE(RQ_AttributeList::matchDefinition(list, RQ_AttributeListHandle()));
}

TEST(AttributeList, MergesOnlyNewNames)
{
    const RQ_AttributeListHandle list = sample();
    EXPECT_EQ(list->mergeNewAttributes(nullptr).get(), list.get());
    EXPECT_EQ(list->mergeNewAttributes(sample()).get(), list.get());
    const RQ_AttributeListHandle other = listOf({"width", "Cd"}, 2);
    other->setAllSegments(0, counting(1, 4));
    other->set(1, counting(2, 4), 0);
    other->set(1, counting(3, 4), 1);
    other->getMap()->setOriginalOwner(1, RQ_OWNER_VERTEX);
    other->getMap()->addExportName(1, "color");
    const RQ_AttributeListHandle merged = list->mergeNewAttributes(other);
    EXPECT_EQ(merged->getSegments(), 2);
    EXPECT_EQ(merged->get("width", 1).get(), list->get("width").get());
    EXPECT_EQ(merged->get("Cd", 1).get(), other->get("Cd", 1).get());
    EXPECT_EQ(merged->getOriginalOwner(2), RQ_OWNER_VERTEX);
    EXPECT_EQ(merged->getExportName(2).view(), "color");
}

TEST(AttributeList, HashFollowsTheDataIds)
{
    const RQ_AttributeListHandle list = sample();
    list->get(0)->setDataId(11);
    list->get(1)->setDataId(12);
    uint64_t hash = 0;
    ASSERT_TRUE(list->getDataIdHash(hash, 0));
    EXPECT_EQ(hash, RQmixId(RQmixId(2) + RQmixId(11)) + RQmixId(12));

    uint64_t longer = 0;
    ASSERT_TRUE(list->addAttribute("gone", nullptr, false)->getDataIdHash(longer, 0));
    EXPECT_EQ(longer, RQmixId(RQmixId(3) + RQmixId(11)) + RQmixId(12)) << "a null array counts in the start only";

    list->get(1)->setDataId(-1);
    EXPECT_FALSE(list->getDataIdHash(hash, 0));
}

TEST(AttributeList, AccountsItsMemory)
{
    const int64_t before = BAS_MemoryTracker::current(BAS_MEMORY_LIST);
    {
        const RQ_AttributeListHandle list = listOf({"P", "N", "Cd"}, 4);
        EXPECT_EQ(BAS_MemoryTracker::current(BAS_MEMORY_LIST), before + 3 * 4 * 8 + 24);
        const RQ_AttributeListHandle copy(new RQ_AttributeList(*list));
        EXPECT_EQ(BAS_MemoryTracker::current(BAS_MEMORY_LIST), before + 2 * (3 * 4 * 8 + 24));
    }
    EXPECT_EQ(BAS_MemoryTracker::current(BAS_MEMORY_LIST), before);

    const RQ_AttributeListHandle list = listOf({"P", "N"}, 3);
    list->setAllSegments(0, counting(0, 100));
    EXPECT_EQ(list->getMemoryUsage(), list->getMap()->getMemoryUsage(true) + 24 + 3 * list->get(0)->getMemoryUsage());
}

TEST(AttributeList, DumpsInTheFixedForm)
{
    const RQ_AttributeListHandle list = listOf({"P", "id", "gone"}, 2);
    list->setAllSegments(0, counting(0, 4, 3, RQ_TYPE_POINT));
    list->setAllSegments(1, indexArray({1, 2}));
    const auto line = [&](int index, const char *begin) {
        return fmt::format("{} ({}) id={} {}b\n", begin, list->get(index)->className(), list->get(index)->getDataId(),
                           list->get(index)->getMemoryUsage());
    };
    const std::string body = line(0, "  real32:3 point P [4]") + line(1, "  int32:1 id [2]") + "  gone <null>\n";

    testing::internal::CaptureStdout();
    list->dumpList("points");
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "points 2 segments\n--- segment 0 ---\n" + body + "--- segment 1 ---\n" + body);

    testing::internal::CaptureStdout();
    listOf({"gone"})->dumpList("");
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "  gone <null>\n");
}

TEST(AttributeList, SavesSegmentsUnderTheName)
{
    const RQ_AttributeListHandle list = listOf({"width", "gone"}, 2);
    list->setAllSegments(0, counting(1, 2));
    std::string text, error;
    BAS_JSONWriter writer(text);
    ASSERT_TRUE(list->save(writer));
    BAS_JSONValue value;
    ASSERT_TRUE(BAS_JSONValue::parse(text, value, error)) << error;
    ASSERT_TRUE(value.find("width") && value.find("width")->array());
    const BAS_JSONValue::Array &segments = *value.find("width")->array();
    ASSERT_EQ(segments.size(), 2u);
    ASSERT_TRUE(segments[1].find("storage") && segments[1].find("values"));
    EXPECT_EQ(*segments[1].find("storage")->string(), "real32");
    EXPECT_EQ(segments[1].find("values")->array()->size(), 2u);
    EXPECT_TRUE(value.find("gone")->array()->front().isNull());
}
