#include <atomic>
#include <functional>
#include <numeric>
#include <thread>

#include <gtest/gtest.h>

#include <host/bas/MemoryTracker.h>
#include <host/mod/Edit.h>

namespace
{
float *writePositions(MOD_Edit &edit)
{
    return edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->writeAll<float>();
}

// Four points, two triangles and a polyline over three of them.
MOD_DetailHandle smallDetail()
{
    MOD_DetailHandle detail;
    MOD_Edit edit(detail);
    const std::vector<int32_t> points = {0, 1, 2, 2, 1, 0}, line = {0, 1};
    EXPECT_TRUE(edit.appendPoints(4));
    EXPECT_TRUE(edit.appendPolygons(3, points, true));
    EXPECT_TRUE(edit.appendPolygons(2, line, false));
    edit.commit();
    return detail;
}

TEST(Detail, BulkLoadedColumnsAreTheMemoryThatConsumersGet)
{
    MOD_DetailHandle detail;
    MOD_Edit edit(detail);
    ASSERT_TRUE(edit.appendPoints(5000));
    std::vector<int32_t> points(30000);
    for (size_t i = 0; i < points.size(); ++i)
        points[i] = int32_t(i * 7 % 5000);
    ASSERT_TRUE(edit.appendPolygons(3, std::span(points).first(15000), true));
    ASSERT_TRUE(edit.appendPolygons(std::vector<int32_t>(5000, 3), std::span(points).last(15000), true));
    float *positions = writePositions(edit);
    std::fill_n(positions, 15000, 1.5f);
    const MOD_ConstDetailHandle snapshot = edit.commit();
    const MSH_Detail &result = *snapshot.readLock();
    EXPECT_EQ(result.positions().contiguousData(), positions);
    ASSERT_NE(result.vertexPoint().contiguous32(), nullptr);
    EXPECT_TRUE(std::equal(points.begin(), points.end(), result.vertexPoint().contiguous32()));
    EXPECT_FALSE(result.hasUnusedPoints());
    for (int64_t page = 0; page < result.data().vertexCount.pageCount(); ++page)
        EXPECT_TRUE(result.data().vertexCount.isConstantPage(page)) << "page " << page;
}

TEST(Detail, TakesTheMemoryOfItsColumnsAndAnEditThatOfWhatItWrites)
{
    const auto used = [] {
        return BAS_MemoryTracker::current(BAS_MEMORY_HOST_PAGE) + BAS_MemoryTracker::current(BAS_MEMORY_HOST_TABLE);
    };
    const auto isWithin = [](int64_t bytes, int64_t expected) { return bytes <= expected + expected / 20; };
    const int64_t points = 150000, triangles = 300000, empty = used();
    const MOD_DetailHandle detail;
    {
        std::vector<int32_t> corners(size_t(3 * triangles));
        for (size_t i = 0; i < corners.size(); ++i)
            corners[i] = int32_t(i * 7 % size_t(points));
        MOD_Edit edit(detail);
        ASSERT_TRUE(edit.appendPoints(points) && edit.appendPolygons(3, corners, true));
        std::fill_n(writePositions(edit), 3 * points, 1.0f);
        edit.commit();
    }
    EXPECT_TRUE(isWithin(used() - empty, 12 * points + 12 * triangles + 4 * triangles)) << used() - empty;

    const MOD_ConstDetailHandle snapshot = detail.read();
    const int64_t built = used();
    MOD_Edit edit(detail);
    std::fill_n(edit.attribute(ELM_OWNER_POINT, "mask", ELM_STORAGE_UINT8)->writeAll<uint8_t>(), points, uint8_t(1));
    edit.commit();
    EXPECT_TRUE(isWithin(used() - built, points)) << used() - built;

    const int64_t masked = used();
    MOD_Edit second(detail);
    std::fill_n(writePositions(second), 3 * points, 2.0f);
    second.commit();
    EXPECT_TRUE(isWithin(used() - masked, 12 * points)) << used() - masked;
}

TEST(Detail, OffsetsBeyond32BitsNeedNoMemoryOfTheirOwn)
{
    const int64_t pages = BAS_MemoryTracker::current(BAS_MEMORY_HOST_PAGE);
    const int64_t limit = int64_t(1) << 31;
    MOD_DetailHandle detail;
    MOD_Edit edit(detail);
    ASSERT_TRUE(edit.appendPoints(limit + 100));
    const std::vector<int64_t> corners = {0, limit / 2, limit - 1, limit, limit + 99, 5};
    ASSERT_TRUE(edit.appendPolygons(3, corners, true));
    ELM_Attribute *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT);
    p->pages<float>()->writableTuple(limit + 99)[1] = 3;
    edit.group(ELM_OWNER_POINT, "last")->set(limit + 99);
    ASSERT_TRUE(edit.reverse(ELM_Range(ELM_OWNER_PRIMITIVE, 0, 1)));
    const MOD_ConstDetailHandle snapshot = edit.commit();
    const MSH_Detail &result = *snapshot.readLock();
    EXPECT_EQ(result.vertexPoint(0), limit - 1);
    EXPECT_EQ(result.vertexPoint(4), limit + 99);
    EXPECT_EQ(result.positions().pages<float>()->value(limit + 99, 1), 3.0f);
    EXPECT_EQ(result.offsets(ELM_OWNER_POINT), ELM_OffsetList(0, limit + 100));
    EXPECT_EQ(result.group(ELM_OWNER_POINT, "last")->range().size(), 1);
    EXPECT_LT(BAS_MemoryTracker::current(BAS_MEMORY_HOST_PAGE) - pages, 1 << 20);
}

