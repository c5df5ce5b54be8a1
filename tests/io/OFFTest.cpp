#include <gtest/gtest.h>

#include <host/mod/DetailHandle.h>
#include <io/OFFReader.h>
#include <tests/io/Dump.h>

using namespace rq::io;

namespace
{
std::string load(const std::string &text)
{
    MOD_DetailHandle handle;
    Messages messages;
    readOFF(text, "x.off", handle, messages);
    return messages.toString() + (messages.errors() ? "" : tests::dump(*handle.read().readLock()));
}

constexpr const char *kDump = "f 0 1 2,\npoint P real32: 0 0 0; 1 0 0; 0 1 0;";
const std::string kThree = "0 0 0\n1 0 0\n0 1 0\n";

const std::pair<std::string, std::string> kCases[] = {
    {"OFF\n3 1 0\n" + kThree + "3 0 1 2", kDump},
    {"# made by hand\n\n  OFF3 1 # no edges\n\n" + kThree + "#\n3 0 1 2 # the face\n", kDump},
    {"3 1 0\n" + kThree + "3 0 1 2", kDump},
    {"OFF 3 1 3\r\n0 0 0\r\n1 0 0\r\n0 1 0\r\n3 0 1 2\r\n", kDump},
    {"4OFF 3 1 3\n0 0 0 1\n2 0 0 2\n0 .5 0 .5\n3 0 1 2\n", kDump},
    {"OFF\n3 2 0\n" + kThree + "3 0 1 2 255 0 51\n3 2 1 0",
     "f 0 1 2,f 2 1 0,\npoint P real32: 0 0 0; 1 0 0; 0 1 0;\nface Cd real32: 1 0 0.2; 1 1 1;"},
    {"STCN4OFF\n1 1 0\n2 4 6 2 0 0 1 1 .5 0 .25 7 8\n2 0 0 0 0 1 1",
     "x.off:4:1: warning: expected three or more corners, found fewer; 1 such face is kept\n"
     "f 0 0,\npoint P real32: 1 2 3;\npoint N real32: 0 0 1;\npoint uv real32: 7 8;\npoint Cd real32: 1 0.5 0;\n"
     "point Alpha real32: 0.25;\nface Cd real32: 0 0 1;\nface Alpha real32: 1;"},
    {"COFF\n1 0 0\n0 0 0 51 0 255 9", "\npoint P real32: 0 0 0;\npoint Cd real32: 0.2 0 1;\npoint Alpha real32: 0.0352941;"},
    {"OFF\n3 1 0\n" + kThree + "3 0 1 2 7\n9\n",
     std::string(
         "x.off:6:1: warning: expected three or four numbers of a colour, found fewer; 1 such colour is passed over\n"
         "x.off:7:1: warning: expected the end of the file, found more; 1 line is passed over\n") +
         kDump},
    {"", "x.off:1:1: error: expected \"OFF\", found the end of the file\n"},
    {"OFF", "x.off:1:4: error: expected the numbers of points and faces, found the end of the file\n"},
    {"OFF BINARY\n", "x.off:1:5: error: expected the number of points, found \"BINARY\"\n"},
    {"OFF 900000000000000000 900000000000000000\n0 0 0",
     "x.off:1:5: error: expected a line for each of 900000000000000000 points and 900000000000000000 faces, found 1 "
     "lines\n"},
    {"OFF 1 1\n0 0\n3 0 0 0", "x.off:2:4: error: expected a number, found the end of the line\n"},
    {"OFF 1 1\n0 0 0\n3 0 0 1", "x.off:3:7: error: expected the number of a point, of which the file has 1, found \"1\"\n"},
    {"OFF 1 1\n0 0 0\n3 0 0 0 x", "x.off:3:9: error: expected a number or the end of the line, found \"x\"\n"},
};

TEST(OFF, ReadsEveryKindOrSaysWhatIsWrong)
{
    for (const auto &[text, expected] : kCases)
        EXPECT_EQ(load(text), expected) << text;
}
}  // namespace
