#include <algorithm>

#include <fmt/format.h>
#include <imgui.h>

#include <apps/viewport/window/Viewer.h>
#include <apps/viewport/window/panels.h>

namespace rq::viewport
{
namespace
{
void button(Viewer &viewer, const char *label, Command command)
{
    if (ImGui::Button(label))
        viewer.run(command);
    if (ImGui::IsItemHovered())
        ImGui::SetTooltip("%s: %s", keyOf(command), meaningOf(command));
    ImGui::SameLine();
}

void showPlayer(Viewer &viewer)
{
    Player &player = viewer.session().player();
    if (player.frames() < 2)
        return;
    button(viewer, "<", Command::PreviousFrame);
    button(viewer, player.isPlaying() ? "Pause" : "Play ", Command::TogglePlaying);
    button(viewer, ">", Command::NextFrame);
    int frame = player.frame() + 1;
    ImGui::SetNextItemWidth(180.0f);
    if (ImGui::SliderInt("##frame", &frame, 1, player.frames(), fmt::format("%d of {}", player.frames()).c_str(),
                         ImGuiSliderFlags_AlwaysClamp))
        player.seek(frame - 1);
    ImGui::SameLine();
    float rate = float(player.rate());
    ImGui::SetNextItemWidth(90.0f);
    if (ImGui::DragFloat("##rate", &rate, 0.2f, 1.0f, 120.0f, "%.3g a second", ImGuiSliderFlags_AlwaysClamp))
        player.setRate(double(rate));
    ImGui::SameLine();
    bool loops = player.loops();
    if (ImGui::Checkbox("Loop", &loops))
        player.setLoops(loops);
    ImGui::SameLine();
}

void showProgress(Viewer &viewer, const Session::Status &status)
{
    const std::string text =
        fmt::format("{} {:.0f} %", status.step.label, std::clamp(status.step.fraction, 0.0, 1.0) * 100.0);
    ImGui::ProgressBar(float(status.step.fraction), {260.0f, 0.0f}, text.c_str());
    ImGui::SameLine();
    if (ImGui::Button("Cancel"))
        viewer.session().cancel();
}
}  // namespace

void showTopBar(Viewer &viewer, const ImVec2 &place, const ImVec2 &size)
{
    ImGui::SetNextWindowPos(place);
    ImGui::SetNextWindowSize(size);
    ImGui::Begin("top", nullptr,
                 ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_NoMove | ImGuiWindowFlags_NoBringToFrontOnFocus);
    button(viewer, "Frame", Command::FrameSelected);
    button(viewer, "Picture", Command::Screenshot);
    button(viewer, "Panels", Command::ToggleSidebar);
    button(viewer, "?", Command::ToggleHelp);
    showPlayer(viewer);
    // A moment's work would only flicker.
    constexpr double kPatience = 0.25;
    if (const Session::Status status = viewer.session().status(); status.busy && viewer.busySeconds() > kPatience)
        showProgress(viewer, status);
    else
        ImGui::TextDisabled("%s", viewer.notice.c_str());
    ImGui::End();
}
}  // namespace rq::viewport
