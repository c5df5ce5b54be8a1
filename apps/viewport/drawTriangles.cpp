#include <apps/viewport/ItemPainter.h>
#include <apps/viewport/siftTriangles.h>
#include <rq/data/Values.h>

namespace rq::viewport
{
namespace
{
// To look through so many takes half a millisecond, and a program in place of a graphics card draws them in ten.
constexpr int64_t kFewestSifted = 100000;

bool isOfPoints(Lookup lookup) { return lookup != Lookup::Corner && lookup != Lookup::Face; }

bool isSifted(const Item &item, const Frame &frame)
{
    // As the shaders see them: bytes are something else there.
    const Form &form = *item.form;
    const bool isPlain = form.corners && form.positions->getStorage() != RQ_STORAGE_UINT8;
    return frame.siftsTriangles && isPlain && form.elements >= kFewestSifted && item.copies() == 1;
}

CornerNames siftedCorners(const Item &item, const Frame &frame, CornerName name)
{
    const Values<float> positions(item.form->positions);
    const Values<int32_t> corners(item.form->corners);
    const PictureSpace space{BAS_Mat4f(viewOf(item, frame)), BAS_Mat4f(frame.projection), int(frame.viewport.x),
                             int(frame.viewport.y)};
    return siftTriangles({positions.data(), positions.tupleSize(), positions.entries(), corners.data(), item.form->elements},
                         space, name);
}
}  // namespace

// Corners that share a point are worked out once where nothing asks which corner it is.
bool ItemPainter::drawTriangles(const Item &item, const Frame &frame, std::string &error)
{
    const Form &form = *item.form;
    const bool byPoint =
        !frame.style.wire && isOfPoints(normalLookup(form)) && isOfPoints(colourOf(item, frame.style.colour).found.lookup);
    Shader *shader = program(byPoint ? IndexedMesh : CornerMesh, error);
    bool complete = true;
    if (!shader || !bind(item, frame, *shader, complete, error))
        return false;
    bindColour(item, frame, *shader, complete, error);
    bindNormals(form, *shader, complete, error);
    if (!byPoint)
    {
        bindArray(UnitCorners, form.corners, Seen::Indices, complete, error);
        bindArray(UnitCornerSources, form.cornerSources, Seen::Indices, complete, error);
        bindArray(UnitFaceSources, form.faceSources, Seen::Indices, complete, error);
        bindArray(UnitEdges, form.edges, Seen::Bits, complete, error);
    }
    GLsizei corners = GLsizei(3 * form.elements);
    const bool sifted = isSifted(item, frame);
    if (sifted)
    {
        const CornerNames names = siftedCorners(item, frame, byPoint ? CornerName::Point : CornerName::Place);
        corners = GLsizei(names.size());
        glNamedBufferData(sifted_, GLsizeiptr(names.size() * sizeof(int32_t)), names.data(), GL_STREAM_DRAW);
        glVertexArrayElementBuffer(vertices_, sifted_);
    }
    else if (byPoint)
    {
        const Buffer *points = bindArray(UnitCorners, form.corners, Seen::Indices, complete, error);
        if (!points)
            return false;
        glVertexArrayElementBuffer(vertices_, points->buffer);
    }
    if (sifted || byPoint)
        glDrawElementsInstanced(GL_TRIANGLES, corners, GL_UNSIGNED_INT, nullptr, GLsizei(item.copies()));
    else
        glDrawArraysInstanced(GL_TRIANGLES, 0, corners, GLsizei(item.copies()));
    statistics_.triangles += form.elements * item.copies();
    statistics_.trianglesDrawn += corners / 3 * item.copies();
    ++statistics_.draws;
    return complete;
}
}  // namespace rq::viewport
