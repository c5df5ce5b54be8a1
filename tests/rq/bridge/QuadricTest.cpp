#include <numeric>
#include <random>

#include <host/msh/Quadric.h>
#include <rq/prim/PrimCollect.h>
#include <rq/surface/PrimCircleMesh.h>
#include <rq/surface/PrimSphereMesh.h>
#include <rq/surface/PrimTubeMesh.h>
#include <tests/rq/bridge/Fixture.h>

using namespace tests;

namespace
{
/// Spheres, circles and tubes of two kinds in turn, some taken away again, with attributes of every owner.
MOD_DetailHandle makeQuadrics(int count)
{
    const MOD_DetailHandle geometry;
    std::mt19937 random(1);
    std::uniform_real_distribution<double> value(-1.0, 1.0);
    MOD_Edit edit(geometry);
    EXPECT_TRUE(edit.appendPoints(count));
    for (int i = 0; i < count; ++i)
    {
        const std::vector<int32_t> point{count - 1 - i};
        std::vector<BAS_Mat3d> transform(1);
        for (int k = 0; k < 9; ++k)
            transform[0][k / 3][k % 3] = value(random);
        EXPECT_TRUE(i % 5 == 0   ? edit.appendCircles(point, transform)
                    : i % 5 == 1 ? edit.appendTubes({0.5, true}, point, transform)
                    : i % 5 == 2 ? edit.appendTubes({0.5, false}, point)
                                 : edit.appendSpheres(point, transform));
    }
    float *p = edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->writeAll<float>();
    std::generate(p, p + 3 * count, [&] { return float(10.0 * value(random)); });
    for (const auto &[owner, name] : {std::pair(ELM_OWNER_POINT, "point"), std::pair(ELM_OWNER_VERTEX, "vertex"),
                                      std::pair(ELM_OWNER_PRIMITIVE, "number")})
    {
        int32_t *number = edit.attribute(owner, name, ELM_STORAGE_INT32)->writeAll<int32_t>();
        std::iota(number, number + count, 0);
    }
    EXPECT_TRUE(edit.remove(ELM_Range(ELM_OWNER_PRIMITIVE, count / 2, count / 2 + 3)));
    edit.commit();
    return geometry;
}

/// The meshes of circles, spheres, capped and open tubes, in this order.
std::vector<const RQ_PrimQuadricMesh *> meshesIn(const std::vector<RQ_PrimitiveHandle> &primitives)
{
    const auto *tubes = as<RQ_PrimCollect>(primitives.back());
    const size_t first = primitives.size() - 3;
    return {as<RQ_PrimCircleMesh>(primitives[first]), as<RQ_PrimSphereMesh>(primitives[first + 1]),
            as<RQ_PrimTubeMesh>(tubes->getPrim(0)), as<RQ_PrimTubeMesh>(tubes->getPrim(1))};
}

TEST(QuadricCollectors, GatherEveryQuadricOnce)
{
    for (const int count : {40, 25000})  // the second on several threads
    {
        const MOD_ConstDetailHandle detail = makeQuadrics(count).read();
        const std::vector<RQ_PrimitiveHandle> primitives = refine(detail);
        ASSERT_EQ(primitives.size(), 4u);  // the first: points that no primitive uses any more
        int64_t found = 0;
        const int kinds[][2] = {{0, 0}, {3, 4}, {1, 1}, {2, 2}};
        for (size_t kind = 0; kind < 4; ++kind)
        {
            const RQ_PrimQuadricMesh *mesh = meshesIn(primitives)[kind];
            ASSERT_TRUE(mesh);
            const RQ_AttributeListHandle &list = mesh->getVertexAttributes();
            EXPECT_EQ(list->entries(), 3);
            int64_t before = -1;
            for (int64_t i = 0; i < mesh->getQuadricCount(); ++i)
            {
                const int64_t number = list->get("number")->getI64(i);
                const MSH_Quadric quadric(*detail.readLock(), number);
                EXPECT_TRUE(number > before && (number % 5 == kinds[kind][0] || number % 5 == kinds[kind][1]));
                EXPECT_EQ(list->get("vertex")->getI64(i), quadric.vertex(0));
                EXPECT_EQ(list->get("point")->getI64(i), quadric.point(0));
                BAS_Mat4d matrix;
                mesh->getTransforms()->getMatrix(matrix, i, 0);
                EXPECT_EQ(matrix, quadric.placement());
                before = number;
            }
            found += mesh->getQuadricCount();
        }
        EXPECT_TRUE(static_cast<const RQ_PrimTubeMesh *>(meshesIn(primitives)[2])->getCaps());
        EXPECT_EQ(found, detail.readLock()->primitiveCount());

        // The detail is as large as all that comes out of it, wherever it is put.
        const BAS_Mat4d matrix = BAS_Mat4d().setAxisAngle(BAS_Vec3d(1, 2, 3).normalized(), 1.0);
        const RQ_TransformHandle turn(new RQ_Transform(&matrix, 1));
        const RQ_PrimitiveHandle whole = RQ_MSHDetail::makeDetail(detail);
        whole->setPrimitiveTransform(turn);
        BAS_BoundingBox of, parts;
        whole->enlargeBounds(&of, 1);
        for (size_t kind = 0; kind < 4; ++kind)
            meshesIn(primitives)[kind]->copyTransformed(turn)->enlargeBounds(&parts, 1);
        primitives[0]->copyTransformed(turn)->enlargeBounds(&parts, 1);
        EXPECT_EQ(of, parts);
    }
}

TEST(QuadricCollectors, FollowChangesSegmentsAndTheCallersFilter)
{
    struct OnlyNumbers final : RQ_MSHAttributeFilter
    {
        bool isValid(const ELM_Attribute &attribute) const override { return attribute.name() == "number"; }
    } filter;
    RQ_RefineParms parms;
    parms.setAttributeFilter(&filter);
    const MOD_DetailHandle geometry = makeQuadrics(40);
    const auto shift = [&](const char *name, float by) {
        MOD_Edit edit(geometry);
        edit.attribute(ELM_OWNER_POINT, name, ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)->modifyAll<float>()[3 * 39] += by;
        return edit.commit();
    };
    const MOD_ConstDetailHandle still = shift("v", 256.0f), moved = shift("P", 128.0f);
    const auto refineMoving = [&](const RQ_PrimitiveHandle &moving) {
        RQ_RefineList all;
        EXPECT_TRUE(all.refine(moving.get(), &parms));
        return std::vector<RQ_PrimitiveHandle>{all.getPrimitive(1), all.getPrimitive(2), all.getPrimitive(3)};
    };
    const std::vector<RQ_PrimitiveHandle> lists[] = {refine(still, &parms), refine(still, &parms), refine(moved, &parms),
                                                     refineMoving(new RQ_MSHDetail({still, moved})),
                                                     refineMoving(RQ_MSHDetail::makeMoving(still, 2, 0.5))};
    for (size_t i = 0; i < 4; ++i)
    {
        const RQ_PrimQuadricMesh &a = *meshesIn(lists[0])[i], &b = *meshesIn(lists[1])[i], &c = *meshesIn(lists[2])[i];
        EXPECT_EQ(a.getVertexAttributes()->entries(), 1);
        uint64_t first, second;
        EXPECT_TRUE(a.getDataIdHash(first, 0, false) && c.getDataIdHash(second, 0, false) && first == second);
        EXPECT_EQ(a.getTransforms()->getDataId(), b.getTransforms()->getDataId());
        EXPECT_NE(a.getTransforms()->getDataId(), c.getTransforms()->getDataId());
        for (const RQ_PrimQuadricMesh *moving : {meshesIn(lists[3])[i], meshesIn(lists[4])[i]})
        {
            BAS_BoundingBox boxes[4];
            moving->enlargeBounds(boxes, 2);
            a.enlargeBounds(boxes + 2, 1);
            c.enlargeBounds(boxes + 3, 1);
            EXPECT_EQ(moving->getMotionSegments(), 2);
            EXPECT_TRUE(boxes[0] == boxes[2] && boxes[1] == boxes[3]);
        }
    }
}

TEST(QuadricCollectors, TubesOfManyShapesAreAsManyMeshes)
{
    const int count = 100'000;  // a search among all kinds for each would take minutes
    const MOD_DetailHandle geometry;
    MOD_Edit edit(geometry);
    ASSERT_TRUE(edit.appendPoints(count));
    for (int i = 0; i < count; ++i)
        ASSERT_TRUE(edit.appendTubes({0.25 * (i % (count / 2)), false}, std::vector<int32_t>{i}));
    edit.commit();
    const std::vector<RQ_PrimitiveHandle> primitives = refine(geometry.read());
    const auto *tubes = as<RQ_PrimCollect>(primitives.back());
    ASSERT_TRUE(tubes && tubes->entries() == count / 2);
    for (int i = 0; i < count / 2; ++i)
    {
        const auto *mesh = as<RQ_PrimTubeMesh>(tubes->getPrim(i));
        ASSERT_EQ(mesh->getTaper(), 0.25 * i);
        ASSERT_EQ(mesh->getQuadricCount(), 2);
    }
}
}  // namespace
