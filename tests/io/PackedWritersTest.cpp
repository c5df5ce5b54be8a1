#include <gtest/gtest.h>

#include <set>

#include <fmt/format.h>

#include <io/GLTFReader.h>
#include <io/GLTFWriter.h>
#include <io/OBJReader.h>
#include <io/OBJWriter.h>
#include <io/PLYReader.h>
#include <io/PLYWriter.h>
#include <io/RQGReader.h>
#include <io/STLReader.h>
#include <io/STLWriter.h>
#include <io/detail/rowReader.h>
#include <tests/io/anyDetail.h>

using namespace rq::io;

namespace
{
struct Format
{
    const char *name;
    bool (*write)(const MOD_ConstDetailHandle &detail, const std::string &name, std::string &bytes, Messages &messages);
    bool (*read)(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages);
};

const Format kFormats[] = {
    {"OBJ",
     [](const MOD_ConstDetailHandle &detail, const std::string &name, std::string &bytes, Messages &messages) {
         return writeOBJ(detail, name, bytes, messages);
     },
     [](std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages) {
         return readOBJ(text, name, detail, messages);
     }},
    {"PLY",
     [](const MOD_ConstDetailHandle &detail, const std::string &name, std::string &bytes, Messages &messages) {
         return writePLY(detail, NumberForm::Binary, name, bytes, messages);
     },
     [](std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages) {
         return readPLY(text, name, detail, messages);
     }},
    {"STL", writeSTL, readSTL},
    {"GLB",
     [](const MOD_ConstDetailHandle &detail, const std::string &name, std::string &bytes, Messages &messages) {
         return writeGLTF(detail, NumberForm::Binary, name, bytes, messages);
     },
     readGLTF},
};

MOD_DetailHandle fromJSON(const std::string &members)
{
    MOD_DetailHandle detail;
    Messages messages;
    EXPECT_TRUE(readRQG("{\"rqg\": 1, " + members + "}", "x", detail, messages)) << messages.toString();
    return detail;
}

// A triangle that looks along z; placed with a pivot, and mirrored and stretched; both placed twice, once on their side.
const char *const kNested = R"("details": [
    {"primitives": [{"type": "polygon", "corners": [3], "points": [0, 1, 2]}, {"type": "sphere", "points": [3]}],
     "attributes": {
       "point": [{"name": "P", "storage": "real16", "size": 3, "values": [0, 0, 0, 2, 0, 0, 0, 1, 0, 9, 9, 9]}],
       "vertex": [{"name": "N", "storage": "real32", "size": 3, "values": [0, 0, 1, 0, 0, 1, 0.6, 0, 0.8, 0, 0, 0]}]},
     "groups": {"primitive": [{"name": "inner", "members": [0]}]}},
    {"primitives": [{"type": "PackedGeometry", "points": [0, 1], "payload": {"detail": [0], "pivot": [1, 0, 0]}},
                    {"type": "polygon", "points": [2, 3, 4]}],
     "attributes": {
       "point": [{"name": "P", "storage": "real32", "size": 3, "values": [1, 0, 0, 5, 0, 0, 0, 0, 4, 1, 0, 4, 0, 1, 4]},
                 {"name": "N", "storage": "real32", "size": 3, "values": [0, 1, 0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 0, 0, 1]}],
       "primitive": [
         {"name": "transform", "scope": "private", "storage": "real64", "size": 9, "values": [1, 0, 0, 0, 1, 0, 0, 0, 1, -1, 0, 0, 0, 1, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0]},
         {"name": "Cd", "storage": "real32", "size": 3, "type": "color", "values": [1, 0, 0, 0, 1, 0, 0, 0, 1]},
         {"name": "object", "storage": "string", "values": ["left", "right", "roof"]}]}}],
  "primitives": [{"type": "PackedGeometry", "points": [0, 1], "payload": {"detail": [1]}}],
  "attributes": {
    "point": [{"name": "P", "storage": "real32", "size": 3, "values": [0, 0, 0, 0, 10, 0]}],
    "primitive": [
      {"name": "transform", "scope": "private", "storage": "real64", "size": 9, "values": [1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 0, 0, 0, 0, 1, 0, -1, 0]},
      {"name": "material", "storage": "string", "values": ["gold", null]}],
    "detail": [{"name": "materials", "storage": "dict", "value": [{"floatarray gold": [1, 0.5, 0]}]}]},
  "groups": {"primitive": [{"name": "outer", "members": [1]}]})";

