#include <gtest/gtest.h>

#include <host/bas/Parallel.h>
#include <host/bas/Progress.h>

namespace
{
class StopHalfway : public BAS_ProgressHandler
{
public:
    bool update(const char *, double fraction) override
    {
        ++calls;
        return fraction >= 0.5;
    }

    std::atomic<int> calls{0};
};

}  // namespace

TEST(Progress, AnInterruptionIsSticky)
{
    StopHalfway handler;
    BAS_ProgressHandler *const before = BAS_ProgressHandler::install(&handler);
    BAS_Progress progress("work"), other("more work");
    EXPECT_FALSE(progress.interrupted(0.4));
    EXPECT_TRUE(progress.interrupted(0.5));
    EXPECT_TRUE(progress.interrupted(0.1)) << "stays stopped";
    EXPECT_EQ(handler.calls, 2) << "the handler is not asked again";
    EXPECT_FALSE(other.interrupted(0.1)) << "another operation goes on";
    EXPECT_EQ(BAS_ProgressHandler::install(before), &handler);
}

TEST(Parallel, WeightedPiecesCoverEverythingOnce)
{
    const std::pair<const char *, std::vector<int64_t>> kCases[] = {{"none", {}},
                                                                    {"all empty", {0, 0, 0, 0}},
                                                                    {"one giant", {1, 1, 100000, 1, 1}},
                                                                    {"even", std::vector<int64_t>(1000, 3)}};
    for (const auto &[what, weights] : kCases)
    {
        SCOPED_TRACE(what);
        std::vector<int64_t> ends(weights);
        for (size_t i = 1; i < ends.size(); ++i)
            ends[i] += ends[i - 1];
        std::vector<std::atomic<int>> seen(ends.size());
        host::parallelForWeighted(
            int64_t(ends.size()), 10, [&](int64_t i) { return ends[size_t(i)]; },
            [&](int64_t begin, int64_t end) {
                for (int64_t i = begin; i < end; ++i)
                    ++seen[size_t(i)];
            });
        for (const std::atomic<int> &count : seen)
            EXPECT_EQ(count, 1);
    }
}
