#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <bench/io/gridFile.h>

namespace
{
// Normals count when this peer welds: without them corners meet as ours do.
const bool registered = [] {
    bench::addSTLRead("assimp", 1, [](const std::string &path) {
        const auto importer = std::make_shared<Assimp::Importer>();
        importer->SetPropertyInteger(AI_CONFIG_PP_RVC_FLAGS, aiComponent_NORMALS);
        const aiScene *scene = importer->ReadFile(path, aiProcess_RemoveComponent | aiProcess_JoinIdenticalVertices);
        int64_t points = 0;
        for (unsigned m = 0; scene && m < scene->mNumMeshes; ++m)
            points += scene->mMeshes[m]->mNumVertices;
        return std::pair(points, std::shared_ptr<void>(importer));
    });
    return true;
}();
}  // namespace
