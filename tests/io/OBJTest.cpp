#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

#include <fmt/format.h>

#include <host/bas/Parallel.h>
#include <host/mod/DetailHandle.h>
#include <io/OBJReader.h>
#include <io/Reader.h>
#include <tests/OwnFolder.h>
#include <tests/io/Dump.h>

using namespace rq::io;

namespace
{
struct Loaded
{
    explicit Loaded(std::string_view text, const std::string &name = "x.obj")
    {
        MOD_DetailHandle handle;
        good = readOBJ(text, name, handle, messages);
        detail = handle.read();
    }

    const MSH_Detail &operator*() const { return *detail.readLock(); }
    const MSH_Detail *operator->() const { return detail.readLock(); }

    bool good;
    Messages messages;
    MOD_ConstDetailHandle detail;
};

// "4 points, f 0 1 2, l 1 3, p 2": primitives with the points of their vertices.
std::string topology(const MSH_Detail &detail)
{
    std::string text = fmt::format("{} points", detail.pointCount());
    for (int64_t i = 0; i < detail.primitiveCount(); ++i)
    {
        const bool polygon = detail.typeOf(i) == ELM_PRIMITIVE_POLYGON;
        text += polygon ? detail.isClosed(i) ? ", f" : ", l" : detail.typeOf(i) == ELM_PRIMITIVE_PARTICLES ? ", p" : ", ?";
        const auto run = detail.vertexRun(i);
        for (int64_t v = 0; v < run.count; ++v)
            text += fmt::format(" {}", detail.vertexPoint(run.start + v));
    }
    return text;
}

// The owner and the meaning of each attribute.
const std::map<std::string, std::pair<ELM_Owner, int>> kAttributes = {
    {"P", {ELM_OWNER_POINT, ELM_TYPE_POINT}},           {"Cd", {ELM_OWNER_POINT, ELM_TYPE_COLOR}},
    {"uv", {ELM_OWNER_VERTEX, ELM_TYPE_TEXTURE}},       {"N", {ELM_OWNER_VERTEX, ELM_TYPE_NORMAL}},
    {"material", {ELM_OWNER_PRIMITIVE, ELM_TYPE_NONE}}, {"object", {ELM_OWNER_PRIMITIVE, ELM_TYPE_NONE}},
    {"smoothing", {ELM_OWNER_PRIMITIVE, ELM_TYPE_NONE}}};

// The values of an attribute: each tuple ends with a semicolon; "none" without it.
std::string values(const MSH_Detail &detail, const char *name)
{
    const auto [owner, type] = kAttributes.at(name);
    const ELM_Attribute *attribute = detail.find(owner, name);
    std::string text = attribute ? "" : "none";
    EXPECT_TRUE(!attribute || attribute->typeInfo() == type);
    for (int64_t i = 0; attribute && i < attribute->size(); ++i)
    {
        if (attribute->strings())
            text += fmt::format("{};", attribute->strings()->get(i).c_str());
        else if (const auto *numbers = attribute->pages<int32_t>())
            text += fmt::format("{};", numbers->value(i));
        else
        {
            for (int c = 0; c < attribute->tupleSize(); ++c)
                text += fmt::format("{}{:g}", c ? " " : "", attribute->pages<float>()->value(i, c));
            text += ';';
        }
    }
    return text;
}

const std::string kPoints = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";

const struct
{
    const char *what;
    std::string text;
    const char *topology;
} kTopologyCases[] = {
    {"no line end", kPoints + "f 1 2 3", "4 points, f 0 1 2"},
    {"faces, lines and points in the file's order", kPoints + "f 1 2 3\nl 1 4\np 2 3\np 1\nf 4 3 2 1",
     "4 points, f 0 1 2, l 0 3, p 1 2, p 0, f 3 2 1 0"},
    {"relative numbers count from where they stand", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf -3 -2 -1\nv 5 5 5\nf -1 -2 1",
     "4 points, f 0 1 2, f 3 2 0"},
    {"points after the face that uses them", "f 1 2 3\n" + kPoints, "4 points, f 0 1 2"},
    {"continued lines", "v 0 \\\n0 0\nv 1 0 0\\\r\n\r\nv 0 1 0\nf \\\n1 \\\r\n2\\\n 3", "3 points, f 0 1 2"},
    {"weights, colours and both", "v 0 0 0 1\nv 0 0 0 1 1 1\nv 0 0 0 1 1 1 1\np 3", "3 points, p 2"},
    {"slashes that nothing follows", kPoints + "f 1/ 2// 3/", "4 points, f 0 1 2"},
    {"tags of subdivision surfaces", kPoints + "f 1 2 3\nt crease 2/1/0 0 1 5.0\nt interpolateboundary 1/0/0 1",
     "4 points, f 0 1 2"},
};

TEST(OBJ, KeepsPointsAndPrimitivesInOrder)
{
    for (const auto &c : kTopologyCases)
    {
        SCOPED_TRACE(c.what);
        const Loaded loaded(c.text);
        EXPECT_TRUE(loaded.good);
        EXPECT_EQ(loaded.messages.toString(), "");
        EXPECT_EQ(topology(*loaded), c.topology);
    }
}

const struct
{
    const char *what;
    std::string text;
    const char *name, *values;
} kAttributeCases[] = {
    {"points without a colour are white", "v 0 0 0\nv 0 0 0 .5 .25 0\nv 0 0 0", "Cd", "1 1 1;0.5 0.25 0;1 1 1;"},
    {"uv by their own numbers", kPoints + "vt 1 2\nvt 3 4\nf 1/2 2/1 3/2", "uv", "3 4;1 2;3 4;"},
    {"corners without uv get zeros", kPoints + "vt 1 2\nf 1 2/1 3\nf 1/1 2 3", "uv", "0 0;1 2;0 0;1 2;0 0;0 0;"},
    {"three numbers somewhere", kPoints + "vt 1\nvt 1 2 3\nl 1/1 2/2", "uv", "1 0 0;1 2 3;"},
    {"relative uv", kPoints + "vt 1 2\nvt 3 4\nl 1/-1 2/-2\nvt 5 6\nl 1/-1 2", "uv", "3 4;1 2;5 6;0 0;"},
    {"normals behind uv", kPoints + "vt 7 7\nvn 0 0 1\nf 1/1/1 2/1/1 3/1", "N", "0 0 1;0 0 1;0 0 0;"},
    {"materials, blanks and all", kPoints + "p 1\nusemtl a b # 1 \np 2\nusemtl\np 3", "material", ";a b # 1;;"},
    {"objects", kPoints + "o one\np 1\no two\np 2\np 3", "object", "one;two;two;"},
    {"smoothing groups", kPoints + "p 1\ns 3\np 2\ns off\np 3\ns on\np 3\ns\np 1", "smoothing", "0;3;0;1;0;"},
};

TEST(OBJ, GivesAttributesToTheirOwners)
{
    for (const auto &c : kAttributeCases)
    {
        SCOPED_TRACE(c.what);
        const Loaded loaded(c.text);
        EXPECT_EQ(loaded.messages.toString(), "");
        EXPECT_EQ(values(*loaded, c.name), c.values);
    }
}

TEST(OBJ, PutsPrimitivesIntoEveryGroupOfTheLine)
{
    const Loaded loaded(kPoints + "p 1\ng a b # c\np 2\ng default\np 3\ng b empty\np 4\ng last\n");
    std::string text;
    const ELM_GroupDict &groups = loaded->groups(ELM_OWNER_PRIMITIVE);
    for (int64_t i = 0; i < groups.size(); ++i)
    {
        text += fmt::format("{}:", groups[i].name().c_str());
        for (int64_t p = 0; p < 4; ++p)
            text += groups[i].contains(p) ? fmt::format(" {}", p) : "";
        text += ';';
    }
    EXPECT_EQ(text, "a: 1;b: 1 3;empty: 3;last:;");
}

struct MessageCase
{
    std::string text;
    const char *messages;
};

const MessageCase kErrorCases[] = {
    {"v 1 2\nf 1", "x.obj:1:6: error: expected a number, found the end of the line"},
    {"# one\r\nv 1 b 3", "x.obj:2:5: error: expected a number, found \"b\""},
    {kPoints + "f 1 2 " + std::string(60, '7') + "x",
     "x.obj:5:7: error: expected a corner as point/uv/normal, found \"7777777777777777777777777777777777777777...\""},
    {"v 1 2 3 x", "x.obj:1:9: error: expected a number or the end of the line, found \"x\""},
    {kPoints + "f 1 2 0", "x.obj:5:7: error: expected a number from 1 up, or a relative one from -1 down, found \"0\""},
    {kPoints + "f 1 2 3///4", "x.obj:5:7: error: expected a corner as point/uv/normal, found \"3///4\""},
    {kPoints + "# f 9\nf 1 2 \\\n 99999999999999999999",
     "x.obj:7:2: error: expected the number of a point, of which the file has 4, found "
     "\"99999999999999999999\""},
    {kPoints + "vt 0 0\nl 1/1 2/-2", "x.obj:6:9: error: expected the number of a uv, of which the file has 1, found \"-2\""},
    {"s some", "x.obj:1:3: error: expected the number of a smoothing group or off, found \"some\""},
    {std::string("v 0 0 0\n\177E\0L", 12), "x.obj:2:1: error: expected a text, found \"\\x7fE\\x00L\""},
};

TEST(OBJ, SaysWhereARecordIsWrong)
{
    for (const MessageCase &c : kErrorCases)
    {
        const Loaded loaded(c.text);
        EXPECT_FALSE(loaded.good) << c.text;
        EXPECT_EQ(loaded.messages.toString(), c.messages + std::string("\n")) << c.text;
        EXPECT_EQ(loaded->pointCount(), 0) << "the detail is untouched";
    }
}

const MessageCase kWarningCases[] = {
    {kPoints + "f 1 2/-1 3/4",
     "x.obj:5:7: warning: expected the number of a uv, of which the file has 0, found \"-1\"; corners get none"},
    {"", "x.obj: warning: expected points, found none"},
    {kPoints + "f\nf 1\nf 1 2\nf 1 2 3",
     "x.obj:5:1: warning: expected three or more corners, found fewer; 3 such faces are kept"},
    {kPoints + "curv 1 2\nvp 1\\\n2\nend",
     "x.obj:5:1: warning: expected a known word, found \"curv\"; 3 lines are passed over"},
    {"v 0 0 0 0 0\nvn 0 0 1 0",
     "x.obj:1:12: warning: expected the end of the line, found more; what is too much on 2 lines is passed over"},
};

TEST(OBJ, WarnsOnceOfEachOddity)
{
    for (const MessageCase &c : kWarningCases)
    {
        const Loaded loaded(c.text);
        EXPECT_TRUE(loaded.good) << c.text;
        EXPECT_EQ(loaded.messages.toString(), c.messages + std::string("\n")) << c.text;
    }
}

const struct
{
    const char *what;
    std::string lines;  ///< of the file "rq a.mtl"
    const char *materials, *messages;
} kMaterialCases[] = {
    {"nothing", "", "", ""},
    {"colours, blanks and all", "newmtl a b\nKd 1 .5 0\nKa 1 1 1\nd .5\nnewmtl c\r\n Kd .25\n",
     R"({"a b":[1,0.5,0],"c":[0.25,0.25,0.25]})", ""},
    {"the first meaning of a name counts", "newmtl a\nnewmtl a\nKd 1 1 1\n", R"({"a":[0.8,0.8,0.8]})", ""},
    {"highlights, which must not be black, and roughness as it is",
     "newmtl a\nKd 1 1 1\nKs 0 0 0\nNs 9\nnewmtl b\nKd 1 1 1\nKs .5 .5 .5\nNs 30\nnewmtl c\nKd 1 1 1\nKs 1\nillum 1\n"
     "newmtl d\nKd 1 1 1\nKs 1\nPr .3\nnewmtl e\nKd 1 1 1\nPm 1\n",
     R"({"a":[1,1,1],"b":[1,1,1,0.5],"c":[1,1,1],"d":[1,1,1,0.3],"e":[1,1,1,1,1]})", ""},
    {"what cannot be read", "Kd 1 1 1\nnewmtl\nnewmtl a\nKd 1 x\nKd spectral a.rfl\nNs nan\nPr\nodd 1\nmap_Kd a.png\nbump b",
     R"({"a":[0.8,0.8,0.8]})",
     "rq a.mtl:1:1: warning: expected \"newmtl\", found \"Kd\"; 6 lines are passed over\n"
     "rq a.mtl:8:1: warning: expected a known word, found \"odd\"; 1 line is passed over\n"
     "rq a.mtl:9:1: warning: 2 pictures are passed over: materials have one colour each\n"},
};

TEST(OBJ, ReadsMaterialFilesBesideTheFile)
{
    const tests::OwnFolder own;
    const std::string &folder = own.path();
    for (const auto &c : kMaterialCases)
    {
        SCOPED_TRACE(c.what);
        std::ofstream(folder + "rq a.mtl") << c.lines;
        const Loaded loaded("v 0 0 0\nmtllib rq a.mtl\nmtllib .\\rq a.mtl", folder + "x.obj");
        const std::string dump = tests::dump(*loaded), name = "\ndetail materials ";
        const size_t at = dump.find(name);
        EXPECT_EQ(at == dump.npos ? "" : dump.substr(at + name.size()), c.materials);
        std::string messages = loaded.messages.toString();
        for (size_t path; (path = messages.find(folder)) != messages.npos;)
            messages.erase(path, folder.size());
        EXPECT_EQ(messages, c.messages);
    }
    for (const auto &[name, lines] :
         {std::pair(folder + "x.obj", "rq b.mtl"), {folder + "x.obj", "b.mtl rq"}, {"<stdin>", "a"}})
        EXPECT_NE(Loaded(std::string("mtllib ") + lines + "\nv 0 0 0", name).messages.toString().find("a material file"),
                  std::string::npos);
}

// A file of several blocks, with relative numbers, groups, and continued lines wherever a block may be cut.
std::string largeFile(int64_t quads)
{
    std::string text;
    for (int64_t i = 0; i < quads; ++i)
    {
        if (i % 1000 == 0)
            text += fmt::format("g group{}\r\n", i / 1000);
        text += fmt::format("v {} 0 0\\\r\n\r\nv {} 1 0\r\nv {} 1 1 # padding \\\r\nv {} 0 1\r\n", i, i, i, i);
        text += i % 2 ? "f -4 -3\\\r\n -2 -1\r\n" : fmt::format("f {} -3 -2 {}\r\n", 4 * i + 1, 4 * i + 4);
    }
    return text;
}

TEST(OBJ, ReadsBlocksAsOneFile)
{
    constexpr int64_t kQuads = 40000;
    const std::string text = largeFile(kQuads);
    ASSERT_GT(text.size(), size_t(3) << 20) << "three blocks at least";
    const Loaded loaded(text);
    ASSERT_EQ(loaded.messages.toString(), "");
    ASSERT_EQ(loaded->pointCount(), 4 * kQuads);
    ASSERT_EQ(loaded->primitiveCount(), kQuads);
    const float *positions = loaded->positions().contiguousData<float>();
    ASSERT_NE(positions, nullptr) << "positions are one block of memory";
    for (int64_t v = 0; v < 4 * kQuads; ++v)
    {
        ASSERT_EQ(loaded->vertexPoint(v), v);
        ASSERT_EQ(positions[3 * v], float(v / 4));
    }
    EXPECT_EQ(loaded->group(ELM_OWNER_PRIMITIVE, "group7")->count(), 1000);
    EXPECT_TRUE(loaded->group(ELM_OWNER_PRIMITIVE, "group7")->contains(7001));

    const BAS_Threads::Limit limit(1);
    EXPECT_EQ(Loaded(text + "v x").messages.toString(),
              fmt::format("x.obj:{}:3: error: expected a number, found \"x\"\n", std::ranges::count(text, '\n') + 1));
}
}  // namespace
