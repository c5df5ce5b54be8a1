#include <gtest/gtest.h>

#include <filesystem>

#include <host/mod/DetailHandle.h>
#include <io/OBJReader.h>
#include <io/OBJWriter.h>
#include <io/RQGReader.h>
#include <io/Reader.h>
#include <io/Writer.h>
#include <tests/OwnFolder.h>
#include <tests/io/difference.h>

using namespace rq::io;
using tests::difference;

namespace
{
std::string obj(const MOD_DetailHandle &detail, Messages &messages)
{
    std::string text;
    EXPECT_TRUE(writeOBJ(detail.read(), "x", text, messages)) << messages.toString();
    return text;
}

TEST(OBJWriter, WritesWhatTheReaderReads)
{
    const std::string points =
        "v 0 0 0\nv 1 .1 -0\nv 1e20 1e-30 nan\nv 0.33333334 -inf 4 1 .5 .25\nvt 0 0\nvt 1 .5\nvn 0 0 1\n";
    const std::string cases[] = {
        "",
        "f 1 2 3 4 1\nf 1 2\nf\nl 1 2 3\nl\np 4 1\nf 3 2 1\n",
        "f 1/1/1 2/2/1 3//1\nl 1/2 2\np 1/2/1 3\n",
        "vt 1 2 3\nf 1/3 2/2 3/1\n",
        "g a b\nf 1 2 3\ng\nf 1 2 3\ng c\ng b\nl 1 2\ng d\n",
        "usemtl m n\ns 1\nf 1 2 3\no x#y\ns off\nusemtl\nf 1 2 3\nusemtl m n\nf 3 2 1\n",
        "o nothing\ng none\n",
    };
    for (const std::string &text : cases)
    {
        SCOPED_TRACE(text);
        Messages messages, none;
        MOD_DetailHandle first, second;
        ASSERT_TRUE(readOBJ(points + text, "x", first, messages)) << messages.toString();
        const std::string written = obj(first, none);
        EXPECT_EQ(none.toString(), "");
        ASSERT_TRUE(readOBJ(written, "x", second, messages)) << messages.toString() << written;
        EXPECT_EQ(difference(*first.read().readLock(), *second.read().readLock()), "") << written;
        EXPECT_EQ(obj(second, none), written);
    }
}

TEST(OBJWriter, NamesWhatItLeavesOut)
{
    MOD_DetailHandle detail;
    Messages messages, warnings;
    ASSERT_TRUE(readRQG(R"({"rqg": 1, "primitives": [
        {"type": "polygon", "points": [1, -1, 0, 2]}, {"type": "sphere", "points": [0, 1]}, {"type": "tube", "points": [2]}],
      "attributes": {"vertex": [{"name": "uv", "storage": "int8", "size": 2, "value": [0, 0]}],
        "point": [{"name": "P", "storage": "real64", "size": 3, "values": [0, 0, 0, 0.1, 0, 0, 0, 1, 0]},
                  {"name": "N", "storage": "real16", "size": 3, "values": [0, 0, 1, 0, 1, 0, 0, 0, 1]},
                  {"name": "Cd", "storage": "real32", "size": 4, "value": [1, 1, 1, 1]}],
        "primitive": [{"name": "material", "storage": "string", "values": ["a\nb", "c", "c", "c"]}],
        "detail": [{"name": "year", "storage": "int32", "values": [1]},
                   {"name": "materials", "storage": "dict", "value": [{"floatarray c": [1, 0, 0]}]}]},
      "groups": {"primitive": [{"name": "two words", "members": [0]}], "point": [{"name": "ends", "members": [0]}]}})",
                        "x", detail, messages))
        << messages.toString();
    EXPECT_EQ(obj(detail, warnings), "v 0 0 0\nv 0.1 0 0\nv 0 1 0\nvn 0 0 1\nvn 0 1 0\nusemtl\nf 2//2 1//1 3//1\n");
    EXPECT_EQ(warnings.toString(), "x: warning: attribute \"uv\" of vertices is left out\n"
                                   "x: warning: attribute \"Cd\" of points is left out\n"
                                   "x: warning: attribute \"year\" of the detail is left out\n"
                                   "x: warning: attribute \"materials\" of the detail is left out\n"
                                   "x: warning: attribute \"N\" of points becomes one of vertices\n"
                                   "x: warning: attribute \"P\" has 64 bits, of which readers may keep 32\n"
                                   "x: warning: group \"ends\" of points is left out\n"
                                   "x: warning: group \"two words\" of primitives is left out\n"
                                   "x: warning: \"a\nb\" of attribute \"material\" is left out\n"
                                   "x: warning: 2 primitives are left out: Sphere\n"
                                   "x: warning: 1 primitive is left out: Tube\n"
                                   "x: warning: 1 vertex without a point is left out\n");
}

// Into a file of their own, which the other names.
TEST(OBJWriter, KeepsMaterials)
{
    MOD_DetailHandle first, second;
    Messages messages;
    ASSERT_TRUE(readRQG(R"({"rqg": 1, "primitives": [{"type": "particles", "points": [0]}],
      "attributes": {"point": [{"name": "P", "storage": "real32", "size": 3, "values": [0, 0, 0]}],
        "primitive": [{"name": "material", "storage": "string", "values": ["a b"]}],
        "detail": [{"name": "materials", "storage": "dict", "value": [
          {"floatarray a b": [1.0, 0.1, 0.3333333333333333], "floatarray c": [0, 1, 0.5, 0.2], "floatarray d": [1, 1, 1, 0, 0.5]}]}]}})",
                        "x", first, messages));
    const tests::OwnFolder own;
    const std::string name = own.path() + "rq materials.x.obj";
    ASSERT_TRUE(save(name, first.read(), messages));
    ASSERT_TRUE(load(name, second, messages));
    EXPECT_EQ(messages.toString(), "");
    EXPECT_EQ(difference(*first.read().readLock(), *second.read().readLock()), "");
    EXPECT_TRUE(std::filesystem::exists(materialFileOf(name)));
    EXPECT_EQ(materialFileOf("a/b.mtl"), "a/b.mtl.mtl");
}
}  // namespace
