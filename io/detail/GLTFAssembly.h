#pragma once

#include <deque>
#include <unordered_map>

#include <host/mod/Edit.h>
#include <io/detail/GLTFColumns.h>
#include <io/detail/GLTFTopology.h>

namespace rq::io
{
/// Builds a detail from the meshes of a scene.
class GLTFAssembly
{
public:
    GLTFAssembly(const Source &source, const tinygltf::Model &model) : source_(source), model_(model) {}

    /// Replace `detail` by a new one.  False after an error.
    bool build(const std::vector<GLTFPlacedMesh> &placed, MOD_DetailHandle &detail);

private:
    /// A primitive of glTF, which gives a run of those of the host.
    struct Part
    {
        GLTFTopology topology;
        const std::string *name = nullptr;
        int material = -1;

        int64_t primitives() const
        {
            return topology.kind == GLTFTopology::Particles ? !topology.points.empty() : std::ssize(topology.corners);
        }
    };

    bool takeMesh(const GLTFPlacedMesh &placed);
    bool takePrimitive(const GLTFPlacedMesh &placed, const tinygltf::Primitive &primitive);
    const GLTFPoints *findPoints(const GLTFPlacedMesh &placed, const tinygltf::Primitive &primitive);
    bool readVertices(const tinygltf::Primitive &primitive, int64_t points, std::vector<uint32_t> &vertices);
    bool appendParts(MOD_Edit &edit) const;
    void writeNames(MOD_Edit &edit) const;
    void warnOfTheRest() const;
    void warn(std::string what) const { source_.messages.warn(source_.name, {}, std::move(what)); }
    bool fail() const { return source_.messages.fail(source_.name, {}, where_ + error_); }

    const Source &source_;
    const tinygltf::Model &model_;
    std::deque<GLTFPoints> sets_;
    std::unordered_map<uint64_t, std::vector<const GLTFPoints *>> known_;  // sets by what `keyOf` tells
    GLTFColumns columns_;
    std::vector<Part> parts_;
    int64_t points_ = 0;
    int64_t withoutPoints_ = 0, morphed_ = 0, left_ = 0;
    std::string where_, error_;
};
}  // namespace rq::io
