#include <algorithm>
#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <host/bas/Parallel.h>
#include <host/bas/StringMMPattern.h>
#include <rq/data/mixId.h>
#include <rq/prim/PrimitiveType.h>
#include <tests/slots.h>

#include "TestPrimitive.h"

namespace
{
BAS_BoundingBox box(const BAS_Vec3f &low, const BAS_Vec3f &high) { return {low, high}; }

TEST(PrimitiveType, IdsWithoutNameAndOfOthers)
{
    for (const int id : {-1, 31, 48, 49, 1000})
        EXPECT_STREQ(RQprimitiveType(id), "<unknown>") << id;
    EXPECT_STREQ(RQprimitiveType(RQ_PRIM_CHANNEL), "Channel");
    EXPECT_GE(RQ_Primitive::createPrimitiveTypeId(), 50);
}

TEST(Primitive, VirtualOperationsKeepTheirSlots)
{
    using P = RQ_Primitive;
    expectSlotsInOrder(
        {slotsOf(&P::className, &P::getPrimitiveType, &P::getUniqueID, &P::enlargeBounds, &P::enlargeRenderBounds,
                 &P::getVelocityRange, &P::refine, &P::getMotionSegments, &P::getMemoryUsage, &P::getPointAttributes,
                 &P::getVertexAttributes, &P::getUniformAttributes, &P::getDetailAttributes, &P::hasDataArray,
                 &P::updateGeoPrim, &P::getTopologyVersion, &P::save, &P::viewportRefineOptions, &P::getVertexList,
                 &P::createPointNormals, &P::computePerimeter, &P::computeSurfaceArea, &P::computeVolume, &P::doHarden,
                 &P::doSoftCopy, &P::doAttributeMerge)},
        26);
}

TEST(Primitive, FindsAttributesByOwnerOrder)
{
    const TestPrimitiveHandle primitive(new TestPrimitive);
    const RQ_DataArrayHandle vertex = numbers<float>({1}), point = numbers<double>({1, 2}, 2), detail = numbers<float>({3});
    primitive->lists[RQ_OWNER_VERTEX] = listOf("a", {vertex})->addAttribute("null", RQ_DataArrayHandle(), true);
    primitive->lists[RQ_OWNER_POINT] = listOf("a", {point})->addAttribute("null", point, true);
    primitive->lists[RQ_OWNER_DETAIL] = listOf("d", {detail, vertex});

    const auto found = [&](const char *name, int segment) {
        RQ_Owner owner = RQ_OWNER_INVALID;
        const RQ_DataArrayHandle array = primitive->findAttribute(name, owner, segment);
        return std::pair(array, owner);
    };
    EXPECT_EQ(found("absent", 0), std::pair(RQ_DataArrayHandle(), RQ_OWNER_DETAIL));
    EXPECT_EQ(found("a", 0), std::pair(vertex, RQ_OWNER_VERTEX));
    EXPECT_EQ(found("null", 0), std::pair(point, RQ_OWNER_POINT));
    EXPECT_EQ(found("d", 9), std::pair(vertex, RQ_OWNER_DETAIL));

    const RQ_Owner order[] = {RQ_OWNER_UNIFORM, RQ_OWNER_POINT, RQ_OWNER_VERTEX};
    RQ_Storage storage = RQ_STORAGE_INVALID;
    int64_t size = 0;
    EXPECT_TRUE(primitive->hasDataArray("a", order, 3, &storage, &size));
    EXPECT_EQ(storage, RQ_STORAGE_REAL64);
    EXPECT_EQ(size, 2);
    EXPECT_FALSE(primitive->hasDataArray("a", order, 1));
}

TEST(Primitive, DataIdHashIsMixedAndKept)
{
    const TestPrimitiveHandle primitive(new TestPrimitive);
    const RQ_AttributeListHandle first = listOf("a", {numbers<float>({1}), numbers<float>({2})});
    const RQ_AttributeListHandle second = listOf("b", {numbers<float>({1})});
    primitive->lists[RQ_OWNER_DETAIL] = first;
    primitive->lists[RQ_OWNER_VERTEX] = second;

    uint64_t own = 0, detail = 0, hash = 0;
    ASSERT_TRUE(first->getDataIdHash(detail, 0));
    ASSERT_TRUE(second->getDataIdHash(own, 0));
    // Several threads may fill the cache at once.
    std::vector<uint64_t> seen(64);
    host::parallelFor(64, 1, [&](int64_t i) { primitive->getDataIdHash(seen[size_t(i)], 0, true); });
    ASSERT_TRUE(primitive->getDataIdHash(hash, -1, true));
    EXPECT_EQ(hash, RQmixId(detail) + own);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), hash), 64);

    // Changed lists show that the kept hash is used, for this segment alone, by copies too, and until it is dropped.
    primitive->lists[RQ_OWNER_VERTEX] = first;
    const auto hashOf = [](const RQ_Primitive &of, int segment) {
        uint64_t result = 0;
        EXPECT_TRUE(of.getDataIdHash(result, segment, segment > 1)) << segment;
        return result;
    };
    EXPECT_EQ(hashOf(*primitive, 0), hash);
    EXPECT_NE(hashOf(*primitive, 1), hash);
    EXPECT_EQ(hashOf(*primitive->clone(), 0), hash);
    primitive->dropDataIdHash();
    EXPECT_NE(hashOf(*primitive, 0), hash);
    const uint64_t great = hashOf(*primitive, 0x40000000);
    EXPECT_NE(hashOf(*primitive, 0), great) << "a segment too great to be kept";

    first->get(0, 1)->setDataId(-1);
    EXPECT_FALSE(primitive->getDataIdHash(hash, 1, true));
}

