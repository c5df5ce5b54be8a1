#include <gtest/gtest.h>

#include <cmath>

#include <host/mod/DetailHandle.h>
#include <io/GLTFReader.h>
#include <io/GLTFWriter.h>
#include <io/OBJReader.h>
#include <io/PLYReader.h>
#include <io/PLYWriter.h>
#include <io/RQGReader.h>
#include <io/STLReader.h>
#include <io/STLWriter.h>
#include <tests/io/Dump.h>
#include <tests/io/difference.h>

using namespace rq::io;
using tests::difference;

namespace
{
MOD_DetailHandle fromJSON(const std::string &members)
{
    MOD_DetailHandle detail;
    Messages messages;
    EXPECT_TRUE(readRQG("{\"rqg\": 1, " + members + "}", "x", detail, messages)) << messages.toString();
    return detail;
}

TEST(PLYWriter, WritesWhatTheReaderReads)
{
    const char *const points =
        R"({"name": "P", "storage": "real64", "size": 3, "values": [0, 0, 0, 0.1, 0, 0, 0, 1e300, "nan", 1, 2, 3]},)";
    const std::string cases[] = {
        R"("attributes": {"point": [{"name": "P", "storage": "real32", "size": 3, "values": []}]})",
        std::string(R"("attributes": {"point": [)") + points +
            R"({"name": "Cd", "storage": "real32", "size": 3, "type": "color", "values": [0, 1, 0, 0.2, 0.4, 0.6, 1, 1, 1, 0, 0, 0]},
               {"name": "Alpha", "storage": "real32", "value": [0.3]},
               {"name": "N", "storage": "real32", "size": 3, "type": "normal", "value": [0, 0, 1]},
               {"name": "uv", "storage": "real32", "size": 2, "type": "texture", "value": [0.25, 1]},
               {"name": "id", "storage": "int32", "values": [-1, 2147483647, 0, 3]},
               {"name": "v", "storage": "real32", "size": 3, "type": "vector", "values": [1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12]},
               {"name": "small", "storage": "uint8", "size": 2, "values": [0, 255, 3, 4, 5, 6, 7, 8]},
               {"name": "heat", "storage": "int16", "type": "color", "values": [-32768, 1, 2, 32767]},
               {"name": "near", "storage": "int32", "arrays": true, "values": [[], [1, 2], [3], []]}]})",
        std::string(R"("primitives": [{"type": "polygon", "corners": [3, 2, 4, 0], "points": [0, 1, 2, 2, 3, 0, 1, 2, 3]}],
           "attributes": {"point": [)") +
            points + R"({"name": "pscale", "storage": "real64", "value": [0.1]}],
           "vertex": [{"name": "uv", "storage": "real32", "size": 2, "type": "texture",
                       "values": [0, 0, 1, 0, 1, 1, 0, 1, 0.5, 0.1, 2, 2, 3, 3, 4, 4, 5, 5]},
                      {"name": "corner", "storage": "int8", "values": [0, 1, 2, 3, 4, 5, 6, 7, -8]}],
           "primitive": [{"name": "Cd", "storage": "real32", "size": 3, "type": "color", "values": [0.1, 2, -3, 1, 1, 1, 0, 0, 0, 1, 0, 0]},
                         {"name": "part", "storage": "int32", "values": [1, 2, 3, 4]},
                         {"name": "list", "storage": "real64", "arrays": true, "values": [[0.1], [], [1, 2, 3], []]}]})"};
    for (const std::string &text : cases)
        for (const NumberForm form : {NumberForm::Binary, NumberForm::Text})
        {
            SCOPED_TRACE(text);
            const MOD_DetailHandle first = fromJSON(text);
            MOD_DetailHandle second;
            Messages messages, none;
            std::string written;
            ASSERT_TRUE(writePLY(first.read(), form, "x", written, none));
            EXPECT_EQ(none.toString(), "");
            ASSERT_TRUE(readPLY(written, "x", second, messages)) << messages.toString() << written;
            EXPECT_EQ(difference(*first.read().readLock(), *second.read().readLock()), "") << written;
        }
}

// A line, two faces that STL must cut, a primitive that no such file holds, and one of each thing besides.
const char *const kMixed = R"("primitives": [
      {"type": "polygon", "corners": [4, 3], "points": [0, 1, 2, 3, 0, 1, 4]},
      {"type": "polygon", "closed": false, "points": [0, 4]}, {"type": "sphere", "points": [5]}],
    "attributes": {
      "vertex": [{"name": "uv", "storage": "real32", "size": 2, "type": "texture", "values": [0, 0, 1, 0, 1, 1, 0, 1, 0, 0, 1, 0, 0.5, 0.25, 0, 0, 0, 0, 0, 0]}],
      "point": [{"name": "P", "storage": "real32", "size": 3, "values": [0, 0, 0, 2, 0, 0, 2, 2, 0, 0, 2, 0, 0, 0, 1, 9, 9, 9]},
                {"name": "name", "storage": "string", "value": ["p"]}],
      "primitive": [{"name": "material", "storage": "string", "values": ["a", "b", "a", "a"]},
                    {"name": "Cd", "storage": "real32", "size": 3, "type": "color", "values": [1, 0, 0, 0, 1, 0, 1, 0, 0, 1, 0, 0]}],
      "detail": [{"name": "year", "storage": "int32", "values": [1]},
                 {"name": "materials", "storage": "dict", "value": [{"floatarray b": [0.5, 0.5, 0.5, 0.5]}]}]},
    "groups": {"primitive": [{"name": "some", "members": [0]}]})";

