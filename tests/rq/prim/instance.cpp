#include <random>
#include <thread>

#include <gtest/gtest.h>

#include <host/bas/Parallel.h>
#include <rq/prim/CompactTransformArray.h>
#include <rq/prim/PrimInstance.h>
#include <rq/prim/RefineCollect.h>

#include "TestPrimitive.h"

namespace
{
std::vector<BAS_Mat4d> randomMatrices(size_t count, bool affine, unsigned seed)
{
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> value(-2.0, 2.0);
    std::vector<BAS_Mat4d> matrices(count);
    for (BAS_Mat4d &matrix : matrices)
        for (int i = 0; i < 16; ++i)
            if (!affine || i % 4 != 3)
                matrix[i / 4][i % 4] = value(random);
    if (count > 1)
        matrices[1] = BAS_Mat4d(0.0);  // singular
    if (count > 1 && affine)
        matrices[1][3][3] = 1.0;
    return matrices;
}

// Both kinds of array must answer alike.
void expectSame(const RQ_TransformArray &a, const RQ_TransformArray &b)
{
    ASSERT_EQ(a.entries(), b.entries());
    EXPECT_EQ(a.getMotionSegments(), b.getMotionSegments());
    for (int64_t i = -1; i <= a.entries(); ++i)
        for (int s = -1; s <= a.getMotionSegments(); ++s)
        {
            BAS_Mat4d fromA, fromB;
            a.getMatrix(fromA, i, s);
            b.getMatrix(fromB, i, s);
            ASSERT_EQ(fromA, fromB) << i << " segment " << s;
            a.getInverse(fromA, i, s);
            b.getInverse(fromB, i, s);
            ASSERT_EQ(fromA, fromB) << "inverse of " << i << " segment " << s;
        }
    EXPECT_EQ(jsonOf(a), jsonOf(b));
}

struct ArrayCase
{
    const char *what;
    int64_t count;
    int segments;
    bool affine;
};

const ArrayCase kArrayCases[] = {
    {"empty", 0, 1, true},
    {"one", 1, 1, true},
    {"one of two segments", 1, 2, true},
    {"affine", 3000, 1, true},
    {"projective", 50, 1, false},
    {"affine in motion", 40, 3, true},
    {"projective in motion", 40, 2, false},
};

BAS_BoundingBox boundsOf(const RQ_Primitive &primitive)
{
    BAS_BoundingBox box;
    primitive.enlargeBounds(&box, 1);
    return box;
}
}  // namespace

TEST(TransformArray, CompactOnesAnswerLikePlainOnes)
{
    for (const ArrayCase &c : kArrayCases)
    {
        SCOPED_TRACE(c.what);
        const auto matrices = randomMatrices(size_t(c.count * c.segments), c.affine, 1);
        const RQ_TransformArrayHandle plain(new RQ_TransformArray);
        plain->setMatrices(matrices.data(), c.count, c.segments);
        const BAS_IntrusivePtr<RQ_CompactTransformArray> compact(
            new RQ_CompactTransformArray(matrices.data(), c.count, c.segments));
        EXPECT_EQ(compact->isAffine(), c.affine);
        EXPECT_LE(compact->getMemoryUsage(), 512 + c.count * c.segments * (c.affine ? 96 : 128));
        expectSame(*plain, *compact);

        const auto by = randomMatrices(2, c.affine, 2);
        const RQ_TransformHandle other(new RQ_Transform(by.data(), 2));
        expectSame(*plain->multiply(other), *compact->multiply(other));
        expectSame(*plain->preMultiply(other), *compact->preMultiply(other));
        EXPECT_EQ(compact->multiply(RQ_Transform::identity()), compact);
        EXPECT_EQ(plain->preMultiply({}), plain);

        // Growing, with what does not fit the layout so far.
        for (const RQ_TransformArrayHandle &array : {plain, RQ_TransformArrayHandle(compact)})
        {
            array->append(array);
            array->append(RQ_TransformHandle());
            array->append(translation(1, 2, 3));
            array->setEntries(array->entries() + 1);
            array->set(array->entries(), translation(4, 5, 6));
            array->set(-1, translation(4, 5, 6));
        }
        BAS_Array<BAS_Mat4d> fromPlain, fromCompact;
        plain->getTransforms(fromPlain);
        compact->getTransforms(fromCompact);
        EXPECT_EQ(fromPlain, fromCompact);
        compact->append(other);
        EXPECT_EQ(compact->getMotionSegments(), std::max(c.segments, 2));
        compact->setTransforms(fromPlain);
        plain->setTransforms(fromPlain);
        expectSame(*plain, *compact);
    }
}

TEST(TransformArray, InversesAreTheSameWhoeverAsksFirst)
{
    const auto matrices = randomMatrices(20000, true, 3);
    const RQ_CompactTransformArray array(matrices.data(), int64_t(matrices.size()));
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&array] { array.computeInverse(); });
    for (std::thread &thread : threads)
        thread.join();
    for (size_t i = 0; i < matrices.size(); ++i)
    {
        BAS_Mat4d expected, inverse;
        RQ_Transform(&matrices[i], 1).getInverse(expected, 0);
        array.getInverse(inverse, int64_t(i), 0);
        ASSERT_EQ(expected, inverse) << i;
    }
}

