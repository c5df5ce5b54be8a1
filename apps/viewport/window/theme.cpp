#include <apps/viewport/window/theme.h>

#include <imgui.h>

namespace rq::viewport
{
namespace
{
ImVec4 grey(float value, float alpha = 1.0f) { return {value, value * 1.02f, value * 1.05f, alpha}; }
ImVec4 accent(float alpha) { return {0.36f, 0.60f, 0.86f, alpha}; }

struct Tone
{
    ImGuiCol place;
    ImVec4 colour;
};

const Tone kTones[] = {
    {ImGuiCol_Text, grey(0.88f)},
    {ImGuiCol_TextDisabled, grey(0.55f)},
    {ImGuiCol_WindowBg, grey(0.135f)},
    {ImGuiCol_PopupBg, grey(0.115f, 0.97f)},
    {ImGuiCol_Border, grey(0.26f)},
    {ImGuiCol_FrameBg, grey(0.21f)},
    {ImGuiCol_FrameBgHovered, grey(0.26f)},
    {ImGuiCol_FrameBgActive, grey(0.30f)},
    {ImGuiCol_TitleBgActive, grey(0.17f)},
    {ImGuiCol_ScrollbarBg, grey(0.12f)},
    {ImGuiCol_ScrollbarGrab, grey(0.30f)},
    {ImGuiCol_CheckMark, accent(1.0f)},
    {ImGuiCol_SliderGrab, accent(0.8f)},
    {ImGuiCol_SliderGrabActive, accent(1.0f)},
    {ImGuiCol_Button, grey(0.25f)},
    {ImGuiCol_ButtonHovered, accent(0.55f)},
    {ImGuiCol_ButtonActive, accent(0.8f)},
    {ImGuiCol_Header, grey(0.21f)},
    {ImGuiCol_HeaderHovered, accent(0.35f)},
    {ImGuiCol_HeaderActive, accent(0.5f)},
    {ImGuiCol_Separator, grey(0.26f)},
    {ImGuiCol_PlotHistogram, accent(0.9f)},
    {ImGuiCol_TableHeaderBg, grey(0.18f)},
    {ImGuiCol_TableBorderLight, grey(0.22f)},
    {ImGuiCol_TableRowBgAlt, grey(0.155f)},
};
}  // namespace

void applyTheme()
{
    ImGui::StyleColorsDark();
    ImGuiStyle &style = ImGui::GetStyle();
    for (const Tone &tone : kTones)
        style.Colors[tone.place] = tone.colour;
    style.WindowRounding = 0.0f;
    style.FrameRounding = 3.0f;
    style.GrabRounding = 3.0f;
    style.ScrollbarSize = 12.0f;
    style.WindowBorderSize = 0.0f;
    style.WindowPadding = {10.0f, 8.0f};
    style.FramePadding = {6.0f, 3.0f};
    style.ItemSpacing = {8.0f, 5.0f};
    style.IndentSpacing = 14.0f;
}
}  // namespace rq::viewport
