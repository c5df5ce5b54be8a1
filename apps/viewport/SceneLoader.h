#pragma once

#include <atomic>
#include <functional>

#include <apps/viewport/FileShelf.h>
#include <apps/viewport/SessionResult.h>

namespace rq::viewport
{
/// What is shown in place of a primitive of the bridge, for instance its mesh subdivided; empty for the primitive itself.
using PrimitiveChange = std::function<RQ_PrimitiveHandle(const RQ_PrimitiveHandle &primitive)>;

/// Makes scenes of files, and keeps what the next scene can use: files that did not change are not read again, what was
/// read is taken for the next state of what was there before, and refined through a cache.
///
/// Failure  null, with the reason, when a file cannot be read or the work was cancelled: then the next scene begins from
///          where this one did
/// Threads  one thread at a time
class SceneLoader
{
public:
    struct Order
    {
        std::vector<std::string> files;
        int frame = 0;
        RQ_RefineParms parms;
        Preparation preparation;
        bool readsAgain = false;  ///< files that did not change, too
    };

    /// `cancelled` is asked between files and between steps; a progress handler that answers the same ends steps early.
    explicit SceneLoader(const std::atomic<bool> &cancelled, PrimitiveChange change = {})
        : cancelled_(cancelled), change_(std::move(change))
    {}

    ResultHandle load(const Order &order, std::string &error);

    /// Whether a file, or one that reading it led to, was written since it was last read, successfully or not.
    bool haveFilesChanged() const;

private:
    using LoadedFiles = std::vector<LoadedFile>;

    bool loadFiles(const Order &order, LoadedFiles &loaded, std::string &error);
    bool readFile(LoadedFile &file, std::string &error) const;
    void refine(const LoadedFiles &loaded, SessionResult &result);
    bool takesOver(const LoadedFiles &loaded, const RQ_RefineParms &parms) const;

    const std::atomic<bool> &cancelled_;
    const PrimitiveChange change_;
    RQ_RefineCache cache_;
    FileShelf shelf_;
    LoadedFiles loaded_;
    std::vector<StampedFile> tried_;
    ResultHandle last_;
};
}  // namespace rq::viewport
