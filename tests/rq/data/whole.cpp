#include <cmath>

#include <host/bas/CopyCounter.h>
#include <rq/data/DAClamp.h>
#include <rq/data/DAConstant.h>
#include <rq/data/DAIndexedText.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DAList.h>
#include <rq/data/DARange.h>
#include <rq/data/DASubArray.h>
#include <rq/data/Positions.h>

#include "arrays.h"

namespace
{
const RQ_DataArrayHandle kNone;

TEST(Views, RefuseWhatTheyCannotShow)
{
    const RQ_DataArrayHandle source = makeArray<float>({1, 2, 3, 4, 5, 6}, 2);
    EXPECT_FALSE(RQ_DASubArray::createSubArray(kNone, 0, 0));
    EXPECT_FALSE(RQ_DASubArray::createSubArray(source, -1, 1));
    EXPECT_FALSE(RQ_DASubArray::createSubArray(source, 0, -1));
    EXPECT_FALSE(RQ_DASubArray::createSubArray(source, 2, 2));
    EXPECT_FALSE(RQ_DASubArray::createSubArray(source, std::numeric_limits<int64_t>::max(), 2));
    EXPECT_FALSE(RQ_DAConstant::createConstant(kNone, 0, 1));
    EXPECT_FALSE(RQ_DAConstant::createConstant(source, 3, 1));
    EXPECT_FALSE(RQ_DAIndirect::createIndirect(source, kNone));
    EXPECT_FALSE(RQ_DAIndirect::createIndirect(kNone, makeArray<int32_t>({0})));
    EXPECT_FALSE(RQ_DAIndirect::createIndirect(source, makeArray<float>({0})));
    EXPECT_FALSE(RQ_DAIndirect::createIndirect(source, makeArray<int32_t>({0, 1}, 2)));

    EXPECT_FALSE(RQ_DAClamp::createClamp(kNone, 3));
    EXPECT_FALSE(RQ_DAClamp::createClamp(makeArray<float>({}), 1)) << "nothing to repeat";
    EXPECT_EQ(RQ_DAClamp::createClamp(source, -2)->entries(), 0);
    EXPECT_EQ(RQ_DAClamp::createClamp(source, 5)->getF32(-100), 1.0f);

    const RQ_DataArrayHandle constant(new RQ_DAConstant);
    EXPECT_FALSE(constant->isValid());
    EXPECT_EQ(constant->entries(), 0);
    EXPECT_EQ(constant->harden(), constant);
}

TEST(Views, ThatShowAllOfTheSourceAreTheSource)
{
    const RQ_DataArrayHandle one = makeArray<float>({1, 2}, 2);
    EXPECT_EQ(RQ_DASubArray::createSubArray(one, 0, 1), one);
    EXPECT_EQ(RQ_DAClamp::createClamp(one, 1), one);
    EXPECT_EQ(RQ_DAConstant::createConstant(one, 0, 1), one);
    const RQ_DataArrayHandle two = RQ_DAConstant::createConstant(one, 0, 2);
    EXPECT_EQ(two->getF32(1, 1), 2.0f);
    EXPECT_EQ(RQ_DAConstant::createConstant(two, 0, 2), two);
    EXPECT_NE(RQ_DAConstant::createConstant(two, 1, 2), two);
}

// The values of an array whose own storage is asked for, and of windows on it, are never copied.
TEST(ZeroCopy, OnlyOtherStoragesAndScatteredEntriesAreCopied)
{
    const auto source = countingArray<float>(100, 3);
    const RQ_DataArrayHandle window = RQ_DASubArray::createSubArray(source, 10, 50);
    const RQ_DataArrayHandle scattered = RQ_DAIndirect::createIndirect(source, makeArray<int32_t>({5, 3}));
    RQ_DataArrayHandle buffer;
    using Totals = BAS_CopyCounter::Totals;
    auto copied = [last = BAS_CopyCounter::totals()]() mutable {
        const Totals before = std::exchange(last, BAS_CopyCounter::totals());
        return Totals{last[0] - before[0], last[1] - before[1], last[2] - before[2]};
    };
    EXPECT_EQ(source->getArray<float>(buffer), source->data());
    EXPECT_EQ(buffer, source) << "the buffer keeps the values alive";
    EXPECT_EQ(window->getF32Array(buffer), source->data() + 30);
    EXPECT_EQ(buffer, window);
    EXPECT_TRUE(rq::Positions(window).flat());
    BAS_BoundingBox box;
    window->enlargeBounds(box);
    scattered->enlargeBounds(box);
    EXPECT_TRUE(window->isEqual(*window) && window->hash());
    EXPECT_EQ(copied(), (Totals{0, 0, 0}));

    window->getRealArray(buffer);
    EXPECT_EQ(copied(), (Totals{50 * 3 * 8, 0, 0}));
    scattered->getF32Array(buffer);
    EXPECT_EQ(copied(), (Totals{0, 2 * 3 * 4, 0}));
    window->harden();
    EXPECT_EQ(copied(), (Totals{0, 0, 50 * 3 * 4}));
}

TEST(DataArray, ComparesValuesNotClassesOrMeaning)
{
    const float nan = std::nanf("");
    const RQ_DataArrayHandle withNaN = makeArray<float>({nan});
    const struct
    {
        const char *what;
        RQ_DataArrayHandle a, b;
        bool equal;
    } cases[] = {
        {"empty", makeArray<float>({}), makeArray<float>({}), true},
        {"meaning", makeArray<float>({1, 2, 3}, 3, RQ_TYPE_VECTOR), makeArray<float>({1, 2, 3}, 3, RQ_TYPE_NORMAL), true},
        {"signs of zero", makeArray<float>({-0.0f}), makeArray<float>({0.0f}), true},
        {"signs of half zero", makeArray<PLT_Half>({PLT_Half(-0.0f)}), makeArray<PLT_Half>({PLT_Half(0.0f)}), true},
        {"not-a-number itself", withNaN, withNaN, true},
        {"not-a-numbers", withNaN, makeArray<float>({nan}), false},
        {"storages", makeArray<float>({1}), makeArray<double>({1}), false},
        {"tuple sizes", makeArray<float>({1, 2}, 1), makeArray<float>({1, 2}, 2), false},
        {"range and values", RQ_DataArrayHandle(new RQ_DARange(3)), makeArray<int32_t>({0, 1, 2}), true},
        {"last value", makeArray<int32_t>({0, 1, 2}), makeArray<int32_t>({0, 1, 3}), false},
        {"texts", RQ_DAIndexedString::createIndexed(std::vector<BAS_StringHolder>{"a", "b", "a"}.data(), 3),
         RQ_DataArrayHandle(new RQ_DAIndexedString({"b", "a"}, {1, 0, 1})), true},
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        EXPECT_EQ(c.a->isEqual(*c.b), c.equal);
        EXPECT_EQ(c.b->isEqual(*c.a), c.equal);
        EXPECT_TRUE(c.a == withNaN || (c.a->hash() == c.b->hash()) == c.equal) << "hashes";
    }
    // One value far inside.
    const auto large = countingArray<int32_t>(200000, 1), other = countingArray<int32_t>(200000, 1);
    EXPECT_TRUE(large->isEqual(*other));
    other->set(123457, -1);
    EXPECT_FALSE(large->isEqual(*other));
    EXPECT_NE(large->hash(), other->hash());
    EXPECT_EQ(large->hashRange(100, 1000), RQ_DASubArray::createSubArray(large, 100, 900)->hash());
}

TEST(DataArray, SkipsNotANumber)
{
    const double nan = std::nan("");
    double min[3], max[3];
    for (const int64_t copies : {1, 20, 20000})
    {
        SCOPED_TRACE(copies);
        std::vector<double> values;
        for (int64_t i = 0; i < copies; ++i)
            values.insert(values.end(), {nan, nan, nan, -5.0, nan, INFINITY, 3.0, nan, nan});
        const RQ_DataArrayHandle owned = makeArray(values, 3, RQ_TYPE_POINT);
        for (const RQ_DataArrayHandle &array : {owned, RQ_DAList::createList({owned, owned})})
        {
            EXPECT_TRUE(array->getMinMax(min, max));
            EXPECT_EQ(min[0], -5.0);
            EXPECT_EQ(max[0], 3.0);
            EXPECT_EQ(min[1], std::numeric_limits<double>::max());
            EXPECT_EQ(max[1], -std::numeric_limits<double>::max());
            EXPECT_EQ(min[2], INFINITY);
            BAS_BoundingBox box;
            array->enlargeBounds(box);
            EXPECT_EQ(box.minimum().x, -5.0f);
            EXPECT_EQ(box.maximum().y, -BAS_BoundingBox::kEmpty);
        }
    }
}

TEST(Positions, ReadEveryForm)
{
    const struct
    {
        const char *what;
        RQ_DataArrayHandle array;
        bool valid, flat;
        BAS_Vec3d first;
    } cases[] = {
        {"nothing", {}, false, false, {}},
        {"two components", makeArray<float>({1, 2}, 2), false, false, {}},
        {"text", RQ_DataArrayHandle(new RQ_DAIndexedString({"1"}, {0, 0, 0}, 3)), false, false, {}},
        {"packed floats", makeArray<float>({1, 2, 3}, 3), true, true, {1, 2, 3}},
        {"doubles", makeArray<double>({1e300, 2, 3}, 3), true, false, {1e300, 2, 3}},
        {"wide integers", makeArray<int32_t>({16777217, 2, 3}, 3), true, false, {16777217, 2, 3}},
        {"halfs", makeArray<PLT_Half>({PLT_Half(1.5f), PLT_Half(2.0f), PLT_Half(3.0f)}, 3), true, true, {1.5, 2, 3}},
        {"four components", makeArray<float>({2, 4, 6, 2}, 4), true, false, {2, 4, 6}},
        {"homogeneous", makeArray<float>({2, 4, 6, 2}, 4, RQ_TYPE_HPOINT), true, false, {1, 2, 3}},
        {"homogeneous doubles", makeArray<double>({2, 4, 6, -2}, 4, RQ_TYPE_HPOINT), true, false, {-1, -2, -3}},
        {"at infinity", makeArray<float>({2, 4, 6, 0}, 4, RQ_TYPE_HPOINT), true, false, {0, 0, 0}},
        {"homogeneous of three", makeArray<float>({2, 4, 6}, 3, RQ_TYPE_HPOINT), true, true, {2, 4, 6}},
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(c.what);
        const rq::Positions positions(c.array);
        EXPECT_EQ(positions.isValid(), c.valid);
        EXPECT_EQ(positions.flat() != nullptr, c.flat);
        EXPECT_EQ(positions.entries(), c.valid ? 1 : 0);
        BAS_BoundingBox box;
        if (c.array)
            c.array->enlargeBounds(box);
        EXPECT_EQ(box.isEmpty(), !c.valid);
        if (!c.valid)
            continue;
        EXPECT_EQ(positions[0], c.first);
        EXPECT_EQ(positions.visit([](auto read) { return BAS_Vec3d(read(0)); }), c.first);
        EXPECT_EQ(box.maximum(), BAS_Vec3f(c.first));
    }
}

TEST(DataArray, QuantisesBetweenBlackAndWhite)
{
    const struct
    {
        double value, black, white;
        uint8_t result;
    } cases[] = {
        {0.5, 0, 1, 128}, {-1, 0, 1, 0},  {7, 0, 1, 255},        {0.25, 1, 0, 191},    {NAN, 0, 1, 0}, {1, 2, 2, 0},
        {2, 2, 2, 255},   {NAN, 2, 2, 0}, {INFINITY, 0, 1, 255}, {0.5, 0.1, 0.7, 170}, {3, 1, 5, 128},
    };
    for (const auto &c : cases)
    {
        SCOPED_TRACE(testing::Message() << c.value << " between " << c.black << " and " << c.white);
        const RQ_DataArrayHandle array = makeArray(std::vector<double>(2500, c.value));
        std::vector<uint8_t> block(2500), repeated(5000);
        array->fillArray(block.data(), 0, 2500, -1, -1, c.black, c.white);
        array->extendedFillArray(repeated.data(), 0, 2500, 1, 2, 1, c.black, c.white);
        uint8_t value = 99;
        array->import(2499, &value, 0, c.black, c.white);
        EXPECT_EQ(value, c.result);
        EXPECT_EQ(std::count(block.begin(), block.end(), c.result), 2500);
        EXPECT_EQ(std::count(repeated.begin(), repeated.end(), c.result), 5000);
    }
}

TEST(DataArray, FillsVectorsAndTheirBox)
{
    const RQ_DataArrayHandle array = makeArray<double>({1, 2, 3, -4, 5, 6}, 3);
    float block[8] = {};
    BAS_BoundingBox box;
    array->fillVec3BBox(block, 0, 2, box, 3, 4);
    EXPECT_EQ(block[4], -4.0f);
    EXPECT_EQ(box, BAS_BoundingBox(BAS_Vec3f(-4, 2, 3), BAS_Vec3f(1, 5, 6)));
}
}  // namespace
