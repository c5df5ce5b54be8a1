#include <tests/apps/Program.h>

using namespace tests;

TEST_F(Program, SubdividesMeshesByTheirTags)
{
    // Two quads side by side, the second a hole, and a face that no surface has.
    const std::string quads = "v 0 0 0\nv 1 0 0\nv 2 0 0\nv 0 1 0\nv 1 1 0\nv 2 1 0\nf 1 2 5 4\nf 2 3 6 5\n";
    std::ofstream(testFolder() + "hole.obj") << quads << "t hole 1/0/0 1\n";
    std::ofstream(testFolder() + "torn.obj") << quads << "f 1 2\n";
    std::ofstream(testFolder() + "odd.obj") << quads << "t hole 2/0/0 1\n";

    const Outcome whole("info --json --subdivide 2 @hole.obj");
    EXPECT_EQ(whole.code, 0);
    EXPECT_NE(whole.out.find("\"faces\": 16"), std::string::npos) << whole.out;
    EXPECT_EQ(whole.error, "");
    const Outcome torn("info --json --subdivide 2 @torn.obj");
    EXPECT_EQ(torn.code, 0);
    EXPECT_NE(torn.out.find("\"faces\": 3"), std::string::npos) << torn.out;
    EXPECT_NE(torn.error.find("torn.obj: warning: face 2 has 2 corners"), std::string::npos) << torn.error;
    const Outcome odd("info -p polys_as_subdivision=1 @odd.obj");
    EXPECT_NE(odd.out.find("SubdivisionMesh"), std::string::npos) << odd.out;
    EXPECT_NE(odd.error.find("odd.obj:9:"), std::string::npos) << odd.error;
    EXPECT_EQ(Outcome("info --subdivide 11 @hole.obj").code, 1);
}
