#include <imgui.h>

#include <apps/viewport/window/Viewer.h>
#include <apps/viewport/window/panels.h>

namespace rq::viewport
{
namespace
{
constexpr ImGuiWindowFlags kFlags = ImGuiWindowFlags_NoTitleBar | ImGuiWindowFlags_NoResize | ImGuiWindowFlags_NoMove |
                                    ImGuiWindowFlags_NoBringToFrontOnFocus;
}  // namespace

void showSidebar(Viewer &viewer, const ImVec2 &place, const ImVec2 &size)
{
    ImGui::SetNextWindowPos(place);
    ImGui::SetNextWindowSize(size);
    ImGui::Begin("sidebar", nullptr, kFlags);
    const auto section = [](const char *name, bool isOpen) {
        return ImGui::CollapsingHeader(name, isOpen ? ImGuiTreeNodeFlags_DefaultOpen : 0);
    };
    if (section("Display", true))
        showStyle(viewer);
    if (section("Colour", true))
        showColour(viewer);
    if (section("Primitives", true))
        showTree(viewer);
    if (section("Statistics", true))
        showStatistics(viewer);
    if (section("Refinement options", false))
        showOptions(viewer);
    ImGui::End();
}
}  // namespace rq::viewport
