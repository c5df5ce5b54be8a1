#pragma once

#include <string>

#include <apps/viewport/ColourMap.h>
#include <rq/data/types.h>

namespace rq::viewport
{
/// Where the normals of meshes come from.
enum class Shading
{
    Auto,    ///< the mesh's own "N"; else by cusp angle, and of a very dense mesh none: its facets are small enough
    Smooth,  ///< the mesh's own "N"; else point normals
    Cusp,    ///< by cusp angle, whatever the mesh has
    Flat     ///< facets
};

/// What is decided when primitives are made ready to draw, on any thread; see `Scene::make`.
struct Preparation
{
    Shading shading = Shading::Auto;
    double cuspDegrees = 60.0;
    int subdivisionLevel = -1;  ///< of subdivision meshes; 0 shows the cage, -1 takes a level that suits their size

    bool operator==(const Preparation &) const = default;
};

enum class ColourBy
{
    Own,        ///< "Cd" where there is one, else the colours of materials where the file tells them, clay else
    Plain,      ///< clay
    Attribute,  ///< `ColourSource::name`; what lacks it is clay.  Each distinct text has a colour of its own, and "material"
                ///< that of the material
    FaceSet     ///< the first set, by name, that a face is in
};

/// Components of an attribute: 0 and above, or all together.
constexpr int kMagnitude = -1;
constexpr int kAsColour = -2;  ///< three components as red, green and blue; the only one of fewer is mapped

/// The attribute that names materials.
inline constexpr const char *kMaterialName = "material";

struct ColourSource
{
    ColourBy by = ColourBy::Own;
    std::string name;
    RQ_Owner owner = RQ_OWNER_INVALID;  ///< invalid: the first that has it, in the order vertex, point, uniform, detail
    int component = kMagnitude;
    ColourMap map = ColourMap::Spectrum;
    bool autoRange = true;  ///< from the least to the greatest value in the scene
    double minimum = 0.0;
    double maximum = 1.0;

    bool isByMaterial() const { return by == ColourBy::Attribute && name == kMaterialName; }
};

/// What is drawn, and how.  A change takes effect with the next picture.
struct DrawStyle
{
    bool faces = true;
    bool wire = false;     ///< edges of faces; without `faces` those behind are seen as well
    bool points = false;   ///< the points of meshes and curves
    bool normals = false;  ///< the normals that shade, as lines
    bool backFaceTint = true;
    ColourSource colour;
    BAS_Vec3f background{0.19f, 0.20f, 0.22f};
    int selected = -1;  ///< entry of the shown primitives that is set off; -1 for none
};
}  // namespace rq::viewport