struct LossCase
{
    const char *what;
    bool (*write)(const MOD_ConstDetailHandle &detail, const std::string &name, std::string &bytes, Messages &messages);
    bool (*read)(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages);
    const char *dump;
    const char *warnings;
};

const LossCase kLossCases[] = {
    {"STL", writeSTL, readSTL,
     "f 0 1 2,f 2 3 0,f 0 1 4,\npoint P real32: 0 0 0; 2 0 0; 2 2 0; 0 2 0; 0 0 1;\nface N real32: 0 0 1; 0 0 1; 0 -1 0;",
     "x: warning: attribute \"uv\" of vertices is left out\n"
     "x: warning: attribute \"name\" of points is left out\n"
     "x: warning: attribute \"material\" of primitives is left out\n"
     "x: warning: attribute \"Cd\" of primitives is left out\n"
     "x: warning: attribute \"year\" of the detail is left out\n"
     "x: warning: attribute \"materials\" of the detail is left out\n"
     "x: warning: group \"some\" of primitives is left out\n"
     "x: warning: 1 primitive is left out: Polygon\n"
     "x: warning: 1 primitive is left out: Sphere\n"
     "x: warning: 1 face is cut into triangles\n"
     "x: warning: 1 point without a face is left out\n"},
    {"PLY",
     [](const MOD_ConstDetailHandle &detail, const std::string &name, std::string &bytes, Messages &messages) {
         return writePLY(detail, NumberForm::Binary, name, bytes, messages);
     },
     [](std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages) {
         return readPLY(text, name, detail, messages);
     },
     "f 0 1 2 3,f 0 1 4,\npoint P real32: 0 0 0; 2 0 0; 2 2 0; 0 2 0; 0 0 1; 9 9 9;\nface Cd real32: 1 0 0; 0 1 0;",
     "x: warning: attribute \"name\" of points is left out\n"
     "x: warning: attribute \"material\" of primitives is left out\n"
     "x: warning: attribute \"year\" of the detail is left out\n"
     "x: warning: attribute \"materials\" of the detail is left out\n"
     "x: warning: group \"some\" of primitives is left out\n"
     "x: warning: 1 primitive is left out: Polygon\n"
     "x: warning: 1 primitive is left out: Sphere\n"},
    {"GLB",
     [](const MOD_ConstDetailHandle &detail, const std::string &name, std::string &bytes, Messages &messages) {
         return writeGLTF(detail, NumberForm::Binary, name, bytes, messages);
     },
     readGLTF,
     "f 0 1 2,f 2 3 0,f 0 1 4,f 0 5,\n"
     "point P real32: 0 0 0; 2 0 0; 2 2 0; 0 2 0; 0 0 1; 0 0 1;\npoint uv real32: 0 0; 1 0; 1 1; 0 1; 0.5 0.25; 0 0;\n"
     "face material\ndetail materials {\"a\":[1,0,0],\"b\":[0,1,0,0.5]}",
     "x: warning: 1 face is cut into triangles\n"
     "x: warning: 1 point that nothing uses is left out\n"
     "x: warning: attribute \"name\" of points is left out\n"
     "x: warning: attribute \"year\" of the detail is left out\n"
     "x: warning: group \"some\" of primitives is left out\n"
     "x: warning: 1 primitive is left out: Sphere\n"},
};

TEST(Writers, NameWhatTheyLeaveOut)
{
    const MOD_DetailHandle detail = fromJSON(kMixed);
    for (const LossCase &c : kLossCases)
    {
        SCOPED_TRACE(c.what);
        std::string bytes;
        Messages warnings, messages;
        MOD_DetailHandle read;
        ASSERT_TRUE(c.write(detail.read(), "x", bytes, warnings));
        EXPECT_EQ(warnings.toString(), c.warnings);
        ASSERT_TRUE(c.read(bytes, "x", read, messages)) << messages.toString();
        EXPECT_EQ(tests::dump(*read.read().readLock()), c.dump);
    }
}

