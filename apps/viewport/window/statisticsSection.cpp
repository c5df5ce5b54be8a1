#include <numeric>

#include <fmt/format.h>
#include <imgui.h>

#include <apps/viewport/window/Viewer.h>
#include <apps/viewport/window/panels.h>
#include <host/bas/CopyCounter.h>
#include <host/bas/MemoryTracker.h>
#include <rq/surface/PrimPolygonMesh.h>

namespace rq::viewport
{
namespace
{
std::string bytes(int64_t count)
{
    constexpr const char *kUnits[] = {"bytes", "kB", "MB", "GB"};
    double value = double(count);
    size_t unit = 0;
    for (; value >= 1000.0 && unit + 1 < std::size(kUnits); ++unit)
        value /= 1000.0;
    return fmt::format("{:.{}f} {}", value, unit == 0 ? 0 : 1, kUnits[unit]);
}

void row(const char *name, const std::string &value)
{
    ImGui::TableNextRow();
    ImGui::TableNextColumn();
    ImGui::TextDisabled("%s", name);
    ImGui::TableNextColumn();
    ImGui::TextUnformatted(value.c_str());
}

int64_t faceCount(const SessionResult &result)
{
    int64_t faces = 0;
    for (const Emitted &emitted : result.emitted)
        if (const auto *mesh = dynamic_cast<const RQ_PrimPolygonMesh *>(emitted.primitive.get()))
            faces += mesh->getFaceCount();
    return faces;
}

int64_t trackedMemory()
{
    int64_t total = 0;
    for (int category = 0; category < BAS_MEMORY_CATEGORIES; ++category)
        total += BAS_MemoryTracker::current(BAS_MemoryCategory(category));
    return total;
}

void showResult(const SessionResult &result)
{
    const BAS_CopyCounter::Totals copied = BAS_CopyCounter::totals();
    const RQ_RefineCache::Work &work = result.cacheWork;
    row("Primitives", fmt::format("{}", result.emitted.size()));
    row("Refined last", fmt::format("{}", result.primitivesRefined));
    row("Faces", fmt::format("{}", faceCount(result)));
    row("Memory", bytes(trackedMemory()));
    row("Copied", bytes(std::accumulate(copied.begin(), copied.end(), int64_t(0))));
    row("Load", fmt::format("{:.1f} ms", result.loadSeconds * 1e3));
    row("Refine", fmt::format("{:.1f} ms", result.refineSeconds * 1e3));
    row("Cache holds", bytes(result.cacheBytes));
    row("Cache made", fmt::format("walks {}, cuts {}", work.walks, work.convexings));
    row("", fmt::format("normals {}, tangents {}", work.normals, work.tangents));
    row("", fmt::format("surfaces {}", work.subdivisions));
}

void showDisplay(const Viewer &viewer)
{
    const DisplayStatistics &display = viewer.display().statistics();
    row("Uploaded", fmt::format("{}, {} converted", bytes(display.uploadedBytes), bytes(display.copiedBytes)));
    row("Buffers", fmt::format("{} new, {} kept", display.buffersRefreshed, display.buffersKept));
    row("Graphics memory", bytes(display.gpuBytes));
    row("Drawn", fmt::format("{} of {} triangles", display.trianglesDrawn, display.triangles));
    row("", fmt::format("{} lines, {} points", display.segments, display.points));
    row("Picture", fmt::format("{:.1f} ms, {} draws", viewer.drawSeconds() * 1e3, display.draws));
}
}  // namespace

void showStatistics(const Viewer &viewer)
{
    if (!ImGui::BeginTable("statistics", 2, ImGuiTableFlags_SizingFixedFit))
        return;
    if (const ResultHandle &result = viewer.result())
        showResult(*result);
    showDisplay(viewer);
    ImGui::EndTable();
}
}  // namespace rq::viewport
