#include <io/OutputFile.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include <fmt/format.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace rq::io
{
namespace
{
bool writeAll(int descriptor, std::string_view bytes)
{
    while (!bytes.empty())
    {
        const ssize_t written = ::write(descriptor, bytes.data(), bytes.size());
        if (written < 0 && errno != EINTR)
            return false;
        bytes.remove_prefix(size_t(std::max<ssize_t>(written, 0)));
    }
    return true;
}

// Open, write and close; the reason is in `errno` when that fails.
bool writeTo(const std::string &path, int flags, std::string_view bytes)
{
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CLOEXEC | flags, 0666);
    if (descriptor < 0)
        return false;
    const bool written = writeAll(descriptor, bytes);
    const int reason = errno;
    const bool closed = ::close(descriptor) == 0;
    errno = written ? errno : reason;
    return written && closed;
}

bool tellWhy(std::string &error)
{
    error = std::string("cannot be written: ") + std::strerror(errno);
    return false;
}
}  // namespace

bool writeStandardOutput(std::string_view bytes, std::string &error)
{
    return writeAll(STDOUT_FILENO, bytes) || tellWhy(error);
}

bool writeFile(const std::string &path, std::string_view bytes, std::string &error)
{
    struct stat status;
    const bool exists = stat(path.c_str(), &status) == 0;
    std::error_code ignored;
    const std::string linked = exists ? std::filesystem::canonical(path, ignored).string() : path;
    const std::string &target = linked.empty() ? path : linked;
    bool good;
    if (exists && !S_ISREG(status.st_mode))
        good = writeTo(path, 0, bytes);
    else
    {
        static std::atomic<int> count{0};
        const std::string part = fmt::format("{}.part{}.{}", target, getpid(), count++);
        good = writeTo(part, O_CREAT | O_TRUNC, bytes) && (!exists || chmod(part.c_str(), status.st_mode & 0777) == 0) &&
               std::rename(part.c_str(), target.c_str()) == 0;
        const int reason = errno;
        if (!good)
            ::unlink(part.c_str());
        errno = reason;
    }
    return good || tellWhy(error);
}
}  // namespace rq::io
