#include <io/Reader.h>

#include <algorithm>

#include <fmt/format.h>

#include <io/FileText.h>
#include <io/OBJReader.h>

namespace rq::io
{
namespace
{
using ReadFunction = bool (*)(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages);

struct Format
{
    const char *ending;
    ReadFunction read;
};

const Format kFormats[] = {
    {".obj", readOBJ},
};

// The format that a file's name tells; standard input is taken for the first.
const Format *findFormat(const std::string &path)
{
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

bool load(const std::string &path, MOD_DetailHandle &detail, Messages &messages)
{
    const Format *format = findFormat(path);
    if (!format)
    {
        std::string endings;
        for (const Format &known : kFormats)
            endings += (endings.empty() ? "" : ", ") + std::string(known.ending);
        return messages.fail(path, {}, fmt::format("expected a file whose name ends with {}", endings));
    }
    FileText file;
    return file.open(path, messages) && format->read(file.text(), file.name(), detail, messages);
}
}  // namespace rq::io
