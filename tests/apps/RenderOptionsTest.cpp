#include <csignal>

#include <fcntl.h>
#include <unistd.h>

#include <fmt/format.h>

#include <apps/viewport/GLContext.h>
#include <tests/apps/Picture.h>
#include <tests/apps/Program.h>
#include <tests/apps/RunningProgram.h>

using namespace tests;

TEST_F(Program, RefusesOptionsThatHaveNoMeaning)
{
    const std::pair<const char *, const char *> cases[] = {
        {"", "--output is required"},
        {"-o @x.jpg", "x.jpg: expected a file whose name ends with .png or .exr"},
        {"-o @x.png --size 96", "--size 96: expected WIDTHxHEIGHT"},
        {"-o @x.png --size 0x9", "--size 0x9: expected WIDTHxHEIGHT"},
        {"-o @x.png --samples 0", "--samples"},
        {"-o @x.png --adaptive 0", "--adaptive"},
        {"-o @x.png --adaptive much", "--adaptive"},
        {"-o @x.png --shade fog", "--shade fog: expected beauty, wire, normals"},
        {"-o @x.png --shade attribute:", "--shade attribute:: expected"},
        {"-o @x.png --up x", "--up"},
        {"-o @x.png --elevation 91", "--elevation"},
        {"-o @x.png --azimuth left", "--azimuth"},
        {"-o @x.png --fov 0", "--fov"},
        {"-o @x.png --fov nan", "--fov"},
        {"-o @x.png --eye 1,2", "--eye"},
        {"-o @x.png --look 1,2,z", "--look"},
        {"-o @x.png --motion 1", "--motion"},
        {"-o @x.png --motion 3 --next @tri.obj", "excludes"},
        {"-o @x.png --shutter 1", "--shutter 1: expected FROM:TO"},
        {"-o @x.png --shutter 0.6:0.5", "--shutter 0.6:0.5: expected FROM:TO"},
        {"-o @x.png --tolerance 2", "--tolerance"},
    };
    for (const auto &[options, message] : cases)
    {
        SCOPED_TRACE(options);
        const Outcome run(std::string("render @tri.obj ") + options);
        EXPECT_EQ(run.code, 1);
        EXPECT_NE(run.error.find(message), std::string::npos) << run.error;
    }
    EXPECT_FALSE(std::filesystem::exists(testFolder() + "x.png"));
}

TEST_F(Program, ComparesPicturesWithATolerance)
{
    const auto render = [](const std::string &options) { return Outcome("render @tri.obj --samples 4 " + options); };
    EXPECT_EQ(render("--size 48x32 -o @a.png").code, 0);
    EXPECT_EQ(render("--size 48x32 -o @a.exr").code, 0);
    EXPECT_EQ(contentOf(testFolder() + "a.exr").substr(0, 4), "\x76\x2f\x31\x01");
    const std::pair<const char *, int> cases[] = {{"--size 48x32 --compare @a.png --tolerance 0", 0},
                                                  {"--size 48x32 --compare @a.png --azimuth 180 --tolerance 0.5", 0},
                                                  {"--size 48x32 --compare @a.png --azimuth 80 --tolerance 0.02", 3},
                                                  {"--size 32x48 --compare @a.png", 3},
                                                  {"--size 48x32 --compare @a.exr", 2},
                                                  {"--size 48x32 --compare @nowhere.png", 2}};
    for (const auto &[options, code] : cases)
    {
        SCOPED_TRACE(options);
        const Outcome run = render(std::string("-o @b.png ") + options);
        EXPECT_EQ(run.code, code) << run.error;
        EXPECT_EQ(run.error.empty(), code == 0) << run.error;
    }
}

