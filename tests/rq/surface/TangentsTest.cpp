#include <gtest/gtest.h>

#include <host/bas/Parallel.h>
#include <tests/rq/surface/tangentMeshes.h>

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
void nowhere(const BAS_Vec3d &, float *uv) { uv[0] = uv[1] = 0.5f; }

const TangentCase kTangentCases[] = {
    {"straight", "star", straight, {1, 0, 0}, {0, 1, 0}},
    {"turned and stretched", "star", turned, {0, 1, 0}, {-1, 0, 0}},
    {"mirrored", "star", mirrored, {-1, 0, 0}, {0, 1, 0}},
    {"reflex corner", "dart", straight, {1, 0, 0}, {0, 1, 0}},
    {"repeated way to a hole", "keyhole", mirrored, {-1, 0, 0}, {0, 1, 0}},
    {"no direction", "dart", nowhere, {1, 0, 0}, {0, -1, 0}},
};

/// How many corners differ from the plain method's: in the sign, or by more than 1e-5.
int countDifferences(const TexturedMesh &mesh)
{
    const std::vector<bench::PlainTangents::Result> plain = bench::PlainTangents::make(mesh.counts, mesh.corners());
    const MadeTangents made(mesh.make());
    int differences = 0;
    for (size_t i = 0; i < plain.size(); ++i)
    {
        const BAS_Vec3f normal = MadeTangents::vector(mesh.normals, i);
        const bool hasSign = (normal % plain[i].tangent).length() > 0.5f;
        differences += (made.tangent(i) - plain[i].tangent).length() > 1e-5f ||
                       (hasSign && made.isPreserving(i, normal) != plain[i].isPreserving);
    }
    return differences;
}
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
    RQ_DataArrayHandle tangentU, tangentV;
    EXPECT_FALSE(makeMesh(stripShape(2))->createFastTangents(tangentU, tangentV));
}

TEST(Tangents, AreThoseOfTheMethodWrittenPlainly)
{
    for (int seed = 0; seed < 1000; ++seed)
        EXPECT_EQ(countDifferences(ringsMesh(seed)), 0) << "seed " << seed;
    for (const bool hasQuads : {false, true})
    {
        for (const bool isUgly : {false, true})
            EXPECT_EQ(countDifferences(shellMesh(30, hasQuads, isUgly)), 0) << hasQuads << isUgly;
        for (int seed = 0; seed < 500; ++seed)
            EXPECT_EQ(countDifferences(latticeMesh(seed, hasQuads)), 0) << "seed " << seed << ", quads " << hasQuads;
        // So many faces that each vertex has more than are linked pair by pair.
        EXPECT_EQ(countDifferences(latticeMesh(1, hasQuads, 2000)), 0) << hasQuads;
    }
}

TEST(Tangents, DoNotDependOnThreadsStoragesAndSplitPoints)
{
    const TexturedMesh mesh = shellMesh(150, true, true);
    const MadeTangents expected(mesh.make());
    for (const int workers : {1, 2, 8, 64})
    {
        const BAS_Threads::Limit limit(workers);
        EXPECT_EQ(MadeTangents(mesh.make()), expected) << workers;
        EXPECT_EQ(MadeTangents(mesh.make<int64_t>()), expected) << workers;
    }

    TexturedMesh split = mesh;
    split.points.clear();
    for (size_t i = 0; i < mesh.indices.size(); ++i)
    {
        const float *p = &mesh.points[3 * size_t(mesh.indices[i])];
        split.points.insert(split.points.end(), p, p + 3);
        split.indices[i] = int(i);
    }
    EXPECT_EQ(MadeTangents(split.make()), expected);

    const auto make = [&](auto value) {
        using T = decltype(value);
        const auto as = [](const std::vector<float> &values, int64_t tuple) {
            std::vector<T> converted;
            for (const float v : values)
                converted.push_back(T(float(PLT_Half(v))));
            return makeArray(converted, tuple);
        };
        const RQ_AttributeListHandle vertex = oneAttribute("uv", as(mesh.texture, 2));
        return MadeTangents(new RQ_PrimPolygonMesh(integers(mesh.counts), integers(mesh.indices),
                                                   oneAttribute("P", as(mesh.points, 3)),
                                                   vertex->addAttribute("N", as(mesh.normals, 3), false)));
    };
    EXPECT_EQ(make(PLT_Half()), make(float()));
    EXPECT_EQ(make(double()), make(float()));
}

TEST(Tangents, OfAnyInputAreThere)
{
    const float odd[] = {0.0f, -0.0f, 1.0f, 1e-38f, -1e30f, 3e38f, INFINITY, NAN, 1e-20f};
    for (int seed = 0; seed < 200; ++seed)
    {
        std::mt19937 random{unsigned(seed)};
        TexturedMesh mesh = latticeMesh(seed, true);
        for (auto *values : {&mesh.points, &mesh.normals, &mesh.texture})
            for (float &value : *values)
                if (random() % 4 == 0)
                    value = odd[random() % std::size(odd)];
        EXPECT_EQ(MadeTangents(mesh.make()).u.size(), 3 * mesh.indices.size()) << "seed " << seed;
    }
    for (const MeshShape &shape : meshShapes())
    {
        SCOPED_TRACE(shape.name);
        EXPECT_TRUE(shape.indices.empty() || !MadeTangents(textured(shape, turned)).v.empty());
    }
}
