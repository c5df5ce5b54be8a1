#include <apps/viewport/window/Window.h>

#include <utility>

// Before GLFW, which then leaves out the headers of OpenGL.
#include <epoxy/gl.h>

#include <GLFW/glfw3.h>
#include <imgui.h>

#include <backends/imgui_impl_glfw.h>
#include <backends/imgui_impl_opengl3.h>

#include <apps/viewport/Display.h>
#include <apps/viewport/window/theme.h>

namespace rq::viewport
{
namespace
{
std::string lastError;

void rememberError(int, const char *text) { lastError = text; }

Window &windowOf(GLFWwindow *window) { return *static_cast<Window *>(glfwGetWindowUserPointer(window)); }

void requestContext()
{
    glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, kGLMajor);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, kGLMinor);
    glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_CORE_PROFILE);
    glfwWindowHint(GLFW_DEPTH_BITS, 24);
    glfwWindowHint(GLFW_SAMPLES, 4);
}
}  // namespace

std::unique_ptr<Window> Window::create(int width, int height, const char *title, std::string &error)
{
    glfwSetErrorCallback(rememberError);
    lastError = "no window system";
    GLFWwindow *window = nullptr;
    if (glfwInit())
    {
        requestContext();
        window = glfwCreateWindow(width, height, title, nullptr, nullptr);
    }
    if (!window)
    {
        error = lastError;
        glfwTerminate();
        return nullptr;
    }
    glfwMakeContextCurrent(window);
    glfwSwapInterval(1);
    return std::unique_ptr<Window>(new Window(window));
}

Window::Window(GLFWwindow *window) : window_(window)
{
    glfwSetWindowUserPointer(window, this);
    listen();
    ImGui::CreateContext();
    ImGui::GetIO().IniFilename = nullptr;
    applyTheme();
    // Chains to what listens already.
    ImGui_ImplGlfw_InitForOpenGL(window, true);
    ImGui_ImplOpenGL3_Init("#version 330 core");
}

Window::~Window()
{
    ImGui_ImplOpenGL3_Shutdown();
    ImGui_ImplGlfw_Shutdown();
    ImGui::DestroyContext();
    glfwDestroyWindow(window_);
    glfwTerminate();
}

void Window::listen()
{
    glfwSetCharCallback(window_, [](GLFWwindow *window, unsigned character) {
        Window &self = windowOf(window);
        self.touched_ = true;
        if (!ImGui::GetIO().WantTextInput && self.onCharacter)
            self.onCharacter(character);
    });
    glfwSetKeyCallback(window_, [](GLFWwindow *window, int key, int, int action, int) {
        Window &self = windowOf(window);
        self.touched_ = true;
        if (action == GLFW_PRESS && !ImGui::GetIO().WantTextInput && self.onKey)
            self.onKey(key);
    });
    glfwSetDropCallback(window_, [](GLFWwindow *window, int count, const char **paths) {
        Window &self = windowOf(window);
        self.touched_ = true;
        if (self.onDrop)
            self.onDrop(std::vector<std::string>(paths, paths + count));
    });
    const auto touch = [](GLFWwindow *window) { windowOf(window).touched_ = true; };
    glfwSetWindowRefreshCallback(window_, touch);
    glfwSetScrollCallback(window_, [](GLFWwindow *window, double, double) { windowOf(window).touched_ = true; });
    glfwSetFramebufferSizeCallback(window_, [](GLFWwindow *window, int, int) { windowOf(window).touched_ = true; });
    listenToMouse();
}

void Window::listenToMouse()
{
    glfwSetMouseButtonCallback(window_, [](GLFWwindow *window, int button, int action, int modifiers) {
        windowOf(window).press(button, action == GLFW_PRESS, modifiers & GLFW_MOD_SHIFT);
    });
    glfwSetCursorPosCallback(window_, [](GLFWwindow *window, double x, double y) { windowOf(window).moveTo(x, y); });
}

void Window::press(int button, bool pressed, bool shift)
{
    static_assert(Drag::Left == GLFW_MOUSE_BUTTON_LEFT && Drag::Right == GLFW_MOUSE_BUTTON_RIGHT &&
                  Drag::Middle == GLFW_MOUSE_BUTTON_MIDDLE);
    touched_ = true;
    if (pressed && button <= Drag::Middle && !isOverPanel())
        drag_ = Drag{Drag::Button(button), shift, 0.0, 0.0};
    else if (!pressed && drag_ && drag_->button == button)
        drag_.reset();
}

void Window::moveTo(double x, double y)
{
    touched_ = true;
    if (drag_ && onDrag)
        onDrag({drag_->button, drag_->shift, x - x_, y - y_});
    x_ = x;
    y_ = y;
    moved_ = true;
}

// The panels know where the mouse was when the last picture was made.
bool Window::isOverPanel() const { return moved_ ? isInView && !isInView(x_, y_) : ImGui::GetIO().WantCaptureMouse; }

void Window::setTitle(const std::string &title)
{
    if (title_ == title)
        return;
    title_ = title;
    glfwSetWindowTitle(window_, title.c_str());
}

bool Window::wantsToClose() const { return glfwWindowShouldClose(window_); }

bool Window::wait(double seconds)
{
    if (seconds > 0.0)
        glfwWaitEventsTimeout(seconds);
    else
        glfwPollEvents();
    return std::exchange(touched_, false);
}

void Window::begin()
{
    moved_ = false;
    ImGui_ImplOpenGL3_NewFrame();
    ImGui_ImplGlfw_NewFrame();
    ImGui::NewFrame();
}

void Window::finish()
{
    ImGui::Render();
    glViewport(0, 0, width(), height());
    ImGui_ImplOpenGL3_RenderDrawData(ImGui::GetDrawData());
    glfwSwapBuffers(window_);
}

int Window::width() const
{
    int width, height;
    return glfwGetFramebufferSize(window_, &width, &height), width;
}

int Window::height() const
{
    int width, height;
    return glfwGetFramebufferSize(window_, &width, &height), height;
}
}  // namespace rq::viewport
