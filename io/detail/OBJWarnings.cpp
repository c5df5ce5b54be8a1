#include <io/detail/OBJWarnings.h>

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

private:
    static Tally sum(const std::vector<OBJBlock> &blocks, Tally OBJBlock::*member)
    {
        Tally sum;
        for (const OBJBlock &block : blocks)
            sum.add(block.*member);
        return sum;
    }

    void warn(const char *at, std::string text) { messages_.warn(source_.name, placeOf(source_.text, at), std::move(text)); }

    const OBJSource &source_;
    Messages &messages_;
};
}  // namespace

void warnOfOddities(const OBJSource &source, const std::vector<OBJBlock> &blocks, Messages &messages)
{
    OBJWarnings(source, messages).tallies(blocks);
}
}  // namespace rq::io
