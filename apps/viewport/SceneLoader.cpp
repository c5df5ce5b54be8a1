#include <apps/viewport/SceneLoader.h>

#include <algorithm>
#include <chrono>

#include <apps/refineShared.h>
#include <apps/viewport/followFrame.h>
#include <apps/viewport/levelOfDetail.h>
#include <io/Reader.h>
#include <rq/bridge/MSHPrimPacked.h>
#include <rq/prim/PrimCollect.h>

namespace rq::viewport
{
namespace
{
using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

void openCollections(const RQ_PrimitiveHandle &primitive, const RQ_RefineParms &parms, Emitted place,
                     std::vector<Emitted> &emitted)
{
    if (!primitive)
        return;
    if (!dynamic_cast<const RQ_PrimCollect *>(primitive.get()))
    {
        place.primitive = primitive;
        emitted.push_back(place);
        return;
    }
    ++place.depth;
    for (const RQ_PrimitiveHandle &child : app::refineShared(*primitive, &parms))
        openCollections(child, parms, place, emitted);
}
}  // namespace

bool SceneLoader::readFile(LoadedFile &file, std::string &error) const
{
    MOD_DetailHandle detail;
    io::Messages messages;
    const bool isRead = io::load(file.path, detail, messages);
    (isRead ? file.warnings : error) = messages.toString();
    for (const std::string &other : messages.files())
        file.others.push_back({other, FileStamp::of(other)});
    if (!isRead && cancelled_)
        error = "cancelled";
    file.detail = detail.read();
    return isRead;
}

bool SceneLoader::loadFiles(const Order &order, LoadedFiles &loaded, std::string &error)
{
    tried_.clear();
    for (size_t i = 0; i < order.files.size() && !cancelled_; ++i)
    {
        const std::string &path = order.files[i];
        const FileStamp stamp = FileStamp::of(path);
        tried_.push_back({path, stamp});
        // What is no file, such as standard input, can be read but once.
        if (const LoadedFile *kept = order.readsAgain && stamp.exists() ? nullptr : shelf_.find(path, stamp))
        {
            loaded.push_back(*kept);
            tried_.insert(tried_.end(), kept->others.begin(), kept->others.end());
            continue;
        }
        // A file that changes while it is read is seen again, with its new stamp.
        LoadedFile &file = loaded.emplace_back(LoadedFile{path, stamp, {}, {}});
        const bool isRead = readFile(file, error);
        tried_.insert(tried_.end(), file.others.begin(), file.others.end());
        if (!isRead)
            return false;
        if (i < loaded_.size())
            file.detail = followFrame(loaded_[i].detail, file.detail);
        shelf_.put(file);
    }
    return true;
}

// The primitives of the bridge depend on no level of detail: they stay while nothing else changes.
bool SceneLoader::takesOver(const LoadedFiles &loaded, const RQ_RefineParms &parms) const
{
    if (!last_ || loaded.size() != last_->details.size() || !differInLevelOnly(last_->parms, parms))
        return false;
    for (size_t i = 0; i < loaded.size(); ++i)
        if (!(loaded[i].detail == last_->details[i]))
            return false;
    return true;
}

void SceneLoader::refine(const LoadedFiles &loaded, SessionResult &result)
{
    if (takesOver(loaded, result.parms))
    {
        result.emitted = last_->emitted;
        for (const Emitted &emitted : result.emitted)
            result.primitivesRefined += changesWithLevel(*emitted.primitive);
    }
    else
    {
        for (size_t i = 0; i < loaded.size() && !cancelled_; ++i)
            for (const RQ_PrimitiveHandle &primitive :
                 RQgatherInstances(cache_.refine(RQ_MSHDetail(loaded[i].detail), &result.parms)))
                openCollections(primitive, result.parms, {.primitive = {}, .shown = {}, .file = int(i), .depth = 0},
                                result.emitted);
        result.primitivesRefined = int64_t(result.emitted.size());
        for (Emitted &emitted : result.emitted)
            emitted.shown = change_ && !cancelled_ ? change_(emitted.primitive) : emitted.primitive;
    }
    std::vector<Shown> shown;
    for (const Emitted &emitted : result.emitted)
        shown.push_back({emitted.shown, BAS_Mat4d()});
    if (!cancelled_)
        result.scene = Scene::make(shown, result.preparation, &result.parms, last_ ? last_->scene.get() : nullptr, &cache_);
}

ResultHandle SceneLoader::load(const Order &order, std::string &error)
{
    const auto result = std::make_shared<SessionResult>();
    result->files = order.files;
    result->frame = order.frame;
    result->parms = order.parms;
    result->preparation = order.preparation;

    auto start = Clock::now();
    LoadedFiles loaded;
    const bool isLoaded = loadFiles(order, loaded, error);
    result->loadSeconds = secondsSince(start);
    if (!isLoaded)
        return nullptr;

    start = Clock::now();
    refine(loaded, *result);
    result->refineSeconds = secondsSince(start);
    if (cancelled_ || !result->scene)
    {
        error = "cancelled";
        return nullptr;
    }
    for (const LoadedFile &file : loaded)
    {
        result->details.push_back(file.detail);
        result->warnings += file.warnings;
    }
    result->cacheWork = cache_.getWork();
    result->cacheBytes = cache_.getMemoryUsage();
    loaded_ = std::move(loaded);
    return last_ = result;
}

bool SceneLoader::haveFilesChanged() const { return std::ranges::any_of(tried_, &StampedFile::hasChanged); }
}  // namespace rq::viewport