std::string textOf(const MSH_Detail &detail, ELM_Owner owner, const char *name, int64_t row)
{
    const ELM_Attribute *found = detail.find(owner, name);
    if (!found)
        return "";
    if (found->strings())
        return fmt::format(" {}", found->strings()->get(row).c_str());
    std::string text = " (";
    for (int c = 0; c < found->tupleSize(); ++c)
    {
        double number[3];
        readRow(*found, row, number, c + 1);
        text += fmt::format("{:.4g} ", number[c] + 0.0);
    }
    return text + ")";
}

/// Every corner of a detail's faces, without order.
std::set<std::string> cornersOf(const MSH_Detail &detail, bool withNormals)
{
    std::set<std::string> all;
    for (ELM_Offset face = 0; face < detail.primitiveCount(); ++face)
    {
        const auto [start, count] = detail.vertexRun(face);
        std::vector<std::string> corners;
        for (ELM_Offset v = start; v < start + count; ++v)
        {
            std::string corner = textOf(detail, ELM_OWNER_POINT, "P", detail.vertexPoint(v));
            const std::string own = textOf(detail, ELM_OWNER_VERTEX, "N", v);
            if (withNormals)
                corner += own.empty() ? textOf(detail, ELM_OWNER_POINT, "N", detail.vertexPoint(v)) : own;
            corners.push_back(corner);
        }
        std::rotate(corners.begin(), std::ranges::min_element(corners), corners.end());
        std::string text;
        for (const std::string &corner : corners)
            text += corner;
        all.insert(text);
    }
    return all;
}

const std::set<std::string> kPlaced = {
    " (0 0 0 ) (0 0 1 ) (2 0 0 ) (0 0 1 ) (0 1 0 ) (0.6 0 0.8 )",
    " (4 0 0 ) (0 0 1 ) (6 0 0 ) (0 0 1 ) (6 1 0 ) (-0.9138 0 0.4061 )",
    " (0 0 4 ) (0 0 1 ) (1 0 4 ) (0 0 1 ) (0 1 4 ) (0 0 1 )",
    " (0 10 0 ) (0 -1 0 ) (2 10 0 ) (0 -1 0 ) (0 10 1 ) (0.6 -0.8 0 )",
    " (4 10 0 ) (0 -1 0 ) (6 10 0 ) (0 -1 0 ) (6 10 1 ) (-0.9138 -0.4061 0 )",
    " (0 6 0 ) (0 -1 0 ) (1 6 0 ) (0 -1 0 ) (0 6 1 ) (0 -1 0 )",
};

TEST(PackedGeometry, IsWrittenWhereItIsPlaced)
{
    const MOD_DetailHandle detail = fromJSON(kNested);
    for (const Format &format : kFormats)
    {
        SCOPED_TRACE(format.name);
        Messages warnings, messages;
        std::string bytes;
        MOD_DetailHandle read;
        ASSERT_TRUE(format.write(detail.read(), "x", bytes, warnings)) << warnings.toString();
        EXPECT_NE(warnings.toString().find("left out: Sphere"), std::string::npos);
        ASSERT_TRUE(format.read(bytes, "x", read, messages)) << messages.toString();
        const MSH_Detail &back = *read.read().readLock();
        if (format.write == writeSTL)
        {
            std::set<std::string> places;
            for (std::string face : kPlaced)
            {
                for (size_t corner = 0, at = 0; corner < 3; ++corner)
                    at = face.find(')', at) + 1, face.erase(at, face.find(')', at) + 1 - at);
                places.insert(face);
            }
            EXPECT_EQ(cornersOf(back, false), places);
        }
        else
            EXPECT_EQ(cornersOf(back, true), kPlaced);
    }
}

// What places it tells what it is of; that counts which is nearest.
TEST(PackedGeometry, HasWhatItsPlacesSay)
{
    const MOD_DetailHandle detail = fromJSON(kNested);
    const std::string expected[] = {" roof gold", " left gold", " right gold", " roof", " left", " right"};
    for (const Format &format : {kFormats[0], kFormats[3]})
    {
        SCOPED_TRACE(format.name);
        Messages messages;
        std::string bytes;
        MOD_DetailHandle read;
        ASSERT_TRUE(format.write(detail.read(), "x", bytes, messages));
        ASSERT_TRUE(format.read(bytes, "x", read, messages)) << messages.toString();
        const MSH_Detail &back = *read.read().readLock();
        for (ELM_Offset face = 0; face < 6; ++face)
        {
            const std::string said =
                textOf(back, ELM_OWNER_PRIMITIVE, "object", face) + textOf(back, ELM_OWNER_PRIMITIVE, "material", face);
            EXPECT_TRUE(said.starts_with(expected[face])) << said;
            if (const ELM_Group *group = back.group(ELM_OWNER_PRIMITIVE, "outer"))
            {
                EXPECT_EQ(group->contains(face), face > 2);
                EXPECT_EQ(back.group(ELM_OWNER_PRIMITIVE, "inner")->contains(face), face % 3 != 0);
            }
        }
    }
    Messages messages;
    std::string bytes;
    MOD_DetailHandle read;
    ASSERT_TRUE(kFormats[1].write(detail.read(), "x", bytes, messages));
    ASSERT_TRUE(readPLY(bytes, "x", read, messages));
    for (ELM_Offset face = 0; face < 6; ++face)
        EXPECT_EQ(textOf(*read.read().readLock(), ELM_OWNER_PRIMITIVE, "Cd", face), face % 3 == 0   ? " (0 0 1 )"
                                                                                    : face % 3 == 1 ? " (1 0 0 )"
                                                                                                    : " (0 1 0 )");
}

