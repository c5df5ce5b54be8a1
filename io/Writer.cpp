#include <io/Writer.h>

#include <fmt/format.h>

#include <io/OBJWriter.h>
#include <io/RQGWriter.h>
#include <io/detail/OutputFile.h>
#include <io/detail/endings.h>

namespace rq::io
{
namespace
{
template <RQGForm form>
bool writeForm(const MOD_ConstDetailHandle &detail, const std::string &name, std::string &bytes, Messages &messages)
{
    return writeRQG(detail, form, name, bytes, messages);
}

struct Format
{
    const char *ending;
    decltype(&writeOBJ) write;
};

const Format kFormats[] = {
    {".rqg.json", writeForm<RQGForm::Text>},
    {".rqg", writeForm<RQGForm::Binary>},
    {".obj", writeOBJ},
};
}  // namespace

bool canSave(const std::string &path, Messages &messages)
{
    return findEnding(path, kFormats) || messages.fail(path, {}, expectEnding(kFormats));
}

bool save(const std::string &path, const MOD_ConstDetailHandle &detail, Messages &messages)
{
    std::string bytes;
    return canSave(path, messages) && findEnding(path, kFormats)->write(detail, path, bytes, messages) &&
           writeFile(path, bytes, messages);
}
}  // namespace rq::io
