#include <assimp/config.h>

#include <bench/meshJobs.h>
#include <bench/peers/assimpMesh.h>

namespace
{
double errorOf(const bench::FaceMesh &faces, Assimp::Importer &importer)
{
    const aiScene *const scene = importer.ApplyPostProcessing(aiProcess_SplitLargeMeshes);
    int64_t sum = 0;
    for (unsigned m = 0; scene && m < scene->mNumMeshes; ++m)
        sum += scene->mMeshes[m]->mNumFaces;
    const int64_t pieces = (faces.faces() + bench::kFacesPerPiece - 1) / bench::kFacesPerPiece;
    return bench::piecesError(faces, sum, scene ? scene->mNumMeshes : 0, pieces);
}

bench::Work prepare(const bench::FaceMeshPtr &faces)
{
    const auto scenes = bench::makeAssimpScenes(*faces, [](Assimp::Importer &importer) {
        importer.SetPropertyInteger(AI_CONFIG_PP_SLM_TRIANGLE_LIMIT, int(bench::kFacesPerPiece));
        importer.SetPropertyInteger(AI_CONFIG_PP_SLM_VERTEX_LIMIT, 1 << 30);
    });
    const auto run = [scenes]() -> std::shared_ptr<void> {
        const std::shared_ptr<Assimp::Importer> scene = scenes->take();
        scene->ApplyPostProcessing(aiProcess_SplitLargeMeshes);
        return scene;
    };
    return {run, [=] { return errorOf(*faces, *scenes->take()); }};
}

const bool registered = [] {
    bench::addPieces("split-65536", {"assimp"}, prepare);
    return true;
}();
}  // namespace
