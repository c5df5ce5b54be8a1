#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <sstream>

#include <host/bas/Parallel.h>
#include <host/mod/DetailHandle.h>
#include <io/PLYReader.h>
#include <tests/io/Dump.h>

using namespace rq::io;

namespace
{
struct Loaded
{
    explicit Loaded(const std::string &text)
    {
        MOD_DetailHandle handle;
        good = readPLY(text, "x.ply", handle, messages);
        detail = handle.read();
        content = tests::dump(*detail.readLock());
    }

    bool good;
    Messages messages;
    MOD_ConstDetailHandle detail;
    std::string content;
};

void appendBytes(std::string &to, const std::string &type, double number, bool swapped)
{
    const auto append = [&](auto value) {
        std::string bytes(sizeof(value), '\0');
        std::memcpy(bytes.data(), &value, sizeof(value));
        if (swapped)
            std::reverse(bytes.begin(), bytes.end());
        to += bytes;
    };
    if (type == "char" || type == "uchar")
        append(uint8_t(int64_t(number)));
    else if (type == "short" || type == "ushort")
        append(uint16_t(int64_t(number)));
    else if (type == "int" || type == "uint")
        append(uint32_t(int64_t(number)));
    else if (type == "float")
        append(float(number));
    else
        append(number);
}

// The same file in binary.
std::string encode(const std::string &text, bool bigEndian)
{
    std::istringstream in(text);
    std::string header, body;
    std::vector<std::pair<int64_t, std::vector<std::pair<std::string, std::string>>>> elements;  // counts and types
    for (std::string line; std::getline(in, line) && line != "end_header";)
    {
        std::istringstream words(line);
        std::string keyword, type, countType;
        words >> keyword >> type;
        header +=
            (keyword == "format" ? bigEndian ? "format binary_big_endian 1.0" : "format binary_little_endian 1.0" : line) +
            '\n';
        if (keyword == "element")
            words >> elements.emplace_back().first;
        if (type == "list")
            words >> countType >> type;
        if (keyword == "property")
            elements.back().second.emplace_back(countType, type);
    }
    double number = 0;
    for (const auto &[count, properties] : elements)
        for (int64_t i = 0; i < count && in; ++i)
            for (const auto &[countType, type] : properties)
            {
                double items = 1;
                if (!countType.empty() && in >> items)
                    appendBytes(body, countType, items, bigEndian);
                for (; items > 0 && in >> number; --items)
                    appendBytes(body, type, number, bigEndian);
            }
    return header + "end_header\n" + body;
}

const std::string kXYZ = "property float x\nproperty float y\nproperty float z\n";
const std::string kCorners = "property list uchar int vertex_indices\n";

std::string file(const std::string &elements, const std::string &body)
{
    return "ply\nformat ascii 1.0\n" + elements + "end_header\n" + body;
}

const struct
{
    const char *what;
    std::string text, content;
} kCases[] = {
    {"nothing", file("", ""), "\npoint P real32:"},
    {"faces of one size before points",
     file("element face 2\nproperty list uchar uint vertex_index\nelement vertex 3\n" + kXYZ,
          "3 0 1 2\n3 2 1 0\n0 0 0\n1 0 0\n0 1 0\n"),
     "f 0 1 2,f 2 1 0,\npoint P real32: 0 0 0; 1 0 0; 0 1 0;"},
    {"faces of several sizes among single values",
     file("element vertex 4\n" + kXYZ + "element face 3\nproperty short id\n" + kCorners + "property double area\n",
          "0 0 0\n1 0 0\n1 1 0\n0 1 0\n-5 4 0 1 2 3 .5\n6 0 0\n7 3 3 2 1 -1.5\n"),
     "f 0 1 2 3,f,f 3 2 1,\npoint P real32: 0 0 0; 1 0 0; 1 1 0; 0 1 0;\nface id int16: -5; 6; 7;\nface area real64: 0.5; "
     "0; -1.5;"},
    {"storages that hold what the types hold",
     file("element vertex 1\nproperty uchar a\nproperty double x\nproperty double y\nproperty double z\nproperty char b\n"
          "property short c\nproperty ushort d\nproperty int e\nproperty uint f\n",
          "255 1 2 3 -128 -32768 65535 -7 4294967295\n"),
     "\npoint P real64: 1 2 3;\npoint a uint8: 255;\npoint b int8: -128;\npoint c int16: -32768;\npoint d int32: 65535;\n"
     "point e int32: -7;\npoint f int64: 4.29497e+09;"},
    {"whole numbers as positions",
     file("element vertex 1\nproperty int x\nproperty int y\nproperty int z\n", "1 -2 2000000001\n"),
     "\npoint P real64: 1 -2 2e+09;"},
    {"normals, colours and uv in any order",
     file("element vertex 2\nproperty ushort blue\nproperty uchar red\nproperty uchar green\nproperty float t\n" + kXYZ +
              "property float nx\nproperty float ny\nproperty float nz\nproperty float alpha\nproperty float s\n",
          "65535 0 51 2 0 0 0 0 0 1 .5 3\n0 255 0 0 1 1 1 0 1 0 1 4\n"),
     "\npoint P real32: 0 0 0; 1 1 1;\npoint Cd real32: 0 0.2 1; 1 0 0;\npoint N real32: 0 0 1; 0 1 0;\n"
     "point Alpha real32: 0.5; 1;\npoint uv real32: 3 2; 4 0;"},
    {"colours of faces; an alpha without colours is itself",
     file("element vertex 1\n" + kXYZ + "property uchar alpha\nelement face 1\n" + kCorners +
              "property uchar red\nproperty uchar green\nproperty uchar blue\n",
          "0 0 0 9\n3 0 0 0 255 0 255\n"),
     "f 0 0 0,\npoint P real32: 0 0 0;\npoint alpha uint8: 9;\nface Cd real32: 1 0 1;"},
    {"a property of a name that is taken",
     file("element vertex 1\n" + kXYZ + "property float nx\nproperty float ny\nproperty float nz\nproperty int N\n",
          "0 0 0 0 0 1 7\n"),
     "\npoint P real32: 0 0 0;\npoint N real32: 0 0 1;\npoint N_ int32: 7;"},
    {"strips turn round and begin anew; faces keep their rows",
     file("element vertex 5\n" + kXYZ + "element tristrips 1\nproperty list int int vertex_indices\nelement face 1\n" +
              kCorners + "property int id\n",
          "0 0 0\n1 0 0\n0 1 0\n1 1 0\n2 2 0\n9 0 1 2 3 -1 -1 4 3 2\n3 0 1 4 77\n"),
     "f 0 1 2,f 2 1 3,f 4 3 2,f 0 1 4,\npoint P real32: 0 0 0; 1 0 0; 0 1 0; 1 1 0; 2 2 0;\nface id int32: 0; 0; 0; 77;"},
    {"lists beside the corners",
     file("element vertex 2\n" + kXYZ +
              "property list uchar ushort near\nelement tristrips 1\n"
              "property list int int vertex_indices\nproperty list int int none\nelement face 3\n"
              "property list int uint ids\n" +
              kCorners + "property list uint double uv\nproperty int x\n",
          "0 0 0 2 7 65535\n1 0 0 0\n3 0 1 1 1 9\n1 4294967295 3 0 1 0 2 .5 -1 5\n0 3 1 1 1 0 6\n0 0 1 0 7\n"),
     "f 0 1 1,f 0 1 0,f 1 1 1,f,\npoint P real32: 0 0 0; 1 0 0;\npoint near int32: [ 7 65535 ] [ ]\n"
     "face ids int64: [ ] [ 4.29497e+09 ] [ ] [ ]\nface uv real64: [ ] [ 0.5 -1 ] [ ] [ 0 ]\n"
     "face x int32: 0; 5; 6; 7;"},
    {"lists of one length",
     file("element vertex 1\n" + kXYZ + "element face 2\n" + kCorners + "property list uchar char a\n",
          "0 0 0\n3 0 0 0 2 1 2\n3 0 0 0 2 -3 2\n"),
     "f 0 0 0,f 0 0 0,\npoint P real32: 0 0 0;\nface a int8: [ 1 2 ] [ -3 2 ]"},
};

TEST(PLY, ReadsTheSameFromAllForms)
{
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        for (const std::string &text : {c.text, encode(c.text, false), encode(c.text, true)})
        {
            const Loaded loaded(text);
            EXPECT_EQ(loaded.messages.errors(), 0) << loaded.messages.toString();
            EXPECT_EQ(loaded.content, c.content);
        }
    }
}

