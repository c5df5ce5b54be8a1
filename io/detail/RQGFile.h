#pragma once

#include <memory>
#include <span>
#include <vector>

#include <rq/data/types.h>
#include <io/detail/Source.h>

namespace rq::io
{
/// Numbers of one storage that lie in memory one after the other, as a file of the binary form holds them.
struct RQGColumn
{
    RQ_Storage storage = RQ_STORAGE_INVALID;
    int64_t count = 0;
    const char *values = nullptr;
    std::shared_ptr<const void> owner = {};  ///< of the values while they wait to be written

    std::string_view bytes() const { return {values, size_t(count) * size_t(RQsizeof(storage))}; }
};

/// The binary form: a header, a table of columns, a JSON text that names columns where lists of numbers belong, and the
/// columns, each at a multiple of 64 bytes.  All parts have checksums; numbers are little-endian.
struct RQGFile
{
    static constexpr std::string_view kMagic = "\x89RQG\r\n\x1a\n";

    std::string_view structure;  ///< the JSON text
    std::vector<RQGColumn> columns;

    /// Find the parts of a file, which must lie at a multiple of 8 bytes.  False with a message when it is not what its
    /// header announces.
    bool open(const Source &source);

    /// The bytes of a file.
    static std::string write(std::string_view structure, std::span<const RQGColumn> columns);
};
}  // namespace rq::io
