#include <fcntl.h>
#include <unistd.h>

#include <bench/io/gridFile.h>
#include <host/bas/LargeBlocks.h>
#include <host/mod/DetailHandle.h>
#include <io/Reader.h>

namespace
{
// Some 100 MB.
constexpr int kCells = 1620;
constexpr double kFaces = 2.0 * kCells * kCells, kPoints = (kCells + 1.0) * (kCells + 1.0);

// The header's length is a multiple of four, so that positions can be used where they lie.
std::string gridPLY()
{
    const bench::QuadMesh quads(kCells);
    std::string text = "ply\nformat binary_little_endian 1.0\nelement vertex " + std::to_string(quads.points()) +
                       "\nproperty float x\nproperty float y\nproperty float z\nelement face " +
                       std::to_string(2 * quads.faces()) + "\nproperty list uchar int vertex_indices\ncomment ";
    const std::string end = "\nend_header\n";
    text.append((4 - (text.size() + end.size()) % 4) % 4, '-');
    text += end;
    bench::appendBytes(text, quads.positions.data(), quads.positions.size() * sizeof(float));
    bench::forEachTriangle(quads, [&](const int32_t *points) {
        text += '\3';
        bench::appendBytes(text, points, 12);
    });
    return text;
}

// Read: the file.  Written: the corners of every face, and positions unless they stay in the file.
void addRead(const char *who, int threads, double written,
             std::function<std::pair<double, std::shared_ptr<void>>(const std::string &)> read)
{
    bench::add({"plyRead", "grid100MB", who, threads, kFaces, kFaces * 13.0 + kPoints * 12.0 + written, true, [read] {
                    const auto file = std::make_shared<bench::TemporaryFile>(".ply", gridPLY());
                    return bench::Work{[file, read] { return read(file->path()).second; },
                                       [file, read] { return read(file->path()).first; }};
                }});
}

std::pair<double, std::shared_ptr<void>> readDetail(const std::string &path)
{
    MOD_DetailHandle detail;
    rq::io::Messages messages;
    rq::io::load(path, detail, messages);
    const MOD_ConstDetailHandle snapshot = detail.read();
    const double error = std::abs(double(snapshot.readLock()->pointCount()) - kPoints) +
                         std::abs(double(snapshot.readLock()->vertexCount()) - 3.0 * kFaces);
    return {error, bench::keep(detail)};
}

// What nobody can do without: the bytes from the system's cache to memory of our own.
std::pair<double, std::shared_ptr<void>> readBytes(const std::string &path)
{
    const int file = open(path.c_str(), O_RDONLY);
    const size_t size = std::filesystem::file_size(path);
    std::vector<char, BAS_BlockAllocator<char>> bytes(size);
    size_t done = 0;
    for (ssize_t got = 1; got > 0 && done < size; done += size_t(got))
        got = read(file, bytes.data() + done, size - done);
    close(file);
    return {double(size - done), bench::keep(std::move(bytes))};
}

const bool registered = [] {
    for (const int threads : {1, 2})
        addRead("ours", threads, kFaces * 12.0 + kPoints * 12.0, readDetail);
    addRead("readBytes", 1, kFaces * 13.0 + kPoints * 12.0, readBytes);
    return true;
}();
}  // namespace
