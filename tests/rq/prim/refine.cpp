#include <algorithm>
#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include <rq/prim/PrimitiveType.h>
#include <rq/prim/RefineCollect.h>
#include <rq/prim/RefineList.h>

#include "TestPrimitive.h"

namespace
{
using CollectHandle = BAS_IntrusivePtr<RQ_PrimCollect>;

TestPrimitiveHandle leaf(double area = 0.0)
{
    const TestPrimitiveHandle primitive(new TestPrimitive);
    primitive->area = area;
    return primitive;
}

CollectHandle collectionOf(const std::vector<RQ_PrimitiveHandle> &children)
{
    const CollectHandle collection(new RQ_PrimCollect);
    for (const RQ_PrimitiveHandle &child : children)
        collection->appendPrimitive(child);
    return collection;
}

// Unit cubes in a row, the last of them two units higher.
CollectHandle rowOfBoxes(int count)
{
    const CollectHandle row(new RQ_PrimCollect);
    for (int i = 0; i < count; ++i)
    {
        const double up = i + 1 == count ? 2 : 0;
        row->appendPrimitive(new TestPrimitive(listOf("P", {positions({double(i), up, 0, i + 1.0, up + 1, 1})})));
    }
    return row;
}

class SerialSink : public RQ_Refine
{
public:
    bool allowThreading() const override { return false; }
    void addPrimitive(const RQ_PrimitiveHandle &primitive) override { received.push_back(primitive); }

