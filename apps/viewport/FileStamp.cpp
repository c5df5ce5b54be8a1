#include <apps/viewport/FileStamp.h>

#include <sys/stat.h>

namespace rq::viewport
{
FileStamp FileStamp::of(const std::string &path)
{
    struct stat status;
    if (stat(path.c_str(), &status) != 0)
        return {};
    return {int64_t(status.st_mtim.tv_sec), int64_t(status.st_mtim.tv_nsec), int64_t(status.st_size),
            uint64_t(status.st_ino)};
}

bool StampedFile::hasChanged() const
{
    const FileStamp now = FileStamp::of(path);
    return now.exists() && !(now == stamp);
}
}  // namespace rq::viewport
