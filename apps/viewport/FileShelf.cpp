#include <apps/viewport/FileShelf.h>

#include <algorithm>

namespace rq::viewport
{
const LoadedFile *FileShelf::find(const std::string &path, const FileStamp &stamp)
{
    const auto found = std::find_if(places_.begin(), places_.end(), [&](const Place &place) {
        return place.file.path == path && place.file.stamp == stamp &&
               std::ranges::none_of(place.file.others, &StampedFile::hasChanged);
    });
    if (found == places_.end())
        return nullptr;
    places_.splice(places_.begin(), places_, found);
    return &places_.front().file;
}

void FileShelf::put(const LoadedFile &file)
{
    const auto drop = [this](std::list<Place>::iterator place) {
        bytes_ -= place->bytes;
        places_.erase(place);
    };
    const auto old =
        std::find_if(places_.begin(), places_.end(), [&](const Place &place) { return place.file.path == file.path; });
    if (old != places_.end())
        drop(old);
    places_.push_front({file, file.detail.readLock()->memoryUsage()});
    bytes_ += places_.front().bytes;
    while (bytes_ > mostBytes_ && places_.size() > 1)
        drop(std::prev(places_.end()));
}
}  // namespace rq::viewport
