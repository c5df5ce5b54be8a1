#include <io/OBJReader.h>

#include <algorithm>
#include <filesystem>

#include <fmt/format.h>

#include <host/bas/Parallel.h>
#include <io/Scanner.h>
#include <io/detail/OBJAssembly.h>

namespace rq::io
{
namespace
{
// A block takes some milliseconds to parse: even a file of a few MB keeps all workers busy, and a block's arrays stay
// small enough for memory that was used before.
constexpr size_t kBlockBytes = size_t(1) << 20;

// The end of the first line that ends at or after `from` and that no other line continues.
size_t endOfLine(std::string_view text, size_t from)
{
    for (;;)
    {
        size_t at = text.find_first_of("\r\n", from);
        if (at == text.npos)
            return text.size();
        // `from` may lie between CR and LF.
        const size_t breakStart = text[at] == '\n' && at > 0 && text[at - 1] == '\r' ? at - 1 : at;
        from = at + (text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n' ? 2 : 1);
        if (breakStart == 0 || text[breakStart - 1] != '\\')
            return from;
    }
}

std::vector<OBJBlock> cutIntoBlocks(std::string_view text)
{
    std::vector<OBJBlock> blocks;
    for (size_t begin = 0; begin < text.size();)
    {
        const size_t end = text.size() - begin > kBlockBytes ? endOfLine(text, begin + kBlockBytes) : text.size();
        blocks.emplace_back(text.substr(begin, end - begin));
        begin = end;
    }
    return blocks;
}

class OBJWarnings
{
public:
    OBJWarnings(const OBJSource &source, Messages &messages) : source_(source), messages_(messages) {}

    void tallies(const std::vector<OBJBlock> &blocks)
    {
        if (const OBJTally tally = sum(blocks, &OBJBlock::unknownWords); tally.count > 0)
            warn(tally.first,
                 fmt::format("expected a known word, found {}; {} passed over", describe(source_.text, tally.first),
                             counted(tally.count, "line is", "lines are")));
        if (const OBJTally tally = sum(blocks, &OBJBlock::surplusNumbers); tally.count > 0)
            warn(tally.first, fmt::format("expected the end of the line, found more; what is too much on {} is passed over",
                                          counted(tally.count, "line", "lines")));
        if (const OBJTally tally = sum(blocks, &OBJBlock::smallFaces); tally.count > 0)
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
    static std::string counted(int64_t count, const char *one, const char *many)
    {
        return fmt::format("{} {}", count, count == 1 ? one : many);
    }

    static OBJTally sum(const std::vector<OBJBlock> &blocks, OBJTally OBJBlock::*member)
    {
        OBJTally sum;
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

// UTF-16 begins with its byte order mark.
bool isWideText(std::string_view text) { return text.starts_with("\xff\xfe") || text.starts_with("\xfe\xff"); }
}  // namespace

bool readOBJ(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages)
{
    const OBJSource source{text, name};
    if (isWideText(text))
        return messages.fail(name, placeOf(text, text.data()), "expected UTF-8 text, found UTF-16 text");
    if (text.starts_with("\xef\xbb\xbf"))
        text.remove_prefix(3);

    std::vector<OBJBlock> blocks = cutIntoBlocks(text);
    host::parallelFor(int64_t(blocks.size()), 1, [&](int64_t i) { blocks[size_t(i)].parse(); });
    for (const OBJBlock &block : blocks)
    {
        if (block.failedAt)
            return messages.fail(
                name, placeOf(source.text, block.failedAt),
                fmt::format("expected {}, found {}", block.expected, describe(source.text, block.failedAt)));
    }

    OBJWarnings warnings(source, messages);
    warnings.tallies(blocks);
    warnings.materialFiles(blocks);
    return OBJAssembly(source, blocks, messages).build(detail);
}
}  // namespace rq::io