// Colours of points, which count more, do not hide those that faces have elsewhere.
TEST(PackedGeometry, KeepsColoursOfEveryOwner)
{
    const MOD_DetailHandle detail = fromJSON(R"("details": [
        {"primitives": [{"type": "polygon", "points": [0, 1, 2]}],
         "attributes": {"point": [{"name": "P", "storage": "real32", "size": 3, "values": [0, 0, 0, 1, 0, 0, 0, 1, 0]}],
                        "primitive": [{"name": "Cd", "storage": "real32", "size": 3, "value": [1, 0, 0]}]}},
        {"primitives": [{"type": "polygon", "points": [0, 1, 2]}],
         "attributes": {"point": [{"name": "P", "storage": "real32", "size": 3, "values": [0, 0, 0, 1, 0, 0, 0, 1, 0]}]}}],
      "primitives": [{"type": "PackedGeometry", "points": [0], "payload": {"detail": [0]}},
                     {"type": "PackedGeometry", "points": [1], "payload": {"detail": [1]}},
                     {"type": "polygon", "points": [2, 3, 4]}],
      "attributes": {"point": [{"name": "P", "storage": "real32", "size": 3, "values": [0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 3, 1, 0]},
                               {"name": "Cd", "storage": "real32", "size": 3, "values": [0, 1, 0, 0, 1, 0, 0, 0, 1, 0, 0, 1, 0, 0, 1]}]})");
    Messages messages;
    std::string bytes;
    MOD_DetailHandle read;
    ASSERT_TRUE(writePLY(detail.read(), NumberForm::Text, "x", bytes, messages));
    ASSERT_TRUE(readPLY(bytes, "x", read, messages)) << messages.toString();
    for (ELM_Offset point = 0; point < 9; ++point)
        EXPECT_EQ(textOf(*read.read().readLock(), ELM_OWNER_POINT, "Cd", point), point < 3   ? " (0 0 1 )"
                                                                                 : point < 6 ? " (1 0 0 )"
                                                                                             : " (0 1 0 )");
}

// Whatever is packed in whatever way, writing ends well, and what was written can be read.
TEST(PackedGeometry, OfAnyKindCanBeWritten)
{
    for (uint32_t seed = 0; seed < 24; ++seed)
        for (const Format &format : kFormats)
        {
            SCOPED_TRACE(fmt::format("{} {}", format.name, seed));
            Messages messages, warnings;
            std::string bytes;
            MOD_DetailHandle read;
            ASSERT_TRUE(format.write(tests::AnyDetail(seed).make(), "x", bytes, warnings)) << warnings.toString();
            EXPECT_TRUE(format.read(bytes, "x", read, messages)) << messages.toString();
        }
}

// Each level places the one below twice.
MOD_ConstDetailHandle doubled(int levels)
{
    MOD_ConstDetailHandle inner;
    for (int level = 0; level < levels; ++level)
    {
        MOD_DetailHandle handle;
        MOD_Edit edit(handle);
        const std::vector<int64_t> points = {0, 1};
        EXPECT_TRUE(edit.appendPoints(2));
        if (inner)
        {
            EXPECT_TRUE(edit.appendPacked(new MOD_PackedGeometry({{inner.readLock()}}), points));
        }
        inner = edit.commit();
    }
    return inner;
}

TEST(PackedGeometry, TooMuchOfItIsRefused)
{
    const std::pair<int, const char *> cases[] = {{50, "copies"},
                                                  {66, "x: error: packed geometry lies more than 64 levels deep\n"}};
    for (const auto &[levels, why] : cases)
        for (const Format &format : kFormats)
        {
            Messages messages;
            std::string bytes;
            EXPECT_FALSE(format.write(doubled(levels), "x", bytes, messages)) << format.name;
            EXPECT_NE(messages.toString().find(why), std::string::npos) << messages.toString();
        }
}
}  // namespace
