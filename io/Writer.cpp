#include <io/Writer.h>

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <io/GLTFWriter.h>
#include <io/OBJWriter.h>
#include <io/OutputFile.h>
#include <io/PLYWriter.h>
#include <io/RQGWriter.h>
#include <io/STLWriter.h>
#include <io/detail/endings.h>

namespace rq::io
{
namespace
{
/// What is written of a detail.
struct Output
{
    std::string bytes;
    std::string materials;  ///< of the file that `materialFileOf` names, where there is one
};

constexpr const char *kStandardOutput = "<stdout>";

using Write = bool (*)(const MOD_ConstDetailHandle &detail, NumberForm form, const std::string &name, Output &output,
                       Messages &messages);

struct Format
{
    const char *name;
    const char *ending;
    Write write;
    Holding holding;
};

template <RQGForm form>
bool asRQG(const MOD_ConstDetailHandle &detail, NumberForm, const std::string &name, Output &output, Messages &messages)
{
    return writeRQG(detail, form, name, output.bytes, messages);
}

bool asSTL(const MOD_ConstDetailHandle &detail, NumberForm, const std::string &name, Output &output, Messages &messages)
{
    return writeSTL(detail, name, output.bytes, messages);
}

bool asPLY(const MOD_ConstDetailHandle &detail, NumberForm form, const std::string &name, Output &output, Messages &messages)
{
    return writePLY(detail, form, name, output.bytes, messages);
}

template <NumberForm form>
bool asGLTF(const MOD_ConstDetailHandle &detail, NumberForm, const std::string &name, Output &output, Messages &messages)
{
    return writeGLTF(detail, form, name, output.bytes, messages);
}

// A pipe has nothing beside it.
bool isFile(const std::string &name)
{
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(name, ignored);
    return name != kStandardOutput && (!exists(status) || is_regular_file(status));
}

bool asOBJ(const MOD_ConstDetailHandle &detail, NumberForm, const std::string &name, Output &output, Messages &messages)
{
    return writeOBJ(detail, name, output.bytes, messages, isFile(name) ? &output.materials : nullptr);
}

const Format kFormats[] = {
    {"json", ".rqg.json", asRQG<RQGForm::Text>, Holding::Everything},
    {"rqg", ".rqg", asRQG<RQGForm::Binary>, Holding::Everything},
    {"json", ".json", asRQG<RQGForm::Text>, Holding::Everything},
    {"obj", ".obj", asOBJ, Holding::Lines},
    {"ply", ".ply", asPLY, Holding::Faces},
    {"stl", ".stl", asSTL, Holding::Faces},
    {"glb", ".glb", asGLTF<NumberForm::Binary>, Holding::Lines},
    {"gltf", ".gltf", asGLTF<NumberForm::Text>, Holding::Lines},
};

bool isStandardOutput(const std::string &path) { return path == "-"; }

const Format *findFormat(const std::string &path, const SaveOptions &options, Messages &messages)
{
    if (options.format.empty() && isStandardOutput(path))
        return messages.fail(
                   kStandardOutput, {},
                   fmt::format("expected the name of a format, one of {}, found none", fmt::join(saveFormats(), ", "))),
               nullptr;
    const Format *found = options.format.empty() ? findEnding(path, kFormats)
                                                 : std::ranges::find(kFormats, options.format,
                                                                     [](const Format &f) { return std::string(f.name); });
    if (!found)
        messages.fail(path, {}, expectEnding(kFormats));
    else if (found == std::end(kFormats))
        messages.fail(
            path, {},
            fmt::format("expected one of the formats {}, found \"{}\"", fmt::join(saveFormats(), ", "), options.format));
    return found == std::end(kFormats) ? nullptr : found;
}
}  // namespace

const std::vector<std::string> &saveFormats()
{
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all;
        for (const Format &format : kFormats)
            if (std::ranges::find(all, format.name) == all.end())
                all.push_back(format.name);
        return all;
    }();
    return names;
}

bool canSave(const std::string &path, Messages &messages, const SaveOptions &options)
{
    return findFormat(path, options, messages);
}

Holding holdingOf(const std::string &path, const SaveOptions &options)
{
    Messages unheard;
    const Format *format = findFormat(path, options, unheard);
    return format ? format->holding : Holding::Faces;
}

bool save(const std::string &path, const MOD_ConstDetailHandle &detail, Messages &messages, const SaveOptions &options)
{
    const Format *format = findFormat(path, options, messages);
    Output output;
    if (!format ||
        !format->write(detail, options.numbers, isStandardOutput(path) ? kStandardOutput : path, output, messages))
        return false;
    std::string error;
    if (isStandardOutput(path))
        return writeStandardOutput(output.bytes, error) || messages.fail(kStandardOutput, {}, error);
    if (const std::string materials = materialFileOf(path);
        !output.materials.empty() && !writeFile(materials, output.materials, error))
        return messages.fail(materials, {}, error);
    return writeFile(path, output.bytes, error) || messages.fail(path, {}, error);
}
}  // namespace rq::io
