#include <set>

#include <gtest/gtest.h>

#include <host/bas/JSONValue.h>
#include <rq/prim/RefineParms.h>

#include "TestPrimitive.h"

namespace
{
// The entries of a JSON object as options, the way a file of settings is read.
BAS_Options optionsOf(std::string_view json)
{
    BAS_JSONValue value;
    std::string error;
    EXPECT_TRUE(BAS_JSONValue::parse(json, value, error)) << error;
    BAS_Options options;
    for (const auto &[key, item] : *value.map())
    {
        if (const bool *on = std::get_if<bool>(&item.content))
            options.set(key, *on);
        else if (const int64_t *integer = std::get_if<int64_t>(&item.content))
            options.set(key, *integer);
        else if (const double *number = std::get_if<double>(&item.content))
            options.set(key, *number);
        else if (const std::string *text = item.string())
            options.set(key, BAS_StringHolder(*text));
    }
    return options;
}

std::string dumped(const RQ_RefineParms &parms)
{
    BAS_WorkBuffer text;
    EXPECT_TRUE(parms.dump(text));
    return std::string(text.data(), text.size());
}
}  // namespace

TEST(RefineParms, NullMeansDefaults)
{
    BAS_WorkBuffer buffer;
    const RQ_RefineParms fresh;
    for (const RQ_RefineParms *parms : {static_cast<const RQ_RefineParms *>(nullptr), &fresh})
    {
        EXPECT_EQ(RQ_RefineParms::getQuadricDivs(parms), 20.0);
        EXPECT_EQ(RQ_RefineParms::getMetaMaxDivs(parms), 4096);
        EXPECT_EQ(RQ_RefineParms::getViewportAgentPointLimit(parms), 1000);
        EXPECT_EQ(RQ_RefineParms::getMaxPolyMeshSize(parms), -1);
        EXPECT_TRUE(RQ_RefineParms::getGeoPolygonMesh(parms));
        EXPECT_EQ(RQ_RefineParms::getCuspAngle(parms), 60.06f);
        EXPECT_EQ(RQ_RefineParms::getGeoRefineGroup(parms, buffer), nullptr);
        EXPECT_EQ(RQ_RefineParms::getInt(parms, "mine", 7), 7);
        EXPECT_STREQ(RQ_RefineParms::getString(parms, "mine", "none", buffer), "none");
    }
    EXPECT_EQ(fresh.getFlags(), 0xFC25u);
    EXPECT_EQ(fresh.getOverridePackedViewportLOD(), -1);
}

TEST(RefineParms, GettersAreStrictAndImportConverts)
{
    RQ_RefineParms parms;
    parms.set("lod", 3);
    parms.set("quadricdivs", "many");
    EXPECT_EQ(parms.getLOD(), 1.0);
    EXPECT_EQ(parms.getQuadricDivs(), 20.0);

    double number = 0;
    float single = 0;
    int integer = 5;
    bool on = false;
    EXPECT_TRUE(parms.import("lod", number));
    EXPECT_EQ(number, 3.0);
    EXPECT_TRUE(parms.import("lod", single));
    EXPECT_EQ(single, 3.0f);
    EXPECT_FALSE(parms.import("quadricdivs", number));
    EXPECT_FALSE(parms.import("absent", on));
    parms.set("lod", int64_t(1) << 40);
    EXPECT_FALSE(parms.import("lod", integer)) << "does not fit";
    EXPECT_EQ(integer, 5);
    EXPECT_EQ(number, 3.0);
}

TEST(RefineParms, OverrideLevelHasFiveSignedBits)
{
    const std::pair<int64_t, int64_t> cases[] = {{5, 5}, {-1, -1}, {0, 0}, {15, 15}, {-16, -16}, {16, -16}, {31, -1}};
    RQ_RefineParms parms;
    for (const auto &c : cases)
    {
        parms.setOverridePackedViewportLOD(c.first);
        EXPECT_EQ(parms.getOverridePackedViewportLOD(), c.second);
        EXPECT_EQ(parms.getFlags() | 0x7C00u, 0xFC25u) << "the other bits are left alone";
    }
}

