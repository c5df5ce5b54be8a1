#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include <host/bas/Vector.h>
#include <host/mod/Edit.h>
#include <host/mod/normals.h>
#include <host/msh/Faces.h>

namespace
{
const float kHalf = float(std::sqrt(0.5));

BAS_Vec3f rowOf(const ELM_Attribute &attribute, int64_t row)
{
    const float *value = attribute.pages<float>()->tuple(row);
    return {value[0], value[1], value[2]};
}

// Two unit squares that share the edge 1-2 at a right angle, a line, a triangle with a loose vertex, and an unused point.
TEST(Normals, FollowTheCuspAngleAndPassOverWhatIsNoFace)
{
    const float positions[8][3] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {1, 0, -1}, {1, 1, -1}, {5, 5, 5}, {9, 9, 9}};
    MOD_DetailHandle handle;
    MOD_Edit edit(handle);
    ASSERT_TRUE(edit.appendPoints(8));
    ASSERT_TRUE(edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->write(0, 8, positions[0]));
    const std::vector<int32_t> squares = {0, 1, 2, 3, 1, 4, 5, 2}, line = {6, 0}, triangle = {6, 1, 0};
    ASSERT_TRUE(edit.appendPolygons(4, squares, true));
    ASSERT_TRUE(edit.appendPolygons(2, line, false));
    ASSERT_TRUE(edit.appendPolygons(3, triangle, true));
    ASSERT_TRUE(edit.setVertexPoint(11, -1));
    const MOD_ConstDetailHandle snapshot = edit.commit();

    const BAS_Vec3f up(0, 0, 1), right(1, 0, 0), between(kHalf, 0, kHalf), none(0);
    const std::vector<BAS_Vec3f> sharp = {up, up, up, up, right, right, right, right, none, none, none},
                                 soft = {up, between, between, up, between, right, right, between, none, none, none};
    const struct
    {
        const char *what;
        ELM_Owner owner;
        double cuspAngle;
        std::vector<BAS_Vec3f> normals;
    } cases[] = {
        {"sharp vertices", ELM_OWNER_VERTEX, 60, sharp},
        {"sharp beyond the least angle", ELM_OWNER_VERTEX, -120, sharp},
        {"soft vertices", ELM_OWNER_VERTEX, 90, soft},
        {"soft beyond the greatest", ELM_OWNER_VERTEX, 360, soft},
        {"points", ELM_OWNER_POINT, 0, {up, between, between, up, right, right, none, none}},
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        const ELM_AttributeHandle normals = MODcomputeNormals(*snapshot.readLock(), c.owner, c.cuspAngle);
        ASSERT_TRUE(normals);
        EXPECT_EQ(normals->typeInfo(), ELM_TYPE_NORMAL);
        for (size_t i = 0; i < c.normals.size(); ++i)
            EXPECT_LT((rowOf(*normals, int64_t(i)) - c.normals[i]).length(), 1e-6)
                << i << ": " << rowOf(*normals, int64_t(i));
    }

    // The same squares as a soup, whose corners at the edge are one vertex: a crease gives the direction of both.
    MOD_DetailHandle other;
    MOD_Edit soup(other);
    ASSERT_TRUE(soup.appendPoints(8));
    ASSERT_TRUE(soup.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->write(0, 8, positions[0]));
    ASSERT_TRUE(soup.appendSoup(MSH_SoupData(std::vector<int32_t>{4, 4}, squares), std::vector<int32_t>{0, 1, 2, 3, 4, 5}));
    const ELM_AttributeHandle normals = MODcomputeNormals(*soup.commit().readLock(), ELM_OWNER_VERTEX, 0);
    const BAS_Vec3f expected[] = {up, between, between, up, right, right};
    for (int64_t i = 0; i < 6; ++i)
        EXPECT_LT((rowOf(*normals, i) - expected[i]).length(), 1e-6) << i << ": " << rowOf(*normals, i);
    EXPECT_FALSE(MODcomputeNormals(*snapshot.readLock(), ELM_OWNER_PRIMITIVE, 60));
}

template <class Real> void raise(MOD_Edit &edit, float height)
{
    Real *p = edit.attribute(ELM_OWNER_POINT, "P", std::is_same_v<Real, float> ? ELM_STORAGE_REAL32 : ELM_STORAGE_REAL64, 3,
                             ELM_TYPE_POINT)
                  ->template writeAll<Real>();
    for (int64_t i = 0; i < edit.pointCount(); ++i)
    {
        const float at[] = {float(i % 10), float(i / 10), height * float((i * 7) % 5)};
        std::copy_n(at, 3, p + 3 * i);
    }
}

// A sheet of quads of which every other edge is a crease, alone and beside a triangle.
TEST(Normals, HaveTheSameBitsHoweverFacesAndPositionsAreStored)
{
    std::vector<int32_t> quads;
    for (int32_t at = 0; at < 90; ++at)
        if (at % 10 < 9)
            quads.insert(quads.end(), {at, at + 1, at + 11, at + 10});
    std::vector<float> expected[2];
    const struct
    {
        const char *what;
        void (*raiseAs)(MOD_Edit &edit, float height);
        bool beside;
    } kCases[] = {{"32 bits", raise<float>, false}, {"64 bits", raise<double>, false}, {"a table", raise<float>, true}};
    for (const auto &[what, raiseAs, beside] : kCases)
    {
        SCOPED_TRACE(what);
        MOD_DetailHandle handle;
        MOD_NormalFaces::Handle faces;
        for (const float height : {0.2f, 0.5f})
        {
            MOD_Edit edit(handle);
            const std::vector<int32_t> triangle = {100, 101, 102};
            ASSERT_TRUE(faces || (edit.appendPoints(103) && edit.appendPolygons(4, quads, true)));
            ASSERT_TRUE(faces || !beside || edit.appendPolygons(3, triangle, true));
            raiseAs(edit, height);
            const MOD_ConstDetailHandle snapshot = edit.commit();
            faces = faces ? faces : MOD_NormalFaces::create(*snapshot.readLock());
            const ELM_AttributeHandle normals = MODcomputeNormals(*snapshot.readLock(), *faces, ELM_OWNER_VERTEX, 40);
            ASSERT_TRUE(normals) << height;
            const float *values = normals->contiguousData<float>();
            std::vector<float> &same = expected[height > 0.3f];
            if (same.empty())
                same.assign(values, values + 3 * quads.size());
            EXPECT_TRUE(std::equal(same.begin(), same.end(), values)) << height;
        }
        MOD_Edit edit(handle);
        ASSERT_TRUE(edit.appendPoints(1));
        EXPECT_FALSE(MODcomputeNormals(*edit.commit().readLock(), *faces, ELM_OWNER_VERTEX, 40)) << "other faces";
    }
}
}  // namespace