TEST(Primitive, WidthsGrowBounds)
{
    const struct
    {
        const char *what;
        RQ_AttributeListHandle list;
        float byDefault;
        float margins[2];
        bool found;
    } cases[] = {{"no attribute, no default", nullptr, 0.0f, {0, 0}, false},
                 {"no attribute, negative default", nullptr, -1.0f, {0.05f, 0.05f}, false},
                 {"no attribute, no number for default", nullptr, NAN, {0, 0}, false},
                 {"no entries", listOf("width", {numbers<float>({})}), 9.0f, {0, 0}, true},
                 {"largest magnitude, whole", listOf("width", {numbers<float>({1, -3, 2})}), 9.0f, {3, 3}, true},
                 {"other name", listOf("pscale", {numbers<double>({2})}), 9.0f, {2, 2}, true},
                 {"not a number", listOf("width", {numbers<float>({NAN})}), 9.0f, {0, 0}, true},
                 {"infinite beside finite", listOf("width", {numbers<float>({INFINITY, -2, NAN})}), 9.0f, {2, 2}, true},
                 {"moving", listOf("width", {numbers<float>({1}), numbers<float>({2})}), 9.0f, {1, 2}, true}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        const TestPrimitiveHandle primitive(new TestPrimitive(c.list));
        BAS_BoundingBox boxes[] = {box({-1, -1, -1}, {1, 1, 1}), box({0, 0, 0}, {0, 0, 0}), BAS_BoundingBox()};
        EXPECT_EQ(primitive->enlargeWidth(boxes, 3, c.byDefault), c.found);
        EXPECT_EQ(boxes[0], box(BAS_Vec3f(-1 - c.margins[0]), BAS_Vec3f(1 + c.margins[0])));
        EXPECT_EQ(boxes[1], box(BAS_Vec3f(-c.margins[1]), BAS_Vec3f(c.margins[1])));
        EXPECT_TRUE(boxes[2].isEmpty());
    }
}

