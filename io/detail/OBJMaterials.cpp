#include <io/detail/OBJMaterials.h>

#include <algorithm>
#include <filesystem>

#include <io/FileText.h>
#include <io/detail/MTLText.h>

namespace rq::io
{
namespace
{
class OBJMaterials
{
public:
    OBJMaterials(const OBJSource &source, Messages &messages) : source_(source), messages_(messages) {}

    BAS_Options read(const std::vector<OBJBlock> &blocks)
    {
        Tally missing;
        for (const OBJBlock &block : blocks)
            for (const std::string_view names : block.materialFiles)
                if (!readLine(names))
                    missing.add(names.data());
        if (missing.count > 0)
            messages_.warn(source_.name, placeOf(source_.text, missing.first),
                           fmt::format("{}; {} missing, material names are kept", expectation(),
                                       counted(missing.count, "file is", "files are")));
        return std::move(materials_);
    }

private:
    bool isFromStandardInput() const { return source_.name == FileText::kStandardInput; }

    const char *expectation() const
    {
        return isFromStandardInput() ? "expected a material file beside this one, found standard input"
                                     : "expected a material file, found none of this name";
    }

    // A line names one file with blanks in its name, or several without.
    bool readLine(std::string_view names)
    {
        if (readFile(names))
            return true;
        bool isWhole = true;
        for (Scanner scanner(names); scanner.toWord();)
            isWhole = readFile(scanner.word()) && isWhole;
        return isWhole;
    }

    bool readFile(std::string_view name)
    {
        std::string path = (std::filesystem::path(source_.name).parent_path() / name).string();
        if (!isFile(path))
            std::ranges::replace(path, '\\', '/');
        if (isFromStandardInput())
            return false;
        path = std::filesystem::path(path).lexically_normal().string();
        messages_.noteFile(path);
        if (!isFile(path))
            return false;
        if (std::ranges::find(paths_, path) != paths_.end())
            return true;
        paths_.push_back(path);
        FileText file;
        if (Messages reasons; !file.open(path, reasons))
            messages_.warn(path, {}, reasons.all().front().text);
        else
            readMTL({file.text(), path, messages_}, materials_);
        return true;
    }

    static bool isFile(const std::string &path)
    {
        std::error_code ignored;
        return std::filesystem::is_regular_file(path, ignored);
    }

    const OBJSource &source_;
    Messages &messages_;
    BAS_Options materials_;
    std::vector<std::string> paths_;  // of the files that were read
};
}  // namespace

BAS_Options readOBJMaterials(const OBJSource &source, const std::vector<OBJBlock> &blocks, Messages &messages)
{
    return OBJMaterials(source, messages).read(blocks);
}
}  // namespace rq::io
