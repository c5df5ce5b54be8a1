#include <cstring>
#include <numeric>

#include <tests/rq/bridge/Fixture.h>

namespace
{
// Triangles over 3000 points in the application's own buffers, and how often they were given back.
struct Application
{
    std::vector<float> positions = std::vector<float>(12000);
    std::vector<int32_t> corners = std::vector<int32_t>(30000);
    int released = 0;

    Application()
    {
        std::iota(positions.begin(), positions.end(), 0.0f);
        for (size_t i = 0; i < corners.size(); ++i)
            corners[i] = int32_t(i * 7 % 3000);
    }
    MOD_Edit::Release release()
    {
        return [this] { ++released; };
    }
    ELM_Attribute *lendPositions(MOD_Edit &edit, int64_t skip = 0, int64_t stride = 12, int64_t rows = 3000)
    {
        const char *memory = reinterpret_cast<const char *>(positions.data()) + skip;
        return edit.adopt(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT, memory, stride, rows, release());
    }
    bool lendTriangles(MOD_Edit &edit, ELM_Storage storage = ELM_STORAGE_INT32)
    {
        return edit.adoptPolygons(3, true, storage, corners.data(), 4, int64_t(corners.size()), release());
    }
};

TEST(LentMemory, IsWhatTheConsumerGetsAndIsGivenBackOnce)
{
    Application application;
    {
        MOD_DetailHandle detail;
        MOD_Edit edit(detail);
        ASSERT_TRUE(edit.appendPoints(3000) && application.lendPositions(edit) && application.lendTriangles(edit));
        EXPECT_EQ(edit.message(), "");
        RQ_PrimitiveHandle refined = tests::refine(edit.commit())[0];
        const auto &mesh = dynamic_cast<const RQ_PrimPolygonMesh &>(*refined);
        RQ_DataArrayHandle buffer;
        EXPECT_EQ(mesh.getPointAttributes()->get("P", 0)->getArray<float>(buffer), application.positions.data());
        EXPECT_EQ(mesh.getVertexList()->getArray<int32_t>(buffer), application.corners.data());

        // A write copies its page only, and the snapshot stays as it was; more points leave the pages where they are.
        MOD_Edit second(detail);
        ELM_Attribute *p = second.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT);
        p->pages<float>()->writableTuple(5)[0] = -1;
        ASSERT_TRUE(second.appendPoints(10));
        EXPECT_EQ(p->pages<float>()->tuple(1024), application.positions.data() + 3 * 1024);
        EXPECT_EQ(p->pages<float>()->value(2999, 2), 8999.0f);
        EXPECT_EQ(application.positions[15], 15.0f);
        second.commit();
        EXPECT_EQ(mesh.getPointAttributes()->get("P", 0)->getF32(5, 0), 15.0f);
        EXPECT_EQ(application.released, 0);
    }
    EXPECT_EQ(application.released, 2);
}

TEST(LentMemory, ThatCannotBeReadInPlaceIsCopiedAndRefusedWithAReason)
{
    using Step = std::function<bool(Application &, MOD_Edit &)>;
    const struct
    {
        Step step;
        bool good;
        const char *message;
    } cases[] = {
        {[](Application &a, MOD_Edit &e) { return a.lendPositions(e, 0, 16, 3000) != nullptr; }, true,
         "attribute \"P\" was copied: its rows are 16 bytes apart, not 12"},
        {[](Application &a, MOD_Edit &e) {
             std::memmove(reinterpret_cast<char *>(a.positions.data()) + 1, a.positions.data(), 35996);
             return a.lendPositions(e, 1, 12) != nullptr;
         },
         true, "attribute \"P\" was copied: it does not start at a multiple of 4"},
        {[](Application &a, MOD_Edit &e) { return a.lendPositions(e, 0, 12, 2999) != nullptr; }, false,
         "attribute \"P\" needs memory of 3000 rows, not 2999"},
        {[](Application &a, MOD_Edit &e) { return a.lendTriangles(e, ELM_STORAGE_REAL32); }, false,
         "the points of vertices need 32-bit or 64-bit integers"},
        {[](Application &a, MOD_Edit &e) {
             a.corners[7] = 3000;
             return a.lendTriangles(e);
         },
         false, "a vertex refers to point 3000, out of range [0, 3000)"},
        {[](Application &a, MOD_Edit &e) {
             return e.adoptVertexPoints(ELM_STORAGE_INT32, a.corners.data(), 4, 5, a.release());
         },
         false, "5 points are given for 3 vertices"},
        {[](Application &a, MOD_Edit &e) { return a.lendTriangles(e); }, true,
         "the vertex list was copied: the detail has vertices already"},
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.message);
        Application application;
        const MOD_DetailHandle detail;
        MOD_Edit edit(detail);
        const std::vector<int32_t> first = {0, 1, 2};
        ASSERT_TRUE(edit.appendPoints(3000) && edit.appendPolygons(3, first, true));
        EXPECT_EQ(c.step(application, edit), c.good);
        EXPECT_EQ(edit.message(), c.message);
        EXPECT_EQ(application.released, 1);
        if (c.good && edit.vertexCount() == 3)
        {
            // The second row starts where the stride says.
            EXPECT_EQ(edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->pages<float>()->value(1),
                      &c == &cases[0] ? 4.0f : 3.0f);
        }
        const MOD_ConstDetailHandle snapshot = edit.commit();
        EXPECT_EQ(snapshot.readLock()->vertexPoint(snapshot.readLock()->vertexCount() - 1), &c == &cases[6] ? 2993 : 2);
    }
}
}  // namespace
