#include <apps/viewport/Target.h>

#include <algorithm>

#include <fmt/format.h>

namespace rq::viewport
{
std::unique_ptr<Target> Target::create(int width, int height, int samples, std::string &error)
{
    GLint most = 0, mostSamples = 0;
    glGetIntegerv(GL_MAX_RENDERBUFFER_SIZE, &most);
    glGetIntegerv(GL_MAX_SAMPLES, &mostSamples);
    if (width > most || height > most)
    {
        error = fmt::format("{} x {} pixels: the graphics driver draws at most {} in each direction", width, height, most);
        return nullptr;
    }
    std::unique_ptr<Target> target(new Target(width, height));
    glCreateFramebuffers(2, target->frames_);
    glCreateRenderbuffers(3, target->buffers_);
    const auto [colour, depth, plain] = target->buffers_;
    samples = samples > 1 ? std::min(samples, mostSamples) : 0;
    glNamedRenderbufferStorageMultisample(colour, samples, GL_RGBA8, width, height);
    glNamedRenderbufferStorageMultisample(depth, samples, GL_DEPTH_COMPONENT32F, width, height);
    glNamedRenderbufferStorage(plain, GL_RGBA8, width, height);
    glNamedFramebufferRenderbuffer(target->frames_[0], GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, colour);
    glNamedFramebufferRenderbuffer(target->frames_[0], GL_DEPTH_ATTACHMENT, GL_RENDERBUFFER, depth);
    glNamedFramebufferRenderbuffer(target->frames_[1], GL_COLOR_ATTACHMENT0, GL_RENDERBUFFER, plain);
    for (const GLuint frame : target->frames_)
        if (glCheckNamedFramebufferStatus(frame, GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE)
        {
            error = fmt::format("the graphics driver has no picture of {} x {} pixels", width, height);
            return nullptr;
        }
    return target;
}

Target::~Target()
{
    glDeleteFramebuffers(2, frames_);
    glDeleteRenderbuffers(3, buffers_);
}

void Target::bind() const { glBindFramebuffer(GL_FRAMEBUFFER, frames_[0]); }

Picture Target::read() const
{
    glBlitNamedFramebuffer(frames_[0], frames_[1], 0, 0, width_, height_, 0, 0, width_, height_, GL_COLOR_BUFFER_BIT,
                           GL_NEAREST);
    glBindFramebuffer(GL_READ_FRAMEBUFFER, frames_[1]);
    return readPicture(width_, height_);
}
}  // namespace rq::viewport
