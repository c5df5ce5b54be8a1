#include <functional>

#include <rq/data/DAClamp.h>
#include <rq/data/DAConstant.h>
#include <rq/data/DAConstantValue.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DAList.h>
#include <rq/data/DAParametric.h>
#include <rq/data/DARandom.h>
#include <rq/data/DARange.h>
#include <rq/data/DASubArray.h>

#include "arrays.h"

namespace
{
constexpr int64_t kFar = (int64_t(1) << 33) + 5;

// Each makes n entries without memory for them; the last one holds what `last` gives.
const struct
{
    const char *what;
    std::function<RQ_DataArrayHandle(int64_t n)> make;
    std::function<double(int64_t n)> last;
} kArrays[] = {
    {"range", [](int64_t n) { return RQ_DataArrayHandle(new RQ_DARange(n)); }, [](int64_t n) { return double(n - 1); }},
    {"window", [](int64_t n) { return RQ_DASubArray::createSubArray(new RQ_DARange(2 * n), n, n); },
     [](int64_t n) { return double(2 * n - 1); }},
    {"window of a window",
     [](int64_t n) {
         return RQ_DASubArray::createSubArray(RQ_DASubArray::createSubArray(new RQ_DARange(2 * n), 1, n + 7), 7, n);
     },
     [](int64_t n) { return double(n + 7); }},
    {"constant", [](int64_t n) { return RQ_DAConstant::createConstant(new RQ_DARange(n), n - 2, n); },
     [](int64_t n) { return double(n - 2); }},
    {"constant value", [](int64_t n) { return RQ_DataArrayHandle(new RQ_DAConstantValue<float>(n, 3.0f)); },
     [](int64_t) { return 3.0; }},
    {"clamp",
     [](int64_t n) {
         return RQ_DAClamp::createClamp(makeArray<int32_t>({5, 6}), n);
     },
     [](int64_t) { return 6.0; }},
    {"list",
     [](int64_t n) {
         return RQ_DAList::createList({new RQ_DARange(1, n), new RQ_DARange(n, n + 1)});
     },
     [](int64_t n) { return double(n); }},
    {"grid",
     [](int64_t n) {
         return RQ_DataArrayHandle(new RQ_DAParametric({n, 2.0, 9.0}));
     },
     [](int64_t) { return 9.0; }},
};

TEST(BeyondMemory, ArraysAnswerSliceAndHashTheirEnds)
{
    for (const auto &c : kArrays)
    {
        SCOPED_TRACE(c.what);
        const RQ_DataArrayHandle array = c.make(kFar), small = c.make(1000);
        ASSERT_EQ(array->entries(), kFar);
        EXPECT_EQ(array->getMemoryUsage(), small->getMemoryUsage());
        EXPECT_EQ(array->getF64(kFar - 1), c.last(kFar));
        for (const int64_t first : {int64_t(0), kFar - 2000})
        {
            const RQ_DataArrayHandle slice = RQ_DASubArray::createSubArray(array, first, 2000), owned = slice->harden();
            EXPECT_EQ(array->hashRange(first, first + 2000), owned->hash());
            EXPECT_TRUE(slice->isEqual(*owned));
            EXPECT_EQ(array->getF64(first + 1999), owned->getF64(1999));
        }
    }
    double min, max;
    EXPECT_TRUE(kArrays[3].make(kFar)->getMinMax(&min, &max));
    EXPECT_EQ(std::pair(min, max), std::pair(double(kFar - 2), double(kFar - 2)));
    EXPECT_EQ(RQ_DAParametric({kFar << 8}, {kFar << 8}).entries(), std::numeric_limits<int64_t>::max());
    EXPECT_EQ(RQ_DAParametric({kFar}, {3}).getF32(2 * kFar + kFar / 2, 1), 1.0f);
}

TEST(BeyondMemory, ComposedIndicesAreAsWideAsTheSourceNeeds)
{
    const int64_t limit = int64_t(1) << 31;
    for (const int64_t entries : {limit - 1, limit})
    {
        const RQ_DataArrayHandle window = RQ_DASubArray::createSubArray(new RQ_DARange(entries), 1, entries - 1);
        const RQ_DataArrayHandle flat = RQ_DAIndirect::createIndirect(window, makeArray<int64_t>({entries - 2}), true);
        EXPECT_EQ(flat->getI64(0), entries - 1);
        EXPECT_EQ(static_cast<const RQ_DAIndirect &>(*flat).indices()->getStorage(),
                  entries < limit ? RQ_STORAGE_INT32 : RQ_STORAGE_INT64);
    }
}
}  // namespace
