#include <io/Reader.h>

#include <memory>

#include <io/FileText.h>
#include <io/OBJReader.h>
#include <io/OFFReader.h>
#include <io/PLYReader.h>
#include <io/RQGReader.h>
#include <io/STLReader.h>
#include <io/detail/endings.h>

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
    bool (*recognize)(std::string_view text);  ///< null: nothing tells this format from another text
};

// Nothing of these files lies as the host keeps it.
template <auto read>
bool copied(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages, const Owner &)
{
    return read(text, name, detail, messages);
}

const Format kFormats[] = {
    {".obj", copied<readOBJ>, nullptr}, {".ply", readPLY, isPLY},      {".off", copied<readOFF>, isOFF},
    {".stl", copied<readSTL>, isSTL},   {".rqg.json", readRQG, isRQG}, {".rqg", readRQG, isRQG},
};

// What a file is follows from how it begins, and only then from its name; standard input has none.
const Format *findFormat(std::string_view text, const std::string &path)
{
    for (const Format &format : kFormats)
    {
        if (format.recognize && format.recognize(text))
            return &format;
    }
    return path == "-" ? &kFormats[0] : findEnding(path, kFormats);
}
}  // namespace

bool load(const std::string &path, MOD_DetailHandle &detail, Messages &messages, bool inPlace)
{
    const auto file = std::make_shared<FileText>();
    if (!file->open(path, messages))
        return false;
    if (const Format *format = findFormat(file->text(), path))
        return format->read(file->text(), file->name(), detail, messages, inPlace ? file : nullptr);
    return messages.fail(path, {}, expectEnding(kFormats));
}
}  // namespace rq::io
