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
    BAS_Mat4d view;
    BAS_Mat4d viewFromMiddle;  ///< of the scene
    BAS_Mat4d projection;
    BAS_Vec3f viewport;  ///< width and height in pixels, and the length of drawn normals in the scene
    const DrawStyle &style;
    const Legend &legend;
    bool siftsTriangles;  ///< of large meshes: see `siftTriangles`
};

/// From an item's shape to the camera where it has no copies, in double precision; from the middle of the scene else.
BAS_Mat4d viewOf(const Item &item, const Frame &frame);

/// Which number of an element finds its normal.
Lookup normalLookup(const Form &form);

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

    // `complete` becomes false when an array cannot be had.
    Shader *program(Program which, std::string &error);
    bool bind(const Item &item, const Frame &frame, Shader &shader, bool &complete, std::string &error);
    const Buffer *bindArray(Unit unit, const RQ_DataArrayHandle &array, Seen seen, bool &complete, std::string &error);
    void bindColour(const Item &item, const Frame &frame, Shader &shader, bool &complete, std::string &error);
    void bindNormals(const Form &form, Shader &shader, bool &complete, std::string &error);
    bool drawTriangles(const Item &item, const Frame &frame, std::string &error);
    bool drawSegments(const Item &item, const Frame &frame, std::string &error);
    bool drawPoints(const Item &item, const Frame &frame, std::string &error);
    bool drawNormals(const Item &item, const Frame &frame, std::string &error);

    Buffers &buffers_;
    DisplayStatistics &statistics_;
    std::array<std::unique_ptr<Shader>, kPrograms> programs_;
    GLuint vertices_ = 0;
    GLuint sifted_ = 0;  // the corners of the last mesh whose triangles were sifted
};
}  // namespace rq::viewport
