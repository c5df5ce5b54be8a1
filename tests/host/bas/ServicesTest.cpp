#include <gtest/gtest.h>

#include <host/bas/Diagnostics.h>
#include <host/bas/Parallel.h>
#include <host/bas/Progress.h>

namespace
{
class StopAt : public BAS_ProgressHandler
{
public:
    explicit StopAt(double fraction) : fraction_(fraction) {}
    bool update(const char *, double fraction) override
    {
        ++calls;
        return fraction >= fraction_;
    }

    std::atomic<int> calls{0};

private:
    double fraction_;
};

std::string heard;
}  // namespace

TEST(Progress, AnInterruptionIsSticky)
{
    BAS_Progress unheard("nobody listens");
    EXPECT_FALSE(unheard.interrupted(1.0));

    StopAt handler(0.5);
    BAS_ProgressHandler *const before = BAS_ProgressHandler::install(&handler);
    BAS_Progress progress("work"), other("more work");
    EXPECT_FALSE(progress.interrupted(0.4));
    EXPECT_TRUE(progress.interrupted(0.5));
    EXPECT_TRUE(progress.interrupted(0.1)) << "stays stopped";
    EXPECT_EQ(handler.calls, 2) << "the handler is not asked again";
    EXPECT_FALSE(other.interrupted(0.1)) << "another operation goes on";
    EXPECT_EQ(BAS_ProgressHandler::install(before), &handler);
}

TEST(Diagnostics, WarnAboveTheVerboseLevelOnly)
{
    BAS_Diagnostics::setSink([](std::string_view message) { heard += message; });
    BAS_Diagnostics::warn(1, "too {}", "quiet");
    BAS_Diagnostics::setVerboseLevel(1);
    BAS_Diagnostics::warn(1, "{} of {}", 3, "them");
    BAS_Diagnostics::warn(2, "still too quiet");
    BAS_Diagnostics::setVerboseLevel(0);
    BAS_Diagnostics::setSink(nullptr);
    EXPECT_EQ(heard, "3 of them");
}

TEST(Parallel, SumsHaveTheSameBitsForAnyNumberOfThreads)
{
    const auto sum = [] {
        return host::parallelReduce(
            100000, 1000, 0.0,
            [](int64_t begin, int64_t end) {
                double part = 0.0;
                for (int64_t i = begin; i < end; ++i)
                    part += 1.0 / double(i + 1);
                return part;
            },
            [](double &into, double from) { into += from; });
    };
    const double many = sum();
    const BAS_Threads::Limit limit(1);
    EXPECT_FALSE(BAS_Threads::enabled());
    EXPECT_EQ(sum(), many);
}

TEST(Parallel, WeightedPiecesCoverEverythingOnce)
{
    const struct
    {
        const char *what;
        std::vector<int64_t> weights;
    } kCases[] = {
        {"none", {}},
        {"one", {5}},
        {"all empty", {0, 0, 0, 0}},
        {"one giant", {1, 1, 100000, 1, 1}},
        {"even", std::vector<int64_t>(1000, 3)},
    };
    for (const auto &c : kCases)
    {
        SCOPED_TRACE(c.what);
        std::vector<int64_t> ends(c.weights);
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
