#include <cmath>
#include <map>
#include <set>

#include <gtest/gtest.h>

#include <host/bas/JSONValue.h>
#include <rq/prim/RefineParms.h>

#include "TestPrimitive.h"

namespace
{
std::string dumped(const RQ_RefineParms &parms)
{
    BAS_WorkBuffer text;
    EXPECT_TRUE(parms.dump(text));
    return std::string(text.data(), text.size());
}

TEST(RefineParms, GettersAreStrictAndImportConverts)
{
    RQ_RefineParms parms;
    parms.set("lod", 3);
    EXPECT_EQ(parms.getLOD(), 1.0);
    double number = 0;
    EXPECT_TRUE(parms.import("lod", number));
    EXPECT_EQ(number, 3.0);
    parms.set("lod", "many");
    EXPECT_FALSE(parms.import("lod", number));
    EXPECT_EQ(number, 3.0);
    int integer = 5;
    parms.set("lod", int64_t(1) << 40);
    EXPECT_FALSE(parms.import("lod", integer)) << "does not fit";
    EXPECT_EQ(integer, 5);
    parms.setGeoRefineGroup("some");
    BAS_WorkBuffer text;
    EXPECT_STREQ(parms.getGeoRefineGroup(text), "some");
    EXPECT_EQ(text.size(), 4u) << "the end of a text is no part of it";
}

TEST(RefineParms, OverrideLevelHasFiveSignedBits)
{
    RQ_RefineParms parms;
    EXPECT_EQ(parms.getOverridePackedViewportLOD(), -1);
    for (const auto &[set, got] : std::map<int64_t, int64_t>{{5, 5}, {-1, -1}, {15, 15}, {-16, -16}, {16, -16}, {31, -1}})
    {
        parms.setOverridePackedViewportLOD(set);
        EXPECT_EQ(parms.getOverridePackedViewportLOD(), got);
        EXPECT_EQ(parms.getFlags() | 0x7C00u, 0xFC25u) << "the other bits are left alone";
    }
}

TEST(RefineParms, LoadTakesTypesAsTheyCome)
{
    RQ_RefineParms parms;
    BAS_Options options;
    options.set("polys_as_subdivision", int64_t(1));
    options.set("cuspangle", int64_t(45));
    EXPECT_TRUE(parms.load(options));
    EXPECT_FALSE(parms.getPolysAsSubdivision()) << "only a bool sets a flag";
    EXPECT_EQ(parms.getCuspAngle(), 45.0f) << "text does not tell 45 from 45.0";
}

TEST(RefineParms, DumpsWhatLoadTakesBack)
{
    RQ_RefineParms parms;
    parms.setSkipHidden(false);
    EXPECT_EQ(parms.hash(), RQ_RefineParms().hash()) << "flags do not count";
    EXPECT_TRUE(parms.isEqual(RQ_RefineParms()));
    parms.setCuspAngle(30.5f);
    EXPECT_FALSE(parms.isEqual(RQ_RefineParms()));
    parms.setMaxPolyMeshSize(int64_t(1) << 40);
    parms.setPolysAsSubdivision(true);
    parms.setOverridePackedViewportLOD(2);
    EXPECT_EQ(dumped(parms), R"({"cuspangle":30.5,"maxpolymeshsize":1099511627776,)"
                             R"("viewport:abc_arbgeo":true,"viewport:abc_facesets":false,"viewport:packed_lod":false,)"
                             R"("polys_as_subdivision":true,"viewport:override_lod":"box"})");
    parms.setViewportMaterialAttrib(numbers<int32_t>({1, 2}), nullptr);
    EXPECT_NE(dumped(RQ_RefineParms(parms)).find("viewport:material_attribute"), std::string::npos);
}

// Every option at a value that is not its default: whole for floats, which the text does not tell from integers.
BAS_Options otherValues()
{
    BAS_Options others;
    for (const RQ_RefineOption &option : RQ_RefineParms::options())
        if (const bool *on = std::get_if<bool>(&option.defaultValue))
            others.set(option.key, !*on);
        else if (const auto *whole = std::get_if<int64_t>(&option.defaultValue))
            others.set(option.key, *whole + 3);
        else if (const auto *number = std::get_if<double>(&option.defaultValue))
            others.set(option.key, std::floor(*number) + 2.0);
        else
            others.set(option.key, BAS_StringHolder("box"));
    return others;
}

TEST(RefineParms, AreEqualAfterTheyWereDumpedAndLoaded)
{
    RQ_RefineParms parms, again;
    parms.load(otherValues());
    EXPECT_EQ(parms.getFlags(), 0xFC25u ^ 0xC3u ^ 0x7400u) << "all that have a key, and level 2";

    std::string error;
    BAS_JSONValue text;
    ASSERT_TRUE(BAS_JSONValue::parse(dumped(parms), text, error)) << error;
    BAS_Options read;
    for (const auto &member : *text.map())
        if (const std::string *word = member.second.string())
            read.set(member.first, BAS_StringHolder(*word));
        else if (bool on; member.second.boolean(on))
            read.set(member.first, on);
        else
            read.set(member.first, std::get<int64_t>(member.second.content));
    again.load(read);
    EXPECT_TRUE(again.isEqual(parms));
    EXPECT_EQ(again.getFlags(), parms.getFlags());
    EXPECT_EQ(dumped(again), dumped(parms));
}
}  // namespace
