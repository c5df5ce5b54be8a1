#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <io/Message.h>

namespace rq::io
{
/// The bytes of a file, or of standard input.
///
/// Shape      a regular file is mapped into memory; standard input ("-"), pipes and devices are read to their end
/// Failure    `open` answers false with a message when there is nothing to read
/// Ownership  what `text` views lives as long as this object.  A file that another program cuts short meanwhile takes the
///            process down, as with every mapping
class RQ_API FileText
{
public:
    /// How messages name standard input.
    static constexpr const char *kStandardInput = "<stdin>";

    FileText() = default;
    ~FileText();
    FileText(const FileText &) = delete;
    FileText &operator=(const FileText &) = delete;

    bool open(const std::string &path, Messages &messages);

    std::string_view text() const { return text_; }

    /// How messages name the file: its path, or "<stdin>".
    const std::string &name() const { return name_; }

private:
    void close();
    bool map(int descriptor, size_t length);
    bool read(int descriptor);

    std::string name_;
    std::string_view text_;
    void *mapping_ = nullptr;
    std::vector<char> buffer_;
};
}  // namespace rq::io
