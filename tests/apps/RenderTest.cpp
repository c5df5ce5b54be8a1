#include <tests/apps/Picture.h>
#include <tests/apps/Program.h>

using namespace tests;

namespace
{
// A red square of side 3, from whose upper edge a notch of 1 by 2 is cut if its four corners are among those of the face.
Picture render(const std::string &face, const std::string &options)
{
    const std::string name = testFolder() + "square";
    std::ofstream file(name + ".obj");
    for (const char *corner : {"0 0", "3 0", "3 3", "2 3", "2 1", "1 1", "1 3", "0 3"})
        file << "v " << corner << " 0 1 0 0\n";
    file << "f " << face << "\n" << std::flush;
    const Outcome run("render @square.obj -o @square.png --up y " + options);
    EXPECT_EQ(run.code, 0) << run.error;
    EXPECT_EQ(run.out + run.error, "");
    return Picture(name + ".png");
}

TEST_F(Program, DrawsFacesWithTheirNotches)
{
    const Picture square = render("1 2 3 8", "--size 90x120 --samples 2 --no-ground");
    EXPECT_EQ(square.width, 90u);
    EXPECT_EQ(square.height, 120u);
    for (const char *options : {"--no-ground", "--no-ground --convex 3 --threads 1", ""})
        for (const char *face : {"1 2 3 4 5 6 7 8", "8 7 6 5 4 3 2 1", "5 6 7 8 1 2 3 4"})
        {
            SCOPED_TRACE(face + std::string(" ") + options);
            const Picture notched = render(face, "--size 90x120 --samples 2 " + std::string(options));
            EXPECT_NEAR(notched.red(0, 0, 10, 10) / square.red(0, 0, 10, 10), 7.0 / 9.0, 0.03);
            EXPECT_EQ(notched.red(4, 3, 5, 4), 0.0) << "the notch is open";
            EXPECT_GT(notched.red(4, 6, 6, 7), 0.9) << "the foot is filled";
        }
}
}  // namespace
