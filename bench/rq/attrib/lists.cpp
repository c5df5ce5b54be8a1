#include <numeric>

#include <bench/arrays.h>
#include <host/bas/CopyCounter.h>
#include <rq/attrib/AttributeList.h>
#include <rq/data/DARange.h>

namespace
{
constexpr int kAttributes = 12;
constexpr int64_t kEntries = 1'000'000;
constexpr int64_t kCalls = 10'000;

RQ_AttributeListHandle makeList()
{
    const RQ_AttributeMapHandle map(new RQ_AttributeMap);
    for (int i = 0; i < kAttributes; ++i)
        map->add(BAS_StringHolder("attribute" + std::to_string(i)), true);
    const RQ_AttributeListHandle list(new RQ_AttributeList(map, 1));
    for (int i = 0; i < kAttributes; ++i)
        list->set(i, bench::makeNumbers<float>(kEntries, 3));
    return list;
}

int64_t copiedBytes()
{
    const BAS_CopyCounter::Totals totals = BAS_CopyCounter::totals();
    return std::accumulate(totals.begin(), totals.end(), int64_t(0));
}

/// Nanoseconds are per attribute; the error is the number of bytes that are copied.
template <class Operation> void addOperation(const char *job, Operation operation)
{
    bench::add({job, "12 attributes of 1M", "ours", 1, double(kCalls) * kAttributes, 0.0, false, [operation] {
                    const RQ_AttributeListHandle list = makeList();
                    const RQ_DataArrayHandle range(new RQ_DARange(kEntries));
                    // Held as memory, as an index list is.
                    const RQ_DataArrayHandle other = range->harden();
                    const auto run = [=](int64_t calls) {
                        for (int64_t i = 0; i < calls; ++i)
                            operation(*list, other);
                    };
                    return bench::Work{[run] {
                                           run(kCalls);
                                           return std::shared_ptr<void>();
                                       },
                                       [run] {
                                           const int64_t before = copiedBytes();
                                           run(1);
                                           return double(copiedBytes() - before);
                                       }};
                }});
}

const bool registered = [] {
    addOperation("addAttribute", [](const RQ_AttributeList &list, const RQ_DataArrayHandle &array) {
        list.addAttribute("new", array, true);
    });
    addOperation("removeAttribute",
                 [](const RQ_AttributeList &list, const RQ_DataArrayHandle &) { list.removeAttribute("attribute5"); });
    addOperation("createSubArray",
                 [](const RQ_AttributeList &list, const RQ_DataArrayHandle &) { list.createSubArray(10, kEntries / 2); });
    addOperation("createIndirect",
                 [](const RQ_AttributeList &list, const RQ_DataArrayHandle &array) { list.createIndirect(array); });
    addOperation("createConstant",
                 [](const RQ_AttributeList &list, const RQ_DataArrayHandle &) { list.createConstant(7, kEntries); });
    return true;
}();
}  // namespace
