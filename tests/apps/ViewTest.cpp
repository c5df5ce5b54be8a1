#include <cstdlib>

#include <apps/viewport/GLContext.h>
#include <tests/apps/Program.h>

using namespace tests;

TEST_F(Program, ViewDrawsWithoutADisplay)
{
    std::string error;
    if (!rq::viewport::GLContext::create(error))
        GTEST_SKIP() << error;
    const struct
    {
        const char *arguments;
        int code;
        const char *told;  // on standard error
    } kCases[] = {
        {"view @mixed.obj --screenshot @a.png --size 64x48 --wire --points --normals --azimuth 90", 0, ""},
        {"view @mixed.obj --screenshot @b.png --size 64x48 --colour uniform:material --statistics", 0, "2 triangles"},
        {"view @mixed.obj --screenshot @c.png --subdivide 1 --no-faces --wire --shading flat", 0, ""},
        {"view @mixed.obj --screenshot @no.png --size 64", 1, "expected WIDTHxHEIGHT"},
        {"view @mixed.obj --screenshot @no.png --colour odd:Cd", 1, "expected vertex, point, uniform or detail"},
        {"view @mixed.obj --screenshot @no.png --colour P.x", 1, "component's number"},
        {"view @mixed.obj --screenshot @no.png --size 200000x1", 3, "pixels"},
        {"view @broken.obj --screenshot @no.png", 2, "broken.obj:1:"},
        {"view @mixed.obj --screenshot @missing/no.png", 3, "missing/no.png"},
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
}

TEST_F(Program, ViewTellsThatThereIsNoDriver)
{
    setenv("__EGL_VENDOR_LIBRARY_FILENAMES", "/nowhere", 1);
    const Outcome outcome("view @tri.obj --screenshot @a.png");
    unsetenv("__EGL_VENDOR_LIBRARY_FILENAMES");
    EXPECT_EQ(outcome.code, 3);
    EXPECT_NE(outcome.error.find("there is no OpenGL driver"), std::string::npos) << outcome.error;
}