TEST(Edit, BadInputIsRefusedWithAReasonAndChangesNothing)
{
    const std::vector<int32_t> none, three = {3}, minus = {3, -1}, good = {0, 1, 2}, high = {0, 4, 2}, low = {0, 1, -1};
    const std::vector<int64_t> wide = {0, 1, (int64_t(1) << 32) + 2};
    using Step = std::function<bool(MOD_Edit &)>;
    const struct
    {
        Step step;
        const char *message;
    } cases[] = {
        {[&](MOD_Edit &e) { return e.appendPoints(-1); }, "-1 points cannot be added"},
        {[&](MOD_Edit &e) { return e.appendPolygons(none, good, true); },
         "the polygons have 0 vertices, but 3 points are given"},
        {[&](MOD_Edit &e) { return e.appendPolygons(minus, good, true); }, "polygon 1 has -1 vertices"},
        {[&](MOD_Edit &e) { return e.appendPolygons(three, high, true); },
         "vertex 1 refers to point 4, out of range [0, 4)"},
        {[&](MOD_Edit &e) { return e.appendPolygons(3, low, false); }, "vertex 2 refers to point -1, out of range [0, 4)"},
        {[&](MOD_Edit &e) { return e.appendPolygons(three, wide, true); },
         "vertex 2 refers to point 4294967298, out of range [0, 4)"},
        {[&](MOD_Edit &e) { return e.appendPolygons(2, good, true); }, "3 points do not make polygons of 2 vertices"},
        {[&](MOD_Edit &e) { return e.setVertexPoint(8, 0); }, "vertex 8 is out of range [0, 8)"},
        {[&](MOD_Edit &e) { return e.remove(ELM_Range(ELM_OWNER_VERTEX, 0, 1)); },
         "vertices are removed with their primitives"},
        {[&](MOD_Edit &e) { return e.remove(ELM_Range(ELM_OWNER_POINT, 2, 5)); }, "elements [2, 5) are out of range [0, 4)"},
        {[&](MOD_Edit &e) { return e.attribute(ELM_OWNER_POINT, "a", ELM_STORAGE_INT8, 0); },
         "attribute \"a\" needs a name and a tuple size of at least 1, not 0"},
        {[&](MOD_Edit &e) { return e.arrayAttribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3); },
         "\"P\" needs 3 numbers a point, not arrays"},
        {[&](MOD_Edit &e) { return e.removeAttribute(ELM_OWNER_POINT, "P"); }, "every detail has \"P\""},
        {[&](MOD_Edit &e) { return e.removeGroup(ELM_OWNER_POINT, "g"); }, "there is no group \"g\""},
        {[&](MOD_Edit &e) { return e.stringAttribute(ELM_OWNER_POINT, "P"); },
         "\"P\" needs floating-point values, 3 a point"},
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.message);
        const MOD_DetailHandle detail = smallDetail();
        MOD_Edit edit(detail);
        EXPECT_FALSE(c.step(edit));
        EXPECT_EQ(edit.message(), c.message);
        EXPECT_TRUE(edit.appendPolygons(three, good, true)) << "the edit goes on";
        const MOD_ConstDetailHandle snapshot = edit.commit();
        EXPECT_EQ(snapshot.readLock()->vertices(3), ELM_OffsetList(8, 3));
        EXPECT_FALSE(edit.appendPoints(1));
        EXPECT_EQ(edit.message(), "the edit has ended");
    }
}