const std::string kThree = "0 0 0\n1 0 0\n0 1 0\n";
const std::string kTriangle = file("element vertex 3\n" + kXYZ + "element face 1\n" + kCorners, kThree);

const struct
{
    std::string text;
    const char *message;
} kMessages[] = {
    {"plx", "x.ply:1:1: error: expected \"ply\", found \"plx\""},
    {"ply\nelement vertex -1\n", "x.ply:2:16: error: expected the number of elements \"vertex\", found \"-1\""},
    {"ply\nformat ascii 1.0\nproperty int x", "x.ply:3:15: error: expected \"end_header\", found the end of the file"},
    {"ply\nproperty int x\n", "x.ply:2:1: error: expected an element before its properties, found \"property\""},
    {"ply\nformat asci 1.0\n",
     "x.ply:2:8: error: expected ascii, binary_little_endian or binary_big_endian, found \"asci\""},
    {file("element vertex 1\nproperty float x\nproperty float x\n", ""),
     "x.ply:5:16: error: expected a name that no other property of the element has, found \"x\""},
    {file("element vertex 1\nproperty float x\n", "1\n"),
     "x.ply:3:9: error: expected properties x, y and z of \"vertex\", found fewer"},
    {file("element vertex 1\n" + kXYZ + "element face 1\nproperty int n\n", "0 0 0\n1\n"),
     "x.ply:7:9: error: expected a list vertex_indices of whole numbers in \"face\", found none"},
    {file("element vertex 999999999999999999\n" + kXYZ, "0 0 0\n"),
     "x.ply:9:1: error: expected 999999999999999999 lines of \"vertex\", found 1"},
    {encode(file("element vertex 999999999999999999\n" + kXYZ, "0 0 0\n"), false),
     "x.ply:@144: error: expected 999999999999999999 records of \"vertex\", found 1 before the end of the file"},
    {kTriangle + "2000000000 0\n",
     "x.ply:13:13: error: expected a whole number from -2147483648 to 2147483647, found the end of the line"},
    {kTriangle + "3 0 1 3\n", "x.ply:13:7: error: expected the number of a point, of which the file has 3, found 3"},
    {encode(kTriangle + "3 0 4000 -1\n", false),
     "x.ply:@210: error: expected the number of a point, of which the file has 3, found 4000"},
    {kTriangle + "3 0 x 1\n", "x.ply:13:5: error: expected a whole number from -2147483648 to 2147483647, found \"x\""},
    {kTriangle + "2 0 1 7\n\n4\n",
     "x.ply:13:1: warning: expected three or more corners, found fewer; 1 such face is kept\n"
     "x.ply:13:7: warning: expected the end of the line, found more; what is too much on 1 line is passed over\n"
     "x.ply:15:1: warning: expected the end of the file, found more; 1 line is passed over"},
    {encode(kTriangle + "3 0 1 2\n", false) + "\n\n",
     "x.ply:@218: warning: expected the end of the file, found 2 bytes; what is too much is passed over"},
    {file("Made by hand\nelement vertex 1\n" + kXYZ + "element edge 1\nproperty int vertex1\n", "0 0 0\n1\n"),
     "x.ply:3:1: warning: expected a known word, found \"Made\"; 1 line is passed over\n"
     "x.ply:8:9: warning: expected vertex, face or tristrips, found \"edge\"; 1 element is passed over"},
};

