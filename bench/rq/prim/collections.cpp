#include <benchmark/benchmark.h>

#include <bench/Job.h>
#include <host/bas/Parallel.h>
#include <rq/prim/RefineCollect.h>

namespace
{
constexpr int64_t kChildren = 1'000'000;
constexpr int64_t kAppended = 10'000'000;

/// As little of a primitive as there can be, so that the time is that of the collection.
class Box final : public RQ_Primitive
{
public:
    explicit Box(int64_t place) : box_(BAS_Vec3f(float(place)), BAS_Vec3f(float(place + 1))) {}

    const char *className() const override { return "Box"; }
    void enlargeBounds(BAS_BoundingBox *boxes, int segments) const override
    {
        for (int s = 0; s < segments; ++s)
            boxes[s].enlarge(box_);
    }
    int getMotionSegments() const override { return 1; }
    int64_t getMemoryUsage() const override { return int64_t(sizeof(*this)); }
    RQ_PrimitiveHandle doSoftCopy() const override { return RQ_PrimitiveHandle(new Box(*this)); }

private:
    BAS_BoundingBox box_;
};

using CollectHandle = BAS_IntrusivePtr<RQ_PrimCollect>;

CollectHandle manyBoxes()
{
    const CollectHandle collection(new RQ_PrimCollect);
    for (int64_t i = 0; i < kChildren; ++i)
        collection->appendPrimitive(RQ_PrimitiveHandle(new Box(i)));
    return collection;
}

void addBounds(int threads)
{
    bench::add({"collection/bounds", "1M children", "ours", threads, double(kChildren), 0.0, false, [] {
                    const CollectHandle collection = manyBoxes();
                    const auto bounds = [collection] {
                        BAS_BoundingBox box;
                        collection->enlargeBounds(&box, 1);
                        return box;
                    };
                    return bench::Work{[bounds] {
                                           benchmark::DoNotOptimize(bounds());
                                           return std::shared_ptr<void>();
                                       },
                                       [bounds] { return double(bounds().size().x) - double(kChildren); }};
                }});
}

/// Append by as many producers as there are threads, each with what `make` answers; the error counts what was lost.
template <class Make> void addAppend(const char *job, int64_t count, int threads, Make make)
{
    bench::add({job, std::to_string(count / 1'000'000) + "M", "ours", threads, double(count), 0.0, false, [=] {
                    const auto collect = [=] {
                        const auto sink = std::make_shared<RQ_RefineCollect>();
                        host::parallelFor(threads, 1, [&](int64_t producer) {
                            auto maker = make;
                            for (int64_t i = producer * count / threads; i < (producer + 1) * count / threads; ++i)
                                sink->addPrimitive(maker(i));
                        });
                        return sink;
                    };
                    return bench::Work{collect, [=] { return double(count - collect()->entries()); }};
                }});
}

/// Hand out a few primitives over and over: what remains is the appending.
struct Few
{
    RQ_PrimitiveHandle operator()(int64_t i)
    {
        RQ_PrimitiveHandle &box = boxes_[i % 1024];
        if (!box)
            box = new Box(i);
        return box;
    }

    std::vector<RQ_PrimitiveHandle> boxes_ = std::vector<RQ_PrimitiveHandle>(1024);
};

const bool registered = [] {
    for (const int threads : {1, 2})
    {
        addBounds(threads);
        addAppend("collection/append", kAppended, threads, Few());
        addAppend("collection/make_and_append", kAppended, threads,
                  [](int64_t i) { return RQ_PrimitiveHandle(new Box(i)); });
    }
    return true;
}();
}  // namespace
