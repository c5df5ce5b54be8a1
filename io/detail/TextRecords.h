#pragma once

#include <functional>
#include <vector>

#include <io/detail/Source.h>
#include <io/detail/Tally.h>

namespace rq::io
{
/// A reader's place in one line of a text.
struct TextCursor
{
    Scanner scanner;
    int64_t record = 0;  ///< the number of the line among those that hold words
    int64_t block = 0;   ///< lines of one block are read one after the other

    const char *failedAt = nullptr;
    std::string expected{};

    /// Always false.
    bool fail(const char *at, std::string what)
    {
        failedAt = at;
        expected = std::move(what);
        return false;
    }
};

/// The lines of a text that hold words, numbered so that blocks of them can be read in parallel.
class TextRecords
{
public:
    /// `text` is what is left of the source's text.
    TextRecords(const Source &source, std::string_view text) : source_(source), text_(text) {}

    /// Count the lines.  False after an error.
    bool count();

    int64_t size() const { return firstRecord_.back(); }
    int64_t blocks() const { return int64_t(lines_.size()); }

    /// Run `body` at the first word of every line of [first, first + count), blocks in parallel.  Words that it leaves are
    /// surplus.  False after an error: that of the first line where `body` is false.
    bool forEach(int64_t first, int64_t count, const std::function<bool(TextCursor &)> &body);

    /// The first word of a line; the end of the text when there is no such line.
    const char *find(int64_t record) const;

    /// Warn of surplus words, and of lines from `used` on.
    void warnOfSurplus(int64_t used) const;

private:
    const Source &source_;
    std::string_view text_;
    std::vector<std::string_view> lines_;
    std::vector<int64_t> firstRecord_{0};  // of every block, and the number of all
    Tally surplus_;
};
}  // namespace rq::io
