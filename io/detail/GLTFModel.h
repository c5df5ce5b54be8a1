#pragma once

// Pictures are nobody's business here.
#define TINYGLTF_NO_STB_IMAGE
#define TINYGLTF_NO_STB_IMAGE_WRITE
#include <tiny_gltf.h>

#include <io/detail/Source.h>

namespace rq::io
{
/// Parse a glTF or GLB file with the data of its buffers.  False after an error.
///
/// The text has been checked to be JSON of few levels before the parser sees it.  What it does not check, as whether numbers
/// refer to something, is for `GLTFAccessor` and `placedMeshes` to check.
bool parseGLTF(const Source &source, tinygltf::Model &model);
}  // namespace rq::io