TEST(Primitive, BoundsArePlacedByTheTransform)
{
    const RQ_DataArrayHandle corners = positions({0, 0, 0, 2, 1, 0, NAN, 5, 5});
    const RQ_DataArrayHandle homogeneous = numbers<double>({2, 4, 6, 2, 9, 9, 9, 0}, 4, RQ_TYPE_HPOINT);
    const BAS_Mat4d quarter(0, 1, 0, 0, -1, 0, 0, 0, 0, 0, 1, 0, 1, 0, 0, 1);
    const BAS_BoundingBox plain = box({0, 0, 0}, {2, 5, 5});
    const RQ_TransformHandle &identity = RQ_Transform::identity(), moved = translation(1, 1, 1);
    const struct
    {
        const char *what;
        RQ_AttributeListHandle list;
        RQ_TransformHandle transform;
        BAS_BoundingBox expected;
    } cases[] = {{"no list", nullptr, identity, {}},
                 {"no positions", listOf("Q", {corners}), identity, {}},
                 {"too few components", listOf("P", {numbers<float>({1, 2}, 2)}), moved, {}},
                 {"as it is", listOf("P", {corners}), identity, plain},
                 {"no transform", listOf("P", {corners}), nullptr, plain},
                 {"turned", listOf("P", {corners}), transformOf(quarter), box({0, 0, 0}, {1, 2, 0})},
                 {"w = 0 is the origin", listOf("P", {homogeneous}), identity, box({0, 0, 0}, {1, 2, 3})},
                 {"homogeneous, moved", listOf("P", {homogeneous}), moved, box({1, 1, 1}, {2, 3, 4})}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        const TestPrimitiveHandle primitive(new TestPrimitive(c.list));
        primitive->setPrimitiveTransform(c.transform);
        BAS_BoundingBox boxes[2];
        primitive->enlargeRenderBounds(boxes, 2);
        EXPECT_EQ(boxes[0], c.expected);
        EXPECT_EQ(boxes[1], c.expected);
    }

    BAS_BoundingBox undivided, divided;
    TestPrimitive::enlargeP(undivided, *homogeneous);
    TestPrimitive::enlargePw(divided, *numbers<float>({2, 4, 6, 2}, 4));
    EXPECT_EQ(undivided, box({2, 4, 6}, {9, 9, 9}));
    EXPECT_EQ(divided, box({1, 2, 3}, {1, 2, 3}));
}

TEST(Primitive, VelocityRange)
{
    const struct
    {
        const char *what;
        RQ_Owner owner;
        RQ_DataArrayHandle array;
        BAS_Vec3f low, high;
    } cases[] = {
        {"absent", RQ_OWNER_POINT, nullptr, {0, 0, 0}, {0, 0, 0}},
        {"integers", RQ_OWNER_POINT, numbers<int32_t>({1, 2, 3}, 3), {0, 0, 0}, {0, 0, 0}},
        {"detail", RQ_OWNER_DETAIL, numbers<float>({1, 2, 3}, 3), {0, 0, 0}, {0, 0, 0}},
        {"one component", RQ_OWNER_UNIFORM, numbers<double>({1, -2}), {-2, 0, 0}, {1, 0, 0}},
        {"four components", RQ_OWNER_VERTEX, numbers<PLT_Half>({1, 2, 3, 9, -1, 4, 3, 9}, 4), {-1, 2, 3}, {1, 4, 3}}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        const TestPrimitiveHandle primitive(new TestPrimitive);
        primitive->lists[c.owner] = listOf("v", {c.array});
        BAS_Vec3f low(7.0f), high(7.0f);
        primitive->getVelocityRange(low, high, "v");
        EXPECT_EQ(low, c.low);
        EXPECT_EQ(high, c.high);
    }
}

TEST(Primitive, TopologyVersion)
{
    const TestPrimitiveHandle primitive(new TestPrimitive);
    int64_t version = 77;
    EXPECT_FALSE(primitive->getTopologyVersion(version));
    for (const RQ_DataArrayHandle &array : {numbers<int64_t>({}), numbers<int64_t>({-1}), numbers<int64_t>({5})})
    {
        EXPECT_EQ(version, 77);
        primitive->lists[RQ_OWNER_DETAIL] = listOf("__topology", {array});
        const bool found = primitive->getTopologyVersion(version);
        EXPECT_EQ(found, version == 5);
    }
    EXPECT_EQ(version, 5);
}

