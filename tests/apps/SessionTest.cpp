#include <chrono>
#include <functional>

#include <fmt/format.h>

#include <apps/viewport/Sequence.h>
#include <apps/viewport/Session.h>
#include <rq/surface/PrimPolygonMesh.h>
#include <tests/apps/Program.h>

using namespace rq::viewport;

namespace
{
/// Files of a test's own, and a session's loop.
class SessionTest : public testing::Test
{
protected:
    void SetUp() override { std::filesystem::create_directories(folder_); }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string path(const std::string &name) const { return folder_ + name; }
    void write(const std::string &name, const std::string &text) const { tests::replaceFile(path(name), text); }

    /// A square of two triangles, or with `quad` of one face, lifted to a height.
    void writeSquare(const std::string &name, double height, bool quad = true) const
    {
        write(name, fmt::format("v 0 0 {0}\nv 1 0 {0}\nv 1 1 {0}\nv 0 1 {0}\n{1}", height,
                                quad ? "f 1 2 3 4\n" : "f 1 2 3\nf 1 3 4\n"));
    }

    /// Turn the loop until a condition holds; null, and a failure, when it never does.
    static ResultHandle waitFor(Session &session, const std::function<bool(const SessionResult *)> &condition)
    {
        using Clock = std::chrono::steady_clock;
        ResultHandle newest;
        for (const auto end = Clock::now() + std::chrono::seconds(120); Clock::now() < end;)
        {
            session.tick(0.01);
            if (const ResultHandle result = session.takeResult())
                newest = result;
            if (condition(newest.get()))
                return newest;
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        ADD_FAILURE() << "never came; " << session.status().error;
        return nullptr;
    }
    static ResultHandle waitForResult(Session &session)
    {
        return waitFor(session, [](const SessionResult *result) { return result != nullptr; });
    }
    static void waitForError(Session &session, const std::string &part)
    {
        waitFor(session, [&](const SessionResult *) { return session.status().error.find(part) != std::string::npos; });
    }

    static const RQ_PrimPolygonMesh *meshOf(const ResultHandle &result)
    {
        return result && !result->emitted.empty()
                   ? dynamic_cast<const RQ_PrimPolygonMesh *>(result->emitted.front().primitive.get())
                   : nullptr;
    }
    static double heightOf(const ResultHandle &result)
    {
        const RQ_PrimPolygonMesh *mesh = meshOf(result);
        return mesh ? mesh->getShared()->get("P")->getF64(0, 2) : -1.0;
    }

private:
    const std::string folder_ = tests::testFolder();
};

TEST_F(SessionTest, FindsTheFilesOfASequence)
{
    for (const char *name : {"f.0002.obj", "f.0010.obj", "f.0001.obj", "f.10000.obj", "f.00011.obj", "f.12.obj",
                             "f.000a.obj", "f.0003.ply", "g.0001.obj"})
        write(name, "");
    const auto namesOf = [this](const char *pattern) {
        std::string names;
        for (const std::string &file : sequenceFiles(path(pattern)))
            names += file.substr(path("").size()) + " ";
        return names;
    };
    EXPECT_EQ(namesOf("f.####.obj"), "f.0001.obj f.0002.obj f.0010.obj f.10000.obj ");
    EXPECT_EQ(namesOf("f.##.obj"), "f.12.obj f.10000.obj ");
    for (const char *pattern : {"f.#.obj.#", "f.obj", "none.####.obj", "nowhere/f.####.obj"})
        EXPECT_EQ(namesOf(pattern), "") << pattern;
}

TEST(Player, ShowsEveryFrameInTurn)
{
    Player player;
    player.setPlaying(true);
    EXPECT_FALSE(player.isPlaying()) << "there is but one frame";
    player.reset(3);
    player.setRate(8.0);
    player.setPlaying(true);
    std::string shown;
    for (int turn = 0; turn < 12; ++turn)
    {
        player.advance(0.0625, turn != 5 && turn != 7);
        shown += std::to_string(player.frame());
    }
    EXPECT_EQ(shown, "011222001220") << "one that is not ready in time is waited for";
    player.step(-1);
    EXPECT_EQ(player.frame(), 2);
    EXPECT_FALSE(player.isPlaying());
    player.setLoops(false);
    player.setPlaying(true);
    player.advance(1.0, true);
    EXPECT_TRUE(player.frame() == 2 && !player.isPlaying()) << "the end is the end";
    player.togglePlaying();
    EXPECT_EQ(player.frame(), 0) << "and played again from the start";
}

TEST_F(SessionTest, FollowsAFileAndKeepsWhatItHadOfAWrongOne)
{
    writeSquare("a.obj", 1.0);
    Session session;
    session.open({path("a.obj")});
    ResultHandle result = waitForResult(session);
    EXPECT_EQ(heightOf(result), 1.0);
    ASSERT_TRUE(result && result->scene);

    // Written in place, as most programs do; what is read of it meanwhile is an error or nothing.
    std::ofstream(path("a.obj")) << "v 0 0\n";
    waitForError(session, "a.obj:1:6: error: ");
    EXPECT_FALSE(session.takeResult());

    writeSquare("a.obj", 2.5);
    result = waitForResult(session);
    EXPECT_EQ(heightOf(result), 2.5);
    EXPECT_TRUE(session.status().error.empty());

    session.open({path("none.##.obj")});
    EXPECT_NE(session.status().error.find("none.##.obj: error: expected files with numbers"), std::string::npos);
    session.open({path("a.obj"), path("nowhere.obj")});
    waitForError(session, "nowhere.obj: error: cannot be read");
}

TEST_F(SessionTest, FollowsTheFilesThatAFileNames)
{
    const auto redOf = [](const SessionResult *result) {
        std::vector<double> colour = {-1.0};
        const ELM_Attribute *told = result ? result->details[0].readLock()->find(ELM_OWNER_DETAIL, "materials") : nullptr;
        if (told)
            told->dicts()->get(0).options().import("m", colour);
        return colour[0];
    };
    write("a.obj", "mtllib a.mtl\nusemtl m\nv 0 0 0\nv 1 0 0\nv 1 1 0\nf 1 2 3\n");
    Session session;
    session.open({path("a.obj")});
    EXPECT_EQ(redOf(waitForResult(session).get()), -1.0) << "there are no materials yet";
    for (const double red : {0.25, 0.75})
    {
        write("a.mtl", fmt::format("newmtl m\nKd {} 0 0\n", red));
        waitFor(session, [&](const SessionResult *result) { return redOf(result) == red; });
    }

    write("b.gltf", R"({"asset": {"version": "2.0"}, "buffers": [{"byteLength": 36, "uri": "b.bin"}],
        "bufferViews": [{"buffer": 0, "byteLength": 36}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 3, "type": "VEC3"}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}}]}]})");
    session.open({path("b.gltf")});
    waitForError(session, "b.bin");
    for (const float height : {1.0f, 2.0f})
    {
        const std::vector<float> places = {0, 0, height, 1, 0, height, 0, 1, height};
        write("b.bin", std::string(reinterpret_cast<const char *>(places.data()), 36));
        waitFor(session, [&](const SessionResult *result) {
            return result && result->details[0].readLock()->positions().pages<float>()->value(0, 2) == height;
        });
    }
}

