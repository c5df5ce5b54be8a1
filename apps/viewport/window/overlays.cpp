#include <algorithm>

#include <fmt/format.h>
#include <imgui.h>

#include <apps/viewport/window/Viewer.h>
#include <apps/viewport/window/panels.h>

namespace rq::viewport
{
namespace
{
constexpr float kMargin = 14.0f;

constexpr ImGuiWindowFlags kOverlay = ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_AlwaysAutoResize |
                                      ImGuiWindowFlags_NoSavedSettings | ImGuiWindowFlags_NoFocusOnAppearing |
                                      ImGuiWindowFlags_NoNav | ImGuiWindowFlags_NoInputs;

ImU32 screenColour(const BAS_Vec3f &colour) { return ImGui::GetColorU32({colour.x, colour.y, colour.z, 1.0f}); }

void showRamp(ColourMap map, const ImVec2 &size)
{
    const std::span<const BAS_Vec3f> stops = colourStops(map);
    const ImVec2 from = ImGui::GetCursorScreenPos();
    const float step = size.x / float(stops.size() - 1);
    for (size_t i = 0; i + 1 < stops.size(); ++i)
    {
        const ImU32 left = screenColour(stops[i]), right = screenColour(stops[i + 1]);
        ImGui::GetWindowDrawList()->AddRectFilledMultiColor(
            {from.x + step * float(i), from.y}, {from.x + step * float(i + 1), from.y + size.y}, left, right, right, left);
    }
    ImGui::Dummy(size);
}

template <class Binding> void showBindings(const char *name, std::span<const Binding> bindings)
{
    if (!ImGui::BeginTable(name, 2, ImGuiTableFlags_RowBg | ImGuiTableFlags_SizingFixedFit))
        return;
    for (const Binding &binding : bindings)
    {
        ImGui::TableNextRow();
        ImGui::TableNextColumn();
        ImGui::TextColored(ImGui::GetStyleColorVec4(ImGuiCol_CheckMark), "%s", binding.shown);
        ImGui::TableNextColumn();
        ImGui::TextUnformatted(binding.meaning);
    }
    ImGui::EndTable();
}
}  // namespace

void showLegend(const Legend &legend, const ImVec2 &place, const ImVec2 &size)
{
    if (!legend.shown)
        return;
    constexpr float kWidth = 240.0f, kHeight = 12.0f;
    ImGui::SetNextWindowPos({place.x + kMargin, place.y + size.y - kMargin}, ImGuiCond_Always, {0.0f, 1.0f});
    ImGui::SetNextWindowBgAlpha(0.75f);
    ImGui::Begin("legend", nullptr, kOverlay);
    ImGui::TextUnformatted(legend.title.c_str());
    showRamp(legend.map, {kWidth, kHeight});
    ImGui::TextUnformatted(fmt::format("{:.5g}", legend.minimum).c_str());
    const std::string most = fmt::format("{:.5g}", legend.maximum);
    ImGui::SameLine(kWidth + ImGui::GetStyle().WindowPadding.x - ImGui::CalcTextSize(most.c_str()).x);
    ImGui::TextUnformatted(most.c_str());
    ImGui::End();
}

void showComplaint(const Viewer &viewer, const ImVec2 &place, const ImVec2 &size)
{
    constexpr size_t kMostShown = 600;
    std::string text = viewer.complaint();
    const bool isNew = !viewer.result() && text.empty() && !viewer.session().status().busy;
    if (isNew)
        text = "Drop a file here";
    if (text.empty())
        return;
    if (text.size() > kMostShown)
        text = text.substr(0, kMostShown) + "...";
    while (text.back() == '\n')
        text.pop_back();
    ImGui::SetNextWindowPos({place.x + kMargin, place.y + kMargin});
    ImGui::SetNextWindowBgAlpha(0.85f);
    ImGui::Begin("complaint", nullptr, kOverlay);
    const bool isError = !viewer.session().status().error.empty();
    ImGui::PushStyleColor(ImGuiCol_Text, isError ? ImVec4(1.0f, 0.56f, 0.45f, 1.0f)
                                         : isNew ? ImGui::GetStyleColorVec4(ImGuiCol_Text)
                                                 : ImVec4(0.95f, 0.80f, 0.45f, 1.0f));
    ImGui::PushTextWrapPos(std::max(200.0f, size.x - 4.0f * kMargin));
    ImGui::TextUnformatted(text.c_str());
    ImGui::PopTextWrapPos();
    ImGui::PopStyleColor();
    ImGui::End();
}

void showHelp(Viewer &viewer, const ImVec2 &place, const ImVec2 &size)
{
    if (!viewer.showsHelp)
        return;
    ImGui::SetNextWindowPos({place.x + size.x / 2.0f, place.y + size.y / 2.0f}, ImGuiCond_Always, {0.5f, 0.5f});
    ImGui::SetNextWindowSizeConstraints({0.0f, 0.0f}, {size.x - kMargin, size.y - kMargin});
    ImGui::SetNextWindowBgAlpha(0.95f);
    ImGui::Begin("Keys and mouse", &viewer.showsHelp,
                 ImGuiWindowFlags_AlwaysAutoResize | ImGuiWindowFlags_NoCollapse | ImGuiWindowFlags_NoMove |
                     ImGuiWindowFlags_NoSavedSettings);
    showBindings("keys", keyBindings());
    ImGui::Spacing();
    showBindings("mouse", mouseBindings());
    ImGui::End();
}
}  // namespace rq::viewport
