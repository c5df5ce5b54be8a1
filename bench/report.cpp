#include <bench/report.h>

#include <fstream>
#include <map>

#include <fmt/format.h>

#include <host/bas/JSONWriter.h>

namespace bench
{
namespace
{
const char *modeName(Mode mode) { return mode == Mode::cold ? "cold" : "warm"; }

std::string formatJSON(const std::vector<Row> &rows)
{
    std::string text;
    BAS_Options indent;
    indent.set("int json:indentstep", int64_t(2));
    BAS_JSONWriter writer(text, indent);
    writer.beginArray();
    for (const Row &row : rows)
    {
        writer.beginMap();
        writer.writeKeyString("job", row.job->job);
        writer.writeKeyString("mesh", row.job->mesh);
        writer.writeKeyString("who", row.job->who);
        writer.writeKeyInt("threads", row.job->threads);
        writer.writeKeyString("mode", modeName(row.mode));
        writer.writeKeyReal("seconds", row.seconds);
        writer.writeKeyReal("items", row.items);
        writer.writeKeyReal("bytes", row.bytes);
        writer.writeKeyReal("xM", row.copies);
        writer.writeKeyInt("peak_bytes", row.peakBytes);
        writer.writeKeyReal("correct", row.error);
        writer.endMap();
    }
    writer.endArray();
    writer.flush();
    return text;
}
}  // namespace

std::string formatTable(const std::vector<Row> &rows)
{
    std::string text = "| Job | Mesh | Who | Threads | Mode | ms | ns an item | xM | Peak MB | Error | Against ours |\n"
                       "|---|---|---|---|---|---|---|---|---|---|---|\n";
    const auto key = [](const Row &row) {
        return fmt::format("{}/{}/{}/{}", row.job->job, row.job->mesh, row.job->threads, modeName(row.mode));
    };
    std::map<std::string, double> ours;
    for (const Row &row : rows)
        if (row.job->who == "ours")
            ours[key(row)] = row.seconds;
    for (const Row &row : rows)
    {
        const auto base = ours.find(key(row));
        text += fmt::format("| {} | {} | {} | {} | {} | {:.3f} | {:.3g} | {} | {:.0f} | {:.1e} | {} |\n", row.job->job,
                            row.job->mesh, row.job->who, row.job->threads, modeName(row.mode), 1e3 * row.seconds,
                            1e9 * row.seconds / row.items, row.copies > 0 ? fmt::format("{:.2f}", row.copies) : "",
                            double(row.peakBytes) / 1048576.0, row.error,
                            base != ours.end() ? fmt::format("{:.2f}", row.seconds / base->second) : "");
    }
    return text;
}

bool writeReport(const std::vector<Row> &rows)
{
    std::ofstream json("bench-report.json"), markdown("bench-report.md");
    json << formatJSON(rows) << "\n";
    markdown << "# Benchmarks\n\n"
                "xM: the job's time over that of a memory copy that moves as many bytes, taken right after it.  One thread: "
                "median processor time; more: median wall time.  Warm: memory that was touched before; cold: fresh from the "
                "system.  Error: 0 is a perfect result.\n\n"
             << formatTable(rows);
    return json.flush() && markdown.flush();
}
}  // namespace bench
