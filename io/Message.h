#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <rq/api.h>

namespace rq::io
{
/// A place in a file: a line and a column of a text, or a byte of a binary file.
///
/// Units  lines and columns count from 1, columns in bytes; 0 where there is none.  Bytes count from 0, -1 where there is
/// none.
struct Place
{
    int64_t line = 0;
    int64_t column = 0;
    int64_t offset = -1;
};

/// One thing that a reader has to say about a file.
struct RQ_API Message
{
    enum Severity
    {
        Warning,
        Error
    };

    Severity severity = Error;
    std::string file;
    Place place;
    std::string text;

    /// "file:line:column: error: text", "file:@offset: error: text", or "file: error: text" without a place.
    std::string toString() const;
};

/// What a reader said about the files that it read, in the order in which it was said.
///
/// Threads  one thread at a time
class RQ_API Messages
{
public:
    void warn(const std::string &file, Place place, std::string text);

    /// Always false, so that a reader can end with `return messages.fail(...)`.
    bool fail(const std::string &file, Place place, std::string text);

    /// Note a file that reading led to, besides the one that was asked for: whether it is there or not, each once.
    void noteFile(const std::string &path);

    /// All of them, as they were opened.
    const std::vector<std::string> &files() const { return files_; }

    const std::vector<Message> &all() const { return messages_; }
    int64_t warnings() const { return warnings_; }
    int64_t errors() const { return int64_t(messages_.size()) - warnings_; }

    /// All messages, one per line.
    std::string toString() const;

private:
    std::vector<Message> messages_;
    std::vector<std::string> files_;
    int64_t warnings_ = 0;
};
}  // namespace rq::io
