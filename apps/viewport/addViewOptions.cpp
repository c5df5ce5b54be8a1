#include <apps/between.h>
#include <apps/viewport/view.h>

namespace rq::app
{
namespace
{
void addLookOptions(CLI::App &command, ViewOptions &options)
{
    command.add_option("--azimuth", options.azimuth, "Where the camera stands around the object, in degrees")
        ->type_name("DEG")
        ->check(between(-36000.0, 36000.0))
        ->capture_default_str();
    command.add_option("--elevation", options.elevation, "How high it stands, in degrees")
        ->type_name("DEG")
        ->check(between(-90.0, 90.0))
        ->capture_default_str();
    command.add_option("--zoom", options.zoom, "How much closer than where all is seen")
        ->type_name("FACTOR")
        ->check(between(1e-3, 1e3))
        ->capture_default_str();
    command.add_option("--up", options.up, "Axis that points up; auto takes z for what lies flat in x and y")
        ->check(CLI::IsMember({"auto", "y", "z"}))
        ->capture_default_str();
}

void addStyleOptions(CLI::App &command, ViewOptions &options)
{
    command.add_flag("--wire", options.wire, "Draw the edges of faces");
    command.add_flag("--no-faces", options.noFaces, "Leave out the faces themselves");
    command.add_flag("--points", options.points, "Draw the points of meshes and curves");
    command.add_flag("--normals", options.normals, "Draw the normals that shade");
    command.add_flag("--no-tint", options.noTint, "Give faces seen from behind no colour of their own");
    command.add_option("--shading", options.shading, "Normals: the mesh's own or fitting ones, of points, by angle, none")
        ->check(CLI::IsMember({"auto", "smooth", "cusp", "flat"}))
        ->capture_default_str();
    command.add_option("--cusp-angle", options.cuspAngle, "Edges sharper than this stay sharp, in degrees")
        ->type_name("DEG")
        ->capture_default_str();
    command
        .add_option("--colour", options.colour,
                    "Colour by an attribute, as in height, point:v.1 or uniform:id; or by material, facesets or none")
        ->type_name("NAME");
    command.add_option("--map", options.map, "Colours that numbers become")
        ->check(CLI::IsMember({"heat", "spectrum", "diverging", "grey"}))
        ->capture_default_str();
    command.add_option("--range", options.range, "Numbers at the ends of the map; those of the attribute without")
        ->type_name("MIN MAX")
        ->expected(2);
}
}  // namespace

void addViewOptions(CLI::App &command, ViewOptions &options)
{
    command.add_option("--screenshot", options.screenshot, "Draw into a PNG file, without a display")->type_name("PNG");
    command.add_option("--size", options.size, "Size of the picture, or of the window, in pixels")->type_name("WxH");
    command.add_flag("--statistics", options.statistics, "Tell what was drawn and uploaded");
    addStyleOptions(command, options);
    addLookOptions(command, options);
}
}  // namespace rq::app
