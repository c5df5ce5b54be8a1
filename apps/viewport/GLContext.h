#pragma once

#include <memory>
#include <string>

namespace rq::viewport
{
/// OpenGL without a window and without a display: what is drawn goes into a `Target`.
///
/// Threads  current on the thread that created it, for as long as it lives
class GLContext
{
public:
    /// Null, with what a person can do about it in `error`, when there is no driver that can.
    static std::unique_ptr<GLContext> create(std::string &error);
    ~GLContext();
    GLContext(const GLContext &) = delete;
    GLContext &operator=(const GLContext &) = delete;

    /// What the driver calls itself.
    std::string renderer() const;

private:
    GLContext(void *display, void *context) : display_(display), context_(context) {}

    void *display_;
    void *context_;
};
}  // namespace rq::viewport
