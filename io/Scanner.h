#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <io/Message.h>

namespace rq::io
{
/// Walk over a text of lines, words and numbers.
///
/// Shape    a line ends with LF, CR LF or CR, or with the text; a backslash right before its end continues it.  Blanks
///          separate words, and "#" at the start of a word begins a comment that runs to the line's end.
/// Failure  a read that finds something else answers false and leaves the place where it is; never reads past the text
/// Cost     counts no lines: `placeOf` counts them when there is something to say
class RQ_API Scanner
{
public:
    explicit Scanner(std::string_view text) : begin_(text.data()), at_(begin_), end_(begin_ + text.size()) {}

    bool atEnd() const { return at_ == end_; }
    const char *at() const { return at_; }

    /// Skip blanks and continued line ends.  False when no word follows on this line.
    bool toWord()
    {
        for (; at_ != end_; ++at_)
        {
            if (isBlank(*at_))
                continue;
            if (*at_ == '\\' && continues(at_))
                at_ = lineBreak(at_ + 1) - 1;
            else
                return !isBreak(*at_) && *at_ != '#';
        }
        return false;
    }

    /// Skip what is left of the line, the lines that continue it and its end.
    void toNextLine();

    /// The word that starts here, empty when none does.
    std::string_view word();

    /// The rest of the line from here on, without its end and trailing blanks.  A "#" is part of it: names hold them.
    std::string_view restOfLine();

    /// Step over `character` if it stands here.
    bool skip(char character)
    {
        if (at_ == end_ || *at_ != character)
            return false;
        ++at_;
        return true;
    }

    /// Read digits with an optional sign.  Numbers too large for the type become its largest or smallest value.
    bool integer(int64_t &value);

    /// Read a decimal number that ends with a word: an optional sign, digits with or without a point, an optional exponent.
    /// Rounded to nearest; too large is infinity, too small is zero.  "nan", "inf", "infinity" in any case and "1.#INF",
    /// "1.#QNAN", "1.#IND" are numbers.
    bool real(float &value);
    bool real(double &value);

    /// True where a word cannot go on: the end of the text, a blank, a line's end, a continuation.
    bool atWordEnd() const { return endsWord(at_); }

private:
    static bool isBreak(char c) { return c == '\n' || c == '\r'; }
    static bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\v' || c == '\f'; }
    bool continues(const char *backslash) const { return backslash + 1 != end_ && isBreak(backslash[1]); }
    bool endsWord(const char *p) const { return p == end_ || isBlank(*p) || isBreak(*p) || (*p == '\\' && continues(p)); }

    /// Step over one line end at `p`.
    const char *lineBreak(const char *p) const { return p + (*p == '\r' && p + 1 != end_ && p[1] == '\n' ? 2 : 1); }

    template <class Real> bool commonReal(Real &value);
    template <class Real> bool anyReal(Real &value);

    const char *begin_;
    const char *at_;
    const char *end_;
};

/// Count the lines of `text` up to `at`.
RQ_API Place placeOf(std::string_view text, const char *at);

/// What a message says was found at `at`: the word in quotes, shortened and with its control characters spelled out, or "the
/// end of the line", or "the end of the file".
RQ_API std::string describe(std::string_view text, const char *at);
}  // namespace rq::io
