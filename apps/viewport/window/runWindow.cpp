#include <apps/viewport/window/runWindow.h>

#include <chrono>

#include <epoxy/gl.h>

#include <GLFW/glfw3.h>
#include <imgui.h>

#include <apps/viewport/window/Viewer.h>
#include <apps/viewport/window/Window.h>
#include <apps/viewport/window/panels.h>
#include <apps/viewport/window/pictureFile.h>

namespace rq::viewport
{
namespace
{
constexpr float kTopHeight = 36.0f;
constexpr float kSidebarWidth = 380.0f;

// Panels need a few pictures after an event to settle.
constexpr int kPicturesPerEvent = 3;

/// The window's rectangles, in its own units from the upper left corner.
struct Layout
{
    explicit Layout(bool hasSidebar)
    {
        const ImVec2 whole = ImGui::GetIO().DisplaySize;
        const float side = hasSidebar ? std::min(kSidebarWidth, 0.5f * whole.x) : 0.0f;
        top = {whole.x, kTopHeight};
        viewPlace = {0.0f, kTopHeight};
        view = {std::max(1.0f, whole.x - side), std::max(1.0f, whole.y - kTopHeight)};
        sidePlace = {view.x, kTopHeight};
        sidebar = {side, view.y};
    }

    ImVec2 top, viewPlace, view, sidePlace, sidebar;
};

void steer(Viewer &viewer, const Drag &drag)
{
    constexpr double kStepsPerHeight = 12.0;
    const double height = std::max(1.0, double(ImGui::GetIO().DisplaySize.y - kTopHeight));
    const double x = drag.x / height, y = -drag.y / height;
    if (drag.button == Drag::Right)
        viewer.zoom(y * kStepsPerHeight);
    else if (drag.button == Drag::Middle || drag.shift)
        viewer.pan(x, y);
    else
        viewer.orbit(x, y);
}

void drawWindow(Window &window, Viewer &viewer, const WindowOptions &options)
{
    window.begin();
    const Layout layout(viewer.showsSidebar);
    if (const ImGuiIO &io = ImGui::GetIO(); !io.WantCaptureMouse)
        viewer.zoom(double(io.MouseWheel));
    const ImVec2 scale = ImGui::GetIO().DisplayFramebufferScale;
    const int width = int(layout.view.x * scale.x), height = int(layout.view.y * scale.y);
    viewer.draw(width, height);
    if (std::exchange(viewer.wantsPicture, false))
        viewer.notice = writePicture(options.pictureFolder, width, height, viewer.display().legend());

    showTopBar(viewer, {0.0f, 0.0f}, layout.top);
    if (viewer.showsSidebar)
        showSidebar(viewer, layout.sidePlace, layout.sidebar);
    showLegend(viewer, layout.viewPlace, layout.view);
    showComplaint(viewer, layout.viewPlace, layout.view);
    showHelp(viewer, layout.viewPlace, layout.view);
    window.finish();
}

void connect(Window &window, Viewer &viewer)
{
    const auto obey = [&viewer](const KeyBinding *binding) {
        if (binding)
            viewer.run(binding->command);
    };
    window.onCharacter = [obey](unsigned character) { obey(findCharacter(character)); };
    window.onKey = [obey](int key) { obey(findKey(key)); };
    window.onDrag = [&viewer](const Drag &drag) { steer(viewer, drag); };
    window.isInView = [&viewer](double x, double y) {
        const Layout layout(viewer.showsSidebar);
        return y >= double(layout.viewPlace.y) && x < double(layout.view.x);
    };
    window.onDrop = [&viewer](const std::vector<std::string> &paths) { viewer.open(paths); };
}

/// How long the window may sleep when nobody touches it.
double patience(Viewer &viewer)
{
    constexpr double kIdle = 0.5, kBusy = 0.1;
    const Player &player = viewer.session().player();
    if (player.isPlaying())
        return std::min(kBusy, 0.25 / player.rate());
    return viewer.isBusy() ? kBusy : kIdle;
}

void turn(Window &window, Viewer &viewer, const WindowOptions &options)
{
    using Clock = std::chrono::steady_clock;
    auto before = Clock::now();
    std::string complaint;
    int pictures = kPicturesPerEvent;
    while (!window.wantsToClose() && !viewer.quits)
    {
        const bool touched = window.wait(pictures > 0 ? 0.0 : patience(viewer));
        const auto now = Clock::now();
        const bool isNew = viewer.update(std::chrono::duration<double>(now - std::exchange(before, now)).count());
        const bool complains = std::exchange(complaint, viewer.complaint()) != complaint;
        if (touched || isNew || complains)
            pictures = kPicturesPerEvent;
        else if (viewer.session().status().busy)
            pictures = std::max(pictures, 1);
        if (pictures == 0)
            continue;
        --pictures;
        window.setTitle(viewer.title());
        drawWindow(window, viewer, options);
    }
}
}  // namespace

WindowOutcome runWindow(const WindowOptions &options)
{
    WindowOutcome outcome;
    const std::unique_ptr<Window> window = Window::create(options.width, options.height, "rq view", outcome.error);
    if (!window)
        return outcome;
    std::unique_ptr<Display> display = Display::create(outcome.error);
    if (!display)
        return outcome;
    Viewer viewer(std::move(display), options, glfwPostEmptyEvent);
    connect(*window, viewer);
    viewer.open(options.files);
    turn(*window, viewer, options);
    if (!viewer.result())
        outcome.complaint = viewer.complaint();
    return outcome;
}
}  // namespace rq::viewport
