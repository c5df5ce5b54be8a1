#pragma once

#include <functional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace tests
{
/// A program that runs beside the test and ends with the object at the latest.
class RunningProgram
{
public:
    /// `prepare` runs in the new process before the program: it sets its folder and environment.
    RunningProgram(const std::vector<std::string> &words, const std::function<void()> &prepare);
    ~RunningProgram();
    RunningProgram(const RunningProgram &) = delete;
    RunningProgram &operator=(const RunningProgram &) = delete;

    bool isRunning();

    void send(int signal) const;

    /// Whether the program would take a signal by a function of its own.
    bool catches(int signal) const;

    int exitCode() const { return exitCode_; }  ///< once it runs no more; -1 when it was killed

private:
    pid_t process_ = -1;
    int exitCode_ = -1;
};

/// Ask again and again until the answer is yes; false when it never is.
bool waitUntil(const std::function<bool()> &condition, double seconds = 120.0);
}  // namespace tests
