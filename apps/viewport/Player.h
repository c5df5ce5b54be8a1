#pragma once

namespace rq::viewport
{
/// Which frame of an animation is wanted.  No frame is left out: an animation that cannot be loaded as fast as it should
/// play plays slower.
class Player
{
public:
    static constexpr double kStandardRate = 24.0;

    /// Begin anew, at the first of so many frames.
    void reset(int frames);

    int frames() const { return frames_; }
    int frame() const { return frame_; }

    bool isPlaying() const { return playing_; }
    void setPlaying(bool playing) { playing_ = playing && frames_ > 1; }
    void togglePlaying();

    bool loops() const { return loops_; }
    void setLoops(bool loops) { loops_ = loops; }

    /// Frames a second, 0.1 to 1000.
    double rate() const { return rate_; }
    void setRate(double rate);

    /// Go to a frame, clamped to those that there are, or some frames on, round the ends.  Both stop playing.
    void seek(int frame);
    void step(int frames);

    /// Let time pass.  `ready` tells whether the current frame is shown: the next one waits for it.
    void advance(double seconds, bool ready);

private:
    int frames_ = 1;
    int frame_ = 0;
    bool playing_ = false;
    bool loops_ = true;
    double rate_ = kStandardRate;
    double sinceFrame_ = 0.0;
};
}  // namespace rq::viewport
