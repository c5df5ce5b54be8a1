#pragma once

#include <atomic>

#include <gtest/gtest.h>

#include <host/bas/Progress.h>

namespace tests
{
/// Says stop at the poll of a number, and at no other: an operation that goes on afterwards has forgotten it.
class Interrupter final : public BAS_ProgressHandler
{
public:
    /// `label`: what every poll must be of, if wanted.
    explicit Interrupter(int poll, const char *label = nullptr) : left_(poll), label_(label), before_(install(this)) {}
    ~Interrupter() override { install(before_); }

    bool update(const char *label, double) override
    {
        EXPECT_STREQ(label, label_ ? label_ : label);
        return left_-- == 0;
    }
    bool saidStop() const { return left_ < 0; }

private:
    std::atomic<int> left_;
    const char *label_;
    BAS_ProgressHandler *before_;
};
}  // namespace tests
