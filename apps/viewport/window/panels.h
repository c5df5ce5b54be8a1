#pragma once

struct ImVec2;

namespace rq::viewport
{
class Viewer;

// The panels of the window, each called once a picture.  Places and sizes in the window's units.

void showTopBar(Viewer &viewer, const ImVec2 &place, const ImVec2 &size);
void showSidebar(Viewer &viewer, const ImVec2 &place, const ImVec2 &size);

// Over the view, whose rectangle is given.
void showLegend(const Viewer &viewer, const ImVec2 &place, const ImVec2 &size);
void showComplaint(const Viewer &viewer, const ImVec2 &place, const ImVec2 &size);
void showHelp(Viewer &viewer, const ImVec2 &place, const ImVec2 &size);

// Parts of the sidebar.
void showStyle(Viewer &viewer);
void showColour(Viewer &viewer);
void showTree(Viewer &viewer);
void showOptions(Viewer &viewer);
void showStatistics(const Viewer &viewer);
}  // namespace rq::viewport
