#include <io/detail/STLText.h>

#include <algorithm>

#include <io/detail/LineBlocks.h>

namespace rq::io
{
namespace
{
// Compare a word without regard to case; `keyword` is in lower case.
bool isKeyword(std::string_view word, std::string_view keyword)
{
    return std::equal(word.begin(), word.end(), keyword.begin(), keyword.end(),
                      [](char a, char b) { return (a >= 'A' && a <= 'Z' ? a + 32 : a) == b; });
}

/// The facets of some lines.
class STLBlock
{
public:
    explicit STLBlock(std::string_view text) : scanner_(text) {}

    bool parse()
    {
        while (toWord())
        {
            const char *at = scanner_.at();
            const std::string_view word = scanner_.word();
            if (isKeyword(word, "solid") || isKeyword(word, "endsolid"))
                scanner_.toNextLine();
            else if (!isKeyword(word, "facet"))
                return fail(at, "\"facet\" or \"endsolid\"");
            else if (!facet())
                return false;
        }
        return true;
    }

    STLFacets facets;
    const char *failedAt = nullptr;
    const char *expected = "";

private:
    // Words may stand on any line.
    bool toWord()
    {
        while (!scanner_.toWord())
        {
            if (scanner_.atEnd())
                return false;
            scanner_.toNextLine();
        }
        return true;
    }

    bool fail(const char *at, const char *what)
    {
        failedAt = at;
        expected = what;
        return false;
    }

    bool keyword(std::string_view wanted, const char *what)
    {
        toWord();
        const char *at = scanner_.at();
        return isKeyword(scanner_.word(), wanted) || fail(at, what);
    }

    bool numbers(std::vector<float> &values)
    {
        for (int i = 0; i < 3; ++i)
        {
            float value;
            toWord();
            if (!scanner_.real(value))
                return fail(scanner_.at(), "a number");
            values.push_back(value);
        }
        return true;
    }

    bool facet()
    {
        if (!keyword("normal", "\"normal\"") || !numbers(facets.normals) || !keyword("outer", "\"outer loop\"") ||
            !keyword("loop", "\"loop\""))
            return false;
        for (int corner = 0; corner < 3; ++corner)
        {
            if (!keyword("vertex", "\"vertex\"") || !numbers(facets.positions))
                return false;
        }
        return keyword("endloop", "\"endloop\" after three corners") && keyword("endfacet", "\"endfacet\"");
    }

    Scanner scanner_;
};

// Cut a text into blocks that end behind a facet.
std::vector<STLBlock> cutAtFacets(std::string_view text)
{
    std::vector<STLBlock> blocks;
    const char *begin = text.data();
    for (const std::string_view lines : cutAtLines(text))
    {
        const char *cut = lines.data() + lines.size(), *end = text.data() + text.size();
        if (cut < begin)
            continue;
        Scanner scanner({cut, size_t(end - cut)});
        bool behindFacet = false;
        for (; !scanner.atEnd() && !behindFacet; scanner.toNextLine())
            behindFacet = scanner.toWord() && isKeyword(scanner.word(), "endfacet");
        blocks.emplace_back(std::string_view(begin, size_t(scanner.at() - begin)));
        begin = scanner.at();
    }
    return blocks;
}
}  // namespace

bool STLFacets::read(const Source &source)
{
    std::vector<STLBlock> blocks = cutAtFacets(source.text);
    if (!forEachBlock(std::ssize(blocks), [&](int64_t i) { blocks[size_t(i)].parse(); }))
        return source.failInterrupted();
    for (const STLBlock &block : blocks)
    {
        if (block.failedAt)
            return source.failAtWord(block.failedAt, block.expected);
        normals.insert(normals.end(), block.facets.normals.begin(), block.facets.normals.end());
        positions.insert(positions.end(), block.facets.positions.begin(), block.facets.positions.end());
    }
    return true;
}
}  // namespace rq::io
