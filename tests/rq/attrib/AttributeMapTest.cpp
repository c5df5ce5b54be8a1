#include "lists.h"

namespace
{
TEST(AttributeMap, RemovingMovesLaterOnesDown)
{
    const RQ_AttributeMapHandle map = mapOf({"P", "N", "Cd"});
    EXPECT_EQ(map->add("N", true), 1);
    EXPECT_EQ(map->add("", false), 3) << "an empty name is an ordinary one";
    map->setOriginalOwner(2, RQ_OWNER_VERTEX);
    map->addExportName("Cd", "color");
    map->addExportName("absent", "thing");
    EXPECT_EQ(map->remove(map->getName(1)), 1) << "its own copy of the name";
    EXPECT_EQ(map->remove("N"), -1);
    EXPECT_EQ(map->get("Cd"), 1);
    EXPECT_EQ(map->get(""), 2);
    EXPECT_EQ(map->getOriginalOwner(1), RQ_OWNER_VERTEX);
    EXPECT_EQ(map->getExportName(1).view(), "color");
    EXPECT_EQ(map->getExportName(0).view(), "P") << "the name itself where none is registered";
    EXPECT_EQ(map->remove("Cd"), 1);
    EXPECT_EQ(map->add("Cd", false), 2);
    EXPECT_EQ(map->getExportName(2).view(), "Cd") << "the registration went with the name";
}

TEST(AttributeMap, AnswersTheSameWhenItGrowsLarge)
{
    const auto numbered = [](int i) { return BAS_StringHolder("attribute " + std::to_string(i)); };
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
        ASSERT_EQ(it.getName(), numbered(2 * index + 1));
        ASSERT_EQ(map.get(it.getName()), index);
        ASSERT_EQ(map.get(numbered(2 * index)), -1);
    }
    EXPECT_EQ(index, 100);
}

TEST(AttributeMap, FiltersInOrderWithOwnersAndExportNames)
{
    struct Longer : RQ_AttributeMapFilter
    {
        bool keep(const RQ_AttributeMap &map, int index) const override { return map.getName(index).length() > 1; }
    };
    const RQ_AttributeMapHandle map = mapOf({"P", "Cd", "N", "uv"});
    map->setOriginalOwner(3, RQ_OWNER_VERTEX);
    map->addExportName("uv", "st");
    BAS_Array<int> sources = {7};
    const RQ_AttributeMapHandle kept = map->filter(Longer(), sources);
    EXPECT_EQ(kept->getLabel(), "Cd uv");
    EXPECT_EQ(sources, (BAS_Array<int>{1, 3}));
    EXPECT_EQ(kept->getOriginalOwner(1), RQ_OWNER_VERTEX);
    EXPECT_EQ(kept->getExportName(1).view(), "st");
}
}  // namespace
