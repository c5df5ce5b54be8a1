#include <fmt/format.h>
#include <imgui.h>

#include <apps/viewport/window/Viewer.h>
#include <apps/viewport/window/panels.h>

namespace rq::viewport
{
namespace
{
std::string choiceText(const AttributeRow &row)
{
    return fmt::format("{} ({}, {})", row.name, RQowner(row.owner), formOf(*row.array));
}

void choose(ColourSource &colour, const AttributeRow &row)
{
    colour.by = ColourBy::Attribute;
    colour.name = row.name;
    colour.owner = row.owner;
    const bool isColour = row.array->getTypeInfo() == RQ_TYPE_COLOR || row.name == "Cd";
    colour.component = isColour ? kAsColour : row.array->getTupleSize() > 1 ? kMagnitude : 0;
    colour.autoRange = true;
}

const AttributeRow *chosen(const Viewer &viewer)
{
    const ColourSource &colour = viewer.style.colour;
    for (const AttributeRow &row : viewer.colourChoices())
        if (row.name == colour.name && (colour.owner == RQ_OWNER_INVALID || row.owner == colour.owner))
            return &row;
    return nullptr;
}

void showAttributes(Viewer &viewer)
{
    const AttributeRow *now = chosen(viewer);
    const std::string text = now ? choiceText(*now) : "choose one";
    if (!ImGui::BeginCombo("Attribute", text.c_str()))
        return;
    for (const AttributeRow &row : viewer.colourChoices())
        if (ImGui::Selectable(choiceText(row).c_str(), &row == now))
            choose(viewer.style.colour, row);
    ImGui::EndCombo();
}

void showComponents(ColourSource &colour, const AttributeRow &row)
{
    const int64_t size = row.array->getTupleSize();
    if (size < 2)
        return;
    const auto name = [](int component) {
        return component == kAsColour    ? std::string("as colour")
               : component == kMagnitude ? std::string("magnitude")
                                         : fmt::format("component {}", component);
    };
    if (!ImGui::BeginCombo("Component", name(colour.component).c_str()))
        return;
    for (int component = size >= 3 ? kAsColour : kMagnitude; component < std::min<int64_t>(size, 16); ++component)
        if (ImGui::Selectable(name(component).c_str(), component == colour.component))
            colour.component = component;
    ImGui::EndCombo();
}

void showRange(ColourSource &colour, const Legend &legend)
{
    if (ImGui::BeginCombo("Map", colourMapName(colour.map)))
    {
        for (int i = 0; i < kColourMaps; ++i)
            if (ImGui::Selectable(colourMapName(ColourMap(i)), colour.map == ColourMap(i)))
                colour.map = ColourMap(i);
        ImGui::EndCombo();
    }
    if (ImGui::Checkbox("Range of the values", &colour.autoRange) && !colour.autoRange && legend.shown)
    {
        colour.minimum = legend.minimum;
        colour.maximum = legend.maximum;
    }
    if (colour.autoRange)
        return;
    ImGui::InputDouble("Least", &colour.minimum, 0.0, 0.0, "%.6g");
    ImGui::InputDouble("Greatest", &colour.maximum, 0.0, 0.0, "%.6g");
}
}  // namespace

void showColour(Viewer &viewer)
{
    ColourSource &colour = viewer.style.colour;
    const auto choice = [](const char *label, bool isChosen) {
        const bool clicked = ImGui::RadioButton(label, isChosen);
        ImGui::SameLine();
        return clicked;
    };
    if (choice("Own", colour.by == ColourBy::Own))
        colour.by = ColourBy::Own;
    if (choice("Plain", colour.by == ColourBy::Plain))
        colour.by = ColourBy::Plain;
    if (choice("Material", colour.isByMaterial()))
    {
        colour.by = ColourBy::Attribute;
        colour.name = kMaterialName;
        colour.owner = RQ_OWNER_INVALID;
    }
    if (choice("Sets", colour.by == ColourBy::FaceSet))
        colour.by = ColourBy::FaceSet;
    ImGui::TextDisabled("%s", keyOf(Command::NextColour));
    showAttributes(viewer);
    if (colour.by == ColourBy::FaceSet && viewer.session().parms().getFaceSetMode() == 0 &&
        ImGui::Button("Make face sets of groups"))
    {
        RQ_RefineParms parms(viewer.session().parms());
        parms.setFaceSetMode(1);
        viewer.setParms(parms);
    }
    if (const AttributeRow *row = colour.by == ColourBy::Attribute ? chosen(viewer) : nullptr;
        row && row->array->getStorage() != RQ_STORAGE_STRING)
    {
        showComponents(colour, *row);
        showRange(colour, viewer.display().legend());
    }
}
}  // namespace rq::viewport
