#pragma once

#include <memory>
#include <string>
#include <vector>

#include <tests/apps/RunningProgram.h>

namespace tests
{
/// A picture of a window, and what can be said about its parts without looking at single pixels.
struct WindowPicture
{
    struct Colour
    {
        double r = 0, g = 0, b = 0;
    };

    int width = 0;
    int height = 0;
    std::vector<unsigned char> rgb;

    /// A rectangle in pixels from the upper left corner.
    struct Area
    {
        int x = 0, y = 0, width = 0, height = 0;
    };
    Colour mean(const Area &area) const;

    /// The part of an area that differs from the colour of its upper right corner.
    double coverage(const Area &area) const;

    /// How much the means of the tiles of a grid over an area differ from those of another picture, at most: 0 to 1.
    double difference(const WindowPicture &other, const Area &area) const;
};

/// An X server without a screen, for programs under test: what they show can be looked at, and they can be given input.
///
/// Failure  `start` gives null where the server or the tool for input is not installed
class VirtualDisplay
{
public:
    static std::unique_ptr<VirtualDisplay> start(int width, int height);
    ~VirtualDisplay();
    VirtualDisplay(const VirtualDisplay &) = delete;
    VirtualDisplay &operator=(const VirtualDisplay &) = delete;

    const std::string &name() const { return name_; }

    /// The title of the window on top, empty when there is none.
    std::string title() const;
    WindowPicture picture() const;
    void resize(int width, int height) const;

    /// Words for xdotool, as "mousemove 100 100 key w".
    void input(const std::string &words) const;

    /// Drag a file to the middle of the window, and drop it.  False when the window does not take it.
    bool drop(const std::string &path) const;

private:
    struct Server;
    VirtualDisplay();
    void open(const std::string &screen);

    std::unique_ptr<Server> server_;
    std::string name_;
};
}  // namespace tests