TEST(PLY, SaysWhatIsWrongAndWhere)
{
    for (const auto &c : kMessages)
        EXPECT_EQ(Loaded(c.text).messages.toString(), c.message + std::string("\n")) << c.text;
}

// Blocks and threads leave no trace.
TEST(PLY, ReadsBlocksAsOneFile)
{
    constexpr int kPoints = 60000;
    std::string body;
    for (int i = 0; i < kPoints; ++i)
        body += fmt::format("{} {}.5 -{}\n", i, i, i);
    const std::string points = fmt::format("element vertex {}\n", kPoints) + kXYZ;
    for (int i = 0; i < kPoints; ++i)
        body += i % 5000 == 4999 ? fmt::format("4 {} 0 1 2 {}\n", i, i) : fmt::format("3 {} 0 1 {}\n", i, i);
    const std::string text = file(points + fmt::format("element face {}\n", kPoints) + kCorners + "property int id\n", body);
    const Loaded whole(text);
    ASSERT_EQ(whole.messages.toString(), "");
    const MSH_Detail &detail = *whole.detail.readLock();
    ASSERT_EQ(detail.vertexCount(), 3 * kPoints + kPoints / 5000);
    for (int i = 0; i < kPoints; ++i)
    {
        ASSERT_EQ(detail.vertexPoint(detail.vertexRun(i).start), i);
        ASSERT_EQ(detail.find(ELM_OWNER_PRIMITIVE, "id")->pages<int32_t>()->value(i), i);
        ASSERT_EQ(detail.positions().pages<float>()->value(i, 1), float(i) + 0.5f);
    }
    EXPECT_EQ(Loaded(encode(text, true)).content, whole.content);
    const BAS_Threads::Limit limit(1);
    EXPECT_EQ(Loaded(text).content, whole.content);
    EXPECT_EQ(Loaded(encode(text, false)).content, whole.content);
}

// Positions stay in the owner's memory where they are packed and aligned there, until the last snapshot goes.
TEST(PLY, LeavesPackedPositionsWhereTheyAre)
{
    int64_t found = 0;
    for (const size_t padding : {0, 1, 2, 3})
    {
        const std::string comment = "comment " + std::string(padding, '-') + "\n";
        const auto owner = std::make_shared<const std::string>(encode(
            file(comment + "element vertex 3\n" + kXYZ + "element face 1\n" + kCorners, kThree + "3 0 1 2\n"), false));
        const char *body = owner->data() + owner->find("end_header\n") + 11;
        const bool aligned = uintptr_t(body) % alignof(float) == 0;
        found += aligned;
        MOD_DetailHandle handle;
        Messages messages;
        ASSERT_TRUE(readPLY(*owner, "x.ply", handle, messages, owner));
        EXPECT_EQ(tests::dump(*handle.read().readLock()), "f 0 1 2,\npoint P real32: 0 0 0; 1 0 0; 0 1 0;");
        const void *positions = handle.read().readLock()->positions().contiguousData();
        EXPECT_EQ(positions == body, aligned);
        EXPECT_EQ(owner.use_count() > 1, aligned);
        handle = MOD_DetailHandle();
        EXPECT_EQ(owner.use_count(), 1);
    }
    EXPECT_EQ(found, 1);
}
}  // namespace
