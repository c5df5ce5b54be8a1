#include <tests/apps/RunningProgram.h>

#include <chrono>
#include <csignal>
#include <fstream>
#include <thread>

#include <sys/wait.h>
#include <unistd.h>

namespace tests
{
RunningProgram::RunningProgram(const std::vector<std::string> &words, const std::function<void()> &prepare)
    : process_(fork())
{
    if (process_ != 0)
        return;
    prepare();
    std::vector<char *> arguments;
    for (const std::string &word : words)
        arguments.push_back(const_cast<char *>(word.c_str()));
    arguments.push_back(nullptr);
    execvp(arguments[0], arguments.data());
    _exit(127);
}

RunningProgram::~RunningProgram()
{
    if (!isRunning())
        return;
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
}

bool RunningProgram::isRunning()
{
    int status = 0;
    if (process_ > 0 && waitpid(process_, &status, WNOHANG) == process_)
    {
        exitCode_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        process_ = -1;
    }
    return process_ > 0;
}

void RunningProgram::send(int signal) const
{
    // Else it would go to everybody.
    if (process_ > 0)
        kill(process_, signal);
}

bool RunningProgram::catches(int signal) const
{
    std::ifstream status("/proc/" + std::to_string(process_) + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("SigCgt:"))
            return std::stoull(line.substr(7), nullptr, 16) >> (signal - 1) & 1;
    return false;
}

bool waitUntil(const std::function<bool()> &condition, double seconds)
{
    using Clock = std::chrono::steady_clock;
    for (const auto end = Clock::now() + std::chrono::duration<double>(seconds); Clock::now() < end;)
    {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}
}  // namespace tests
