#include <apps/viewport/Session.h>

#include <chrono>

#include <apps/viewport/Sequence.h>

namespace rq::viewport
{
namespace
{
// How often files are looked at while nothing is to do.
constexpr std::chrono::milliseconds kWatchInterval(250);
}  // namespace

Session::Session(const Setup &setup)
    : parms_(setup.parms), preparation_(setup.preparation), notify_(setup.notify),
      loader_(progress_.cancelled, setup.change), worker_([this] { work(); })
{}

Session::~Session()
{
    {
        const std::lock_guard lock(mutex_);
        quits_ = true;
        progress_.cancelled = true;
    }
    wake_.notify_one();
    worker_.join();
}

void Session::open(const std::vector<std::string> &paths)
{
    std::vector<std::vector<std::string>> sources;
    size_t frames = 0;
    for (const std::string &path : paths)
    {
        sources.push_back(isSequence(path) ? sequenceFiles(path) : std::vector<std::string>{path});
        frames = std::max(frames, sources.back().size());
        if (sources.back().empty())
        {
            const std::lock_guard lock(mutex_);
            error_ = path + ": error: expected files with numbers in place of #, found none\n";
            return;
        }
    }
    if (sources.empty())
        return;
    sources_ = std::move(sources);
    player_.reset(int(frames));
    {
        const std::lock_guard lock(mutex_);
        error_.clear();
        progress_.cancelled = true;
    }
    order();
}

// A sequence that is shorter than others stays at its end.
std::vector<std::string> Session::filesOf(int frame) const
{
    std::vector<std::string> files;
    for (const std::vector<std::string> &source : sources_)
        files.push_back(source[std::min(size_t(frame), source.size() - 1)]);
    return files;
}

void Session::order(bool readsAgain)
{
    if (sources_.empty())
        return;
    orderedFrame_ = player_.frame();
    {
        const std::lock_guard lock(mutex_);
        readsAgain = readsAgain || (next_ && next_->readsAgain);
        next_ = SceneLoader::Order{filesOf(orderedFrame_), orderedFrame_, parms_, preparation_, readsAgain};
    }
    wake_.notify_one();
}

void Session::setParms(const RQ_RefineParms &parms)
{
    parms_ = parms;
    order();
}

void Session::setPreparation(const Preparation &preparation)
{
    preparation_ = preparation;
    order();
}

void Session::reload() { order(true); }

void Session::cancel()
{
    player_.setPlaying(false);
    const std::lock_guard lock(mutex_);
    next_.reset();
    progress_.cancelled = true;
}

void Session::tick(double seconds)
{
    bool isSettled;
    {
        const std::lock_guard lock(mutex_);
        isSettled = !busy_ && !next_ && !result_;
        if (isSettled && !error_.empty())
            player_.setPlaying(false);
    }
    player_.advance(seconds, isSettled);
    if (player_.frame() != orderedFrame_)
        order();
}

ResultHandle Session::takeResult()
{
    const std::lock_guard lock(mutex_);
    return std::exchange(result_, nullptr);
}

Session::Status Session::status() const
{
    const std::lock_guard lock(mutex_);
    const bool busy = busy_ || next_;
    return {busy, busy ? progress_.step() : SessionProgress::Step(), error_};
}

void Session::watchFiles(std::unique_lock<std::mutex> &lock)
{
    lock.unlock();
    const bool haveChanged = loader_.haveFilesChanged();
    lock.lock();
    if (haveChanged && !next_)
        next_ = current_;
}

void Session::work()
{
    std::unique_lock lock(mutex_);
    while (!quits_)
    {
        if (!next_ && !wake_.wait_for(lock, kWatchInterval, [this] { return quits_ || next_; }))
            watchFiles(lock);
        if (quits_ || !next_)
            continue;
        current_ = *std::exchange(next_, std::nullopt);
        busy_ = true;
        progress_.cancelled = false;
        const SceneLoader::Order order = current_;
        lock.unlock();

        progress_.begin("Loading");
        std::string error;
        ResultHandle result = loader_.load(order, error);

        lock.lock();
        busy_ = false;
        current_.readsAgain = false;
        // Work that was stopped for the sake of newer work needs no message.
        if (result || !next_)
            error_ = error;
        if (result)
            result_ = std::move(result);
        if (notify_)
            notify_();
    }
}
}  // namespace rq::viewport
