#pragma once

#include <condition_variable>
#include <functional>
#include <optional>

#include <apps/viewport/Player.h>
#include <apps/viewport/SceneLoader.h>
#include <apps/viewport/SessionProgress.h>

namespace rq::viewport
{
/// Keeps the scene of some files up to date on a thread of its own: loads and refines them, again when a file is written, an
/// option changes or an animation plays, and hands over the newest result when it is asked.
///
///     Session session;
///     session.open({"frame.####.obj"});
///     for (;;)  // a window's loop
///     {
///         session.tick(secondsSinceLastTime);
///         if (ResultHandle result = session.takeResult())
///             display.setScene(result->scene);
///     }
///
/// Failure    a scene that cannot be made leaves the one before as it is; `status` has the message until something succeeds
/// Ownership  destroying it cancels the work in progress and waits for its end
/// Threads    all operations from the thread that made it; none waits for work.  One session at a time: it installs the
///            progress handler of the process
class Session
{
public:
    /// What it begins with.  `notify`, if any, is called by the worker whenever it has something new; it must not call the
    /// session.
    struct Setup
    {
        RQ_RefineParms parms;
        Preparation preparation;
        PrimitiveChange change;  ///< of what is shown, called by the worker
        std::function<void()> notify;
    };

    Session() : Session(Setup()) {}
    explicit Session(const Setup &setup);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    /// Show these files together, in place of what was open.  A path may stand for a sequence, see `isSequence`.
    void open(const std::vector<std::string> &paths);

    /// Refine with other options from now on.
    void setParms(const RQ_RefineParms &parms);
    const RQ_RefineParms &parms() const { return parms_; }

    /// Make primitives ready to draw in another way.
    void setPreparation(const Preparation &preparation);
    const Preparation &preparation() const { return preparation_; }

    /// Read the files again, changed or not.
    void reload();

    /// Stop what is in progress.
    void cancel();

    /// What plays, over the frames of the longest sequence.
    Player &player() { return player_; }
    const Player &player() const { return player_; }

    /// Let time pass: once for every turn of the window's loop.
    void tick(double seconds);

    /// The newest result, once; null when there is none that was not taken.
    ResultHandle takeResult();

    struct Status
    {
        bool busy = false;
        SessionProgress::Step step;  ///< what is done at the moment
        std::string error;           ///< why the last scene could not be made; empty when it could
    };
    Status status() const;

private:
    std::vector<std::string> filesOf(int frame) const;
    void order(bool readsAgain = false);
    void work();
    void watchFiles(std::unique_lock<std::mutex> &lock);

    std::vector<std::vector<std::string>> sources_;  // the files of each path that was opened
    RQ_RefineParms parms_;
    Preparation preparation_;
    Player player_;
    int orderedFrame_ = 0;

    const std::function<void()> notify_;
    SessionProgress progress_;
    SceneLoader loader_;  // the worker's

    // Shared with the worker.
    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::optional<SceneLoader::Order> next_;
    SceneLoader::Order current_;
    ResultHandle result_;
    std::string error_;
    bool busy_ = false;
    bool quits_ = false;

    std::thread worker_;
};
}  // namespace rq::viewport
