#include <bench/peers/assimpMesh.h>

namespace
{
double errorOf(const bench::FaceMesh &faces, Assimp::Importer &importer)
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
    return bench::areaError(faces, int64_t(corners.size()), [&](int64_t i) { return corners[size_t(i)]; });
}

bench::Work prepare(const bench::FaceMeshPtr &faces)
{
    const auto scenes = bench::makeAssimpScenes(*faces, [](Assimp::Importer &) {});
    const auto run = [scenes]() -> std::shared_ptr<void> {
        const std::shared_ptr<Assimp::Importer> scene = scenes->take();
        scene->ApplyPostProcessing(aiProcess_Triangulate);
        return scene;
    };
    return {run, [=] { return errorOf(*faces, *scenes->take()); }};
}

const bool registered = [] {
    bench::addTriangulation({"quads1M", "mixed1M"}, {"assimp"}, prepare);
    return true;
}();
}  // namespace
