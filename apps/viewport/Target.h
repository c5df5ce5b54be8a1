#pragma once

#include <memory>
#include <string>

#include <epoxy/gl.h>

#include <apps/viewport/readPicture.h>

namespace rq::viewport
{
/// Something to draw into that is no window: pixels of several samples, and those that they are averaged to.
class Target
{
public:
    /// Null with the reason when the driver has no such picture.  Of `samples` it has as many as the driver can.
    static std::unique_ptr<Target> create(int width, int height, int samples, std::string &error);
    ~Target();
    Target(const Target &) = delete;
    Target &operator=(const Target &) = delete;

    /// Draw here from now on.
    void bind() const;

    /// What was drawn.
    Picture read() const;

private:
    Target(int width, int height) : width_(width), height_(height) {}

    int width_, height_;
    GLuint frames_[2] = {};   // drawn into, read from
    GLuint buffers_[3] = {};  // colour and depth of the one, colour of the other
};
}  // namespace rq::viewport
