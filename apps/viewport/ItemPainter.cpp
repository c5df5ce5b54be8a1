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

Found widthOf(const Item &item)
{
    for (const char *name : {"width", "pscale"})
        if (const Found found = findAttribute(item, name);
            found && RQisNumeric(found.array->getStorage()) && !found.array->hasArrayEntries())
            return found;
    return {};
}

}  // namespace

BAS_Mat4d viewOf(const Item &item, const Frame &frame)
{
    return item.copies() == 1 ? item.placements.matrices.front() * frame.view : frame.viewFromMiddle;
}

Lookup normalLookup(const Form &form)
{
    constexpr Lookup kLookups[] = {Lookup::Corner, Lookup::Point, Lookup::Face, Lookup::Detail};
    return form.normals ? kLookups[form.normalsOwner] : Lookup::None;
}

ItemPainter::ItemPainter(Buffers &buffers, DisplayStatistics &statistics) : buffers_(buffers), statistics_(statistics)
{
    glCreateVertexArrays(1, &vertices_);
    glCreateBuffers(1, &sifted_);
}

ItemPainter::~ItemPainter()
{
    glDeleteVertexArrays(1, &vertices_);
    glDeleteBuffers(1, &sifted_);
}

bool ItemPainter::prepare(std::string &error) { return program(IndexedMesh, error) != nullptr; }

Shader *ItemPainter::program(Program which, std::string &error)
{
    // The driver takes its time for each, and most pictures need one.
    std::unique_ptr<Shader> &shader = programs_[which];
    if (!shader)
        shader = Shader::create(kTexts[which].vertex, kTexts[which].fragment, kTexts[which].defines, error);
    return shader.get();
}

const Buffer *ItemPainter::bindArray(Unit unit, const RQ_DataArrayHandle &array, Seen seen, bool &complete,
                                     std::string &error)
{
    const Buffer *buffer = buffers_.find(array, seen, statistics_, error);
    complete = complete && (buffer || !array);
    glBindTextureUnit(GLuint(unit), buffer ? buffer->texture : 0);
    return buffer;
}

bool ItemPainter::bind(const Item &item, const Frame &frame, Shader &shader, bool &complete, std::string &error)
{
    const Form &form = *item.form;
    shader.use();
    glBindVertexArray(vertices_);
    bindArray(UnitPositions, form.positions, Seen::Floats, complete, error);
    const bool hasCopies = item.copies() > 1;
    if (hasCopies)
        bindArray(UnitPlacements, item.matrices, Seen::Rows, complete, error);
    shader.set("hasCopies", int(hasCopies));
    shader.set("view", viewOf(item, frame));
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
    return complete;
}

void ItemPainter::bindColour(const Item &item, const Frame &frame, Shader &shader, bool &complete, std::string &error)
{
    const ItemColour colour = colourOf(item, frame.style.colour);
    const Buffer *values = bindArray(UnitColours, colour.found.array, colour.seen, complete, error);
    if (!values)
        return;
    const int size = colour.seen == Seen::Texts ? 1 : int(colour.found.array->getTupleSize());
    shader.set("colourMode", int(colour.mode));
    shader.set("colourForm", size, int(colour.found.lookup));
    shader.set("colourScale", values->scale * colour.scale);
    shader.set("colourComponent", colour.component);
    shader.set("colourRange", float(frame.legend.minimum), float(frame.legend.maximum));
    const std::span<const BAS_Vec3f> stops = colourStops(frame.style.colour.map);
    shader.set("colourStops", stops);
    shader.set("colourStopCount", int(stops.size()));
}

void ItemPainter::bindNormals(const Form &form, Shader &shader, bool &complete, std::string &error)
{
    if (bindArray(UnitNormals, form.normals, Seen::Floats, complete, error))
        shader.set("normalForm", int(form.normals->getTupleSize()), int(normalLookup(form)));
}

bool ItemPainter::drawSegments(const Item &item, const Frame &frame, std::string &error)
{
    const Form &form = *item.form;
    Shader *shader = program(Segments, error);
    bool complete = true;
    if (!shader || !bind(item, frame, *shader, complete, error))
        return false;
    bindArray(UnitCorners, form.corners, Seen::Indices, complete, error);
    bindArray(UnitFaceSources, form.faceSources, Seen::Indices, complete, error);
    bindColour(item, frame, *shader, complete, error);
    const Found width = widthOf(item);
    if (bindArray(UnitWidths, width.array, Seen::Floats, complete, error))
        shader->set("widthForm", int(width.array->getTupleSize()), int(width.lookup));
    shader->set("pixelWidth", kLineWidth);
    glDrawArraysInstanced(GL_TRIANGLES, 0, GLsizei(6 * form.elements), GLsizei(item.copies()));
    statistics_.segments += form.elements * item.copies();
    ++statistics_.draws;
    return complete;
}

// Points by themselves have width and colour; those of something else are marked.
bool ItemPainter::drawPoints(const Item &item, const Frame &frame, std::string &error)
{
    const Form &form = *item.form;
    Shader *shader = program(Sprites, error);
    bool complete = true;
    if (!shader || !bind(item, frame, *shader, complete, error))
        return false;
    const int64_t points = form.positions->entries();
    shader->set("pixelWidth", form.kind == FormKind::Points && points > kCrowd ? kCrowdedWidth : kPointWidth);
    shader->set("lift", form.kind == FormKind::Points ? 0.0f : kLift);
    if (form.kind == FormKind::Points)
    {
        bindColour(item, frame, *shader, complete, error);
        const Found width = widthOf(item);
        if (bindArray(UnitWidths, width.array, Seen::Floats, complete, error))
            shader->set("widthForm", int(width.array->getTupleSize()), int(width.lookup));
    }
    else
        shader->set("plainColour", kPointColour);
    glDrawArraysInstanced(GL_POINTS, 0, GLsizei(points), GLsizei(item.copies()));
    statistics_.points += points * item.copies();
    ++statistics_.draws;
    return complete;
}

bool ItemPainter::drawNormals(const Item &item, const Frame &frame, std::string &error)
{
    const Form &form = *item.form;
    Shader *shader = program(NormalLines, error);
    bool complete = true;
    if (!shader || !bind(item, frame, *shader, complete, error))
        return false;
    bindArray(UnitCorners, form.corners, Seen::Indices, complete, error);
    bindArray(UnitCornerSources, form.cornerSources, Seen::Indices, complete, error);
    bindArray(UnitFaceSources, form.faceSources, Seen::Indices, complete, error);
    bindNormals(form, *shader, complete, error);
    const Lookup lookup = normalLookup(form);
    const bool ofPoints = lookup == Lookup::Point || lookup == Lookup::Detail;
    const int perElement = ofPoints ? 0 : lookup == Lookup::Corner ? 1 : 3;
    const int64_t count = ofPoints ? form.positions->entries() : perElement == 1 ? 3 * form.elements : form.elements;
    shader->set("perElement", perElement);
    shader->set("normalLength", frame.viewport.z);
    shader->set("plainColour", kNormalColour);
    glDrawArraysInstanced(GL_LINES, 0, GLsizei(2 * count), GLsizei(item.copies()));
    ++statistics_.draws;
    return complete;
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
