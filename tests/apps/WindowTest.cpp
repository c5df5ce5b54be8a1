#include <utility>

#include <fmt/format.h>

#include <apps/viewport/window/keys.h>
#include <tests/apps/Program.h>
#include <tests/apps/VirtualDisplay.h>

using namespace tests;

namespace
{
constexpr int kWidth = 1000, kHeight = 700;
constexpr int kSidebar = 380, kTop = 36;

/// The real program in a window of a virtual display.
class WindowTest : public testing::Test
{
protected:
    void SetUp() override
    {
        std::filesystem::create_directories(folder_);
        display_ = VirtualDisplay::start(1400, 900);
        if (!display_)
            GTEST_SKIP() << "Xvfb or xdotool is not installed";
    }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    /// A block of a height, and its name in the title.
    void writeBlock(const std::string &name, double height) const
    {
        std::string text;
        for (int corner = 0; corner < 8; ++corner)
            text += fmt::format("v {} {} {}\n", corner & 1, corner & 2 ? height : 0.0, corner >> 2);
        replaceFile(folder_ + name, text + "f 1 3 4 2\nf 5 6 8 7\nf 1 2 6 5\nf 3 7 8 4\nf 1 5 7 3\nf 2 4 8 6\n");
    }

    void open(const std::vector<std::string> &files)
    {
        std::vector<std::string> words = {RQ_PROGRAM, "view", "--size", fmt::format("{}x{}", kWidth, kHeight)};
        words.insert(words.end(), files.begin(), files.end());
        program_ = std::make_unique<RunningProgram>(words, [this] {
            setenv("DISPLAY", display_->name().c_str(), 1);
            setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
            // The driver of a closed window leaks, and is no longer there to be recognised.
            setenv("LSAN_OPTIONS", "detect_leaks=0", 1);
            if (chdir(folder_.c_str()) != 0)
                _exit(126);
        });
    }

    /// The rectangle that shows the scene.
    static WindowPicture::Area view(const WindowPicture &picture, bool hasSidebar = true)
    {
        return {4, kTop + 4, picture.width - 8 - (hasSidebar ? kSidebar : 0), picture.height - kTop - 8};
    }

    bool hasTitle(const std::string &part)
    {
        return waitUntil([&] { return display_->title().find(part) != std::string::npos || !program_->isRunning(); }) &&
               program_->isRunning();
    }

    /// Wait until the scene covers a part of the view within bounds, and it is still.
    WindowPicture waitForCoverage(double least, double most, bool hasSidebar = true)
    {
        WindowPicture before, now;
        double coverage = -1.0;
        EXPECT_TRUE(waitUntil([&] {
            before = now;
            now = display_->picture();
            coverage = now.width > 0 ? now.coverage(view(now, hasSidebar)) : -1.0;
            return coverage >= least && coverage <= most && before.rgb == now.rgb;
        })) << "the scene covers "
            << coverage << " of the view, not " << least << " to " << most;
        return now;
    }

    /// Give input and wait until the view has changed by it.
    WindowPicture change(const std::string &input, const WindowPicture &before, bool hasSidebar = true)
    {
        display_->input(input);
        WindowPicture now;
        EXPECT_TRUE(waitUntil([&] {
            now = display_->picture();
            return now.difference(before, view(before, hasSidebar)) > 0.02;
        })) << input;
        return now;
    }