TEST(PrimInstance, WithoutGeometryOrTransformsIsEmpty)
{
    const RQ_PrimitiveHandle point(new TestPrimitive(listOf("P", {positions({1, 2, 3})})));
    const RQ_TransformArrayHandle none(new RQ_TransformArray), one(new RQ_TransformArray);
    one->append(RQ_TransformHandle());
    for (const RQ_PrimInstance &empty :
         {RQ_PrimInstance({}, {}), RQ_PrimInstance({}, one), RQ_PrimInstance(point, {}), RQ_PrimInstance(point, none)})
    {
        RQ_RefineCollect sink;
        EXPECT_FALSE(empty.refine(sink, nullptr) || sink.entries() > 0);
        EXPECT_TRUE(boundsOf(empty).isEmpty());
        EXPECT_EQ(empty.getMotionSegments(), 1);
        EXPECT_TRUE(empty.harden());
    }
    EXPECT_FALSE(RQ_PrimInstance({}, one).isSimplePrimitive());
    EXPECT_TRUE(RQ_PrimInstance(point, one).isSimplePrimitive());
    EXPECT_FALSE(RQ_PrimInstance(point, one, listOf("id", {numbers<int32_t>({1})})).isSimplePrimitive());
    EXPECT_FALSE(RQ_PrimInstance(new RQ_PrimCollect, one).isSimplePrimitive());
}

TEST(PrimInstance, PlacesTheGeometryFirstAndItselfLast)
{
    const RQ_PrimitiveHandle point(new TestPrimitive(listOf("P", {positions({1, 0, 0})})));
    point->setPrimitiveTransform(translation(1, 0, 0));
    const RQ_TransformArrayHandle transforms(new RQ_TransformArray);
    transforms->append(transformOf(BAS_Mat4d().setScale(BAS_Vec3d(10, 1, 1))));
    transforms->append(RQ_TransformHandle());
    RQ_PrimInstance instances(point, transforms, listOf("id", {numbers<int32_t>({7, 8})}));
    instances.setPrimitiveTransform(translation(0, 0, 5));

    for (const bool collected : {false, true})
    {
        SCOPED_TRACE(collected ? "a collection" : "a primitive");
        RQ_PrimitiveHandle geometry = point;
        if (collected)
        {
            const BAS_IntrusivePtr<RQ_PrimCollect> collection(new RQ_PrimCollect);
            collection->appendPrimitive(new TestPrimitive(listOf("P", {positions({1, 0, 0})})));
            collection->setPrimitiveTransform(translation(1, 0, 0));
            geometry = collection;
        }
        RQ_PrimInstance placed(geometry, transforms);
        placed.setPrimitiveTransform(translation(0, 0, 5));
        EXPECT_EQ(boundsOf(placed), BAS_BoundingBox(BAS_Vec3f(2, 0, 5), BAS_Vec3f(20, 0, 5)));
        BAS_BoundingBox render;
        placed.enlargeRenderBounds(&render, 1);
        EXPECT_EQ(render, boundsOf(placed));
    }

    RQ_RefineCollect sink;
    EXPECT_TRUE(instances.refine(sink, nullptr));
    ASSERT_EQ(sink.entries(), 2);
    BAS_BoundingBox all;
    sink.getPrim(0)->enlargeBounds(&all, 1);
    sink.getPrim(1)->enlargeBounds(&all, 1);
    EXPECT_EQ(all, boundsOf(instances));
    EXPECT_EQ(all, boundsOf(*instances.harden()));
    EXPECT_EQ(all, boundsOf(*instances.clone()));
    EXPECT_EQ(jsonOf(instances).rfind("[\"PackedInstance\",", 0), 0u);
    RQ_Owner owner;
    EXPECT_TRUE(instances.findAttribute("id", owner, 0));
    EXPECT_EQ(owner, RQ_OWNER_UNIFORM);
}

TEST(PrimInstance, BoundsDoNotDependOnThreads)
{
    const auto matrices = randomMatrices(30000, true, 4);
    const RQ_TransformArrayHandle transforms(new RQ_CompactTransformArray(matrices.data(), int64_t(matrices.size())));
    for (const size_t points : {3, 1000})
    {
        const RQ_DataArrayHandle array(new RQ_DANumeric<float>(int64_t(points), 3, RQ_TYPE_POINT));
        const auto cloud = static_cast<RQ_DANumeric<float> *>(array.get())->data();
        for (size_t i = 0; i < 3 * points; ++i)
            cloud[i] = float(i % 17) - 8.0f;
        const RQ_PrimInstance instances(new TestPrimitive(listOf("P", {array})), transforms);
        const BAS_BoundingBox parallel = boundsOf(instances);
        const BAS_Threads::Limit limit(1);
        EXPECT_EQ(parallel, boundsOf(instances)) << points;

        BAS_BoundingBox exact;
        RQ_RefineCollect sink;
        instances.refine(sink, nullptr);
        sink.getPrim()->enlargeBounds(&exact, 1);
        BAS_BoundingBox both = parallel;
        both.enlarge(exact);
        EXPECT_EQ(both, parallel) << "the box leaves points out";
        EXPECT_TRUE(points > 3 || exact == parallel);
    }
}
