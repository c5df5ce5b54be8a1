#include <filesystem>

#include <fmt/format.h>
#include <imgui.h>

#include <apps/viewport/window/Viewer.h>
#include <apps/viewport/window/panels.h>
#include <rq/prim/PrimitiveType.h>

namespace rq::viewport
{
namespace
{
constexpr int64_t kFirstValues = 8;

// Thousands of small primitives make no readable list.
constexpr size_t kMostListed = 1000;

void showAttributesOf(const RQ_Primitive &primitive)
{
    constexpr ImGuiTableFlags kFlags = ImGuiTableFlags_RowBg | ImGuiTableFlags_SizingStretchProp;
    if (!ImGui::BeginTable("attributes", 4, kFlags))
        return;
    for (const char *heading : {"Owner", "Name", "Storage", "Size"})
        ImGui::TableSetupColumn(heading);
    ImGui::TableHeadersRow();
    for (const AttributeRow &row : attributesOf(primitive))
    {
        ImGui::TableNextRow();
        ImGui::TableNextColumn();
        ImGui::TextDisabled("%s", RQowner(row.owner));
        ImGui::TableNextColumn();
        ImGui::Selectable(row.name.c_str(), false, ImGuiSelectableFlags_SpanAllColumns);
        if (ImGui::IsItemHovered())
            ImGui::SetTooltip("%s, data id %lld\n%s", row.array->className(), static_cast<long long>(row.array->getDataId()),
                              firstValues(*row.array, kFirstValues).c_str());
        ImGui::TableNextColumn();
        ImGui::TextUnformatted(formOf(*row.array).c_str());
        ImGui::TableNextColumn();
        ImGui::Text("%lld", static_cast<long long>(row.array->entries()));
    }
    ImGui::EndTable();
}

void showPrimitive(Viewer &viewer, const Emitted &emitted, int index)
{
    const RQ_Primitive &primitive = *emitted.primitive;
    ImGui::PushID(index);
    const float indent = float(emitted.depth) * ImGui::GetStyle().IndentSpacing;
    if (indent > 0.0f)
        ImGui::Indent(indent);
    constexpr ImGuiTreeNodeFlags kFlags = ImGuiTreeNodeFlags_OpenOnArrow | ImGuiTreeNodeFlags_SpanAvailWidth;
    const bool isOpen =
        ImGui::TreeNodeEx("primitive", kFlags | (index == viewer.style.selected ? ImGuiTreeNodeFlags_Selected : 0), "%d  %s",
                          index, RQprimitiveType(primitive.getPrimitiveType()));
    if (ImGui::IsItemClicked() && !ImGui::IsItemToggledOpen())
        viewer.select(index);
    ImGui::SameLine();
    ImGui::TextDisabled("%s", sizeOf(primitive).c_str());
    if (isOpen)
    {
        ImGui::TextDisabled("%s, %d segment%s, %lld bytes", primitive.className(), primitive.getMotionSegments(),
                            primitive.getMotionSegments() == 1 ? "" : "s",
                            static_cast<long long>(primitive.getMemoryUsage()));
        showAttributesOf(primitive);
        ImGui::TreePop();
    }
    if (indent > 0.0f)
        ImGui::Unindent(indent);
    ImGui::PopID();
}
}  // namespace

void showTree(Viewer &viewer)
{
    const ResultHandle result = viewer.result();
    if (!result || result->emitted.empty())
        return ImGui::TextDisabled("nothing is open: drop a file here");
    int file = -1;
    const size_t listed = std::min(result->emitted.size(), kMostListed);
    for (size_t i = 0; i < listed; ++i)
    {
        const Emitted &emitted = result->emitted[i];
        if (emitted.file != file && result->files.size() > 1)
            ImGui::TextDisabled("%s", std::filesystem::path(result->files[size_t(emitted.file)]).filename().c_str());
        file = emitted.file;
        showPrimitive(viewer, emitted, int(i));
    }
    if (listed < result->emitted.size())
        ImGui::TextDisabled("and %zu more", result->emitted.size() - listed);
}
}  // namespace rq::viewport
