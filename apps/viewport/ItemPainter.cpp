#include <apps/viewport/ItemPainter.h>

#include <apps/viewport/shaderTexts.h>

namespace rq::viewport
{
namespace
{
struct ProgramTexts
{
    const char *const &vertex;
    const char *const &fragment;
    const char *defines;
};
const ProgramTexts kTexts[] = {
    {shader::kMeshVertex, shader::kFragment, "#define MESH\n#define INDEXED\n"},
    {shader::kMeshVertex, shader::kFragment, "#define MESH\n"},
    {shader::kSegmentVertex, shader::kFragment, ""},
    {shader::kPointVertex, shader::kFragment, "#define SPRITE\n"},
    {shader::kNormalVertex, shader::kPlainFragment, ""},
};

// The numbers of the textures in the shaders.
enum Unit
{
    UnitPositions,
    UnitCorners,
    UnitCornerSources,
    UnitFaceSources,
    UnitEdges,
    UnitPlacements,
    UnitNormals,
    UnitColours,
    UnitWidths
};

// What has no colour of its own looks like clay.
const BAS_Vec3f kClay(0.72f, 0.69f, 0.64f);
const BAS_Vec3f kPointColour(0.98f, 0.80f, 0.30f);
const BAS_Vec3f kNormalColour(0.35f, 0.85f, 0.90f);

constexpr float kLineWidth = 1.6f;
constexpr float kPointWidth = 4.0f;
constexpr float kCrowdedWidth = 2.0f;
constexpr int64_t kCrowd = 20000;

// Marks of points lie on the surface: drawn this part of the depth nearer, they are not half hidden by it.
constexpr float kLift = 1e-3f;

bool isOfPoints(Lookup lookup) { return lookup != Lookup::Corner && lookup != Lookup::Face; }

Lookup normalLookup(const Form &form)
{
    constexpr Lookup kLookups[] = {Lookup::Corner, Lookup::Point, Lookup::Face, Lookup::Detail};
    return form.normals ? kLookups[form.normalsOwner] : Lookup::None;
}

Found widthOf(const Item &item)
{
    for (const char *name : {"width", "pscale"})
        if (const Found found = findAttribute(item, name);
            found && RQisNumeric(found.array->getStorage()) && !found.array->hasArrayEntries())
            return found;
    return {};
}

GLsizei copiesOf(const Item &item) { return GLsizei(item.placements.matrices.size()); }
}  // namespace

struct ItemPainter::Bound
{
    const Buffer *corners = nullptr;
    bool complete = true;
};

ItemPainter::ItemPainter(Buffers &buffers, DisplayStatistics &statistics) : buffers_(buffers), statistics_(statistics)
{
    glCreateVertexArrays(1, &vertices_);
}

ItemPainter::~ItemPainter() { glDeleteVertexArrays(1, &vertices_); }

bool ItemPainter::prepare(std::string &error) { return program(IndexedMesh, error) != nullptr; }

Shader *ItemPainter::program(Program which, std::string &error)
{
    // The driver takes its time for each, and most pictures need one.
    std::unique_ptr<Shader> &shader = programs_[which];
    if (!shader)
        shader = Shader::create(kTexts[which].vertex, kTexts[which].fragment, kTexts[which].defines, error);
    return shader.get();
}

const Buffer *ItemPainter::bindArray(int unit, const RQ_DataArrayHandle &array, Seen seen, Bound &bound, std::string &error)
{
    const Buffer *buffer = buffers_.find(array, seen, statistics_, error);
    bound.complete = bound.complete && (buffer || !array);
    glBindTextureUnit(GLuint(unit), buffer ? buffer->texture : 0);
    return buffer;
}

bool ItemPainter::bind(const Item &item, const Frame &frame, Shader &shader, Bound &bound, std::string &error)
{
    const Form &form = *item.form;
    shader.use();
    glBindVertexArray(vertices_);
    bindArray(UnitPositions, form.positions, Seen::Numbers, bound, error);
    bindArray(UnitPlacements, item.matrices, Seen::Rows, bound, error);
    bound.corners = bindArray(UnitCorners, form.corners, Seen::Indices, bound, error);
    shader.set("view", frame.view);
    shader.set("projection", frame.projection);
    shader.set("pixels", frame.viewport.x, frame.viewport.y);
    shader.set("positionSize", int(form.positions->getTupleSize()));
    shader.set("has", form.cornerSources != nullptr, form.faceSources != nullptr, form.edges != nullptr);
    shader.set("show", frame.style.faces, frame.style.wire, frame.style.backFaceTint,
               frame.style.selected >= 0 && size_t(frame.style.selected) == item.shown);
    shader.set("plainColour", kClay);
    shader.set("colourMode", 0);
    shader.set("normalForm", 0, 0);
    shader.set("widthForm", 0, 0);
    return bound.complete;
}

bool ItemPainter::bindColour(const Item &item, const Frame &frame, Shader &shader, Bound &bound, std::string &error)
{
    const ItemColour colour = colourOf(item, frame.style.colour);
    const Buffer *values = bindArray(UnitColours, colour.found.array, colour.seen, bound, error);
    if (!values)
        return bound.complete;
    const int size = colour.seen == Seen::Texts ? 1 : int(colour.found.array->getTupleSize());
    shader.set("colourMode", int(colour.mode));
    shader.set("colourForm", size, int(colour.found.lookup));
    shader.set("colourScale", values->scale * colour.scale);
    shader.set("colourComponent", colour.component);
    shader.set("colourRange", float(frame.legend.minimum), float(frame.legend.maximum));
    const std::span<const BAS_Vec3f> stops = colourStops(frame.style.colour.map);
    shader.set("colourStops", stops);
    shader.set("colourStopCount", int(stops.size()));
    return true;
}

// Corners that share a point are worked out once where nothing asks which corner it is.
bool ItemPainter::drawTriangles(const Item &item, const Frame &frame, std::string &error)
{
    const Form &form = *item.form;
    const Lookup normals = normalLookup(form);
    const bool indexed =
        !frame.style.wire && isOfPoints(normals) && isOfPoints(colourOf(item, frame.style.colour).found.lookup);
    Shader *shader = program(indexed ? IndexedMesh : CornerMesh, error);
    Bound bound;
    if (!shader || !bind(item, frame, *shader, bound, error))
        return false;
    bindColour(item, frame, *shader, bound, error);
    if (bindArray(UnitNormals, form.normals, Seen::Numbers, bound, error))
        shader->set("normalForm", int(form.normals->getTupleSize()), int(normals));
    if (!indexed)
    {
        bindArray(UnitCornerSources, form.cornerSources, Seen::Indices, bound, error);
        bindArray(UnitFaceSources, form.faceSources, Seen::Indices, bound, error);
        bindArray(UnitEdges, form.edges, Seen::Bits, bound, error);
    }
    const GLsizei corners = GLsizei(3 * form.elements);
    if (indexed)
    {
        glVertexArrayElementBuffer(vertices_, bound.corners->buffer);
        glDrawElementsInstanced(GL_TRIANGLES, corners, GL_UNSIGNED_INT, nullptr, copiesOf(item));
    }
    else
        glDrawArraysInstanced(GL_TRIANGLES, 0, corners, copiesOf(item));
    statistics_.triangles += form.elements * copiesOf(item);
    ++statistics_.draws;
    return bound.complete;
}

bool ItemPainter::drawSegments(const Item &item, const Frame &frame, std::string &error)
{
    const Form &form = *item.form;
    Shader *shader = program(Segments, error);
    Bound bound;
    if (!shader || !bind(item, frame, *shader, bound, error))
        return false;
    bindArray(UnitFaceSources, form.faceSources, Seen::Indices, bound, error);
    bindColour(item, frame, *shader, bound, error);
    const Found width = widthOf(item);
    if (bindArray(UnitWidths, width.array, Seen::Numbers, bound, error))
        shader->set("widthForm", int(width.array->getTupleSize()), int(width.lookup));
    shader->set("pixelWidth", kLineWidth);
    glDrawArraysInstanced(GL_TRIANGLES, 0, GLsizei(6 * form.elements), copiesOf(item));
    statistics_.segments += form.elements * copiesOf(item);
    ++statistics_.draws;
    return bound.complete;
}

// Points by themselves have width and colour; those of something else are marked.
bool ItemPainter::drawPoints(const Item &item, const Frame &frame, std::string &error)
{
    const Form &form = *item.form;
    Shader *shader = program(Sprites, error);
    Bound bound;
    if (!shader || !bind(item, frame, *shader, bound, error))
        return false;
    const int64_t points = form.positions->entries();
    shader->set("pixelWidth", form.kind == FormKind::Points && points > kCrowd ? kCrowdedWidth : kPointWidth);
    shader->set("lift", form.kind == FormKind::Points ? 0.0f : kLift);
    if (form.kind == FormKind::Points)
    {
        bindColour(item, frame, *shader, bound, error);
        const Found width = widthOf(item);
        if (bindArray(UnitWidths, width.array, Seen::Numbers, bound, error))
            shader->set("widthForm", int(width.array->getTupleSize()), int(width.lookup));
    }
    else
        shader->set("plainColour", kPointColour);
    glDrawArraysInstanced(GL_POINTS, 0, GLsizei(points), copiesOf(item));
    statistics_.points += points * copiesOf(item);
    ++statistics_.draws;
    return bound.complete;
}

bool ItemPainter::drawNormals(const Item &item, const Frame &frame, std::string &error)
{
    const Form &form = *item.form;
    Shader *shader = program(NormalLines, error);
    Bound bound;
    if (!shader || !bind(item, frame, *shader, bound, error))
        return false;
    bindArray(UnitCornerSources, form.cornerSources, Seen::Indices, bound, error);
    bindArray(UnitFaceSources, form.faceSources, Seen::Indices, bound, error);
    const Lookup lookup = normalLookup(form);
    if (bindArray(UnitNormals, form.normals, Seen::Numbers, bound, error))
        shader->set("normalForm", int(form.normals->getTupleSize()), int(lookup));
    const bool ofPoints = lookup == Lookup::Point || lookup == Lookup::Detail;
    const int perElement = ofPoints ? 0 : lookup == Lookup::Corner ? 1 : 3;
    const int64_t count = ofPoints ? form.positions->entries() : perElement == 1 ? 3 * form.elements : form.elements;
    shader->set("perElement", perElement);
    shader->set("normalLength", frame.viewport.z);
    shader->set("plainColour", kNormalColour);
    glDrawArraysInstanced(GL_LINES, 0, GLsizei(2 * count), copiesOf(item));
    ++statistics_.draws;
    return bound.complete;
}

bool ItemPainter::draw(const Item &item, const Frame &frame, std::string &error)
{
    const DrawStyle &style = frame.style;
    bool complete = true;
    if (item.form->kind == FormKind::Triangles && (style.faces || style.wire))
        complete = drawTriangles(item, frame, error) && complete;
    if (item.form->kind == FormKind::Segments)
        complete = drawSegments(item, frame, error) && complete;
    if (item.form->kind == FormKind::Points || style.points)
        complete = drawPoints(item, frame, error) && complete;
    if (item.form->kind == FormKind::Triangles && style.normals)
        complete = drawNormals(item, frame, error) && complete;
    return complete;
}
}  // namespace rq::viewport
