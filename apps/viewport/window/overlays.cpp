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

void showRange(const Legend &legend)
{
    constexpr float kWidth = 240.0f, kHeight = 12.0f;
    ImGui::TextUnformatted(legend.title.c_str());
    showRamp(legend.map, {kWidth, kHeight});
    ImGui::TextUnformatted(fmt::format("{:.5g}", legend.minimum).c_str());
    const std::string most = fmt::format("{:.5g}", legend.maximum);
    ImGui::SameLine(kWidth + ImGui::GetStyle().WindowPadding.x - ImGui::CalcTextSize(most.c_str()).x);
    ImGui::TextUnformatted(most.c_str());
}

// As many as half the height has room for.
void showMaterials(const std::vector<MaterialRow> &rows, float height)
{
    const float line = ImGui::GetTextLineHeightWithSpacing(), swatch = ImGui::GetTextLineHeight();
    const size_t shown = std::min(rows.size(), size_t(std::max(1.0f, 0.5f * height / line)));
    for (size_t i = 0; i < shown; ++i)
    {
        const ImVec2 from = ImGui::GetCursorScreenPos();
        ImGui::GetWindowDrawList()->AddRectFilled(from, {from.x + swatch, from.y + swatch}, screenColour(rows[i].colour));
        ImGui::Dummy({swatch, swatch});
        ImGui::SameLine();
        ImGui::TextUnformatted(rows[i].name.c_str());
    }
    if (shown < rows.size())
        ImGui::TextUnformatted(fmt::format("and {} more", rows.size() - shown).c_str());
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

void showLegend(const Viewer &viewer, const ImVec2 &place, const ImVec2 &size)
{
    const Legend &legend = viewer.display().legend();
    const bool ofMaterials = viewer.style.colour.isByMaterial() && !viewer.materials().empty();
    if (!legend.shown && !ofMaterials)
        return;
    ImGui::SetNextWindowPos({place.x + kMargin, place.y + size.y - kMargin}, ImGuiCond_Always, {0.0f, 1.0f});
    ImGui::SetNextWindowBgAlpha(0.75f);
    ImGui::Begin("legend", nullptr, kOverlay);
    if (ofMaterials)
        showMaterials(viewer.materials(), size.y);
    else
        showRange(legend);
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
