#include <algorithm>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <host/mod/Edit.h>
#include <host/msh/Polygon.h>

namespace
{
/// A detail as plain vectors, and random edits that are made to it and to the real one alike.
struct DetailModel
{
    // Of points: 3 floats each, and one of the others.
    std::vector<float> positions;
    std::vector<int64_t> ids;
    std::vector<std::string> names;

    // Of vertices: 2 floats each, and the point.
    std::vector<float> uv;
    std::vector<int64_t> vertexPoints;

    // Of primitives.
    std::vector<int64_t> types, counts;
    std::vector<bool> closed, members;

    int64_t points() const { return int64_t(ids.size()); }
    int64_t primitives() const { return int64_t(types.size()); }

    void appendPoints(MOD_Edit &edit, std::mt19937 &random);
    void appendPrimitives(MOD_Edit &edit, std::mt19937 &random);
    void writePoints(MOD_Edit &edit, std::mt19937 &random);
    void writeOthers(MOD_Edit &edit, std::mt19937 &random);

    void change(MOD_Edit &edit, std::mt19937 &random)
    {
        const uint32_t what = random() % 8;
        if (what < 2 || points() == 0)
            appendPoints(edit, random);
        else if (what < 4)
            appendPrimitives(edit, random);
        else if (what < 6 || primitives() == 0)
            writePoints(edit, random);
        else
            writeOthers(edit, random);
    }
};

int64_t below(std::mt19937 &random, int64_t limit) { return std::uniform_int_distribution<int64_t>(0, limit - 1)(random); }

void DetailModel::appendPoints(MOD_Edit &edit, std::mt19937 &random)
{
    const int64_t count = below(random, below(random, 3) ? 20 : 3000);
    ASSERT_TRUE(edit.appendPoints(count));
    ids.resize(ids.size() + size_t(count));
    positions.resize(3 * ids.size());
    names.resize(ids.size());
}

void DetailModel::appendPrimitives(MOD_Edit &edit, std::mt19937 &random)
{
    const int64_t kind = below(random, 4);
    const bool isParticles = kind == 2, isClosed = below(random, 2);
    std::vector<int32_t> added(size_t(below(random, below(random, 4) ? 20 : 3000)), 3);
    if (kind == 0)
        std::generate(added.begin(), added.end(), [&] { return int32_t(below(random, 6)); });
    if (isParticles)
        added.assign(1, int32_t(below(random, 50)));
    std::vector<int64_t> wide(size_t(std::accumulate(added.begin(), added.end(), 0)));
    std::generate(wide.begin(), wide.end(), [&] { return below(random, points()); });
    const std::vector<int32_t> narrow(wide.begin(), wide.end());
    const bool good = isParticles ? edit.appendParticles(narrow)
                      : kind == 1 ? edit.appendPolygons(3, narrow, isClosed)
                      : kind == 3 ? edit.appendPolygons(added, wide, isClosed)
                                  : edit.appendPolygons(added, narrow, isClosed);
    ASSERT_TRUE(good) << edit.message();

    counts.insert(counts.end(), added.begin(), added.end());
    types.resize(counts.size(), isParticles ? ELM_PRIMITIVE_PARTICLES : ELM_PRIMITIVE_POLYGON);
    closed.resize(counts.size(), isClosed && !isParticles);
    members.resize(counts.size());
    vertexPoints.insert(vertexPoints.end(), wide.begin(), wide.end());
    uv.resize(2 * vertexPoints.size());
}

void DetailModel::writePoints(MOD_Edit &edit, std::mt19937 &random)
{
    if (below(random, 2))
    {
        std::generate(positions.begin(), positions.end(), [&] { return float(below(random, 1000)); });
        ELM_Attribute *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT);
        std::copy(positions.begin(), positions.end(), p->writeAll<float>());
        return;
    }
    const int64_t first = below(random, points() + 1), count = std::min<int64_t>(points() - first, 1500);
    std::generate_n(ids.begin() + first, count, [&] { return below(random, 1000); });
    ASSERT_TRUE(edit.attribute(ELM_OWNER_POINT, "id", ELM_STORAGE_INT64)->write(first, count, ids.data() + first));
    const int64_t point = below(random, points());
    names[size_t(point)] = std::to_string(below(random, 5));
    edit.stringAttribute(ELM_OWNER_POINT, "name")->strings()->set(point, names[size_t(point)]);
}

void DetailModel::writeOthers(MOD_Edit &edit, std::mt19937 &random)
{
    const int64_t what = below(random, 3), some = below(random, primitives());
    if (what == 0)
    {
        const int64_t count = below(random, primitives() - some + 1);
        edit.group(ELM_OWNER_PRIMITIVE, "some")->setRange(some, count);
        std::fill_n(members.begin() + some, count, true);
    }
    else if (vertexPoints.empty())
        return;
    else if (what == 1)
    {
        const size_t first = size_t(below(random, int64_t(uv.size())));
        float *column = edit.attribute(ELM_OWNER_VERTEX, "uv", ELM_STORAGE_REAL32, 2)->modifyAll<float>();
        for (size_t i = first; i < std::min(first + 50, uv.size()); ++i)
            column[i] = uv[i] = float(below(random, 100));
    }
    else
    {
        const int64_t vertex = below(random, int64_t(vertexPoints.size()));
        vertexPoints[size_t(vertex)] = below(random, points() + 1) - 1;
        ASSERT_TRUE(edit.setVertexPoint(vertex, vertexPoints[size_t(vertex)]));
    }
}

