#include <numeric>
#include <random>

#include <host/elm/PrimitiveFactory.h>
#include <host/msh/Quadric.h>
#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimCircleMesh.h>
#include <rq/surface/PrimSphereMesh.h>
#include <rq/surface/PrimTubeMesh.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
/// Spheres, circles and tubes of three kinds in any order, some taken away again, with attributes of every owner.
MOD_DetailHandle makeQuadrics(int count, unsigned seed)
{
    const MOD_DetailHandle geometry;
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    MOD_Edit edit(geometry);
    EXPECT_TRUE(edit.appendPoints(count));
    for (int i = 0; i < count; ++i)
    {
        const std::vector<int32_t> point{count - 1 - i};
        std::vector<BAS_Mat3d> transform(1);
        for (int k = 0; k < 9; ++k)
            transform[0][k / 3][k % 3] = value(random);
        bool added = false;
        switch (random() % 5)
        {
        case 0:
            added = edit.appendCircles(point, transform);
            break;
        case 1:
            added = edit.appendTubes({0.5, true}, point, transform);
            break;
        case 2:
            added = edit.appendTubes({0.5, i % 2 == 0}, point);
            break;
        default:
            added = edit.appendSpheres(point, transform);
        }
        EXPECT_TRUE(added) << edit.message();
    }
    float *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->writeAll<float>();
    std::generate(p, p + 3 * count, [&] { return float(10.0 * value(random)); });
    for (const auto &[owner, name] : {std::pair(ELM_OWNER_POINT, "point"), std::pair(ELM_OWNER_VERTEX, "vertex"),
                                      std::pair(ELM_OWNER_PRIMITIVE, "number")})
    {
        int32_t *number = edit.attribute(owner, name, ELM_STORAGE_INT32)->writeAll<int32_t>();
        std::iota(number, number + count, 0);
    }
    edit.attribute(ELM_OWNER_DETAIL, "whole", ELM_STORAGE_INT32)->writeAll<int32_t>()[0] = 5;
    EXPECT_TRUE(edit.remove(ELM_Range(ELM_OWNER_PRIMITIVE, count / 2, count / 2 + 3)));
    edit.commit();
    return geometry;
}

/// All meshes of quadrics, collections opened.
std::vector<const RQ_PrimQuadricMesh *> meshesIn(const std::vector<RQ_PrimitiveHandle> &primitives)
{
    std::vector<const RQ_PrimQuadricMesh *> meshes;
    for (const RQ_PrimitiveHandle &primitive : primitives)
        if (const auto *several = as<RQ_PrimCollect>(primitive))
            for (int64_t i = 0; i < several->entries(); ++i)
                meshes.push_back(as<RQ_PrimQuadricMesh>(several->getPrim(i)));
        else if (const auto *mesh = as<RQ_PrimQuadricMesh>(primitive))
            meshes.push_back(mesh);
    return meshes;
}

bool isOf(const RQ_PrimQuadricMesh &mesh, const MSH_Quadric &quadric)
{
    if (const auto *tubes = dynamic_cast<const RQ_PrimTubeMesh *>(&mesh))
        return quadric.isTube() && tubes->getTaper() == quadric.taper() && tubes->getCaps() == quadric.hasCaps();
    const bool circles = dynamic_cast<const RQ_PrimCircleMesh *>(&mesh);
    return quadric.type() == (circles ? ELM_PRIMITIVE_CIRCLE : ELM_PRIMITIVE_SPHERE);
}

