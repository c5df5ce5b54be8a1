#pragma once

#include <cstdint>
#include <string>

namespace rq::viewport
{
/// What tells that a file was written again: its time and size.  All zero for a file that is not there.
struct FileStamp
{
    int64_t seconds = 0;
    int64_t nanoseconds = 0;
    int64_t size = 0;
    uint64_t node = 0;  ///< a file that was put in the place of another is a new one

    static FileStamp of(const std::string &path);

    bool exists() const { return !(*this == FileStamp()); }
    bool operator==(const FileStamp &) const = default;
};

/// A file as it was.
struct StampedFile
{
    std::string path;
    FileStamp stamp;

    /// Whether it was written since, or is there at last; what is gone has not changed.
    bool hasChanged() const;
};
}  // namespace rq::viewport
