#include <io/detail/GLTFAssembly.h>

#include <algorithm>
#include <bit>
#include <numeric>

#include <host/bas/hashBytes.h>
#include <io/detail/GLTFMaterialsRead.h>
#include <io/detail/Materials.h>
#include <io/detail/Tally.h>

namespace rq::io
{
namespace
{
// Equal for the same positions in the same place: a mesh may lie in a hundred thousand.
uint64_t keyOf(int positions, const BAS_Mat4d &matrix)
{
    uint64_t key = uint64_t(positions);
    for (int i = 0; i < 16; ++i)
        key = host::hashWord(key, std::bit_cast<uint64_t>(matrix[i / 4][i % 4]));
    return key;
}
}  // namespace

bool GLTFAssembly::build(const std::vector<GLTFPlacedMesh> &placed, MOD_DetailHandle &detail)
{
    for (const std::string &extension : model_.extensionsRequired)
        if (extension.ends_with("_compression"))
            return source_.messages.fail(source_.name, {},
                                         fmt::format("expected data as they are, found extension \"{}\"", extension));
    for (const GLTFPlacedMesh &mesh : placed)
        if (!takeMesh(mesh))
            return false;
    MOD_DetailHandle result;
    MOD_Edit edit(result);
    if (!edit.appendPoints(points_) || !appendParts(edit) || !columns_.write(edit))
        return source_.messages.fail(source_.name, {}, edit.message());
    writeNames(edit);
    warnOfTheRest();
    edit.commit();
    detail = result;
    return true;
}

bool GLTFAssembly::takeMesh(const GLTFPlacedMesh &placed)
{
    for (size_t i = 0; i < placed.mesh->primitives.size(); ++i)
    {
        where_ = fmt::format("mesh {}, primitive {}: ", placed.mesh - model_.meshes.data(), i);
        if (!takePrimitive(placed, placed.mesh->primitives[i]))
            return false;
    }
    return true;
}

bool GLTFAssembly::takePrimitive(const GLTFPlacedMesh &placed, const tinygltf::Primitive &primitive)
{
    morphed_ += !primitive.targets.empty();
    if (!primitive.attributes.contains("POSITION"))
    {
        ++withoutPoints_;
        return true;
    }
    const GLTFPoints *points = findPoints(placed, primitive);
    std::vector<uint32_t> vertices;
    if (!points || !readVertices(primitive, points->count, vertices))
        return fail();
    if (primitive.material >= int(model_.materials.size()))
        return error_ = fmt::format("expected one of {} materials, found {}", model_.materials.size(), primitive.material),
               fail();
    if (primitive.mode < 0 || primitive.mode > TINYGLTF_MODE_TRIANGLE_FAN)
        return error_ = fmt::format("expected a mode from 0 to 6, found {}", primitive.mode), fail();

    Part part{.topology = {}, .name = &placed.name, .material = primitive.material};
    part.topology.join(primitive.mode, vertices, int32_t(points->first), placed.matrix.determinant() < 0.0);
    left_ += part.topology.left;
    parts_.push_back(std::move(part));
    return true;
}

// Primitives with the same attributes in the same place have the same points, also those of several meshes.
const GLTFPoints *GLTFAssembly::findPoints(const GLTFPlacedMesh &placed, const tinygltf::Primitive &primitive)
{
    std::vector<const GLTFPoints *> &known = known_[keyOf(primitive.attributes.at("POSITION"), placed.matrix)];
    for (const GLTFPoints *points : known)
        if (*points->matrix == placed.matrix && *points->attributes == primitive.attributes)
            return points;
    GLTFAccessor positions;
    if (!positions.open(model_, primitive.attributes.at("POSITION"), error_))
        return nullptr;
    if (points_ + positions.count() > INT32_MAX)
        return error_ = fmt::format("expected at most {} points, found more", INT32_MAX), nullptr;
    sets_.push_back({&primitive.attributes, &placed.matrix, points_, positions.count()});
    points_ += positions.count();
    known.push_back(&sets_.back());
    return columns_.take(model_, sets_.back(), error_) ? &sets_.back() : nullptr;
}

bool GLTFAssembly::readVertices(const tinygltf::Primitive &primitive, int64_t points, std::vector<uint32_t> &vertices)
{
    if (primitive.indices < 0)
    {
        vertices.resize(size_t(points));
        std::iota(vertices.begin(), vertices.end(), 0);
        return true;
    }
    GLTFAccessor indices;
    if (!indices.open(model_, primitive.indices, error_))
        return false;
    if (!indices.isInteger() || indices.components() != 1)
        return error_ = "expected indices that are whole numbers, found others", false;
    vertices.resize(size_t(indices.count()));
    indices.read(vertices.data(), 1);
    const auto bad = std::ranges::find_if(vertices, [&](uint32_t vertex) { return int64_t(vertex) >= points; });
    return bad == vertices.end() ||
           (error_ = fmt::format("expected the index of one of {} points, found {}", points, *bad), false);
}

// Runs of parts of one kind are appended at once.
bool GLTFAssembly::appendParts(MOD_Edit &edit) const
{
    for (auto part = parts_.begin(); part != parts_.end();)
    {
        if (part->topology.kind == GLTFTopology::Particles)
        {
            if (!part->topology.points.empty() && !edit.appendParticles(part->topology.points))
                return false;
            ++part;
            continue;
        }
        std::vector<int32_t> corners, points;
        const auto kind = part->topology.kind;
        for (; part != parts_.end() && part->topology.kind == kind; ++part)
        {
            corners.insert(corners.end(), part->topology.corners.begin(), part->topology.corners.end());
            points.insert(points.end(), part->topology.points.begin(), part->topology.points.end());
        }
        if (!corners.empty() && !edit.appendPolygons(corners, points, kind == GLTFTopology::Faces))
            return false;
    }
    return true;
}

void GLTFAssembly::writeNames(MOD_Edit &edit) const
{
    const bool hasNames = std::ranges::any_of(parts_, [](const Part &part) { return !part.name->empty(); });
    const bool hasMaterials = std::ranges::any_of(parts_, [](const Part &part) { return part.material >= 0; });
    ELM_StringTuple *names = hasNames ? edit.stringAttribute(ELM_OWNER_PRIMITIVE, "object")->strings() : nullptr;
    ELM_StringTuple *materials = hasMaterials ? edit.stringAttribute(ELM_OWNER_PRIMITIVE, "material")->strings() : nullptr;
    GLTFNamedMaterials named(model_);
    int64_t first = 0;
    for (const Part &part : parts_)
    {
        if (names && !part.name->empty())
            names->fill(first, part.primitives(), names->add(*part.name));
        if (materials && part.material >= 0)
            materials->fill(first, part.primitives(), materials->add(named.names[size_t(part.material)]));
        first += part.primitives();
    }
    if (materials)
        writeMaterials(edit, std::move(named.materials));
}

void GLTFAssembly::warnOfTheRest() const
{
    for (const std::string &name : columns_.unknown())
        warn(fmt::format("expected a known attribute, found \"{}\"; it is passed over", name));
    if (morphed_ > 0)
        warn(fmt::format("morph targets of {} passed over", counted(morphed_, "primitive are", "primitives are")));
    if (!model_.skins.empty())
        warn(counted(std::ssize(model_.skins), "skin is", "skins are") + " passed over");
    if (withoutPoints_ > 0)
        warn(fmt::format("expected attribute \"POSITION\", found none; {} passed over",
                         counted(withoutPoints_, "primitive is", "primitives are")));
    if (left_ > 0)
        warn(fmt::format("expected whole lines and triangles, found {} too many", counted(left_, "vertex", "vertices")));
    for (const std::string &extension : model_.extensionsRequired)
        if (extension != "KHR_mesh_quantization")
            warn(fmt::format("required extension \"{}\" is not known; what it says is passed over", extension));
    if (points_ == 0)
        warn("expected meshes, found none");
}
}  // namespace rq::io
