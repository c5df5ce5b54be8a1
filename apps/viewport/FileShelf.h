#pragma once

#include <list>
#include <vector>

#include <apps/viewport/FileStamp.h>
#include <host/mod/DetailHandle.h>

namespace rq::viewport
{
/// What was read from a file.
struct LoadedFile
{
    std::string path;
    FileStamp stamp;  ///< from before it was read
    MOD_ConstDetailHandle detail;
    std::string warnings;
    std::vector<StampedFile> others{};  ///< that reading it led to
};

/// Files that were read, so that an animation that is played again is not read again.  Those that were not asked for the
/// longest are let go when all together pass the limit; columns that several share count for each of them.
class FileShelf
{
public:
    explicit FileShelf(int64_t mostBytes = int64_t(2) << 30) : mostBytes_(mostBytes) {}

    /// Null when there is no such file, or it, or one that it led to, has been written since.
    const LoadedFile *find(const std::string &path, const FileStamp &stamp);

    /// Keep a file, in place of what was read from there before.
    void put(const LoadedFile &file);

private:
    struct Place
    {
        LoadedFile file;
        int64_t bytes;
    };

    std::list<Place> places_;  // the one that was asked for last comes first
    int64_t bytes_ = 0;
    int64_t mostBytes_;
};
}  // namespace rq::viewport
