#include <io/detail/TextRecords.h>

#include <algorithm>

#include <io/detail/LineBlocks.h>

namespace rq::io
{
bool TextRecords::count()
{
    lines_ = cutAtLines(text_);
    firstRecord_.assign(lines_.size() + 1, 0);
    const bool finished = forEachBlock(blocks(), [&](int64_t block) {
        int64_t records = 0;
        for (Scanner scanner(lines_[size_t(block)]); !scanner.atEnd(); scanner.toNextLine())
            records += scanner.toWord();
        firstRecord_[size_t(block) + 1] = records;
    });
    for (size_t block = 0; block < lines_.size(); ++block)
        firstRecord_[block + 1] += firstRecord_[block];
    return finished || source_.failInterrupted();
}

bool TextRecords::forEach(int64_t first, int64_t count, const std::function<bool(TextCursor &)> &body)
{
    const auto blockOf = [&](int64_t record) {
        return std::upper_bound(firstRecord_.begin(), firstRecord_.end(), record) - firstRecord_.begin() - 1;
    };
    if (count < 1)
        return true;
    const int64_t firstBlock = blockOf(first), used = blockOf(first + count - 1) + 1 - firstBlock;
    std::vector<TextCursor> ends(size_t(used), TextCursor{Scanner("")});
    std::vector<Tally> surplus{size_t(used)};
    const bool finished = forEachBlock(used, [&](int64_t i) {
        const size_t block = size_t(firstBlock + i);
        TextCursor cursor{Scanner(lines_[block]), firstRecord_[block], firstBlock + i};
        for (; cursor.record < first + count && !cursor.scanner.atEnd(); cursor.scanner.toNextLine())
        {
            if (!cursor.scanner.toWord())
                continue;
            if (cursor.record >= first && !body(cursor))
                break;
            if (cursor.record >= first && cursor.scanner.toWord())
                surplus[size_t(i)].add(cursor.scanner.at());
            ++cursor.record;
        }
        ends[size_t(i)] = std::move(cursor);
    });
    if (!finished)
        return source_.failInterrupted();
    for (size_t i = 0; i < ends.size(); ++i)
    {
        if (ends[i].failedAt)
            return source_.failAtWord(ends[i].failedAt, ends[i].expected);
        surplus_.add(surplus[i]);
    }
    return true;
}

const char *TextRecords::find(int64_t record) const
{
    for (size_t block = 0; block < lines_.size(); ++block)
    {
        if (record >= firstRecord_[block + 1])
            continue;
        int64_t number = firstRecord_[block];
        for (Scanner scanner(lines_[block]); !scanner.atEnd(); scanner.toNextLine())
        {
            if (scanner.toWord() && number++ == record)
                return scanner.at();
        }
    }
    return source_.end();
}

void TextRecords::warnOfSurplus(int64_t used) const
{
    if (surplus_.count > 0)
        source_.warn(surplus_.first,
                     fmt::format("expected the end of the line, found more; what is too much on {} is passed over",
                                 counted(surplus_.count, "line", "lines")));
    if (used < size())
        source_.warn(find(used), fmt::format("expected the end of the file, found more; {} passed over",
                                             counted(size() - used, "line is", "lines are")));
}
}  // namespace rq::io
