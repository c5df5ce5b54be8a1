#include <cmath>
#include <thread>

#include <host/bas/MemoryTracker.h>
#include <host/bas/Parallel.h>
#include <rq/attrib/AttributeList.h>
#include <rq/data/CountArray.h>
#include <rq/data/DAClamp.h>
#include <rq/data/DAIndirect.h>
#include <rq/data/DAList.h>
#include <rq/data/DARandom.h>
#include <rq/data/DASubArray.h>
#include <rq/data/Values.h>

#include "arrays.h"

namespace
{
constexpr int64_t kEntries = 200000;

/// Some not-a-numbers among the values, and both zeros.
RQ_DataArrayHandle makeFloats()
{
    const BAS_IntrusivePtr<RQ_DANumeric<float>> array(new RQ_DANumeric<float>(kEntries, 3, RQ_TYPE_POINT));
    for (int64_t i = 0; i < kEntries * 3; ++i)
        array->data()[i] = i % 97 == 0 ? NAN : float(i * 7919 % 20011 - 10000) * (i % 5 ? 0.37f : -0.0f);
    return array;
}

RQ_DataArrayHandle makeIndices() { return RQ_DARandom<int32_t>(kEntries, 9, 0, int32_t(kEntries) - 1).harden(); }

TEST(Threads, HashesSumsAndMinimaDoNotDependOnTheirNumber)
{
    const RQ_DataArrayHandle floats = makeFloats(), indices = makeIndices();
    const auto results = [&](int threads) {
        const BAS_Threads::Limit limit(threads);
        std::vector<double> found;
        const RQ_DataArrayHandle once = RQ_DAIndirect::createIndirect(floats, indices);
        for (const RQ_DataArrayHandle &array :
             {floats, once, RQ_DAIndirect::createIndirect(RQ_DAIndirect::createIndirect(once, indices), indices),
              RQ_DAList::createList({once, floats}), RQ_DAClamp::createClamp(once, kEntries + 9),
              RQ_DataArrayHandle(new RQ_DARandom<double>(kEntries, 3, -1.0, 1.0, 3))})
        {
            double min[3], max[3], low, high;
            int64_t least, greatest;
            BAS_BoundingBox box;
            EXPECT_TRUE(array->getMinMax(min, max));
            array->getRange(low, high, 1);
            array->getRange(least, greatest, 2);
            array->enlargeBounds(box);
            found.insert(found.end(), {double(array->hash() >> 11), double(array->harden()->hash() >> 11), min[0], max[2],
                                       low, high, double(least), double(greatest), box.minimum().y, box.maximum().z});
        }
        const RQ_CountArray counts(indices);
        found.push_back(double(counts.sumCounts()));
        found.push_back(double(counts.rawOffsets()->hash() >> 11));
        return found;
    };
    const std::vector<double> alone = results(1);
    EXPECT_EQ(results(2), alone);
    EXPECT_EQ(results(64), alone);
}

TEST(Threads, ShareArraysThroughHandlesOfTheirOwn)
{
    const int64_t before = BAS_MemoryTracker::current(BAS_MEMORY_ARRAY);
    {
        const RQ_DataArrayHandle floats = makeFloats(), indices = makeIndices();
        const RQ_AttributeMapHandle map(new RQ_AttributeMap);
        map->add("P", false);
        RQ_AttributeListHandle list(new RQ_AttributeList(map, 1));
        list->set(0, floats);
        list = list->createIndirect(indices)->createIndirect(indices)->createIndirect(indices);
        std::vector<std::thread> threads;
        std::vector<uint64_t> hashes(8);
        for (size_t t = 0; t < hashes.size(); ++t)
            threads.emplace_back([list, hash = &hashes[t]] {
                for (int i = 0; i < 200; ++i)
                {
                    const RQ_AttributeListHandle derived =
                        list->createSubArray(i, 1000)->addAttribute("Q", list->get(0), true);
                    RQ_DataArrayHandle buffer, array = derived->get("Q");
                    std::swap(array, buffer);
                }
                // All read the stacked view for the first time.
                const rq::Values<float> values(list->get(0));
                *hash = RQ_DANumeric<float>(values.data(), kEntries, 3).hash();
            });
        list = nullptr;
        for (std::thread &thread : threads)
            thread.join();
        EXPECT_EQ(std::count(hashes.begin(), hashes.end(), hashes[0]), std::ptrdiff_t(hashes.size()));
    }
    EXPECT_EQ(BAS_MemoryTracker::current(BAS_MEMORY_ARRAY), before);
}
}  // namespace