    const std::string folder_ = testFolder();
    std::unique_ptr<VirtualDisplay> display_;
    std::unique_ptr<RunningProgram> program_;
};

TEST_F(WindowTest, ObeysMouseAndKeys)
{
    writeBlock("block.obj", 1.0);
    open({"block.obj"});
    ASSERT_TRUE(hasTitle("block.obj"));
    const WindowPicture first = waitForCoverage(0.1, 0.7);

    // Turned until a side is seen from the front, and back, seen from nearer, framed again.
    change("mousemove 300 350 mousedown 1 mousemove 400 350 mouseup 1", first);
    change("mousemove 400 350 mousedown 1 mousemove 300 350 mouseup 1", display_->picture());
    display_->input("mousemove 300 350 click --repeat 3 4");
    waitForCoverage(1.3 * first.coverage(view(first)), 1.0);
    display_->input("key f");
    waitForCoverage(0.1, 0.7);

    // Lines alone cover little; so do faces without them cover much again.
    display_->input("key w key x");
    waitForCoverage(0.002, 0.1);
    display_->input("key w key x");
    waitForCoverage(0.1, 0.7);
    change("key question", display_->picture());
    display_->input("key question");
    waitForCoverage(0.1, 0.7);

    display_->input("key Tab");
    EXPECT_TRUE(waitUntil([&] {
        const WindowPicture now = display_->picture();
        const double shift = now.coverage({kWidth / 2, kTop + 50, kWidth / 4, kHeight - 100});
        return shift > 0.05;
    })) << "without the panels the block is in the middle of the window";
    display_->resize(700, 500);
    EXPECT_TRUE(waitUntil([&] {
        const WindowPicture now = display_->picture();
        return now.width == 700 && now.coverage(view(now, false)) > 0.1 && now.coverage(view(now, false)) < 0.7;
    })) << "the view follows the window's size";

    display_->input("key F12");
    EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(folder_ + "rq-view-1.png"); }));
    display_->input("key q");
    EXPECT_TRUE(waitUntil([&] { return !program_->isRunning(); }));
    EXPECT_EQ(program_->exitCode(), 0);
}

TEST_F(WindowTest, FollowsFilesAndTakesDroppedOnes)
{
    writeBlock("block.obj", 1.0);
    writeBlock("other.obj", 3.0);
    open({"block.obj"});
    ASSERT_TRUE(hasTitle("block.obj"));
    const WindowPicture first = waitForCoverage(0.1, 0.7);

    writeBlock("block.obj", 0.2);
    WindowPicture flat = first;
    EXPECT_TRUE(waitUntil([&] {
        const WindowPicture before = std::exchange(flat, display_->picture());
        return flat.difference(first, view(first)) > 0.1 && before.rgb == flat.rgb;
    })) << "the file was written again";

    replaceFile(folder_ + "block.obj", "v 1 2\n");
    const WindowPicture::Area corner{10, kTop + 10, 300, 40};
    const WindowPicture::Colour before = flat.mean(corner);
    EXPECT_TRUE(waitUntil([&] {
        const WindowPicture::Colour message = display_->picture().mean(corner);
        return message.r - message.b > before.r - before.b + 0.01;
    })) << "the message is shown in red";
    const WindowPicture::Area middle{100, 250, 400, 300};
    EXPECT_LT(display_->picture().difference(flat, middle), 0.1) << "what was there stays";

    ASSERT_TRUE(display_->drop(folder_ + "other.obj"));
    EXPECT_TRUE(hasTitle("other.obj"));
    waitForCoverage(0.03, 0.7);
}

TEST_F(WindowTest, PlaysASequence)
{
    for (int frame = 1; frame <= 3; ++frame)
        writeBlock(fmt::format("f.{}.obj", frame), frame);
    open({"f.#.obj"});
    ASSERT_TRUE(hasTitle("f.1.obj (1/3)"));
    waitForCoverage(0.05, 0.7);
    display_->input("key Right");
    EXPECT_TRUE(hasTitle("(2/3)"));
    display_->input("key Left key Left");
    EXPECT_TRUE(hasTitle("(3/3)"));
    display_->input("key space");
    for (const char *frame : {"(1/3)", "(2/3)", "(3/3)", "(1/3)"})
        EXPECT_TRUE(hasTitle(frame)) << frame;
}

TEST(ViewportKeys, AreThoseOfTheManual)
{
    const std::string manual = contentOf(RQ_DOCS "/viewport.md");
    EXPECT_NE(manual.find(rq::viewport::keysAsMarkdown()), std::string::npos) << "docs/viewport.md is to have\n"
                                                                              << rq::viewport::keysAsMarkdown();
}
}  // namespace