    std::vector<RQ_PrimitiveHandle> received;
};

TEST(RefineCollect, AppendsOnlyToCollections)
{
    const CollectHandle three = collectionOf({leaf(), leaf(), leaf()});
    RQ_RefineCollect onto(three), beside((leaf()));
    EXPECT_EQ(beside.entries(), 0);
    onto.addPrimitive(nullptr);
    onto.addPrimitive(leaf());
    EXPECT_EQ(three->entries(), 4);
    EXPECT_FALSE(onto.getPrim(4));
    EXPECT_FALSE(onto.getPrim(-1));
}

TEST(RefineList, KeepsTheOrderAndNulls)
{
    const TestPrimitiveHandle parent = leaf();
    RQ_RefineList list;
    EXPECT_TRUE(list.begin().atEnd());
    EXPECT_FALSE(list.refine(nullptr, nullptr));
    EXPECT_FALSE(list.refine(parent.get(), nullptr));
    parent->children = {leaf(), nullptr, leaf()};
    EXPECT_TRUE(list.refine(parent.get(), nullptr));
    RQ_RefineList copy(list);
    EXPECT_TRUE(copy.refine(parent.get(), nullptr));
    EXPECT_EQ(list.entries(), 3) << "the sink of a copy is its own";
    EXPECT_EQ(copy.entries(), 6);
    for (RQ_RefineList::iterator it = list.begin(); !it.atEnd(); ++it)
        EXPECT_EQ(it.getPrimitive(), parent->children[size_t(it.getCurr())]);
}

TEST(RefinePrimitive, StopsWhenNothingChanges)
{
    const TestPrimitiveHandle a = leaf(), b = leaf(), one = leaf(), two = leaf();
    one->children = {a};
    two->children = {a, b};
    const auto refined = [](const RQ_PrimitiveHandle &primitive) {
        return RQ_Primitive::refinePrimitive(primitive, nullptr);
    };
    EXPECT_EQ(refined(nullptr), nullptr);
    EXPECT_EQ(refined(a), nullptr);
    EXPECT_EQ(refined(one), a);
    EXPECT_EQ(refined(collectionOf({})), nullptr);
    EXPECT_EQ(refined(collectionOf({a})), a);
    EXPECT_EQ(refined(collectionOf({a, b})), nullptr) << "as many again";
    struct OtherKind : RQ_PrimCollect
    {
        using RQ_PrimCollect::RQ_PrimCollect;
        int getPrimitiveType() const override { return RQ_PRIM_MSH_LIST; }
    };
    const CollectHandle other(new OtherKind);
    other->appendPrimitive(a);
    other->appendPrimitive(b);
    EXPECT_TRUE(refined(other)) << "no collection by its type";

    two->setStaticGeometry(true);
    const RQ_PrimitiveHandle both = refined(two);
    ASSERT_TRUE(both);
    EXPECT_EQ(both->getPrimitiveType(), RQ_PRIM_COLLECT);
    EXPECT_TRUE(both->isStaticGeometry());
    one->setStaticGeometry(true);
    a->setStaticGeometry(false);
    EXPECT_FALSE(refined(one)->isStaticGeometry()) << "a known state is kept";
}

TEST(RefinePrimitive, MeasuresAreSums)
{
    const CollectHandle inner = collectionOf({leaf(1.0), nullptr, leaf(2.0)});
    const TestPrimitiveHandle outer = leaf(100.0);
    outer->children = {inner, leaf(4.0), nullptr};
    EXPECT_EQ(outer->computeSurfaceArea(2), 21.0);
    EXPECT_EQ(outer->computePerimeter(0), 0.0);
}

TEST(PrimCollect, HandsOutItsChildrenPlaced)
{
    const TestPrimitiveHandle own = leaf();
    own->setPrimitiveTransform(translation(1, 0, 0));
    const CollectHandle collection = collectionOf({own, nullptr, leaf()});
    RQ_RefineList none, plain, moved;
    EXPECT_FALSE(none.refine(collectionOf({}).get(), nullptr));
    EXPECT_TRUE(plain.refine(collection.get(), nullptr));
    ASSERT_EQ(plain.entries(), 2);
    EXPECT_EQ(plain.getPrimitive(0), own);

    collection->setPrimitiveTransform(translation(0, 2, 0));
    EXPECT_TRUE(moved.refine(collection->clone().get(), nullptr));
    ASSERT_EQ(moved.entries(), 2);
    EXPECT_TRUE(*moved.getPrimitive(0)->getPrimitiveTransform() == *translation(1, 2, 0));
    EXPECT_TRUE(*own->getPrimitiveTransform() == *translation(1, 0, 0));
}

TEST(PrimCollect, GivesTheSamePrimitivesWithAndWithoutThreads)
{
    const std::vector<RQ_PrimitiveHandle> leaves = {leaf(), leaf(), leaf(), leaf(), leaf(), leaf(), leaf()};
    const CollectHandle wide(new RQ_PrimCollect);
    wide->reserve(1000000);
    for (size_t i = 0; i < 1000000; ++i)
        wide->appendPrimitive(leaves[i % leaves.size()]);
    SerialSink serial;
    RQ_RefineList list;
    EXPECT_TRUE(wide->refine(serial, nullptr));
    EXPECT_TRUE(list.refine(wide.get(), nullptr));
    ASSERT_EQ(serial.received.size(), 1000000u);
    for (int64_t i = 0; i < wide->entries(); ++i)
        ASSERT_EQ(serial.received[size_t(i)], wide->getPrim(i)) << "child " << i;
    std::vector<RQ_PrimitiveHandle> threaded;
    for (int i = 0; i < list.entries(); ++i)
        threaded.push_back(list.getPrimitive(i));
    std::sort(serial.received.begin(), serial.received.end());
    std::sort(threaded.begin(), threaded.end());
    EXPECT_EQ(serial.received, threaded);
}

TEST(PrimCollect, LosesNothingFromManyThreads)
{
    constexpr int kThreads = 4, kEach = 20000;
    const CollectHandle collection(new RQ_PrimCollect);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([=] {
            for (int i = 0; i < kEach; ++i)
                collection->appendPrimitive(leaf(t * kEach + i));
        });
    // What is counted can be read while others append.
    while (collection->entries() < kThreads * kEach)
        ASSERT_TRUE(collection->entries() == 0 || collection->getPrim(collection->entries() - 1));
    for (std::thread &thread : threads)
        thread.join();

    int next[kThreads] = {};
    const CollectHandle copy(new RQ_PrimCollect(*collection));
    for (int64_t i = 0; i < kThreads * kEach; ++i)
    {
        const int place = int(copy->getPrim(i)->computeSurfaceArea(0));
        ASSERT_EQ(place % kEach, next[place / kEach]++) << "the order of one thread is kept";
    }
    collection->clear();
    EXPECT_EQ(collection->entries(), 0);
    EXPECT_EQ(copy->entries(), kThreads * kEach);
}

TEST(PrimCollect, RefinesIntoItselfOnlyOnce)
{
    for (const int count : {1, 3000})
    {
        const CollectHandle collection = rowOfBoxes(count);
        RQ_RefineCollect onto(collection);
        EXPECT_TRUE(collection->refine(onto, nullptr));
        EXPECT_EQ(collection->entries(), 2 * count);
    }
}

TEST(PrimCollect, BoundsDoNotDependOnTheCount)
{
    for (const int count : {1, 511, 512, 2000})
    {
        SCOPED_TRACE(count);
        const CollectHandle row = rowOfBoxes(count);
        row->appendPrimitive(nullptr);
        row->setPrimitiveTransform(translation(100, 100, 100));
        // More boxes than segments, and one that holds something already.
        std::vector<BAS_BoundingBox> boxes(9);
        boxes[8].enlarge(BAS_Vec3f(-5.0f));
        row->enlargeBounds(boxes.data(), 9);
        const BAS_Vec3f low(0, count == 1 ? 2 : 0, 0), high(float(count), 3, 1);
        EXPECT_EQ(boxes[0], BAS_BoundingBox(low, high));
        EXPECT_EQ(boxes[8], BAS_BoundingBox(BAS_Vec3f(-5.0f), high));
        row->enlargeRenderBounds(nullptr, 0);
    }
}

TEST(PrimCollect, SumsUpItsChildren)
{
    const TestPrimitiveHandle moving = leaf(), still = leaf();
    moving->motionSegments = 3;
    still->motionSegments = 2;
    moving->lists[RQ_OWNER_POINT] = listOf("v", {numbers<float>({1, 1, 1, 2, 2, 2}, 3)});
    EXPECT_EQ(collectionOf({nullptr})->getMotionSegments(), 1);
    const CollectHandle collection = collectionOf({moving, nullptr, still});
    EXPECT_EQ(collection->getMotionSegments(), 2);
    BAS_Vec3f low, high;
    collectionOf({moving})->getVelocityRange(low, high, "v");
    EXPECT_EQ(low, BAS_Vec3f(0.0f));
    EXPECT_EQ(high, BAS_Vec3f(2.0f));
}

TEST(PrimCollect, HardensWhatCanBeHardened)
{
    const TestPrimitiveHandle soft = leaf(), refuses = leaf();
    refuses->hardens = false;
    const CollectHandle collection = collectionOf({soft, nullptr, refuses});
    testing::internal::CaptureStderr();
    const RQ_PrimitiveHandle hardened = collection->harden();
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "TestPrimitive\n");

