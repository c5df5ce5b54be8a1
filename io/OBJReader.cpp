#include <io/OBJReader.h>

#include <atomic>
#include <new>

#include <fmt/format.h>

#include <host/bas/Parallel.h>
#include <host/bas/Progress.h>
#include <io/Scanner.h>
#include <io/detail/OBJAssembly.h>
#include <io/detail/OBJWarnings.h>

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

// UTF-16 begins with its byte order mark.
bool isWideText(std::string_view text) { return text.starts_with("\xff\xfe") || text.starts_with("\xfe\xff"); }

// Parse in parallel.  False when the user interrupted.
bool parse(std::vector<OBJBlock> &blocks)
{
    BAS_Progress progress("Reading");
    std::atomic<int64_t> done{0};
    std::atomic<bool> stopped{false};
    host::parallelFor(std::ssize(blocks), 1, [&](int64_t i) {
        if (progress.interrupted(double(done++) / double(blocks.size())))
            stopped = true;
        else
            blocks[size_t(i)].parse();
    });
    return !stopped;
}

bool read(const OBJSource &source, MOD_DetailHandle &detail, Messages &messages)
{
    if (isWideText(source.text))
        return messages.fail(source.name, placeOf(source.text, source.text.data()),
                             "expected UTF-8 text, found UTF-16 text");

    std::vector<OBJBlock> blocks = cutIntoBlocks(source.text);
    if (!parse(blocks))
        return messages.fail(source.name, {}, "reading was interrupted");
    for (const OBJBlock &block : blocks)
    {
        if (block.failedAt)
            return messages.fail(
                source.name, placeOf(source.text, block.failedAt),
                fmt::format("expected {}, found {}", block.expected, describe(source.text, block.failedAt)));
    }
    warnOfOddities(source, blocks, messages);
    return OBJAssembly(source, blocks, messages).build(detail);
}
}  // namespace

bool readOBJ(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages)
{
    // Columns count from the first character.
    constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
    text.remove_prefix(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
    try
    {
        return read({text, name}, detail, messages);
    }
    catch (const std::bad_alloc &)
    {
        return messages.fail(name, {}, "needs more memory than there is");
    }
}
}  // namespace rq::io
