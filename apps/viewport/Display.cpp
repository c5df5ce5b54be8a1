#include <apps/viewport/Display.h>

#include <epoxy/gl.h>

namespace rq::viewport
{
struct Display::State
{
    SceneHandle scene;
    DisplayStatistics statistics;
    Legend legend;
};

Display::Display(std::unique_ptr<State> state) : state_(std::move(state)) {}
Display::~Display() = default;

std::unique_ptr<Display> Display::create(std::string &)
{
    return std::unique_ptr<Display>(new Display(std::make_unique<State>()));
}

void Display::setScene(const SceneHandle &scene) { state_->scene = scene; }
const SceneHandle &Display::scene() const { return state_->scene; }

bool Display::draw(const OrbitCamera &, const DrawStyle &style, int width, int height, std::string *)
{
    glViewport(0, 0, width, height);
    glClearColor(style.background.x, style.background.y, style.background.z, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    return true;
}

const DisplayStatistics &Display::statistics() const { return state_->statistics; }
const Legend &Display::legend() const { return state_->legend; }
}  // namespace rq::viewport