// Materials that PLY cannot hold leave their colours: with points where these have one each.
TEST(PLYWriter, WritesColoursOfMaterials)
{
    const std::pair<const char *, const char *> cases[] = {
        {"[0, 1, 2, 3, 4, 5]", "point Cd real32: 1 0.501961 0; 1 0.501961 0; 1 0.501961 0; 1 1 1; 1 1 1; 1 1 1;"},
        {"[0, 1, 2, 2, 1, 3]", "face Cd real32: 1 0.501961 0; 1 1 1;"}};
    for (const auto &[points, expected] : cases)
    {
        const MOD_DetailHandle first =
            fromJSON(std::string(R"("primitives": [{"type": "polygon", "corners": [3, 3], "points": )") + points + R"(}],
              "attributes": {"point": [{"name": "P", "storage": "real32", "size": 3, "values": [0,0,0, 1,0,0, 0,1,0, 1,1,0, 2,1,0, 2,2,0]}],
                "primitive": [{"name": "material", "storage": "string", "values": ["a", null]}],
                "detail": [{"name": "materials", "storage": "dict", "value": [{"floatarray a": [1, 0.5, -1, 0.2]}]}]})");
        MOD_DetailHandle second;
        Messages messages;
        std::string written;
        ASSERT_TRUE(writePLY(first.read(), NumberForm::Text, "x", written, messages));
        EXPECT_NE(written.find("property uchar red"), std::string::npos) << written;
        ASSERT_TRUE(readPLY(written, "x", second, messages)) << messages.toString();
        EXPECT_NE(tests::dump(*second.read().readLock()).find(expected), std::string::npos) << written;
    }
}

// What glTF can hold as it is, comes back the same, from either form.
TEST(GLTFWriter, WritesWhatTheReaderReads)
{
    const std::string points =
        R"({"name": "P", "storage": "real32", "size": 3, "values": [0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0.1]})";
    const std::string cases[] = {R"("attributes": {"point": [{"name": "P", "storage": "real32", "size": 3, "values": []}]})",
                                 R"("primitives": [{"type": "particles", "points": [0, 3, 1]}], "attributes": {"point": [)" +
                                     points + "]}",
                                 R"("primitives": [{"type": "polygon", "corners": [3, 3], "points": [0, 1, 2, 2, 1, 3]},
             {"type": "polygon", "closed": false, "corners": [2, 2, 4], "points": [0, 1, 2, 3, 0, 1, 2, 0]}],
           "attributes": {"point": [)" +
                                     points + R"(,
               {"name": "N", "storage": "real32", "size": 3, "type": "normal", "value": [0, 0, 1]},
               {"name": "tangent", "storage": "real32", "size": 4, "value": [1, 0, 0, -1]},
               {"name": "uv", "storage": "real32", "size": 2, "type": "texture", "values": [0, 0, 1, 0, 0.5, 0.75, 1, 1]},
               {"name": "uv2", "storage": "real32", "size": 2, "type": "texture", "value": [0.5, 0.5]},
               {"name": "Cd", "storage": "real32", "size": 3, "type": "color", "values": [0, 0, 0, 1, 0, 0, 0, 1, 0, 0.1, 1, 0]},
               {"name": "Alpha", "storage": "real32", "values": [0, 1, 0.5, 0.25]},
               {"name": "id", "storage": "int32", "values": [0, 70, -300, 4]},
               {"name": "kind", "storage": "int32", "size": 3, "values": [0, 1, 2, 255, 4, 5, 6, 7, 8, 9, 10, 11]},
               {"name": "heat", "storage": "real32", "values": [0.1, "-inf", 1e30, 4]}],
             "primitive": [{"name": "object", "storage": "string", "values": ["one", "one", "two", "two", "two"]},
               {"name": "material", "storage": "string", "values": ["red", "red", "red", "red", null]}],
             "detail": [{"name": "materials", "storage": "dict",
                         "value": [{"floatarray red": [1, 0, 0, 0.25, 0.5]}]}]})"};
    for (const std::string &text : cases)
        for (const NumberForm form : {NumberForm::Binary, NumberForm::Text})
        {
            SCOPED_TRACE(text);
            const MOD_DetailHandle first = fromJSON(text);
            MOD_DetailHandle second, third;
            Messages messages, warnings;
            std::string written, again;
            ASSERT_TRUE(writeGLTF(first.read(), form, "x", written, warnings));
            ASSERT_TRUE(readGLTF(written, "x", second, messages)) << messages.toString() << written;
            const MSH_Detail &a = *first.read().readLock(), &b = *second.read().readLock();
            EXPECT_EQ(a.pointCount(), b.pointCount());
            EXPECT_EQ(a.vertexCount(), b.vertexCount());
            EXPECT_EQ(a.primitiveCount(), b.primitiveCount());
            for (const ELM_Owner owner : {ELM_OWNER_POINT, ELM_OWNER_PRIMITIVE, ELM_OWNER_DETAIL})
                for (const ELM_Attribute &attribute : a.attributes(owner))
                {
                    const ELM_Attribute *found = b.find(owner, attribute.name().view());
                    EXPECT_TRUE(a.primitiveCount() == 0 ||
                                (found && (attribute.name().view() == "heat" || tests::areSame(attribute, *found))))
                        << attribute.name().c_str();
                }
            EXPECT_EQ(warnings.toString(),
                      a.find(ELM_OWNER_POINT, "heat")
                          ? "x: warning: attribute \"heat\" must have finite numbers: 1 row is changed\n"
                          : "");
            ASSERT_TRUE(writeGLTF(second.read(), form, "x", again, warnings));
            ASSERT_TRUE(readGLTF(again, "x", third, messages)) << messages.toString();
            EXPECT_EQ(difference(b, *third.read().readLock()), "");
        }
}
}  // namespace
