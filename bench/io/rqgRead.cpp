#include <cstring>

#include <bench/io/gridFile.h>
#include <host/bas/LargeBlocks.h>
#include <host/mod/Edit.h>
#include <io/FileText.h>
#include <io/RQGWriter.h>
#include <io/Reader.h>

namespace
{
constexpr int kCells = 1000;
constexpr double kFaces = 1.0 * kCells * kCells, kPoints = (kCells + 1.0) * (kCells + 1.0);
constexpr double kBytes = kPoints * 12.0 + kFaces * 16.0;

std::string gridRQG()
{
    const bench::QuadMesh quads(kCells);
    MOD_DetailHandle detail;
    MOD_Edit edit(detail);
    std::string bytes;
    rq::io::Messages messages;
    if (!edit.appendPoints(quads.points()) || !edit.appendPolygons(4, quads.indices, true))
        return bytes;
    edit.attribute(ELM_OWNER_POINT, "P", ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT)
        ->write(0, quads.points(), quads.positions.data());
    rq::io::writeRQG(edit.commit(), rq::io::RQGForm::Binary, "grid", bytes, messages);
    return bytes;
}

// Read: the file.  Written: as much again, unless it stays in the file.
void addRead(const char *who, int threads, double written,
             std::function<std::pair<double, std::shared_ptr<void>>(const std::string &)> read)
{
    bench::add({"rqgRead", "quads1M", who, threads, kFaces, kBytes + written, true, [read] {
                    const auto file = std::make_shared<bench::TemporaryFile>(".rqg", gridRQG());
                    return bench::Work{[file, read] { return read(file->path()).second; },
                                       [file, read] { return read(file->path()).first; }};
                }});
}

std::pair<double, std::shared_ptr<void>> readDetail(const std::string &path, bool inPlace)
{
    MOD_DetailHandle detail;
    rq::io::Messages messages;
    rq::io::load(path, detail, messages, inPlace);
    const MOD_ConstDetailHandle snapshot = detail.read();
    const double error = std::abs(double(snapshot.readLock()->pointCount()) - kPoints) +
                         std::abs(double(snapshot.readLock()->vertexCount()) - 4.0 * kFaces);
    return {error, bench::keep(detail)};
}

// A memory copy of the file's bytes, which lie in the system's cache.
std::pair<double, std::shared_ptr<void>> copyBytes(const std::string &path)
{
    rq::io::FileText file;
    rq::io::Messages messages;
    const bool opened = file.open(path, messages);
    std::vector<char, BAS_BlockAllocator<char>> bytes(file.text().size());
    std::memcpy(bytes.data(), file.text().data(), bytes.size());
    return {opened && double(bytes.size()) >= kBytes ? 0.0 : 1.0, bench::keep(std::move(bytes))};
}

const bool registered = [] {
    for (const int threads : {1, 2})
    {
        addRead("ours", threads, kBytes, [](const std::string &path) { return readDetail(path, false); });
        addRead("inPlace", threads, 0.0, [](const std::string &path) { return readDetail(path, true); });
    }
    addRead("copyBytes", 1, kBytes, copyBytes);
    return true;
}();
}  // namespace