TEST_F(SessionTest, FramesOfOneTopologyCostTheirDataAlone)
{
    for (int frame = 0; frame < 4; ++frame)
        writeSquare(fmt::format("f.{:02}.obj", frame), frame, frame < 3);
    writeSquare("still.obj", 9.0);
    RQ_RefineParms parms;
    parms.setAddVertexNormals(true);
    std::string shown;
    {
        Session session;
        session.open({path("f.##.obj"), path("still.obj")});
        ASSERT_EQ(session.player().frames(), 4);
        session.player().setRate(1000.0);
        session.player().setPlaying(true);
        waitFor(session, [&](const SessionResult *result) {
            if (result && (shown.empty() || shown.back() != char('0' + result->frame)))
                shown += char('0' + result->frame);
            return shown.size() == 6;
        });
    }
    EXPECT_EQ(shown, "012301");

    Session session({.parms = parms, .preparation = {}, .change = {}, .notify = {}});
    session.open({path("f.##.obj"), path("still.obj")});
    const ResultHandle before = waitForResult(session);
    session.player().step(2);
    const ResultHandle after = waitForResult(session);
    ASSERT_TRUE(meshOf(before) && meshOf(after));
    EXPECT_EQ(heightOf(after), 2.0);
    EXPECT_EQ(after->cacheWork.walks, before->cacheWork.walks);
    EXPECT_GT(before->cacheWork.convexings, 0);
    EXPECT_EQ(after->cacheWork.convexings, before->cacheWork.convexings);
    EXPECT_EQ(meshOf(after)->getVertexList(), meshOf(before)->getVertexList());
    EXPECT_EQ(after->emitted[1].primitive->getPointAttributes()->get(0)->getDataId(),
              before->emitted[1].primitive->getPointAttributes()->get(0)->getDataId());

    session.player().seek(3);
    const ResultHandle other = waitForResult(session);
    ASSERT_TRUE(meshOf(other));
    EXPECT_EQ(meshOf(other)->getFaceCount(), 2);
    EXPECT_GT(other->cacheWork.walks, after->cacheWork.walks);
}

TEST_F(SessionTest, LevelOfDetailConcernsOnlyWhatSaysSo)
{
    write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
    write("quadrics.rqg.json", tests::contentOf(RQ_SCENES "/quadrics.rqg.json"));
    Session session;
    session.open({path("a.obj"), path("quadrics.rqg.json")});
    const ResultHandle before = waitForResult(session);
    RQ_RefineParms parms;
    parms.setLOD(3.0);
    session.setParms(parms);
    const ResultHandle finer = waitForResult(session);
    ASSERT_TRUE(before && finer);
    EXPECT_EQ(meshOf(before), meshOf(finer));
    EXPECT_GT(finer->primitivesRefined, 0);
    EXPECT_LT(finer->primitivesRefined, int64_t(finer->emitted.size()));
    EXPECT_EQ(finer->cacheWork.walks, before->cacheWork.walks);

    parms.setAddVertexNormals(true);
    session.setParms(parms);
    const ResultHandle anew = waitForResult(session);
    ASSERT_TRUE(anew && meshOf(anew));
    EXPECT_TRUE(meshOf(anew)->getVertexAttributes() && meshOf(anew)->getVertexAttributes()->hasName("N"));
    EXPECT_EQ(anew->primitivesRefined, int64_t(anew->emitted.size()));
}

TEST_F(SessionTest, StopsWhenItIsTold)
{
    std::string text;
    for (int i = 0; i < 100000; ++i)
        text += "v 0 0 0\nv 1 0 0\nv 0 1 0\nf -3 -2 -1\n";
    write("large.obj", text);
    {
        Session session;
        session.open({path("large.obj")});
    }  // destroyed at once, whatever it does
    Session session;
    session.open({path("large.obj")});
    session.cancel();
    waitFor(session, [&](const SessionResult *) { return !session.status().busy; });
    session.reload();
    const ResultHandle result = waitForResult(session);
    ASSERT_TRUE(meshOf(result));
    EXPECT_EQ(meshOf(result)->getFaceCount(), 100000);
}
}  // namespace
