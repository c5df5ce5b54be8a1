#include <apps/between.h>
#include <apps/offline/render.h>

namespace rq::app
{
namespace
{
void addPicture(CLI::App &command, RenderOptions &options)
{
    command.add_option("-o,--output", options.output, "PNG file to write, or EXR with the layers albedo, normal and depth")
        ->required()
        ->type_name("FILE");
    command.add_option("--size", options.size, "Size of the picture in pixels")->type_name("WxH")->capture_default_str();
    command.add_option("--samples", options.samples, "Paths per pixel, at most so many with --adaptive")
        ->type_name("N")
        ->check(CLI::Range(1, 65536))
        ->capture_default_str();
    command
        .add_option("--adaptive", options.adaptive,
                    "Spend no more paths on a pixel that is known this well, of 1 for black to white; 0.01 is good")
        ->type_name("NOISE")
        ->check(between(0.0001, 1.0));
    command
        .add_option("--shade", options.shade,
                    "What surfaces show: beauty, wire, normals, uv, primitive, or attribute:NAME for any attribute")
        ->type_name("WHAT")
        ->capture_default_str();
    command.add_flag("!--no-ground", options.ground, "Leave out the floor under the object");
    command.add_option("--compare", options.compare, "Fail when the picture does not look like this PNG file")
        ->type_name("PNG");
    command.add_option("--tolerance", options.tolerance, "How far off it may be, of 1 for black to white")
        ->type_name("T")
        ->check(between(0.0, 1.0))
        ->capture_default_str();
}

void addCamera(CLI::App &command, RenderOptions &options)
{
    command.add_option("--up", options.up, "Axis that points up; auto takes z for what lies flat in x and y")
        ->check(CLI::IsMember({"auto", "y", "z"}))
        ->capture_default_str();
    command.add_option("--azimuth", options.azimuth, "Turn the camera around the object, from the front to the right")
        ->type_name("DEGREES")
        ->check(between(-36000.0, 36000.0));
    command.add_option("--elevation", options.elevation, "Raise the camera above the horizon")
        ->type_name("DEGREES")
        ->check(between(-90.0, 90.0));
    command.add_option("--fov", options.fov, "Angle of view over the smaller side of the picture")
        ->type_name("DEGREES")
        ->check(between(0.1, 170.0));
    command.add_option("--eye", options.eye, "Where the camera stands, instead of where all is seen")
        ->type_name("X,Y,Z")
        ->delimiter(',')
        ->expected(3);
    command.add_option("--look", options.look, "Where it looks, instead of at the middle of all")
        ->type_name("X,Y,Z")
        ->delimiter(',')
        ->expected(3);
}

void addMotion(CLI::App &command, RenderOptions &options)
{
    command
        .add_option("--next", options.next,
                    "The same scene later on, to blur what moves in between; may be repeated, at even intervals")
        ->type_name("FILE")
        ->take_all()
        ->allow_extra_args(false);
    command
        .add_option("--motion", options.motion,
                    "Blur by the velocity \"v\" of points over a frame of 1/24 s, in N - 1 straight pieces")
        ->type_name("N")
        ->check(CLI::Range(2, 64))
        ->excludes("--next");
    command.add_option("--shutter", options.shutter, "The part of the motion that the shutter is open for, of 0 to 1")
        ->type_name("FROM:TO")
        ->capture_default_str();
}
}  // namespace

void addRenderOptions(CLI::App &command, RenderOptions &options)
{
    addPicture(command, options);
    addCamera(command, options);
    addMotion(command, options);
}
}  // namespace rq::app
