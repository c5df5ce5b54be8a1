#include <host/bas/Diagnostics.h>

#include <atomic>
#include <cstdio>

namespace
{
void writeToStandardError(std::string_view message)
{
    // One call, so that lines of different threads do not mix.
    const std::string line = fmt::format("{}\n", message);
    std::fwrite(line.data(), 1, line.size(), stderr);
}

std::atomic<BAS_Diagnostics::Sink> sink{&writeToStandardError};
std::atomic<int> level{0};
}  // namespace

void BAS_Diagnostics::setSink(Sink newSink)
{
    sink.store(newSink ? newSink : &writeToStandardError, std::memory_order_release);
}

int BAS_Diagnostics::verboseLevel() { return level.load(std::memory_order_relaxed); }

void BAS_Diagnostics::setVerboseLevel(int newLevel) { level.store(newLevel, std::memory_order_relaxed); }

void BAS_Diagnostics::warn(std::string_view message) { sink.load(std::memory_order_acquire)(message); }
