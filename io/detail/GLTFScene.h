#pragma once

#include <vector>

#include <host/bas/Vector.h>
#include <io/detail/GLTFModel.h>

namespace rq::io
{
/// How many nodes a scene may have, counting those under several for each: few numbers can tell of nodes without end.
constexpr int64_t kMostGLTFNodes = 1 << 20;

/// A mesh where a node places it.
struct GLTFPlacedMesh
{
    const tinygltf::Mesh *mesh = nullptr;
    std::string name;  ///< of the node, or else of the mesh
    BAS_Mat4d matrix;  ///< for row vectors
};

/// The meshes of the scene that is shown, node after node, each before its children.  Without nodes every mesh as it is.
/// A node under several others is there several times.  False after an error: a number that refers to nothing, or a node
/// that lies under itself.
bool placedMeshes(const Source &source, const tinygltf::Model &model, std::vector<GLTFPlacedMesh> &placed);
}  // namespace rq::io
