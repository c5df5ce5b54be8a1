#include <apps/viewport/GLContext.h>

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <fmt/format.h>

#include <apps/viewport/Display.h>

namespace rq::viewport
{
namespace
{
// The platform that needs neither a window system nor a graphics card; what the system takes for its display else.
EGLDisplay openDisplay()
{
    EGLDisplay display = EGL_NO_DISPLAY;
    if (epoxy_has_egl_extension(EGL_NO_DISPLAY, "EGL_MESA_platform_surfaceless"))
        display = eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
    if (display == EGL_NO_DISPLAY || !eglInitialize(display, nullptr, nullptr))
    {
        display = eglGetDisplay(EGL_DEFAULT_DISPLAY);
        if (display == EGL_NO_DISPLAY || !eglInitialize(display, nullptr, nullptr))
            return EGL_NO_DISPLAY;
    }
    return display;
}

EGLContext openContext(EGLDisplay display)
{
    const EGLint configWanted[] = {EGL_SURFACE_TYPE, 0, EGL_RENDERABLE_TYPE, EGL_OPENGL_BIT, EGL_NONE};
    const EGLint contextWanted[] = {
        EGL_CONTEXT_MAJOR_VERSION,           kGLMajor, EGL_CONTEXT_MINOR_VERSION, kGLMinor, EGL_CONTEXT_OPENGL_PROFILE_MASK,
        EGL_CONTEXT_OPENGL_CORE_PROFILE_BIT, EGL_NONE};
    EGLConfig config = nullptr;
    EGLint configs = 0;
    if (!eglBindAPI(EGL_OPENGL_API) || !eglChooseConfig(display, configWanted, &config, 1, &configs) || configs < 1)
        return EGL_NO_CONTEXT;
    return eglCreateContext(display, config, EGL_NO_CONTEXT, contextWanted);
}
}  // namespace

std::unique_ptr<GLContext> GLContext::create(std::string &error)
{
    const EGLDisplay display = openDisplay();
    if (display == EGL_NO_DISPLAY)
    {
        error = "there is no OpenGL driver that draws without a display (on Debian: libgl1-mesa-dri, libegl1)";
        return nullptr;
    }
    const EGLContext context = openContext(display);
    if (context == EGL_NO_CONTEXT || !eglMakeCurrent(display, EGL_NO_SURFACE, EGL_NO_SURFACE, context))
    {
        error = fmt::format("the OpenGL driver cannot draw version {}.{} without a display", kGLMajor, kGLMinor);
        if (context != EGL_NO_CONTEXT)
            eglDestroyContext(display, context);
        return nullptr;
    }
    return std::unique_ptr<GLContext>(new GLContext(display, context));
}

// The display is not terminated: all of a process share it, and others may have contexts of theirs.
GLContext::~GLContext()
{
    eglMakeCurrent(display_, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
    eglDestroyContext(display_, context_);
}

std::string GLContext::renderer() const { return reinterpret_cast<const char *>(glGetString(GL_RENDERER)); }
}  // namespace rq::viewport
