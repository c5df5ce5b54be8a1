#include "lists.h"

namespace
{
TEST(AttributeMap, RemovingMovesLaterOnesDown)
{
    const RQ_AttributeMapHandle map = mapOf({"P", "N", "Cd"});
    map->addExportName("Cd", "color");
    EXPECT_EQ(map->remove("N"), 1);
    EXPECT_EQ(map->remove("N"), -1);
    EXPECT_EQ(map->get("Cd"), 1);
    EXPECT_EQ(map->getExportName(1).view(), "color");
    EXPECT_EQ(map->getExportName(0).view(), "P") << "the name itself where none is registered";
    EXPECT_EQ(map->remove("Cd"), 1);
    EXPECT_EQ(map->add("Cd", false), 1);
    EXPECT_EQ(map->getExportName(1).view(), "Cd") << "the registration went with the name";
}

TEST(AttributeMap, AnswersTheSameWhenItGrowsLarge)
{
    const auto numbered = [](int i) { return BAS_StringHolder("attribute " + std::to_string(i)); };
    RQ_AttributeMap map;
    for (int i = 0; i < 200; ++i)
    {
        ASSERT_EQ(map.add(numbered(i), false), i);
        ASSERT_EQ(map.add(numbered(i / 2), false), -1);
        ASSERT_EQ(map.add(numbered(i / 2), true), i / 2) << "to be replaced";
    }
    for (int i = 0; i < 200; i += 2)
        ASSERT_EQ(map.remove(numbered(i)), i / 2);
    int index = 0;
    for (RQ_AttributeMap::iterator it = map.begin(); !it.atEnd(); ++it, ++index)
    {
        ASSERT_EQ(it.getName(), numbered(2 * index + 1));
        ASSERT_EQ(map.get(it.getName()), index);
        ASSERT_EQ(map.get(numbered(2 * index)), -1);
    }
    EXPECT_EQ(index, 100);
}
}  // namespace
