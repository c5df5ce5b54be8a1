#pragma once

#include <array>

#include <apps/viewport/Buffers.h>
#include <apps/viewport/Colouring.h>
#include <apps/viewport/Shader.h>

namespace rq::viewport
{
/// What a whole picture has in common.
struct Frame
{
    BAS_Mat4d view;  ///< from the middle of the scene
    BAS_Mat4d projection;
    BAS_Vec3f viewport;  ///< width and height in pixels, and the length of drawn normals in the scene
    const DrawStyle &style;
    const Legend &legend;
};

/// Draws items with the programs and buffers of a display.
class ItemPainter
{
public:
    ItemPainter(Buffers &buffers, DisplayStatistics &statistics);
    ~ItemPainter();
    ItemPainter(const ItemPainter &) = delete;
    ItemPainter &operator=(const ItemPainter &) = delete;

    /// False, with the reason in `error`, when the driver does not take the programs.
    bool prepare(std::string &error);

    /// Draw what the style shows of an item.  False, with the reason, when something of it had to be left out.
    bool draw(const Item &item, const Frame &frame, std::string &error);

private:
    enum Program
    {
        IndexedMesh,
        CornerMesh,
        Segments,
        Sprites,
        NormalLines,
        kPrograms
    };

    // The arrays that are bound, and whether all that was asked for could be.
    struct Bound;

    Shader *program(Program which, std::string &error);
    bool bind(const Item &item, const Frame &frame, Shader &shader, Bound &bound, std::string &error);
    const Buffer *bindArray(int unit, const RQ_DataArrayHandle &array, Seen seen, Bound &bound, std::string &error);
    bool bindColour(const Item &item, const Frame &frame, Shader &shader, Bound &bound, std::string &error);
    bool drawTriangles(const Item &item, const Frame &frame, std::string &error);
    bool drawSegments(const Item &item, const Frame &frame, std::string &error);
    bool drawPoints(const Item &item, const Frame &frame, std::string &error);
    bool drawNormals(const Item &item, const Frame &frame, std::string &error);

    Buffers &buffers_;
    DisplayStatistics &statistics_;
    std::array<std::unique_ptr<Shader>, kPrograms> programs_;
    GLuint vertices_ = 0;
};
}  // namespace rq::viewport
