#include <io/Reader.h>

#include <algorithm>
#include <memory>

#include <fmt/format.h>

#include <io/FileText.h>
#include <io/OBJReader.h>
#include <io/OFFReader.h>
#include <io/PLYReader.h>
#include <io/STLReader.h>

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
    {".obj", copied<readOBJ>, nullptr},
    {".ply", readPLY, isPLY},
    {".off", copied<readOFF>, isOFF},
    {".stl", copied<readSTL>, isSTL},
};

// What a file is follows from how it begins, and only then from its name; standard input has none.
const Format *findFormat(std::string_view text, const std::string &path)
{
    for (const Format &format : kFormats)
    {
        if (format.recognize && format.recognize(text))
            return &format;
    }
    if (path == "-")
        return &kFormats[0];
    std::string ending = path.substr(std::min(path.rfind('.'), path.size()));
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    const auto found = std::find_if(std::begin(kFormats), std::end(kFormats),
                                    [&](const Format &format) { return ending == format.ending; });
    return found == std::end(kFormats) ? nullptr : found;
}
}  // namespace

bool load(const std::string &path, MOD_DetailHandle &detail, Messages &messages, bool inPlace)
{
    const auto file = std::make_shared<FileText>();
    if (!file->open(path, messages))
        return false;
    if (const Format *format = findFormat(file->text(), path))
        return format->read(file->text(), file->name(), detail, messages, inPlace ? file : nullptr);
    std::string endings;
    for (const Format &known : kFormats)
        endings += (endings.empty() ? "" : ", ") + std::string(known.ending);
    return messages.fail(path, {}, fmt::format("expected a file whose name ends with {}", endings));
}
}  // namespace rq::io
