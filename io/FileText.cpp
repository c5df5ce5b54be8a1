#include <io/FileText.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace rq::io
{
FileText::~FileText() { close(); }

void FileText::close()
{
    if (mapping_)
        munmap(mapping_, text_.size());
    mapping_ = nullptr;
    buffer_.clear();
    text_ = {};
}

bool FileText::map(int descriptor, size_t length)
{
    void *mapping = mmap(nullptr, length, PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (mapping == MAP_FAILED)
        return false;
    mapping_ = mapping;
    text_ = {static_cast<const char *>(mapping), length};
    madvise(mapping, length, MADV_WILLNEED);
    return true;
}

bool FileText::read(int descriptor)
{
    constexpr size_t kStep = size_t(1) << 20;
    try
    {
        size_t used = 0;
        for (;;)
        {
            if (buffer_.size() < used + kStep)
                buffer_.resize(std::max(used + kStep, 2 * used));
            const ssize_t got = ::read(descriptor, buffer_.data() + used, buffer_.size() - used);
            if (got < 0 && errno == EINTR)
                continue;
            if (got < 0)
                return false;
            if (got == 0)
                break;
            used += size_t(got);
        }
        text_ = {buffer_.data(), used};
        return true;
    }
    catch (const std::bad_alloc &)
    {
        errno = ENOMEM;
        return false;
    }
}

bool FileText::open(const std::string &path, Messages &messages)
{
    close();
    const bool standardInput = path == "-";
    name_ = standardInput ? kStandardInput : path;

    const int descriptor = standardInput ? STDIN_FILENO : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    struct stat status;
    bool opened = descriptor >= 0 && fstat(descriptor, &status) == 0;
    if (opened && S_ISDIR(status.st_mode))
    {
        errno = EISDIR;
        opened = false;
    }
    // A mapping starts at the beginning of the file, standard input wherever its last reader left it.
    if (opened &&
        (standardInput || !S_ISREG(status.st_mode) || status.st_size < 1 || !map(descriptor, size_t(status.st_size))))
        opened = read(descriptor);
    const int reason = errno;
    if (descriptor >= 0 && !standardInput)
        ::close(descriptor);
    return opened || messages.fail(name_, {}, std::string("cannot be read: ") + std::strerror(reason));
}
}  // namespace rq::io
