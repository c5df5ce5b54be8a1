#include <io/detail/OBJWarnings.h>

#include <filesystem>

#include <fmt/format.h>

#include <io/Scanner.h>

namespace rq::io
{
namespace
{
class OBJWarnings
{
public:
    OBJWarnings(const OBJSource &source, Messages &messages) : source_(source), messages_(messages) {}

    void tallies(const std::vector<OBJBlock> &blocks)
    {
        if (const Tally tally = sum(blocks, &OBJBlock::unknownWords); tally.count > 0)
            warn(tally.first,
                 fmt::format("expected a known word, found {}; {} passed over", describe(source_.text, tally.first),
                             counted(tally.count, "line is", "lines are")));
        if (const Tally tally = sum(blocks, &OBJBlock::surplusNumbers); tally.count > 0)
            warn(tally.first, fmt::format("expected the end of the line, found more; what is too much on {} is passed over",
                                          counted(tally.count, "line", "lines")));
        if (const Tally tally = sum(blocks, &OBJBlock::smallFaces); tally.count > 0)
            warn(tally.first, fmt::format("expected three or more corners, found fewer; {} kept",
                                          counted(tally.count, "such face is", "such faces are")));
    }

    void materialFiles(const std::vector<OBJBlock> &blocks)
    {
        const char *first = nullptr;
        int64_t missing = 0;
        for (const OBJBlock &block : blocks)
        {
            for (const std::string_view names : block.materialFiles)
            {
                if (exists(names) || allExist(names))
                    continue;
                first = missing++ == 0 ? names.data() : first;
            }
        }
        if (missing > 0)
            warn(first, fmt::format("expected a material file, found none of this name; {} missing, material names are kept",
                                    counted(missing, "file is", "files are")));
    }

private:
    static Tally sum(const std::vector<OBJBlock> &blocks, Tally OBJBlock::*member)
    {
        Tally sum;
        for (const OBJBlock &block : blocks)
            sum.add(block.*member);
        return sum;
    }

    // A line names one file with blanks in its name, or several without.
    bool allExist(std::string_view names) const
    {
        Scanner scanner(names);
        while (scanner.toWord())
        {
            if (!exists(scanner.word()))
                return false;
        }
        return true;
    }

    bool exists(std::string_view name) const
    {
        std::error_code ignored;
        return std::filesystem::exists(std::filesystem::path(source_.name).parent_path() / name, ignored);
    }

    void warn(const char *at, std::string text) { messages_.warn(source_.name, placeOf(source_.text, at), std::move(text)); }

    const OBJSource &source_;
    Messages &messages_;
};
}  // namespace

void warnOfOddities(const OBJSource &source, const std::vector<OBJBlock> &blocks, Messages &messages)
{
    OBJWarnings warnings(source, messages);
    warnings.tallies(blocks);
    warnings.materialFiles(blocks);
}
}  // namespace rq::io
