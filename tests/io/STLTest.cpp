#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <map>
#include <random>

#include <host/bas/Parallel.h>
#include <host/mod/DetailHandle.h>
#include <io/STLReader.h>
#include <tests/io/Dump.h>

using namespace rq::io;

namespace
{
using Corner = std::array<float, 3>;

std::string load(const std::string &text, MOD_ConstDetailHandle *detail = nullptr)
{
    MOD_DetailHandle handle;
    Messages messages;
    readSTL(text, "x.stl", handle, messages);
    if (detail)
        *detail = handle.read();
    return messages.toString() + (messages.errors() ? "" : tests::dump(*handle.read().readLock()));
}

template <class T> void append(std::string &to, const T &value)
{
    to.append(reinterpret_cast<const char *>(&value), sizeof(value));
}

// Facets of three corners each, with a normal that tells their number.
std::string binary(const std::vector<Corner> &corners, uint16_t lastWord = 0)
{
    std::string text(80, ' ');
    append(text, uint32_t(corners.size() / 3));
    for (size_t i = 0; i < corners.size(); i += 3)
    {
        append(text, Corner{float(i / 3), 0, 1});
        for (size_t c = 0; c < 3; ++c)
            append(text, corners[i + c]);
        append(text, i + 3 == corners.size() ? lastWord : uint16_t(0));
    }
    return text;
}

std::string textual(const std::vector<Corner> &corners)
{
    std::string text = "solid of two\r\n";
    for (size_t i = 0; i < corners.size(); i += 3)
    {
        text += fmt::format(" FACET normal {} 0 1\r\n outer loop\r\n", i / 3);
        for (size_t c = 0; c < 3; ++c)
            text +=
                fmt::format("  vertex {:.9g} {:.9g} {:.9g}\r\n", corners[i + c][0], corners[i + c][1], corners[i + c][2]);
        text += " endloop\r\n endfacet\r\n";
    }
    return text + "endsolid";
}

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
const std::vector<Corner> kSquare = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 1, 0}, {0, 1, 0}, {-0.0f, 0, -0.0f}};
const std::string kSquareDump =
    "f 0 1 2,f 2 3 0,\npoint P real32: 0 0 0; 1 0 0; 1 1 0; 0 1 0;\nface N real32: 0 0 1; 1 0 1;";

TEST(STL, WeldsEqualCornersOfBothForms)
{
    EXPECT_EQ(load(binary(kSquare)), kSquareDump);
    EXPECT_EQ(load(textual(kSquare)), kSquareDump);
    EXPECT_EQ(load("solid" + binary(kSquare).substr(5)), kSquareDump) << "the size tells, not the first word";
    EXPECT_EQ(load(binary(kSquare, 40000)), kSquareDump + "\nface attribute int32: 0; 40000;");
    const std::vector<Corner> nowhere = {{kNaN, 0, 0}, {kNaN, 0, 0}, {0, 0, 0}};
    EXPECT_EQ(load(binary(nowhere)).substr(0, 8), "f 0 1 2,") << "nothing is at the place of a NaN";
}

TEST(STL, SaysWhatIsWrongAndWhere)
{
    const std::string text = textual(kSquare);
    EXPECT_EQ(load(""), "x.stl:@0: error: expected \"solid\" or a binary header of 84 bytes, found 0 bytes\n");
    EXPECT_EQ(load(binary(kSquare).substr(0, 150)),
              "x.stl:@134: error: expected 2 facets, found 1 before the end of the file\n");
    EXPECT_EQ(load(std::string(80, 'a') + "\xff\xff\xff\xff"),
              "x.stl:@84: error: expected 4294967295 facets, found 0 before the end of the file\n");
    EXPECT_EQ(load(text.substr(0, text.find("endfacet"))),
              "x.stl:8:2: error: expected \"endfacet\", found the end of the file\n");
    EXPECT_EQ(load("solid\nvertex"), "x.stl:2:1: error: expected \"facet\" or \"endsolid\", found \"vertex\"\n");
    EXPECT_EQ(load(binary(kSquare) + "x"),
              "x.stl:@184: warning: expected the end of the file, found 1 more byte; what is too much is passed over\n" +
                  kSquareDump);
}

// Points come in the order of their first corners, for any number of threads.
TEST(STL, WeldsLikeAMap)
{
    std::mt19937 random(7);
    std::vector<Corner> corners(3 * 50000);
    for (Corner &corner : corners)
        for (float &value : corner)
            value = float(int(random() % 40) - 20) / 3.0f;
    std::map<Corner, int32_t> points;
    std::vector<int32_t> expected;
    for (const Corner &corner : corners)
        expected.push_back(points.try_emplace(corner, int32_t(points.size())).first->second);

    for (const int threads : {1, 2, 8})
    {
        const BAS_Threads::Limit limit(threads);
        for (const std::string &text : {binary(corners), textual(corners)})
        {
            MOD_ConstDetailHandle detail;
            load(text, &detail);
            ASSERT_EQ(detail.readLock()->pointCount(), int64_t(points.size()));
            for (size_t i = 0; i < expected.size(); ++i)
                ASSERT_EQ(detail.readLock()->vertexPoint(int64_t(i)), expected[i]) << "corner " << i;
        }
    }
}
}  // namespace