TEST(RefineParms, LoadSetsFlags)
{
    RQ_RefineParms parms;
    EXPECT_TRUE(parms.load(BAS_Options()));
    EXPECT_EQ(parms.getFlags(), 0xFC25u);

    BAS_Options options;
    options.set("viewport:packed_lod", true);
    options.set("polys_as_subdivision", int64_t(1));
    options.set("viewport:override_lod", BAS_StringHolder("box"));
    EXPECT_TRUE(parms.load(options));
    EXPECT_TRUE(parms.getPackedViewportLOD());
    EXPECT_TRUE(parms.get("viewport:packed_lod", false));
    EXPECT_FALSE(parms.getPolysAsSubdivision()) << "only a bool sets a flag";
    EXPECT_EQ(parms.getOverridePackedViewportLOD(), 2);
}

TEST(RefineParms, DumpLoadsAgain)
{
    RQ_RefineParms parms;
    parms.setCuspAngle(30.5f);
    parms.setMaxPolyMeshSize(int64_t(1) << 40);
    parms.setGeoRefineGroup("a \"quoted\" group");
    parms.setAddMikkT(true);
    parms.setLOD(1.0 / 3.0);
    parms.setPolysAsSubdivision(true);
    parms.setViewportAlembicArbGeometry(false);
    parms.setOverridePackedViewportLOD(4);

    RQ_RefineParms read;
    read.setOverridePackedViewportLOD(3);
    EXPECT_EQ(read.hash(), RQ_RefineParms().hash()) << "flags do not count";
    EXPECT_TRUE(read.isEqual(RQ_RefineParms()));
    EXPECT_FALSE(read.isEqual(parms));
    EXPECT_TRUE(read.load(optionsOf(dumped(parms))));
    EXPECT_EQ(read.getFlags(), parms.getFlags());
    EXPECT_EQ(read.getLOD(), 1.0 / 3.0);
    EXPECT_EQ(read.getCuspAngle(), 30.5f);
    EXPECT_EQ(read.getMaxPolyMeshSize(), int64_t(1) << 40);
    EXPECT_TRUE(read.getAddMikkT());
    BAS_WorkBuffer buffer;
    EXPECT_STREQ(read.getGeoRefineGroup(buffer), "a \"quoted\" group");

    parms.setViewportMaterialAttrib(numbers<int32_t>({1, 2}), nullptr);
    const RQ_RefineParms copy(parms);
    EXPECT_NE(dumped(copy).find("viewport:material_attribute"), std::string::npos);
    EXPECT_EQ(copy.getViewportMaterialAttrib(), parms.getViewportMaterialAttrib());
}

// What the table says must be what the getters do: it is the command line's only knowledge.
TEST(RefineParms, TableDescribesEveryOption)
{
    std::set<std::string> keys;
    for (const RQ_RefineOption &option : RQ_RefineParms::options())
    {
        SCOPED_TRACE(option.key);
        EXPECT_TRUE(keys.insert(option.key).second) << "a key twice";
        EXPECT_NE(*option.meaning, '\0');
        EXPECT_EQ(RQ_RefineParms::findOption(option.key), &option);
    }
    EXPECT_EQ(keys.size(), 40u + 5u);
    EXPECT_EQ(RQ_RefineParms::findOption("no such key"), nullptr);

    // Setting every default changes nothing but the store.
    BAS_Options defaults;
    for (const RQ_RefineOption &option : RQ_RefineParms::options())
        if (BAS_StringHolder(option.key).view() != "geo:refinegroup")
            defaults.set(option.key, option.defaultValue);
    RQ_RefineParms parms;
    parms.load(defaults);
    EXPECT_EQ(parms.getFlags(), 0xFC25u);
    EXPECT_EQ(parms.getCuspAngle(), RQ_RefineParms::getCuspAngle(nullptr));
    EXPECT_EQ(parms.get("cuspangle", 0.0), 60.060001373291016);
    EXPECT_EQ(parms.getMetaDensity(), 30.0);
    EXPECT_TRUE(parms.getFullBezierSupport());
}
