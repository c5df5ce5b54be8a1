#include <apps/viewport/window/keys.h>

#include <algorithm>

#include <GLFW/glfw3.h>
#include <fmt/format.h>

namespace rq::viewport
{
namespace
{
const KeyBinding kKeys[] = {
    {Command::FrameSelected, 'f', 0, "F", "frame the selected primitive, or everything"},
    {Command::FrameAll, 'a', 0, "A", "frame everything"},
    {Command::ViewFront, '1', 0, "1", "look from the front"},
    {Command::ViewRight, '3', 0, "3", "look from the right"},
    {Command::ViewTop, '7', 0, "7", "look from above"},
    {Command::ToggleWire, 'w', 0, "W", "wireframe"},
    {Command::TogglePoints, 'p', 0, "P", "points"},
    {Command::ToggleNormals, 'n', 0, "N", "normals"},
    {Command::ToggleFaces, 'x', 0, "X", "faces; without them the wireframe is seen through"},
    {Command::NextShading, 's', 0, "S", "shading: auto, smooth, cusp, flat"},
    {Command::ToggleBackFaces, 'b', 0, "B", "tint faces that are seen from behind, or show both sides alike"},
    {Command::NextColour, 'c', 0, "C", "colour: own, plain, by material, by face set, by attribute"},
    {Command::SelectPrevious, 0, GLFW_KEY_UP, "Up", "select the previous primitive"},
    {Command::SelectNext, 0, GLFW_KEY_DOWN, "Down", "select the next primitive"},
    {Command::SelectNothing, 0, GLFW_KEY_ESCAPE, "Esc", "stop the work in progress; close the help; select nothing"},
    {Command::TogglePlaying, ' ', 0, "Space", "play or pause a sequence"},
    {Command::PreviousFrame, 0, GLFW_KEY_LEFT, "Left", "previous frame"},
    {Command::NextFrame, 0, GLFW_KEY_RIGHT, "Right", "next frame"},
    {Command::Finer, '+', 0, "+", "finer level of detail"},
    {Command::Coarser, '-', 0, "-", "coarser level of detail"},
    {Command::Reload, 'r', 0, "R", "read the files again"},
    {Command::Screenshot, 0, GLFW_KEY_F12, "F12", "write a picture of the view as PNG"},
    {Command::ToggleSidebar, 0, GLFW_KEY_TAB, "Tab", "show or hide the panels"},
    {Command::ToggleHelp, '?', 0, "?", "show or hide this list"},
    {Command::Quit, 'q', 0, "Q", "quit"},
};

const MouseBinding kMouse[] = {
    {"Left drag", "orbit"},
    {"Middle drag, Shift + left drag", "pan"},
    {"Right drag, wheel", "zoom"},
    {"Drop of files", "open them"},
};

template <class Fits> const KeyBinding *find(Fits &&fits)
{
    const auto found = std::find_if(std::begin(kKeys), std::end(kKeys), fits);
    return found == std::end(kKeys) ? nullptr : found;
}
// Every command has its line.
const KeyBinding &bindingOf(Command command)
{
    return *find([command](const KeyBinding &one) { return one.command == command; });
}
}  // namespace

std::span<const KeyBinding> keyBindings() { return kKeys; }
std::span<const MouseBinding> mouseBindings() { return kMouse; }

const KeyBinding *findCharacter(unsigned character)
{
    const unsigned small = character >= 'A' && character <= 'Z' ? character + ('a' - 'A') : character;
    return find([small](const KeyBinding &binding) { return small != 0 && binding.character == small; });
}

const KeyBinding *findKey(int key)
{
    return find([key](const KeyBinding &binding) { return key != 0 && binding.key == key; });
}

const char *keyOf(Command command) { return bindingOf(command).shown; }
const char *meaningOf(Command command) { return bindingOf(command).meaning; }

std::string keysAsMarkdown()
{
    std::string text = "| Key | Does |\n|---|---|\n";
    for (const KeyBinding &binding : kKeys)
        text += fmt::format("| {} | {} |\n", binding.shown, binding.meaning);
    text += "\n| Mouse | Does |\n|---|---|\n";
    for (const MouseBinding &binding : kMouse)
        text += fmt::format("| {} | {} |\n", binding.shown, binding.meaning);
    return text;
}
}  // namespace rq::viewport