TEST(Primitive, MergesAttributesThatFit)
{
    const RQ_AttributeListHandle destination = listOf("P", {numbers<float>({1, 2})});
    const RQ_AttributeListHandle source = listOf("Cd", {numbers<float>({1, 2}), numbers<float>({3, 4})})
                                              ->addAttribute("Cx", numbers<float>({1}), true)
                                              ->addAttribute("P", numbers<float>({5, 6}), true);
    const BAS_StringMMPattern colors("C*"), all("*"), nothing("zz");
    const struct
    {
        const char *what;
        RQ_AttributeListHandle destination, source;
        const BAS_StringMMPattern *first, *second;
        std::vector<std::string> names;
        bool changed;
    } cases[] = {{"no source", destination, nullptr, &all, &all, {"P"}, false},
                 {"no pattern", destination, source, nullptr, nullptr, {"P"}, false},
                 {"wrong length left out", destination, source, &colors, nullptr, {"P", "Cd"}, true},
                 {"second pattern", destination, source, &nothing, &all, {"P", "Cd"}, true},
                 {"no destination", nullptr, source, nullptr, &colors, {"Cd"}, true},
                 {"nothing at all", nullptr, source, &nothing, nullptr, {}, false}};
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        bool changed = false;
        const RQ_AttributeListHandle result =
            RQ_Primitive::mergeAttributeLists(changed, c.destination, c.source, c.first, c.second);
        EXPECT_EQ(changed, c.changed);
        ASSERT_EQ(result ? result->entries() : 0, int(c.names.size()));
        for (int i = 0; i < int(c.names.size()); ++i)
            EXPECT_EQ(result->getName(i).view(), c.names[size_t(i)]);
        EXPECT_TRUE(c.changed ? result->get("Cd", 1) == source->get("Cd", 1) : result == c.destination);
        const bool takesP = c.changed && c.second == &all;
        EXPECT_TRUE(!takesP || result->get("P") == source->get("P"));
    }
}

TEST(Primitive, CopyTransformedSharesWhereNothingChanges)
{
    const TestPrimitiveHandle primitive(new TestPrimitive);
    const RQ_TransformHandle first = translation(1, 0, 0), second = transformOf(BAS_Mat4d().setScale(BAS_Vec3d(2.0)));
    EXPECT_EQ(primitive->copyTransformed(RQ_Transform::identity()), primitive);
    EXPECT_NE(primitive->copyTransformed(RQ_Transform::identity(), true), primitive);

    primitive->setPrimitiveTransform(nullptr);
    EXPECT_EQ(primitive->copyTransformed(nullptr), primitive);

    primitive->setPrimitiveTransform(first);
    const RQ_PrimitiveHandle placed = primitive->copyTransformed(second);
    EXPECT_TRUE(*placed->getPrimitiveTransform() == *first->multiply(second));
    EXPECT_EQ(primitive->getPrimitiveTransform(), first);

    const TestPrimitiveHandle child(new TestPrimitive);
    child->setPrimitiveTransform(second);
    child->refineCopyTransformFrom(*primitive);
    child->refineCopyTransformFrom(TestPrimitive());
    EXPECT_TRUE(*child->getPrimitiveTransform() == *second->multiply(first));
}

TEST(Primitive, DumpsWhatItCanSave)
{
    const TestPrimitiveHandle primitive(new TestPrimitive(listOf("P", {positions({1, 2, 3})})));
    primitive->setPrimitiveTransform(translation(4, 5, 6));
    testing::internal::CaptureStdout();
    primitive->dumpPrimitive();
    primitive->dumpAttributeLists("mesh", false);
    const std::string text = testing::internal::GetCapturedStdout();
    size_t at = 0;
    for (const char *part : {"::save() not implemented", "\"point\"", "\"transform\"", "mesh: no detail attributes\n",
                             "mesh: no uniform attributes\nmesh:Point 1 segments\n", "mesh: no vertex attributes\n"})
        EXPECT_NE(at = text.find(part, at), std::string::npos) << part << " in its place of " << text;
    EXPECT_EQ(text.find("\"constant\""), std::string::npos);
}
}  // namespace
