#include <imgui.h>
#include <imgui_stdlib.h>

#include <apps/viewport/window/Viewer.h>
#include <apps/viewport/window/optionValues.h>
#include <apps/viewport/window/panels.h>

namespace rq::viewport
{
namespace
{
constexpr ImGuiInputTextFlags kOnEnter = ImGuiInputTextFlags_EnterReturnsTrue;

/// The field of one value.  Answers whether it was changed; numbers and texts change when they are entered.
struct Field
{
    BAS_Options::Value &value;

    bool operator()(bool on) const { return ImGui::Checkbox("##value", &on) && (value = on, true); }
    bool operator()(int64_t number) const
    {
        ImGui::SetNextItemWidth(-1.0f);
        return ImGui::InputScalar("##value", ImGuiDataType_S64, &number, nullptr, nullptr, nullptr, kOnEnter) &&
               (value = number, true);
    }
    bool operator()(double number) const
    {
        ImGui::SetNextItemWidth(-1.0f);
        return ImGui::InputDouble("##value", &number, 0.0, 0.0, "%.6g", kOnEnter) && (value = number, true);
    }
    bool operator()(const BAS_StringHolder &text) const
    {
        std::string edited(text.view());
        ImGui::SetNextItemWidth(-1.0f);
        return ImGui::InputText("##value", &edited, kOnEnter) && (value = BAS_StringHolder(edited), true);
    }
    template <class Number> bool operator()(const std::vector<Number> &) const { return false; }
};

bool showOption(const RQ_RefineOption &option, BAS_Options::Value &value)
{
    ImGui::TableNextRow();
    ImGui::TableNextColumn();
    ImGui::AlignTextToFramePadding();
    const bool isDefault = value == option.defaultValue;
    ImGui::TextColored(ImGui::GetStyleColorVec4(isDefault ? ImGuiCol_Text : ImGuiCol_CheckMark), "%s", option.key);
    if (ImGui::IsItemHovered())
        ImGui::SetTooltip("%s\n%s", option.meaning, isDefault ? "" : "Click to have the default again.");
    if (!isDefault && ImGui::IsItemClicked())
        return value = option.defaultValue, true;
    ImGui::TableNextColumn();
    return std::visit(Field{value}, BAS_Options::Value(value));
}
}  // namespace

void showOptions(Viewer &viewer)
{
    static ImGuiTextFilter filter;
    filter.Draw("Find", -60.0f);
    if (!ImGui::BeginTable("options", 2, ImGuiTableFlags_SizingStretchProp | ImGuiTableFlags_RowBg))
        return;
    const auto options = RQ_RefineParms::options();
    std::vector<BAS_Options::Value> values = optionValues(viewer.session().parms());
    for (size_t i = 0; i < options.size(); ++i)
    {
        if (!filter.PassFilter(options[i].key) && !filter.PassFilter(options[i].meaning))
            continue;
        ImGui::PushID(int(i));
        if (showOption(options[i], values[i]))
        {
            RQ_RefineParms parms(viewer.session().parms());
            setOption(parms, options[i], values[i]);
            viewer.setParms(parms);
        }
        ImGui::PopID();
    }
    ImGui::EndTable();
}
}  // namespace rq::viewport
