#include <gtest/gtest.h>

#include <rq/attrib/AttributeMap.h>

namespace
{
RQ_AttributeMapHandle mapOf(std::initializer_list<const char *> names)
{
    RQ_AttributeMapHandle map(new RQ_AttributeMap);
    for (const char *name : names)
        map->add(name, false);
    return map;
}

BAS_StringHolder numbered(int i) { return BAS_StringHolder("attribute " + std::to_string(i)); }
}  // namespace

TEST(AttributeMap, NumbersNamesInOrder)
{
    RQ_AttributeMap map;
    EXPECT_EQ(map.get("P"), -1);
    EXPECT_EQ(map.remove("P"), -1);
    EXPECT_TRUE(map.begin().atEnd());
    EXPECT_EQ(map.add("P", false), 0);
    EXPECT_EQ(map.add("N", true), 1);
    EXPECT_EQ(map.add("Cd", false), 2);
    EXPECT_EQ(map.add("N", true), 1);
    EXPECT_EQ(map.add("N", false), -1);
    EXPECT_EQ(map.add("", false), 3) << "an empty name is an ordinary one";
    EXPECT_EQ(map.get(""), 3);
    EXPECT_EQ(map.entries(), 4);
    EXPECT_EQ(map.getOriginalOwner(1), RQ_OWNER_INVALID);
}

TEST(AttributeMap, RemovingMovesLaterOnesDown)
{
    const RQ_AttributeMapHandle map = mapOf({"P", "N", "Cd"});
    map->setOriginalOwner(2, RQ_OWNER_VERTEX);
    map->addExportName("Cd", "color");
    EXPECT_EQ(map->remove("N"), 1);
    EXPECT_EQ(map->get("Cd"), 1);
    EXPECT_EQ(map->entries(), 2);
    EXPECT_EQ(map->getOriginalOwner(1), RQ_OWNER_VERTEX);
    EXPECT_EQ(map->getExportName(1).view(), "color");
    EXPECT_EQ(map->remove("N"), -1);
    EXPECT_EQ(map->entries(), 2);

    EXPECT_EQ(map->remove("Cd"), 1);
    EXPECT_EQ(map->add("Cd", false), 1);
    EXPECT_EQ(map->getExportName(1).view(), "Cd") << "the registration went with the name";
}

TEST(AttributeMap, ExportNamesDifferOrAreNotKept)
{
    const RQ_AttributeMapHandle map = mapOf({"P", "Cd"});
    map->addExportName(1, "color");
    map->addExportName("absent", "thing");
    EXPECT_EQ(map->getExportName(0).view(), "P");
    EXPECT_EQ(map->getExportName(1).view(), "color");
    map->addExportName("Cd", "Cd");
    EXPECT_EQ(map->getExportName(1).view(), "Cd");
}

TEST(AttributeMap, AnswersTheSameWhenItGrowsLarge)
{
    RQ_AttributeMap map;
    for (int i = 0; i < 200; ++i)
    {
        ASSERT_EQ(map.add(numbered(i), false), i);
        ASSERT_EQ(map.add(numbered(i / 2), false), -1);
    }
    for (int i = 0; i < 200; i += 2)
        ASSERT_EQ(map.remove(numbered(i)), i / 2);
    int index = 0;
    for (RQ_AttributeMap::iterator it = map.begin(); !it.atEnd(); ++it, ++index)
    {
        ASSERT_EQ(it.getIndex(), index);
        ASSERT_EQ(it.getName(), numbered(2 * index + 1));
        ASSERT_EQ(map.get(it.getName()), index);
        ASSERT_EQ(map.get(numbered(2 * index)), -1);
    }
    EXPECT_EQ(index, 100);
}

TEST(AttributeMap, ComparesNamesInOrder)
{
    const RQ_AttributeMapHandle map = mapOf({"P", "N"}), twin = mapOf({"P", "N"});
    twin->setOriginalOwner(0, RQ_OWNER_POINT);
    twin->addExportName(0, "position");
    EXPECT_TRUE(*map == *twin);
    EXPECT_FALSE(*map == *mapOf({"N", "P"}));
    EXPECT_FALSE(*map == *mapOf({"P"}));
    EXPECT_EQ(map->getLabel(), "P N");
}

TEST(AttributeMap, CountsItsMemory)
{
    RQ_AttributeMap map;
    EXPECT_EQ(map.getMemoryUsage(false), 0);
    EXPECT_EQ(map.getMemoryUsage(true), 88);
    map.add("P", false);
    EXPECT_EQ(map.getMemoryUsage(true), 88 + 16 + 4) << "one name, one owner, no hash table yet";
}
