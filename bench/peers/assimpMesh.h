#pragma once

#include <assimp/Importer.hpp>
#include <assimp/postprocess.h>
#include <assimp/scene.h>
#include <fmt/format.h>

#include <bench/faceJobs.h>

namespace bench
{
inline std::string objText(const FaceMesh &faces)
{
    fmt::memory_buffer text;
    const auto out = fmt::appender(text);
    for (int64_t i = 0; i < faces.points(); ++i)
        fmt::format_to(out, "v {} {} {}\n", faces.position(i)[0], faces.position(i)[1], faces.position(i)[2]);
    for (int64_t face = 0; face < faces.faces(); ++face)
    {
        fmt::format_to(out, "f");
        for (const int32_t point : faces.face(face))
            fmt::format_to(out, " {}", point + 1);
        fmt::format_to(out, "\n");
    }
    return fmt::to_string(text);
}

/// Scenes that hold the mesh, one for each turn; `configure(importer)` sets options.
template <class Configure>
std::shared_ptr<Copies<Assimp::Importer>> makeAssimpScenes(const FaceMesh &faces, Configure &&configure)
{
    const std::string text = objText(faces);
    return std::make_shared<Copies<Assimp::Importer>>([&] {
        auto importer = std::make_shared<Assimp::Importer>();
        configure(*importer);
        importer->ReadFileFromMemory(text.data(), text.size(), 0, "obj");
        return importer;
    });
}
}  // namespace bench
