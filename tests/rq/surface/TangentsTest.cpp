#include <gtest/gtest.h>

#include <tests/rq/surface/Fixture.h>

using namespace tests;

namespace
{
/// The vertex attribute "uv" of a shape whose texture coordinates follow from the positions.
RQ_PolygonMeshHandle textured(const MeshShape &shape, void (*uvOf)(const BAS_Vec3d &p, float *uv))
{
    std::vector<float> uv(2 * shape.indices.size());
    for (size_t i = 0; i < shape.indices.size(); ++i)
        uvOf(pointOf(shape, shape.indices[i]), &uv[2 * i]);
    return new RQ_PrimPolygonMesh(integers(shape.counts), integers(shape.indices),
                                  oneAttribute("P", positions(shape.positions)), oneAttribute("uv", makeArray(uv, 2)));
}

struct TangentCase
{
    const char *what;
    const char *shape;
    void (*uvOf)(const BAS_Vec3d &p, float *uv);
    BAS_Vec3d u, v;
};

void straight(const BAS_Vec3d &p, float *uv) { uv[0] = float(p.x), uv[1] = float(p.y); }
void turned(const BAS_Vec3d &p, float *uv) { uv[0] = float(p.y), uv[1] = float(-2.0 * p.x); }
void mirrored(const BAS_Vec3d &p, float *uv) { uv[0] = float(-p.x), uv[1] = float(p.y); }

const TangentCase kTangentCases[] = {
    {"straight", "star", straight, {1, 0, 0}, {0, 1, 0}},
    {"turned and stretched", "star", turned, {0, 1, 0}, {-1, 0, 0}},
    {"mirrored", "star", mirrored, {-1, 0, 0}, {0, 1, 0}},
    {"reflex corner", "dart", straight, {1, 0, 0}, {0, 1, 0}},
    {"repeated way to a hole", "keyhole", mirrored, {-1, 0, 0}, {0, 1, 0}},
};
}  // namespace

TEST(Tangents, FollowTheTexture)
{
    for (const TangentCase &c : kTangentCases)
    {
        SCOPED_TRACE(c.what);
        bool changed = false;
        const RQ_PolygonMeshHandle mesh = textured(meshShape(c.shape), c.uvOf)->createTangentsIfMissing(changed);
        ASSERT_TRUE(changed);
        for (int64_t i = 0; i < mesh->getVertexCount(); ++i)
        {
            EXPECT_NEAR((vectorOf(*mesh->getVertex()->get("tangentu"), i) - c.u).length(), 0.0, 1e-6) << i;
            EXPECT_NEAR((vectorOf(*mesh->getVertex()->get("tangentv"), i) - c.v).length(), 0.0, 1e-6) << i;
        }
        EXPECT_EQ(mesh->createTangentsIfMissing(changed), mesh);
        EXPECT_FALSE(changed);
    }
}

TEST(Tangents, AreUnitVectorsAtRightAnglesToTheNormalOnEveryShape)
{
    for (const MeshShape &shape : meshShapes())
    {
        SCOPED_TRACE(shape.name);
        if (shape.indices.empty())
            continue;
        const auto wavy = [](const BAS_Vec3d &p, float *uv) {
            uv[0] = float(std::sin(3.0 * p.x) + p.z), uv[1] = float(p.y * p.x);
        };
        for (const auto uvOf : {+wavy, +[](const BAS_Vec3d &, float *uv) { uv[0] = uv[1] = 0.5f; }})
        {
            const RQ_PolygonMeshHandle mesh = textured(shape, uvOf);
            RQ_DataArrayHandle tangentU, tangentV;
            ASSERT_TRUE(mesh->createFastTangents(tangentU, tangentV));
            const RQ_DataArrayHandle normals = mesh->createPointNormals(0, "P", true, nullptr, RQ_STORAGE_REAL64);
            for (int64_t i = 0; i < mesh->getVertexCount(); ++i)
            {
                const BAS_Vec3d u = vectorOf(*tangentU, i), v = vectorOf(*tangentV, i);
                const BAS_Vec3d normal = vectorOf(*normals, mesh->getVertexList()->getI64(i));
                EXPECT_NEAR(u.length(), 1.0, 1e-5) << i;
                EXPECT_NEAR(v.length(), normal.length(), 1e-5) << i;
                EXPECT_NEAR(normal.dot(u), 0.0, 1e-5) << i;
                EXPECT_NEAR(v.dot(u), 0.0, 1e-5) << i;
            }
        }
    }
}

TEST(Tangents, AreNotSharedAcrossASeam)
{
    // Two quads side by side whose textures run in different ways.
    const MeshShape strip = stripShape(2);
    const RQ_DataArrayHandle uv = makeArray<float>({0, 0, 1, 0, 1, 1, 0, 1, 0, 0, 0, 1, -1, 1, -1, 0}, 2);
    const RQ_PolygonMeshHandle mesh(new RQ_PrimPolygonMesh(integers(strip.counts), integers(strip.indices),
                                                           oneAttribute("P", positions(strip.positions)),
                                                           oneAttribute("uv", uv)));
    RQ_DataArrayHandle tangentU, tangentV;
    ASSERT_TRUE(mesh->createFastTangents(tangentU, tangentV));
    EXPECT_GT(vectorOf(*tangentU, 1).x, 0.7);
    EXPECT_LT(vectorOf(*tangentU, 4).y, -0.7);
    EXPECT_FALSE(makeMesh(strip)->createFastTangents(tangentU, tangentV));
}
