#include <gtest/gtest.h>

#include <host/mod/DetailHandle.h>
#include <io/SWCReader.h>
#include <io/XYZReader.h>
#include <tests/io/Dump.h>

using namespace rq::io;

namespace
{
struct Case
{
    const char *text;
    const char *expected;  ///< messages, and what there is to see when it was read
};

const Case kCases[] = {
    {"# nothing\n", "x:2:1: error: expected the coordinates of a point, found the end of the file\n"},
    {"0\n", "\npoint P real64:"},
    {"1 2 3\n\n# between\n4 .5 nan\n", "\npoint P real64: 1 2 3; 4 0.5 nan;"},
    {"2\n0 0 0 7\n1 1 1 8\n", "\npoint P real64: 0 0 0; 1 1 1;\npoint intensity real32: 7; 8;"},
    {"0 0 0 255 0 51\n", "\npoint P real64: 0 0 0;\npoint Cd real32: 1 0 0.2;"},
    {"0 0 0 -3 0.5 0 1", "\npoint P real64: 0 0 0;\npoint Cd real32: 0.5 0 1;\npoint intensity real32: -3;"},
    {"0 0 0 0 1 0 1 1 1\n", "\npoint P real64: 0 0 0;\npoint N real32: 0 1 0;\npoint Cd real32: 1 1 1;"},
    {"1\n0 0 0\n1 1 1 1\n",
     "x:3:1: warning: expected the end of the file, found more; 1 line is passed over\n\npoint P real64: 0 0 0;"},
    {"3\n0 0 0\n", "x:1:1: error: expected 3 points, found 1 lines\n"},
    {"0 0 0\n0 0\n", "x:2:4: error: expected a number, found the end of the line\n"},
    {"0 0 0 1\n0 0 0 x\n", "x:2:7: error: expected a number, found \"x\"\n"},
};

// A root with two chains, the second of which forks; lines in any order.
const Case kTrees[] = {
    {"", "x: warning: expected samples, found none\n\npoint P real32:\npoint width real32:\npoint kind int32:"},
    {"1 1 0 0 0 .5 -1\n", "\npoint P real32: 0 0 0;\npoint width real32: 1;\npoint kind int32: 1;"},
    {"9 3 5 0 0 1 8\n1 1 0 0 0 1 -1\n2 2 1 0 0 1 1 # end\n3 3 2 0 0 1 1\n8 3 3 0 0 1 3\n4 3 4 0 0 1 8\n",
     "f 4 0,f 1 2,f 1 3 4,f 4 5,\npoint P real32: 5 0 0; 0 0 0; 1 0 0; 2 0 0; 3 0 0; 4 0 0;"
     "\npoint width real32: 2; 2; 2; 2; 2; 2;\npoint kind int32: 3; 1; 2; 3; 3; 3;"},
    {"1 1 0 0 0 1 -1\n1 1 0 0 0 1 -1\n", "x:2:1: error: expected a number that no other sample has, found 1\n"},
    {"1 1 0 0 0 1 7\n", "x:1:1: error: expected a sample that continues one of the file, found one that continues 7\n"},
    {"1 1 0 0 0 1 2\n2 1 0 0 0 1 1\n3 1 0 0 0 1 1\n",
     "x:1:1: error: expected a sample that begins at a root, found one of a ring\n"},
    {"1 1 0 0 0 1\n", "x:1:12: error: expected the number of the sample before, or -1, found the end of the line\n"},
};

void expectReading(decltype(&readXYZ) read, const Case &c)
{
    SCOPED_TRACE(c.text);
    MOD_DetailHandle detail;
    Messages messages;
    const bool good = read(c.text, "x", detail, messages);
    EXPECT_EQ(good, messages.errors() == 0);
    EXPECT_EQ(messages.toString() + (good ? tests::dump(*detail.read().readLock()) : ""), c.expected);
}

TEST(SWCReader, ReadsTreesAsChains)
{
    for (const Case &c : kTrees)
        expectReading(readSWC, c);
}

TEST(XYZReader, ReadsPointsWithWhatFollowsThem)
{
    for (const Case &c : kCases)
        expectReading(readXYZ, c);
}
}  // namespace
