#include <io/detail/LineBlocks.h>

#include <atomic>

#include <host/bas/Parallel.h>
#include <host/bas/Progress.h>

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
}  // namespace

std::vector<std::string_view> cutAtLines(std::string_view text)
{
    std::vector<std::string_view> blocks;
    for (size_t begin = 0; begin < text.size();)
    {
        const size_t end = text.size() - begin > kBlockBytes ? endOfLine(text, begin + kBlockBytes) : text.size();
        blocks.push_back(text.substr(begin, end - begin));
        begin = end;
    }
    return blocks;
}

bool forEachBlock(int64_t blocks, const std::function<void(int64_t)> &body)
{
    BAS_Progress progress("Reading");
    std::atomic<int64_t> done{0};
    std::atomic<bool> stopped{false};
    host::parallelFor(blocks, 1, [&](int64_t block) {
        if (progress.interrupted(double(done++) / double(blocks)))
            stopped = true;
        else
            body(block);
    });
    return !stopped;
}
}  // namespace rq::io
