#include <apps/CommandLine.h>

#include <apps/optionTexts.h>
#include <io/Writer.h>

namespace rq::app
{
namespace
{
constexpr const char *kFormats = "OBJ, PLY, STL, OFF, glTF, GLB, XYZ, PTS, SWC or RQG; - is standard input";

void addThreads(CLI::App &command, CommonOptions &common)
{
    command.add_option("--threads", common.threads, "Use at most N threads; the result is the same for any number")
        ->type_name("N")
        ->check(CLI::Range(1, 4096));
}

void addFaceOptions(CLI::App &command, CommonOptions &common)
{
    command
        .add_option("--subdivide", common.subdivide,
                    "Subdivide every polygon mesh N times, by the scheme and the creases that its attributes give")
        ->type_name("N")
        ->check(CLI::Range(0, 10));
    command
        .add_option("--scheme", common.scheme,
                    "Subdivide by another scheme than the mesh says: catmull-clark, loop (triangles) or bilinear")
        ->type_name("NAME")
        ->check(CLI::IsMember({"catmull-clark", "loop", "bilinear"}));
    command.add_option("--convex", common.convex, "Cut every polygon mesh to convex faces of at most N vertices")
        ->type_name("N")
        ->check(CLI::Range(3, std::numeric_limits<int>::max()));
}

void addCommonOptions(CLI::App &command, CommonOptions &common)
{
    command.add_option("-p", common.parms, "Set a refinement option by its key; may be repeated")
        ->type_name("KEY=VALUE")
        ->take_all()
        ->allow_extra_args(false);
    addFaceOptions(command, common);
    addThreads(command, common);
}

CLI::App *addInfo(CLI::App &program, CommonOptions &common, InfoOptions &options)
{
    CLI::App *command = program.add_subcommand("info", "Tell what is in files, and what it refines to");
    CLI::Option *files =
        command->add_option("FILE", options.files, std::string("Files to read: ") + kFormats)->type_name("");
    command->add_flag("--json", options.json, "Print JSON");
    command->add_flag("--parms", options.parms, "Print all options that -p sets, instead of files")->excludes(files);
    command->callback([&options] {
        if (options.files.empty() && !options.parms)
            throw CLI::RequiredError("FILE");
    });
    addCommonOptions(*command, common);
    return command;
}

CLI::App *addConvert(CLI::App &program, CommonOptions &common, ConvertOptions &options)
{
    CLI::App *command = program.add_subcommand("convert", "Write what a file holds to a file of another kind");
    command->add_option("IN", options.input, std::string("File to read: ") + kFormats)->required()->type_name("");
    command
        ->add_option(
            "OUT", options.output,
            "File to write, told by the end of its name: .rqg.json or .rqg for everything, .obj, .ply, .stl, .glb or "
            ".gltf; - is standard output")
        ->required()
        ->type_name("");
    command->add_option("--to", options.format, "Write this kind of file, whatever its name; json is .rqg.json")
        ->type_name("FORMAT")
        ->check(CLI::IsMember(io::saveFormats()));
    command->add_flag("--ascii", options.ascii, "Write the numbers of PLY files as text");
    addFaceOptions(*command, common);
    addThreads(*command, common);
    return command;
}

CLI::App *addRender(CLI::App &program, CommonOptions &common, RenderOptions &options)
{
    CLI::App *command = program.add_subcommand("render", "Render a file to a picture, without a window");
    command->add_option("FILE", options.file, std::string("File to read: ") + kFormats)->required()->type_name("");
    addRenderOptions(*command, options);
    addCommonOptions(*command, common);
    return command;
}

CLI::App *addView(CLI::App &program, CommonOptions &common, ViewOptions &options)
{
    CLI::App *command = program.add_subcommand("view", "Show files in a window, or in a picture");
    command
        ->add_option("FILE", options.files,
                     std::string("Files to show together: ") + kFormats +
                         "; in a window, a run of # stands for the numbers of a sequence")
        ->type_name("");
    addViewOptions(*command, options);
    addCommonOptions(*command, common);
    return command;
}
}  // namespace

CommandLine::CommandLine()
{
    program.set_version_flag("--version", "rq " RQ_VERSION);
    program.require_subcommand(0, 1);
    program.add_option("--completion", shell, "Print a script that completes command lines in a shell")
        ->type_name("SHELL")
        ->check(CLI::IsMember(std::vector<std::string>(std::begin(kShells), std::end(kShells))));
    program.add_flag("--man", manual, "Print the manual page");
    infoCommand = addInfo(program, common, info);
    convertCommand = addConvert(program, common, convert);
    renderCommand = addRender(program, common, render);
    viewCommand = addView(program, common, view);
}
}  // namespace rq::app
