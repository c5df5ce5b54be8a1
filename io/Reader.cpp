#include <io/Reader.h>

#include <memory>

#include <io/FileText.h>
#include <io/GLTFReader.h>
#include <io/OBJReader.h>
#include <io/OFFReader.h>
#include <io/PLYReader.h>
#include <io/RQGReader.h>
#include <io/STLReader.h>
#include <io/SWCReader.h>
#include <io/XYZReader.h>
#include <io/detail/endings.h>
#include <io/detail/withoutMark.h>

namespace rq::io
{
namespace
{
using Owner = std::shared_ptr<const void>;

struct Format
{
    const char *ending;
    bool (*read)(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages,
                 const Owner &owner);
    bool (*recognize)(std::string_view text);  ///< null: numbers alone may be anything
};

// Nothing of these files lies as the host keeps it.
template <auto read>
bool copied(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages, const Owner &)
{
    return read(text, name, detail, messages);
}

// In the order in which they are asked whether a file is theirs: those that look at one word of a text come last.
const Format kFormats[] = {
    {".ply", readPLY, isPLY},           {".rqg.json", readRQG, isRQG},       {".rqg", readRQG, isRQG},
    {".glb", copied<readGLTF>, isGLTF}, {".gltf", copied<readGLTF>, isGLTF}, {".off", copied<readOFF>, isOFF},
    {".stl", copied<readSTL>, isSTL},   {".obj", copied<readOBJ>, isOBJ},    {".xyz", copied<readXYZ>, nullptr},
    {".pts", copied<readXYZ>, nullptr}, {".swc", copied<readSWC>, isSWC},
};

// What a file is follows from how it begins, and only then from its name.
const Format *findFormat(std::string_view text, const std::string &path)
{
    for (const Format &format : kFormats)
    {
        if (format.recognize && format.recognize(text))
            return &format;
    }
    // Without a name numbers are points, and comments alone, or nothing, as good as an OBJ file.
    return findEnding(path != "-" ? path : isXYZ(text) ? ".xyz" : ".obj", kFormats);
}
}  // namespace

bool load(const std::string &path, MOD_DetailHandle &detail, Messages &messages, bool inPlace)
{
    const auto file = std::make_shared<FileText>();
    if (!file->open(path, messages))
        return false;
    const std::string_view text = withoutMark(file->text());
    if (const Format *format = findFormat(text, path))
        return format->read(text, file->name(), detail, messages, inPlace ? file : nullptr);
    return messages.fail(path, {}, expectEnding(kFormats));
}
}  // namespace rq::io
