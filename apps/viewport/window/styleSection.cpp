#include <imgui.h>

#include <apps/viewport/window/Viewer.h>
#include <apps/viewport/window/panels.h>

namespace rq::viewport
{
namespace
{
struct Toggle
{
    const char *label;
    bool DrawStyle::*value;
    Command command;
};

const Toggle kToggles[] = {
    {"Faces", &DrawStyle::faces, Command::ToggleFaces},
    {"Wireframe", &DrawStyle::wire, Command::ToggleWire},
    {"Points", &DrawStyle::points, Command::TogglePoints},
    {"Normals", &DrawStyle::normals, Command::ToggleNormals},
    {"Tint back faces", &DrawStyle::backFaceTint, Command::ToggleBackFaces},
};

void showKey(Command command)
{
    ImGui::SameLine();
    ImGui::TextDisabled("%s", keyOf(command));
}

void showPreparation(Viewer &viewer)
{
    const char *const kShadings[] = {"Auto", "Smooth", "Cusp", "Flat"};
    Preparation preparation = viewer.session().preparation();
    int shading = int(preparation.shading);
    bool changed = false;
    if (ImGui::Combo("Shading", &shading, kShadings, IM_ARRAYSIZE(kShadings)))
    {
        preparation.shading = Shading(shading);
        changed = true;
    }
    showKey(Command::NextShading);
    float angle = float(preparation.cuspDegrees);
    if (ImGui::SliderFloat("Cusp angle", &angle, 0.0f, 180.0f, "%.0f degrees"))
    {
        preparation.cuspDegrees = double(angle);
        changed = true;
    }
    changed |= ImGui::SliderInt("Subdivision", &preparation.subdivisionLevel, -1, 6,
                                preparation.subdivisionLevel < 0 ? "auto" : "%d", ImGuiSliderFlags_AlwaysClamp);
    if (changed)
        viewer.setPreparation(preparation);
}
}  // namespace

void showStyle(Viewer &viewer)
{
    if (ImGui::BeginTable("toggles", 2))
    {
        for (const Toggle &toggle : kToggles)
        {
            ImGui::TableNextColumn();
            ImGui::Checkbox(toggle.label, &(viewer.style.*toggle.value));
            showKey(toggle.command);
        }
        ImGui::EndTable();
    }
    showPreparation(viewer);
}
}  // namespace rq::viewport
