#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <unistd.h>

#include <fmt/format.h>

#include <bench/Job.h>
#include <bench/meshes.h>

namespace bench
{
/// A file of about 100 MB as exporters write them: points, uv and normals of six digits, and quads that refer to all three.
///
/// It lies in the folder for temporary files, and goes away with the object.
class OBJFile
{
public:
    static constexpr int kCells = 770;
    static constexpr double kFaces = double(kCells) * kCells, kPoints = (kCells + 1.0) * (kCells + 1.0);

    OBJFile() : path_(std::filesystem::temp_directory_path() / fmt::format("rq_bench_{}.obj", getpid()))
    {
        const QuadMesh quads(kCells);
        fmt::memory_buffer text;
        const fmt::appender end(text);
        for (int64_t i = 0; i < quads.points(); ++i)
        {
            const float *p = quads.positions.data() + 3 * i;
            fmt::format_to(end, "v {:.6f} {:.6f} {:.6f}\n", p[0], p[1], p[2]);
            fmt::format_to(end, "vt {:.6f} {:.6f}\n", p[0] / kCells, p[1] / kCells);
            fmt::format_to(end, "vn {:.6f} {:.6f} {:.6f}\n", 0.1f * std::sin(p[0]), 0.1f * std::cos(p[1]), 0.99f);
        }
        for (int64_t corner = 0; corner < std::ssize(quads.indices); ++corner)
        {
            const int32_t number = quads.indices[size_t(corner)] + 1;
            fmt::format_to(end, "{} {}/{}/{}{}", corner % 4 == 0 ? "f" : "", number, number, number,
                           corner % 4 == 3 ? "\n" : "");
        }
        std::ofstream(path_, std::ios::binary).write(text.data(), std::streamsize(text.size()));
    }
    ~OBJFile() { std::filesystem::remove(path_); }
    OBJFile(const OBJFile &) = delete;
    OBJFile &operator=(const OBJFile &) = delete;

    std::string path() const { return path_.string(); }

    /// How many points, faces and corners too many or too few were read.
    static double error(double points, double faces, double corners)
    {
        return std::abs(points - kPoints) + std::abs(faces - kFaces) + std::abs(corners - 4.0 * kFaces);
    }

private:
    std::filesystem::path path_;
};

/// Enter a row of reading the file.  Read: its text.  Written: positions, points of corners, and a uv and a normal for each.
inline void addOBJReading(const char *who, int threads, std::function<Work()> prepare)
{
    constexpr double kText = 100e6, kWritten = OBJFile::kPoints * 12.0 + 4.0 * OBJFile::kFaces * (4.0 + 8.0 + 12.0);
    add({"readOBJ", "quads100MB", who, threads, OBJFile::kFaces, kText + kWritten, false, std::move(prepare)});
}
}  // namespace bench
