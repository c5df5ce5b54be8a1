#include <io/detail/GLTFScene.h>

#include <algorithm>

namespace rq::io
{
namespace
{
// Columns of columns are rows of rows: the numbers lie in the same order.
BAS_Mat4d matrixOf(const tinygltf::Node &node)
{
    BAS_Mat4d matrix;
    if (node.matrix.size() == 16)
    {
        std::copy(node.matrix.begin(), node.matrix.end(), matrix.getValue());
        return matrix;
    }
    if (node.scale.size() == 3)
        matrix.setScale(BAS_Vec3d(node.scale[0], node.scale[1], node.scale[2]));
    if (node.rotation.size() == 4)
        matrix *= BAS_Quatd(node.rotation[3], node.rotation[0], node.rotation[1], node.rotation[2]).toMatrix44();
    if (node.translation.size() == 3)
        matrix *= BAS_Mat4d().setTranslation(BAS_Vec3d(node.translation[0], node.translation[1], node.translation[2]));
    return matrix;
}

class GLTFWalk
{
public:
    GLTFWalk(const Source &source, const tinygltf::Model &model, std::vector<GLTFPlacedMesh> &placed)
        : source_(source), model_(model), placed_(placed), isAbove_(model.nodes.size())
    {}

    bool walk(const std::vector<int> &roots)
    {
        push(roots, BAS_Mat4d());
        for (int64_t visits = 0; !stack_.empty();)
        {
            const auto [number, above] = stack_.back();
            if (number < 0 || size_t(number) >= isAbove_.size())
                return fail(fmt::format("expected one of {} nodes, found {}", isAbove_.size(), number));
            // A node stays below its children, and is seen again when they are done.
            if (!path_.empty() && path_.back() == stack_.size())
            {
                isAbove_[size_t(number)] = false;
                path_.pop_back();
                stack_.pop_back();
                continue;
            }
            if (isAbove_[size_t(number)])
                return fail(fmt::format("expected no node under itself, found node {}", number));
            if (++visits > kMostGLTFNodes)
                return fail(
                    fmt::format("expected at most {} nodes, counting those under several, found more", kMostGLTFNodes));
            isAbove_[size_t(number)] = true;
            path_.push_back(stack_.size());
            const tinygltf::Node &node = model_.nodes[size_t(number)];
            const BAS_Mat4d matrix = matrixOf(node) * above;
            if (node.mesh >= 0 && !place(node, matrix))
                return false;
            push(node.children, matrix);
        }
        return true;
    }

private:
    void push(const std::vector<int> &nodes, const BAS_Mat4d &above)
    {
        for (auto node = nodes.rbegin(); node != nodes.rend(); ++node)
            stack_.push_back({*node, above});
    }

    bool place(const tinygltf::Node &node, const BAS_Mat4d &matrix)
    {
        if (size_t(node.mesh) >= model_.meshes.size())
            return fail(fmt::format("expected one of {} meshes, found {}", model_.meshes.size(), node.mesh));
        const tinygltf::Mesh &mesh = model_.meshes[size_t(node.mesh)];
        placed_.push_back({&mesh, node.name.empty() ? mesh.name : node.name, matrix});
        return true;
    }

    bool fail(std::string what) { return source_.messages.fail(source_.name, {}, std::move(what)); }

    const Source &source_;
    const tinygltf::Model &model_;
    std::vector<GLTFPlacedMesh> &placed_;
    std::vector<bool> isAbove_;  // the node that is looked at, or itself
    std::vector<std::pair<int, BAS_Mat4d>> stack_;
    std::vector<size_t> path_;  // heights of the stack at the nodes above
};

// Without a scene: the nodes that lie under no other.
std::vector<int> topNodes(const tinygltf::Model &model)
{
    std::vector<bool> isChild(model.nodes.size());
    for (const tinygltf::Node &node : model.nodes)
        for (const int child : node.children)
            if (child >= 0 && size_t(child) < isChild.size())
                isChild[size_t(child)] = true;
    std::vector<int> top;
    for (size_t node = 0; node < isChild.size(); ++node)
        if (!isChild[node])
            top.push_back(int(node));
    return top;
}
}  // namespace

bool placedMeshes(const Source &source, const tinygltf::Model &model, std::vector<GLTFPlacedMesh> &placed)
{
    if (model.nodes.empty())
    {
        for (const tinygltf::Mesh &mesh : model.meshes)
            placed.push_back({&mesh, mesh.name, {}});
        return true;
    }
    const size_t scene = size_t(std::max(model.defaultScene, 0));
    if (!model.scenes.empty() && scene >= model.scenes.size())
        return source.messages.fail(
            source.name, {}, fmt::format("expected one of {} scenes, found {}", model.scenes.size(), model.defaultScene));
    return GLTFWalk(source, model, placed).walk(model.scenes.empty() ? topNodes(model) : model.scenes[scene].nodes);
}
}  // namespace rq::io
