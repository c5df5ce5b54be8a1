#pragma once

#include <host/bas/Progress.h>

namespace rq::app
{
/// Makes Ctrl-C stop long work at its next poll, as long as the object lives.  A second Ctrl-C ends the program at once.
///
/// Made after whoever shows progress, which goes on to do so.
class Interruption : public BAS_ProgressHandler
{
public:
    Interruption();
    ~Interruption() override;
    Interruption(const Interruption &) = delete;
    Interruption &operator=(const Interruption &) = delete;

    bool update(const char *label, double fraction) override;

    /// Whether Ctrl-C came.
    bool isAsked() const;

private:
    BAS_ProgressHandler *before_;
};
}  // namespace rq::app
