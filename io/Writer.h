#pragma once

#include <string>
#include <vector>

#include <host/fwd.h>
#include <io/Message.h>
#include <io/NumberForm.h>

namespace rq::io
{
struct SaveOptions
{
    std::string format;                       ///< one of `saveFormats`, empty for what the file's name says
    NumberForm numbers = NumberForm::Binary;  ///< of PLY, the only format that has both under one name
};

/// The names of the formats that can be written: "json" and "rqg" for everything, "obj", "ply", "stl", "glb", "gltf".
RQ_API const std::vector<std::string> &saveFormats();

/// Write a detail to a file; "-" is standard output.
///
/// Shape    what kind of file it becomes follows from `options`, or else from the end of its name, in any case: ".rqg.json",
///          ".json" and ".rqg" hold everything (see docs/files.md), ".obj", ".ply", ".stl", ".glb" and ".gltf" what such
///          files can say of points, polygons and particles.  Beside "NAME.obj" goes "NAME.mtl" where the detail has
///          materials
/// Failure  false with an error among the messages; a file that was there before is then as it was.  Warnings tell what the
///          file cannot hold
RQ_API bool save(const std::string &path, const MOD_ConstDetailHandle &detail, Messages &messages,
                 const SaveOptions &options = {});

/// What of a detail's geometry a kind of file can hold.
enum class Holding
{
    Faces,      ///< polygons
    Lines,      ///< polygons, also open ones
    Everything  ///< every primitive as it is
};

/// That of the file that `save` would write; the least where it is not known what kind is meant.
RQ_API Holding holdingOf(const std::string &path, const SaveOptions &options = {});

/// False, with an error, when `save` does not know what kind of file is meant.
RQ_API bool canSave(const std::string &path, Messages &messages, const SaveOptions &options = {});
}  // namespace rq::io