TEST_F(Program, RendersScenesWithCamerasMaterialsAndInstances)
{
    // A red square seen from straight above by the camera of the file, twice, as packed geometry.
    std::ofstream(testFolder() + "scene.rqg.json") << R"({"rqg": 1,
        "details": [{"primitives": [{"type": "polygon", "corners": 4, "points": [0, 1, 2, 3]}],
            "attributes": {"point": [{"name": "P", "storage": "real32", "size": 3, "values": [-1,0,1, 1,0,1, 1,0,-1, -1,0,-1]}],
                "primitive": [{"name": "material", "storage": "string", "values": ["brick"]}],
                "detail": [{"name": "materials", "storage": "dict", "values": [{"floatarray brick": [0.9, 0.1, 0.1]}]}]}}],
        "primitives": [{"type": "PackedGeometry", "points": [0, 1], "payload": {"detail": [0]}}],
        "attributes": {"point": [{"name": "P", "storage": "real32", "size": 3, "values": [-2,0,0, 2,0,0]}],
            "detail": [{"name": "camera", "storage": "dict",
                        "values": [{"floatarray eye": [0, 12, 0], "floatarray look": [0, 0, 0], "float fov": 40}]}]}})";
    const Outcome run("render @scene.rqg.json -o @scene.png --size 64x64 --samples 4 --no-ground --up y");
    EXPECT_EQ(run.code, 0) << run.error;
    EXPECT_EQ(run.error, "");
    const Picture picture(testFolder() + "scene.png");
    EXPECT_GT(picture.red(1, 4, 4, 6), 0.6);
    EXPECT_GT(picture.red(6, 4, 9, 6), 0.6);
    EXPECT_EQ(picture.red(0, 0, 10, 3), 0.0);
    EXPECT_LT(picture.red(4, 4, 6, 6), 0.5) << "there is a gap between them";

    // Instances, adaptive samples and motion in every layer.
    for (const char *threads : {"1", "2"})
        EXPECT_EQ(Outcome(std::string("render @scene.rqg.json -o @") + threads +
                          ".exr --size 40x30 --adaptive 0.02 --next " + "@scene.rqg.json --threads " + threads)
                      .code,
                  0);
    EXPECT_TRUE(contentOf(testFolder() + "1.exr") == contentOf(testFolder() + "2.exr"));
}

TEST_F(Program, ShowsTheScenesOfTheGallery)
{
    std::string error;
    std::vector<const char *> ways = {"render '{}' -o @scene.png --size 16x9 --samples 1 --shade wire"};
    if (rq::viewport::GLContext::create(error))
        ways.push_back("view '{}' --screenshot @scene.png --size 16x9");
    int scenes = 0;
    for (const auto &entry : std::filesystem::directory_iterator(RQ_SCENES))
    {
        for (const char *way : ways)
        {
            SCOPED_TRACE(fmt::format(fmt::runtime(way), entry.path().string()));
            const Outcome run(fmt::format(fmt::runtime(way), entry.path().string()));
            EXPECT_EQ(run.code, 0);
            EXPECT_EQ(run.error, "") << "nothing is left out";
        }
        ++scenes;
    }
    EXPECT_GE(scenes, 8);
}

TEST_F(Program, LeavesNoHalfPictureWhenInterrupted)
{
    const std::string log = testFolder() + "log";
    RunningProgram program({RQ_PROGRAM, "render", testFolder() + "tri.obj", "-o", testFolder() + "slow.png", "--size",
                            "4000x4000", "--samples", "4096"},
                           [&log] { dup2(open(log.c_str(), O_WRONLY | O_CREAT, 0666), STDERR_FILENO); });
    ASSERT_TRUE(waitUntil([&] { return program.catches(SIGINT) || !program.isRunning(); }));
    program.send(SIGINT);
    ASSERT_TRUE(waitUntil([&] { return !program.isRunning(); }));
    EXPECT_EQ(program.exitCode(), 3);
    EXPECT_NE(contentOf(log).find("slow.png: interrupted"), std::string::npos) << contentOf(log);
    for (const auto &entry : std::filesystem::directory_iterator(testFolder()))
        EXPECT_EQ(entry.path().filename().string().find("slow"), std::string::npos) << entry.path();
}
