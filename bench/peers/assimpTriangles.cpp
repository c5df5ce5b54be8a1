#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <fmt/format.h>

#include <bench/meshAreas.h>

namespace
{
std::string makeText()
{
    const bench::QuadMesh quads(bench::kTriangulationCells);
    fmt::memory_buffer text;
    for (int64_t i = 0; i < quads.points(); ++i)
    {
        const float *position = quads.positions.data() + 3 * i;
        fmt::format_to(fmt::appender(text), "v {} {} {}\n", position[0], position[1], position[2]);
    }
    for (int64_t face = 0; face < quads.faces(); ++face)
    {
        const int32_t *corners = quads.indices.data() + 4 * face;
        fmt::format_to(fmt::appender(text), "f {} {} {} {}\n", corners[0] + 1, corners[1] + 1, corners[2] + 1,
                       corners[3] + 1);
    }
    return fmt::to_string(text);
}

double errorOf(Assimp::Importer &importer)
{
    const aiScene *const scene = importer.ApplyPostProcessing(aiProcess_Triangulate);
    std::vector<std::array<double, 2>> corners;
    for (unsigned m = 0; scene && m < scene->mNumMeshes; ++m)
        for (unsigned f = 0; f < scene->mMeshes[m]->mNumFaces; ++f)
            for (unsigned i = 0; i < scene->mMeshes[m]->mFaces[f].mNumIndices; ++i)
            {
                const aiVector3D &position = scene->mMeshes[m]->mVertices[scene->mMeshes[m]->mFaces[f].mIndices[i]];
                corners.push_back({position.x, position.y});
            }
    return bench::areaError(bench::kTriangulationCells, int64_t(corners.size()),
                            [&](int64_t i) { return corners[size_t(i)]; });
}

const bool registered = [] {
    bench::addTriangulation("assimp", 1, false, [] {
        const std::string text = makeText();
        const auto copies = std::make_shared<bench::Copies<Assimp::Importer>>([&] {
            auto importer = std::make_shared<Assimp::Importer>();
            importer->ReadFileFromMemory(text.data(), text.size(), 0, "obj");
            return importer;
        });
        return bench::Work{[copies]() -> std::shared_ptr<void> {
                               const std::shared_ptr<Assimp::Importer> copy = copies->take();
                               copy->ApplyPostProcessing(aiProcess_Triangulate);
                               return copy;
                           },
                           [copies] { return errorOf(*copies->take()); }};
    });
    return true;
}();
}  // namespace
