#include "DetailModel.h"

#include <gtest/gtest.h>

#include <host/msh/Polygon.h>

namespace tests
{
namespace
{
int64_t below(std::mt19937 &random, int64_t limit) { return std::uniform_int_distribution<int64_t>(0, limit - 1)(random); }
}  // namespace

int64_t DetailModel::vertexCount() const
{
    int64_t count = 0;
    for (const Primitive &primitive : primitives)
        count += int64_t(primitive.vertices.size());
    return count;
}

void DetailModel::addPrimitives(MOD_Edit &edit, std::mt19937 &random)
{
    const int64_t kind = below(random, 4);
    const bool closed = below(random, 2);
    std::vector<int32_t> counts(size_t(below(random, below(random, 4) ? 20 : 3000)));
    for (int32_t &count : counts)
        count = kind == 0 ? int32_t(below(random, 6)) : 3;
    if (kind == 2)
        counts.assign(1, int32_t(below(random, 50)));
    std::vector<int64_t> wide;
    for (const int32_t count : counts)
    {
        Primitive primitive{kind == 2 ? ELM_PRIMITIVE_PARTICLES : ELM_PRIMITIVE_POLYGON, closed && kind != 2, {}};
        for (int32_t i = 0; i < count; ++i)
        {
            wide.push_back(below(random, int64_t(points.size())));
            primitive.vertices.push_back({wide.back()});
        }
        primitives.push_back(primitive);
    }
    const std::vector<int32_t> narrow(wide.begin(), wide.end());
    const bool good = kind == 2   ? below(random, 2) ? edit.appendParticles(narrow) : edit.appendParticles(wide)
                        : kind == 1 ? edit.appendPolygons(3, narrow, closed)
                      : kind == 3 ? edit.appendPolygons(counts, wide, closed)
                                  : edit.appendPolygons(counts, narrow, closed);
    ASSERT_TRUE(good) << edit.message();
}

void DetailModel::writePoints(MOD_Edit &edit, std::mt19937 &random)
{
    if (below(random, 2))
    {
        float *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->writeAll<float>();
        for (Point &point : points)
            for (float &value : point.p)
                *p++ = value = float(below(random, 1000));
        return;
    }
    hasId = hasName = true;
    const int64_t first = below(random, int64_t(points.size()) + 1);
    std::vector<int64_t> ids;
    for (size_t i = size_t(first); i < points.size() && ids.size() < 1500; ++i)
        ids.push_back(points[i].id = below(random, 1000));
    ASSERT_TRUE(edit.attribute(ELM_OWNER_POINT, "id", ELM_STORAGE_INT64)->write(first, int64_t(ids.size()), ids.data()));
    ELM_StringTuple &names = *edit.stringAttribute(ELM_OWNER_POINT, "name")->strings();
    for (int i = 0; i < 3 && !points.empty(); ++i)
    {
        const int64_t point = below(random, int64_t(points.size()));
        names.set(point, points[size_t(point)].name = std::to_string(below(random, 5)));
    }
}

void DetailModel::writeOthers(MOD_Edit &edit, std::mt19937 &random)
{
    const int64_t some = below(random, int64_t(primitives.size()));
    Primitive &primitive = primitives[size_t(some)];
    int64_t start = 0;
    for (int64_t i = 0; i < some; ++i)
        start += int64_t(primitives[size_t(i)].vertices.size());
    const int64_t what = below(random, 4);
    if (what == 0)
    {
        hasMaterial = true;
        primitive.material = int16_t(below(random, 100));
        ELM_Attribute *material = edit.attribute(ELM_OWNER_PRIMITIVE, "material", ELM_STORAGE_INT16);
        *material->pages<int16_t>()->writableTuple(some) = primitive.material;
    }
    else if (what == 1)
    {
        const int64_t count = below(random, int64_t(primitives.size()) - some + 1);
        edit.group(ELM_OWNER_PRIMITIVE, "some")->setRange(some, count);
        for (int64_t i = some; i < some + count; ++i)
            groups["some"].insert(i);
    }
    else if (what == 2)
    {
        hasUV = true;
        float *uv = edit.attribute(ELM_OWNER_VERTEX, "uv", ELM_STORAGE_REAL32, 2)->modifyAll<float>();
        for (size_t i = 0; i < primitive.vertices.size(); ++i)
            for (int c = 0; c < 2; ++c)
                uv[(start + int64_t(i)) * 2 + c] = primitive.vertices[i].uv[c] = float(below(random, 100));
    }
    else if (!primitive.vertices.empty())
    {
        const int64_t i = below(random, int64_t(primitive.vertices.size()));
        primitive.vertices[size_t(i)].point = below(random, int64_t(points.size()) + 1) - 1;
        ASSERT_TRUE(edit.setVertexPoint(start + i, primitive.vertices[size_t(i)].point));
    }
}

void DetailModel::change(MOD_Edit &edit, std::mt19937 &random)
{
    const int64_t what = below(random, 8);
    if (what < 2 || points.empty())
    {
        const int64_t count = below(random, below(random, 3) ? 20 : 3000);
        ASSERT_TRUE(edit.appendPoints(count));
        points.resize(points.size() + size_t(count));
    }
    else if (what < 4)
        addPrimitives(edit, random);
    else if (what < 6 || primitives.empty())
        writePoints(edit, random);
    else
        writeOthers(edit, random);
}

void DetailModel::expectTopology(const MSH_Detail &detail) const
{
    ASSERT_EQ(detail.pointCount(), int64_t(points.size()));
    ASSERT_EQ(detail.vertexCount(), vertexCount());
    ASSERT_EQ(detail.primitiveCount(), int64_t(primitives.size()));
    std::map<int, int64_t> types;
    std::vector<bool> used(points.size());
    int64_t vertex = 0;
    bool valid = true;
    for (size_t i = 0; i < primitives.size(); ++i)
    {
        const Primitive &mine = primitives[i];
        const MSH_Polygon theirs(detail, int64_t(i));
        ++types[mine.type];
        ASSERT_EQ(theirs.type(), mine.type) << "primitive " << i;
        ASSERT_EQ(theirs.isClosed(), mine.closed) << "primitive " << i;
        ASSERT_EQ(theirs.vertices(), ELM_OffsetList(vertex, int64_t(mine.vertices.size()))) << "primitive " << i;
        for (size_t k = 0; k < mine.vertices.size(); ++k, ++vertex)
        {
            const int64_t point = mine.vertices[k].point;
            ASSERT_EQ(theirs.point(int64_t(k)), point) << "primitive " << i << " vertex " << k;
            ASSERT_EQ(detail.vertexPrimitive().value(vertex), int64_t(i)) << "vertex " << vertex;
            valid = valid && point >= 0;
            if (point >= 0)
                used[size_t(point)] = true;
        }
    }
    for (const auto &[type, count] : types)
        EXPECT_EQ(detail.primitiveCount(type), count) << "type " << type;
    for (size_t i = 0; i < points.size(); ++i)
        ASSERT_EQ(detail.usedPoints().get(int64_t(i)), used[i]) << "point " << i;
    EXPECT_EQ(detail.hasUnusedPoints(), std::find(used.begin(), used.end(), false) != used.end());
    EXPECT_EQ(detail.topologyIsValid(), valid);
    EXPECT_TRUE(detail.sequentialVertices());
}

void DetailModel::expectAttributes(const MSH_Detail &detail) const
{
    const auto find = [&](ELM_Owner owner, const char *name, bool expected) {
        const ELM_Attribute *attribute = detail.find(owner, name);
        EXPECT_EQ(attribute != nullptr, expected) << name;
        EXPECT_TRUE(!attribute || attribute->size() == detail.capacity(owner)) << name;
        return attribute;
    };
    const ELM_Attribute *id = find(ELM_OWNER_POINT, "id", hasId), *name = find(ELM_OWNER_POINT, "name", hasName);
    const ELM_Attribute *uv = find(ELM_OWNER_VERTEX, "uv", hasUV);
    const ELM_Attribute *material = find(ELM_OWNER_PRIMITIVE, "material", hasMaterial);
    for (int64_t i = 0; i < int64_t(points.size()); ++i)
    {
        const Point &point = points[size_t(i)];
        for (int c = 0; c < 3; ++c)
            ASSERT_EQ(detail.positions().pages<float>()->value(i, c), point.p[c]) << "point " << i;
        ASSERT_EQ(id ? id->pages<int64_t>()->value(i) : 0, point.id) << "point " << i;
        ASSERT_EQ(name ? name->strings()->get(i).view() : "", point.name) << "point " << i;
    }
    const ELM_Group *some = detail.group(ELM_OWNER_PRIMITIVE, "some");
    int64_t vertex = 0;
    for (int64_t i = 0; i < int64_t(primitives.size()); ++i)
    {
        const Primitive &primitive = primitives[size_t(i)];
        ASSERT_EQ(material ? material->pages<int16_t>()->value(i) : 0, primitive.material) << "primitive " << i;
        const auto group = groups.find("some");
        ASSERT_EQ(some && some->contains(i), group != groups.end() && group->second.count(i) > 0) << "primitive " << i;
        for (const Vertex &mine : primitive.vertices)
        {
            for (int c = 0; c < 2 && uv; ++c)
                ASSERT_EQ(uv->pages<float>()->value(vertex, c), mine.uv[c]) << "vertex " << vertex;
            ++vertex;
        }
    }
}

void DetailModel::expectEqual(const MSH_Detail &detail) const
{
    expectTopology(detail);
    expectAttributes(detail);
}
}  // namespace tests
