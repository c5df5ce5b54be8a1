#include <string>

#include "arrays.h"

namespace
{
const struct
{
    const char *name;
    int storage, type, owner;
} kNames[] = {
    {nullptr, -1, -1, -1},   {"", -1, -1, -1},          {"Float", -1, -1, -1},    {" float", -1, -1, -1},
    {"float", 6, -1, -1},    {"double64", 7, -1, -1},   {"float64", 7, -1, -1},   {"unsigned char", 0, -1, -1},
    {"long", 4, -1, -1},     {"dictionary", 9, -1, -1}, {"rgba", -1, 4, -1},      {"box_16", -1, 11, -1},
    {"box_32", -1, -1, -1},  {"box32", -1, 11, -1},     {"matrix16", -1, 7, -1},  {"matrix3_16", -1, 6, -1},
    {"matrix3", -1, 6, -1},  {"quat", -1, 5, -1},       {"box2_64", -1, 10, -1},  {"point", -1, 0, 1},
    {"constant", -1, -1, 3}, {"shared", -1, -1, 1},     {"primitive", -1, -1, 2}, {"facevarying", -1, -1, -1},
};

TEST(Vocabulary, LooksUpExactNames)
{
    for (const auto &c : kNames)
    {
        SCOPED_TRACE(c.name ? c.name : "(null)");
        EXPECT_EQ(RQstorage(c.name), c.storage);
        EXPECT_EQ(RQtype(c.name), c.type);
        EXPECT_EQ(RQowner(c.name), c.owner);
    }
}

TEST(Vocabulary, AnswersCanonicalNamesAndSizes)
{
    const int kSizes[] = {1, 1, 2, 4, 8, 2, 4, 8, 16, 32};
    for (int value = -2; value < 14; ++value)
    {
        SCOPED_TRACE(value);
        EXPECT_EQ(RQsizeof(value), value >= 0 && value < 10 ? kSizes[value] : 0);
        EXPECT_EQ(RQstorage(value) != nullptr, value >= 0 && value < 10);
        EXPECT_EQ(RQowner(value) != nullptr, value >= 0 && value < 4);
        ASSERT_NE(RQtype(value), nullptr);
        EXPECT_EQ(*RQtype(value) != 0, (value >= 0 && value < 8) || value == 10 || value == 11);
        EXPECT_EQ(RQstorage(RQstorage(value)), RQstorage(value) ? value : -1);
        EXPECT_EQ(RQowner(RQowner(value)), RQowner(value) ? value : -1);
    }
    EXPECT_STREQ(RQstorage(0), "uint8");
    EXPECT_STREQ(RQstorage(6), "real32");
    EXPECT_STREQ(RQtype(4), "color");
    EXPECT_STREQ(RQowner(3), "detail");
}
}  // namespace
