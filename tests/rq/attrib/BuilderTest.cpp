#include <gtest/gtest.h>

#include <fmt/format.h>

#include <rq/attrib/AttributeBuilder.h>
#include <rq/data/DARange.h>

namespace
{
// "owner storage type size name", or the error.
std::string parsed(const char *declaration)
{
    RQ_BuilderStatus status;
    BAS_StringHolder name;
    RQ_Owner owner;
    RQ_Storage storage;
    RQ_Type type;
    int size;
    if (!RQ_AttributeBuilder::guessTypeInformation(status, declaration, name, owner, storage, type, size))
        return status.errors().at(0);
    return fmt::format("{} {} {} {} {}", int(owner), RQstorage(storage), int(type), size, name.c_str());
}
}  // namespace

TEST(AttributeBuilder, TakesDeclarationsApart)
{
    const struct
    {
        const char *declaration, *result;
    } kCases[] = {
        {nullptr, "Missing arguments when parsing ''"},
        {"point vector", "Missing arguments when parsing 'point vector'"},
        {"point vector ", "1 real32 2 3 "},
        {"point  vector N", "Unknown storage type '' when parsing 'point  vector N'"},
        {"point vec N", "Unknown storage type 'vec' when parsing 'point vec N'"},
        {"point box_32 b", "Unknown storage type 'box_32' when parsing 'point box_32 b'"},
        {"point vector16 N", "1 real16 2 3 N"},
        {"detail float scale", "3 real32 -1 1 scale"},
        {"constant matrix xform", "3 real64 7 16 xform"},
        {"varying matrix32 m", "1 real32 7 16 m"},
        {"facevarying matrix3_64 m", "0 real64 6 9 m"},
        {"primitive hpoint64 p", "2 real64 1 4 p"},
        {"shared rgba Cd", "-1 real32 4 3 Cd"},
        {"vertex box2_16 b", "0 real16 10 1 b"},
        {"uniform\tstring\nname", "2 string -1 1 name"},
        {"point vector v[2]", "1 real32 2 6 v"},
        {"point vector v [2]", "1 real32 2 3 v"},
        {"point int32 v[3x", "1 int32 -1 3 v"},
        {"point float v 2", "1 real32 -1 1 v"},
        {"point float x[0]", "Invalid array size [0] when parsing 'point float x[0]'"},
        {"point float x[]", "Invalid array size [] when parsing 'point float x[]'"},
        {"point float x[2147483647]", "1 real32 -1 2147483647 x"},
        {"point vector x[715827883]", "Invalid array size [715827883] when parsing 'point vector x[715827883]'"},
        {"point float x[99999999999999999999]",
         "Invalid array size [99999999999999999999] when parsing 'point float x[99999999999999999999]'"},
    };
    for (const auto &c : kCases)
        EXPECT_EQ(parsed(c.declaration), c.result);
}

TEST(AttributeBuilder, AddsWhatFitsAndSaysWhatDoesNot)
{
    RQ_BuilderStatus status;
    RQ_AttributeBuilder builder(status);
    const double six[] = {0, 1, 2, 3, 4, 300.7};
    const BAS_StringHolder words[] = {"a", ""};
    const RQ_DataArrayHandle ids(new RQ_DARange(2));
    const struct
    {
        const char *what;
        bool good, expected;
    } kCases[] = {
        {"P", builder.add("point point P", six, 6), true},
        {"P moved", builder.add("point point P", six, 6, 1), true},
        {"P twice", builder.add("point point P", six, 6, 1), false},
        {"a segment left out", builder.add("point vector v", six, 6, 1), false},
        {"another form in a later segment", builder.add("point vector P", six, 6, 2), false},
        {"a broken tuple", builder.add("point point Q", six, 5), false},
        {"fewer entries", builder.add("point float f", six, 1), false},
        {"no values", builder.add("point float f", static_cast<const double *>(nullptr), 2), false},
        {"bytes", builder.add("point uint8 byte", six + 4, 2), true},
        {"text", builder.add("point string name", words, 2), true},
        {"text as numbers", builder.add("point float word", words, 2), false},
        {"numbers as text", builder.add("point string digit", six, 2), false},
        {"dictionary", builder.add("point dictionary d", six, 2), false},
        {"array", builder.add("point int32 id", ids), true},
        {"array of another storage", builder.add("point float id2", ids), false},
        {"detail with two entries", builder.add("detail float d", six, 2), false},
        {"detail", builder.add("detail vector d", six, 3), true},
        {"unknown binding", builder.add("points float f", six, 2), false},
    };
    size_t errors = 0;
    for (const auto &c : kCases)
    {
        EXPECT_EQ(c.good, c.expected) << c.what;
        errors += !c.expected;
    }
    EXPECT_EQ(status.errors().size(), errors);
    EXPECT_EQ(status.errors()[4], "'point float f' needs 2 entries, not 1");

    const RQ_AttributeListHandle list = builder.build(RQ_OWNER_POINT);
    ASSERT_EQ(list->getMap()->getLabel(), "P byte name id");
    EXPECT_EQ(list->getSegments(), 2);
    EXPECT_EQ(list->get("P")->getTypeInfo(), RQ_TYPE_POINT);
    EXPECT_EQ(list->get("P")->getF32(1, 1), 4.0f);
    EXPECT_EQ(list->get("byte")->getI32(1), 44) << "converted as everywhere";
    EXPECT_EQ(list->get("name", 1)->getS(0).view(), "a");
    EXPECT_EQ(list->get("id"), ids);
    EXPECT_EQ(list->getOriginalOwner(0), RQ_OWNER_POINT);
    EXPECT_EQ(builder.build(RQ_OWNER_DETAIL)->get(0)->entries(), 1);
    EXPECT_FALSE(builder.build(RQ_OWNER_VERTEX));
    EXPECT_FALSE(builder.build(RQ_OWNER_INVALID));
}