TEST(Edit, OnlyWhatIsTouchedTakesNewIds)
{
    const MOD_DetailHandle detail = smallDetail();
    const auto color = [](MOD_Edit &e) { return e.attribute(ELM_OWNER_POINT, "Cd", ELM_STORAGE_REAL32, 3, ELM_TYPE_COLOR); };
    MOD_Edit first(detail);
    color(first);
    first.commit();
    const struct
    {
        const char *what;
        std::function<void(MOD_Edit &)> change;
        bool snapshot, topology, positions, colors;
    } cases[] = {
        {"nothing", [](MOD_Edit &) {}, false, false, false, false},
        {"positions", [](MOD_Edit &e) { std::fill_n(writePositions(e), 12, 1.0f); }, true, false, true, false},
        {"colors", [&](MOD_Edit &e) { color(e)->writeAll<float>()[0] = 1; }, true, false, false, true},
        {"a group", [](MOD_Edit &e) { e.group(ELM_OWNER_POINT, "g")->set(1); }, true, false, false, false},
        {"a vertex", [](MOD_Edit &e) { EXPECT_TRUE(e.setVertexPoint(0, 2)); }, true, true, false, false},
        {"points", [](MOD_Edit &e) { EXPECT_TRUE(e.appendPoints(1)); }, true, true, true, true},
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        const MOD_ConstDetailHandle before = detail.read();
        const MSH_Detail &was = *before.readLock();
        const BAS_BitArray &used = was.usedPoints();
        MOD_Edit edit(detail);
        c.change(edit);
        const MOD_ConstDetailHandle after = edit.commit();
        const MSH_Detail &is = *after.readLock();
        EXPECT_EQ(is.uniqueId() != was.uniqueId(), c.snapshot);
        EXPECT_EQ(is.metaCacheCount(), was.metaCacheCount() + c.snapshot);
        EXPECT_EQ(is.topologyId() != was.topologyId(), c.topology);
        EXPECT_EQ(is.positionId() != was.positionId(), c.positions);
        const ELM_Attribute *colorsWere = was.find(ELM_OWNER_POINT, "Cd"), *colors = is.find(ELM_OWNER_POINT, "Cd");
        EXPECT_EQ(colors->dataId() != colorsWere->dataId(), c.colors);
        EXPECT_EQ(is.owns(*colorsWere), !c.colors) << "unchanged attributes are shared";
        EXPECT_EQ(&is.usedPoints() == &used, !c.topology) << "what was built for the same topology is shared";
    }
}

TEST(Edit, GroupsEndWhereTheElementsDo)
{
    const MOD_DetailHandle detail = smallDetail();
    MOD_Edit edit(detail);
    edit.group(ELM_OWNER_PRIMITIVE, ELM_HIDDEN_GROUP_NAME)->setRange(1, 5000);
    const MOD_ConstDetailHandle snapshot = edit.commit();
    ASSERT_NE(snapshot.readLock()->hidden(), nullptr);
    EXPECT_EQ(snapshot.readLock()->hidden()->count(), 2);
}

TEST(Edit, AnAttributeOfAnotherShapeIsReplacedInItsPlace)
{
    const MOD_DetailHandle detail = smallDetail();
    MOD_Edit edit(detail);
    *edit.attribute(ELM_OWNER_DETAIL, "a", ELM_STORAGE_INT32)->writeAll<int32_t>() = 7;
    edit.attribute(ELM_OWNER_DETAIL, "b", ELM_STORAGE_INT32);
    ELM_Attribute *replaced = edit.attribute(ELM_OWNER_DETAIL, "a", ELM_STORAGE_REAL64, 2);
    EXPECT_EQ(replaced->writeAll<float>(), nullptr) << "of another storage";
    EXPECT_EQ(replaced->pages<double>()->value(0, 1), 0.0);
    const MOD_ConstDetailHandle snapshot = edit.commit();
    EXPECT_EQ(snapshot.readLock()->attributes(ELM_OWNER_DETAIL)[0].storage(), ELM_STORAGE_REAL64);
    EXPECT_EQ(snapshot.readLock()->attributes(ELM_OWNER_DETAIL)[1].name(), "b");
}

TEST(Edit, ReadersSeeWholeStatesWhileWritersTakeTurns)
{
    // In every state all positions equal the number of points, and every point is used.
    const MOD_DetailHandle detail;
    std::atomic<bool> done{false};
    const auto read = [&] {
        std::vector<MOD_ConstDetailHandle> held;
        for (int64_t last = 0; !done;)
        {
            const MOD_ConstDetailHandle handle = detail.read();
            const MSH_Detail &state = *handle.readLock();
            const int64_t points = state.pointCount();
            ASSERT_GE(points, last);
            last = points;
            for (int64_t i = 0; i < points; i += 97)
                ASSERT_EQ(state.positions().pages<float>()->value(i, 1), float(points));
            ASSERT_EQ(state.usedPoints().count(), points);
            if (held.size() < 20)
                held.push_back(handle);
        }
        for (const MOD_ConstDetailHandle &handle : held)
        {
            const int64_t points = handle.readLock()->pointCount();
            EXPECT_TRUE(points == 0 || handle.readLock()->positions().pages<float>()->value(points - 1, 2) == float(points));
        }
    };
    const auto write = [&] {
        for (int i = 0; i < 30; ++i)
        {
            MOD_Edit edit(detail);
            std::vector<int64_t> added(100);
            std::iota(added.begin(), added.end(), edit.pointCount());
            ASSERT_TRUE(edit.appendPoints(100) && edit.appendPolygons(4, added, true));
            std::fill_n(writePositions(edit), edit.pointCount() * 3, float(edit.pointCount()));
            edit.commit();
        }
    };
    std::thread readers[] = {std::thread(read), std::thread(read), std::thread(read)};
    std::thread writers[] = {std::thread(write), std::thread(write)};
    for (std::thread &writer : writers)
        writer.join();
    done = true;
    for (std::thread &reader : readers)
        reader.join();
    EXPECT_EQ(detail.read().readLock()->pointCount(), 6000);
}
}  // namespace