    const auto *result = dynamic_cast<const RQ_PrimCollect *>(hardened.get());
    ASSERT_TRUE(result);
    EXPECT_TRUE(result->getPrim(0));
    EXPECT_NE(result->getPrim(0), soft);
    EXPECT_FALSE(result->getPrim(1));
    EXPECT_EQ(result->getPrim(2), refuses);
}

TEST(PrimCollect, SavesAsList)
{
    EXPECT_EQ(jsonOf(*collectionOf({nullptr, collectionOf({}), leaf()})),
              "[\"List\",[[\"List\",[]],[\"TestPrimitive\",\"::save() not implemented\"]]]");
}

// Refines what it receives at once, on the thread that brought it.
class DeepSink : public RQ_Refine
{
public:
    void addPrimitive(const RQ_PrimitiveHandle &primitive) override { leaves += !primitive->refine(*this, nullptr); }

    std::atomic<int64_t> leaves{0};
};

TEST(PrimCollect, NestsDeepAndWide)
{
    RQ_PrimitiveHandle nest(new TestPrimitive(listOf("P", {positions({1, 2, 3})})));
    for (int i = 0; i < 1000; ++i)
        nest = collectionOf({nest});

    BAS_BoundingBox box;
    nest->enlargeBounds(&box, 1);
    EXPECT_EQ(box.minimum(), BAS_Vec3f(1, 2, 3));
    EXPECT_EQ(nest->getMemoryUsage(), 1000 + 96000);

    // Parallel loops in a parallel loop.
    std::vector<RQ_PrimitiveHandle> children(600, collectionOf(std::vector<RQ_PrimitiveHandle>(600, leaf())));
    children.push_back(nest);
    DeepSink sink;
    EXPECT_TRUE(collectionOf(children)->refine(sink, nullptr));
    EXPECT_EQ(sink.leaves, 600 * 600 + 1);

    int depth = 0;
    for (; const RQ_PrimitiveHandle next = RQ_Primitive::refinePrimitive(nest, nullptr); ++depth)
        nest = next;
    EXPECT_EQ(depth, 1000);
}
}  // namespace