TEST(QuadricCollectors, GatherEveryQuadricOnce)
{
    for (const int count : {40, 25000})  // the second on several threads
    {
        const MOD_ConstDetailHandle detail = makeQuadrics(count, 1).read();
        const std::vector<RQ_PrimitiveHandle> primitives = refine(detail);
        ASSERT_EQ(primitives.size(), 4u);  // circles, spheres, tubes; points that no primitive uses any more
        const auto meshes = meshesIn(primitives);
        ASSERT_EQ(meshes.size(), 4u);
        int64_t found = 0;
        for (const RQ_PrimQuadricMesh *mesh : meshes)
        {
            const RQ_AttributeListHandle &list = mesh->getVertexAttributes();
            EXPECT_EQ(list->entries(), 3);
            EXPECT_EQ(mesh->getDetailAttributes()->get("whole")->getI32(0), 5);
            int64_t before = -1;
            for (int64_t i = 0; i < mesh->getQuadricCount(); ++i)
            {
                const int64_t number = list->get("number")->getI64(i);
                const MSH_Quadric quadric(*detail.readLock(), number);
                EXPECT_TRUE(isOf(*mesh, quadric));
                EXPECT_GT(number, before);
                EXPECT_EQ(list->get("vertex")->getI64(i), quadric.vertex(0));
                EXPECT_EQ(list->get("point")->getI64(i), quadric.point(0));
                BAS_Mat4d matrix;
                mesh->getTransforms()->getMatrix(matrix, i, 0);
                EXPECT_EQ(matrix, quadric.placement());
                before = number;
            }
            found += mesh->getQuadricCount();
        }
        EXPECT_EQ(found, detail.readLock()->primitiveCount());
    }
}

TEST(QuadricCollectors, IdsTellWhatChanged)
{
    const MOD_DetailHandle geometry = makeQuadrics(40, 2);
    const auto before = refine(geometry.read()), again = refine(geometry.read());
    MOD_Edit edit(geometry);
    const float far[] = {100, 0, 0};
    ASSERT_TRUE(edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->write(39, 1, far));
    edit.commit();
    const auto moved = refine(geometry.read());
    for (size_t i = 0; i < 4; ++i)
    {
        const RQ_PrimQuadricMesh &a = *meshesIn(before)[i], &b = *meshesIn(again)[i], &c = *meshesIn(moved)[i];
        uint64_t hashes[3];
        EXPECT_TRUE(a.getDataIdHash(hashes[0], 0, false) && b.getDataIdHash(hashes[1], 0, false) &&
                    c.getDataIdHash(hashes[2], 0, false));
        EXPECT_TRUE(hashes[0] == hashes[1] && hashes[1] == hashes[2]);
        EXPECT_EQ(a.getTransforms()->getDataId(), b.getTransforms()->getDataId());
        EXPECT_NE(a.getTransforms()->getDataId(), c.getTransforms()->getDataId());
        EXPECT_NE(a.getTransforms()->getDataId(), meshesIn(before)[(i + 1) % 4]->getTransforms()->getDataId());
    }
}

TEST(QuadricCollectors, FollowSegmentsAndTheCallersFilter)
{
    struct OnlyNumbers final : RQ_MSHAttributeFilter
    {
        bool isValid(const ELM_Attribute &attribute) const override { return attribute.name() == "number"; }
    } filter;
    RQ_RefineParms parms;
    parms.setAttributeFilter(&filter);
    const MOD_DetailHandle geometry;
    std::vector<MOD_ConstDetailHandle> details;
    for (const float x : {0.0f, 100.0f})
    {
        MOD_Edit edit(geometry);
        ASSERT_TRUE(!details.empty() || (edit.appendPoints(1) && edit.appendSpheres(std::vector<int32_t>{0})));
        const float position[] = {x, 0, 0};
        ASSERT_TRUE(edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->write(0, 1, position));
        details.push_back(edit.commit());
    }
    RQ_RefineList list;
    const RQ_PrimitiveHandle moving(new RQ_MSHDetail(details));
    ASSERT_TRUE(list.refine(moving.get(), &parms));
    const auto *mesh = as<RQ_PrimSphereMesh>(list.getPrimitive(0));
    ASSERT_TRUE(mesh);
    BAS_BoundingBox boxes[2];
    mesh->enlargeBounds(boxes, 2);
    EXPECT_EQ(boxes[0], BAS_BoundingBox(BAS_Vec3f(-1), BAS_Vec3f(1)));
    EXPECT_EQ(boxes[1], BAS_BoundingBox(BAS_Vec3f(99, -1, -1), BAS_Vec3f(101, 1, 1)));
    EXPECT_FALSE(mesh->getVertexAttributes());

    const std::vector<RQ_PrimitiveHandle> refined = refine(makeQuadrics(40, 3).read(), &parms);
    for (const RQ_PrimQuadricMesh *quadrics : meshesIn(refined))
        EXPECT_EQ(quadrics->getVertexAttributes()->entries(), 1);
}
}  // namespace
