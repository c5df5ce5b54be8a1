#pragma once

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include <unistd.h>

#include <bench/Job.h>
#include <bench/meshes.h>

namespace bench
{
/// A file in the folder for temporary ones, which goes with the object.
class TemporaryFile
{
public:
    TemporaryFile(const std::string &ending, const std::string &content)
        : path_(std::filesystem::temp_directory_path() / ("rq_bench_" + std::to_string(getpid()) + ending))
    {
        std::ofstream(path_, std::ios::binary).write(content.data(), std::streamsize(content.size()));
    }
    ~TemporaryFile()
    {
        std::error_code ignored;
        std::filesystem::remove(path_, ignored);
    }
    TemporaryFile(const TemporaryFile &) = delete;
    TemporaryFile &operator=(const TemporaryFile &) = delete;

    std::string path() const { return path_.string(); }

private:
    std::filesystem::path path_;
};

/// Call `visit` with the three points of every triangle of a grid, two of them in a cell.
inline void forEachTriangle(const QuadMesh &quads, const std::function<void(const int32_t *)> &visit)
{
    for (size_t i = 0; i < quads.indices.size(); i += 4)
    {
        const int32_t *q = quads.indices.data() + i;
        visit(std::initializer_list<int32_t>{q[0], q[1], q[2]}.begin());
        visit(std::initializer_list<int32_t>{q[0], q[2], q[3]}.begin());
    }
}

inline void appendBytes(std::string &to, const void *from, size_t bytes)
{
    to.append(static_cast<const char *>(from), bytes);
}

/// A binary STL file of some million facets.
constexpr int kSTLCells = 700;

inline std::string gridSTL()
{
    const QuadMesh quads(kSTLCells);
    const uint32_t facets = 2 * uint32_t(quads.faces());
    const float normal[] = {0.0f, 0.0f, 1.0f};
    std::string text(80, ' ');
    appendBytes(text, &facets, 4);
    forEachTriangle(quads, [&](const int32_t *points) {
        appendBytes(text, normal, 12);
        for (int c = 0; c < 3; ++c)
            appendBytes(text, quads.positions.data() + 3 * points[c], 12);
        text.append(2, '\0');
    });
    return text;
}

/// Enter a row of reading that file and welding its corners.  Read: the file.  Written: points, normals, three corners each.
/// `read` returns how many points there are.
inline void addSTLRead(const char *who, int threads,
                       std::function<std::pair<int64_t, std::shared_ptr<void>>(const std::string &path)> read)
{
    constexpr double kFacets = 2.0 * kSTLCells * kSTLCells, kPoints = (kSTLCells + 1.0) * (kSTLCells + 1.0);
    add({"stlRead", "grid1M", who, threads, kFacets, kFacets * (50.0 + 24.0) + kPoints * 12.0, true, [read] {
             const auto file = std::make_shared<TemporaryFile>(".stl", gridSTL());
             return Work{[file, read] { return read(file->path()).second; },
                         [file, read] { return std::abs(double(read(file->path()).first) - kPoints); }};
         }});
}
}  // namespace bench
