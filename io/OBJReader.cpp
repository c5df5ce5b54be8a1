#include <io/OBJReader.h>

#include <algorithm>
#include <new>

#include <fmt/format.h>

#include <io/Scanner.h>
#include <io/detail/LineBlocks.h>
#include <io/detail/OBJAssembly.h>
#include <io/detail/OBJWarnings.h>
#include <io/detail/withoutMark.h>

namespace rq::io
{
namespace
{
// UTF-16 begins with its byte order mark.
bool isWideText(std::string_view text) { return text.starts_with("\xff\xfe") || text.starts_with("\xfe\xff"); }

bool read(const OBJSource &source, MOD_DetailHandle &detail, Messages &messages)
{
    if (isWideText(source.text))
        return messages.fail(source.name, placeOf(source.text, source.text.data()),
                             "expected UTF-8 text, found UTF-16 text");

    std::vector<OBJBlock> blocks;
    for (const std::string_view lines : cutAtLines(source.text))
        blocks.emplace_back(lines);
    if (!forEachBlock(std::ssize(blocks), [&](int64_t i) { blocks[size_t(i)].parse(); }))
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

bool isOBJ(std::string_view text)
{
    constexpr std::string_view kWords[] = {"v", "vt", "vn", "f", "l", "g", "o", "s", "usemtl", "mtllib"};
    Scanner scanner(withoutMark(text));
    while (!scanner.toWord() && !scanner.atEnd())
        scanner.toNextLine();
    return std::ranges::find(kWords, scanner.word()) != std::end(kWords);
}

bool readOBJ(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages)
{
    try
    {
        return read({withoutMark(text), name}, detail, messages);
    }
    catch (const std::bad_alloc &)
    {
        return messages.fail(name, {}, "needs more memory than there is");
    }
}
}  // namespace rq::io