template <class T> void expectSame(const char *what, const std::vector<T> &is, const std::vector<T> &expected)
{
    const auto differs = std::mismatch(is.begin(), is.end(), expected.begin(), expected.end()).first;
    EXPECT_TRUE(is == expected) << what << " of " << is.size() << " from " << differs - is.begin() << " on";
}

/// An attribute that is not there reads as zeros.
template <class T>
void expectColumn(const MSH_Detail &detail, ELM_Owner owner, const char *name, const std::vector<T> &expected)
{
    std::vector<T> values(expected.size());
    if (const ELM_Attribute *attribute = detail.find(owner, name))
    {
        const int tuple = attribute->tupleSize();
        values.resize(size_t(attribute->size() * tuple));
        EXPECT_TRUE(
            attribute->copyOut(values.data(), ELM_OffsetList(0, attribute->size()), 0, attribute->size(), tuple, tuple));
    }
    expectSame(name, values, expected);
}

void expectPrimitives(const MSH_Detail &detail, const DetailModel &model)
{
    DetailModel is;
    const ELM_Group *some = detail.group(ELM_OWNER_PRIMITIVE, "some");
    std::vector<int64_t> owners, expectedOwners;
    for (int64_t i = 0; i < detail.primitiveCount(); ++i)
    {
        const MSH_Polygon polygon(detail, i);
        is.types.push_back(polygon.type());
        is.closed.push_back(polygon.isClosed());
        is.counts.push_back(polygon.vertices().size());
        is.members.push_back(some && some->contains(i));
        for (int64_t k = 0; k < is.counts.back(); ++k)
        {
            EXPECT_EQ(polygon.vertices()[k], int64_t(is.vertexPoints.size()));
            owners.push_back(detail.vertexPrimitive().value(polygon.vertices()[k]));
            is.vertexPoints.push_back(polygon.point(k));
        }
        expectedOwners.resize(is.vertexPoints.size(), i);
    }
    expectSame("types", is.types, model.types);
    expectSame("closed", is.closed, model.closed);
    expectSame("counts", is.counts, model.counts);
    expectSame("members", is.members, model.members);
    expectSame("points of vertices", is.vertexPoints, model.vertexPoints);
    expectSame("primitives of vertices", owners, expectedOwners);
    for (const int type : {ELM_PRIMITIVE_POLYGON, ELM_PRIMITIVE_PARTICLES})
        EXPECT_EQ(detail.primitiveCount(type), std::count(model.types.begin(), model.types.end(), type)) << type;
}

void expectEqual(const MSH_Detail &detail, const DetailModel &model)
{
    EXPECT_EQ(detail.pointCount(), model.points());
    EXPECT_EQ(detail.vertexCount(), int64_t(model.vertexPoints.size()));
    expectPrimitives(detail, model);
    expectColumn(detail, ELM_OWNER_POINT, "P", model.positions);
    expectColumn(detail, ELM_OWNER_POINT, "id", model.ids);
    expectColumn(detail, ELM_OWNER_VERTEX, "uv", model.uv);

    const ELM_Attribute *name = detail.find(ELM_OWNER_POINT, "name");
    std::vector<std::string> names(model.names.size());
    std::vector<bool> used, expectedUsed(size_t(model.points()));
    for (const int64_t point : model.vertexPoints)
        if (point >= 0)
            expectedUsed[size_t(point)] = true;
    for (int64_t i = 0; i < detail.pointCount(); ++i)
    {
        used.push_back(detail.usedPoints().get(i));
        names[size_t(i)] = name ? name->strings()->get(i).c_str() : "";
    }
    expectSame("names", names, model.names);
    expectSame("used points", used, expectedUsed);
    EXPECT_EQ(detail.hasUnusedPoints(), std::count(expectedUsed.begin(), expectedUsed.end(), false) > 0);
    EXPECT_EQ(detail.topologyIsValid(), std::count(model.vertexPoints.begin(), model.vertexPoints.end(), -1) == 0);
    EXPECT_TRUE(detail.sequentialVertices());
}

TEST(Detail, RandomEditsMatchAModelAndOldSnapshotsStayAsTheyWere)
{
    for (unsigned seed = 0; seed < 25 && !testing::Test::HasFailure(); ++seed)
    {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        MOD_DetailHandle detail;
        DetailModel model;
        std::vector<std::pair<MOD_ConstDetailHandle, DetailModel>> snapshots;
        for (int commit = 0; commit < 10; ++commit)
        {
            MOD_Edit edit(detail);
            DetailModel edited = model;
            for (unsigned change = random() % 6; change > 0; --change)
                edited.change(edit, random);
            if (random() % 5 == 0)
                edit.abort();
            else
            {
                snapshots.emplace_back(edit.commit(), model = edited);
                ASSERT_EQ(snapshots.back().first, detail.read());
            }
            expectEqual(*detail.read().readLock(), model);
        }
        for (const auto &[snapshot, was] : snapshots)
            expectEqual(*snapshot.readLock(), was);
    }
}
}  // namespace
