#include <cstdlib>

#include <apps/viewport/GLContext.h>
#include <tests/apps/Picture.h>
#include <tests/apps/Program.h>

using namespace tests;

TEST_F(Program, ViewDrawsWithoutADisplay)
{
    std::string error;
    if (!rq::viewport::GLContext::create(error))
        GTEST_SKIP() << error;
    std::filesystem::create_symlink("/dev/full", testFolder() + "full.png");
    const struct
    {
        const char *arguments;
        int code;
        const char *told;  // on standard error
    } kCases[] = {
        {"view @mixed.obj --screenshot @a.png --size 64x48 --wire --points --normals --azimuth 90", 0, ""},
        {"view @mixed.obj --screenshot @b.png --size 64x48 --colour uniform:material --statistics", 0, "2 triangles"},
        {"view @mixed.obj --screenshot @c.png --subdivide 1 --no-faces --wire --shading flat", 0, ""},
        {"view @mixed.obj --screenshot @d.png --colour height", 0, "nothing has an attribute \"height\""},
        {"view @mixed.obj --screenshot @no.png --size 64", 1, "expected WIDTHxHEIGHT"},
        {"view @mixed.obj --screenshot @no.png --colour odd:Cd", 1, "expected vertex, point, uniform or detail"},
        {"view @mixed.obj --screenshot @no.png --colour P.x", 1, "component's number"},
        {"view @mixed.obj --screenshot @no.png --size 200000x1", 3, "pixels"},
        {"view @broken.obj --screenshot @no.png", 2, "broken.obj:1:"},
        {"view @mixed.obj --screenshot @missing/no.png", 3, "missing/no.png"},
        {"view @mixed.obj --screenshot @full.png", 3, "full.png: cannot be written: No space left"},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.arguments);
        const Outcome outcome(c.arguments);
        EXPECT_EQ(outcome.code, c.code) << outcome.error;
        EXPECT_NE(outcome.error.find(c.told), std::string::npos) << outcome.error;
    }
    for (const char *name : {"a.png", "b.png", "c.png"})
        EXPECT_EQ(contentOf(testFolder() + name).substr(1, 3), "PNG");
    EXPECT_FALSE(std::filesystem::exists(testFolder() + "no.png"));
    EXPECT_TRUE(std::filesystem::exists(testFolder() + "full.png")) << "what cannot be written is not removed";
}

// A wall, red on its left and blue on its right, seen by both consumers.
TEST_F(Program, ShowsTheColoursOfMaterialFiles)
{
    const std::string points = "mtllib wall.mtl\nv -2 -1 0\nv 0 -1 0\nv 2 -1 0\nv -2 1 0\nv 0 1 0\nv 2 1 0\n";
    std::ofstream(testFolder() + "wall.mtl") << "newmtl brick\nKd .8 .1 .1\nKs 1\nNs 9\nnewmtl paint\nKd .1 .2 .8\n";
    std::ofstream(testFolder() + "wall.obj") << points << "usemtl brick\nf 1 2 5 4\nusemtl paint\nf 2 3 6 5\n";
    std::ofstream(testFolder() + "sets.obj") << points << "g brick\nf 1 2 5 4\ng paint\nf 2 3 6 5\n";
    for (const char *made : {"wall.glb", "again.obj"})
        EXPECT_EQ(Outcome(std::string("convert @wall.obj @") + made).code, 0);
    std::string error;
    const bool canDraw = rq::viewport::GLContext::create(error) != nullptr;
    for (const std::string file : {"@wall.obj", "@sets.obj -p facesetmode=1", "@wall.glb", "@again.obj"})
        for (const std::string program : {"render --samples 4 --no-ground -o @wall.png ", "view --screenshot @wall.png ",
                                          "view --colour material --screenshot @wall.png "})
        {
            SCOPED_TRACE(program + file);
            if (program[0] == 'v' && !canDraw)
                continue;
            const Outcome outcome(program + file + " --size 80x40 --azimuth 0 --elevation 0 --up y");
            ASSERT_EQ(outcome.code, 0) << outcome.error;
            EXPECT_EQ(outcome.error, "");
            const Picture picture(testFolder() + "wall.png");
            EXPECT_GT(picture.red(3, 4, 5, 6), 0.9);
            EXPECT_LT(picture.red(5, 4, 7, 6), 0.1);
        }
}

TEST_F(Program, ViewTellsThatThereIsNoDriver)
{
    setenv("__EGL_VENDOR_LIBRARY_FILENAMES", "/nowhere", 1);
    const Outcome outcome("view @tri.obj --screenshot @a.png");
    unsetenv("__EGL_VENDOR_LIBRARY_FILENAMES");
    EXPECT_EQ(outcome.code, 3);
    EXPECT_NE(outcome.error.find("there is no OpenGL driver"), std::string::npos) << outcome.error;
}
