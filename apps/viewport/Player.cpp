#include <apps/viewport/Player.h>

#include <algorithm>
#include <cmath>

namespace rq::viewport
{
void Player::reset(int frames)
{
    frames_ = std::max(1, frames);
    frame_ = 0;
    playing_ = false;
    sinceFrame_ = 0.0;
}

void Player::togglePlaying()
{
    if (!playing_ && !loops_ && frame_ == frames_ - 1)
        frame_ = 0;
    setPlaying(!playing_);
}

void Player::setRate(double rate)
{
    if (std::isfinite(rate))
        rate_ = std::clamp(rate, 0.1, 1000.0);
}

void Player::seek(int frame)
{
    frame_ = std::clamp(frame, 0, frames_ - 1);
    playing_ = false;
}

void Player::step(int frames)
{
    frame_ = ((frame_ + frames) % frames_ + frames_) % frames_;
    playing_ = false;
}

void Player::advance(double seconds, bool ready)
{
    if (!playing_)
        return;
    sinceFrame_ += seconds;
    if (!ready || sinceFrame_ * rate_ < 1.0)
        return;
    // What is left over counts for the next frame, but no more than one: late frames are not made up for by a rush.
    sinceFrame_ = std::min(sinceFrame_ - 1.0 / rate_, 1.0 / rate_);
    if (frame_ + 1 < frames_)
        ++frame_;
    else if (loops_)
        frame_ = 0;
    else
        playing_ = false;
}
}  // namespace rq::viewport
