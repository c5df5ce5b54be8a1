#include <io/detail/RQGFile.h>

#include <algorithm>
#include <bit>

#include <io/detail/checksum.h>

static_assert(std::endian::native == std::endian::little, "columns would have to be turned about");

namespace rq::io
{
namespace
{
constexpr uint32_t kVersion = 1;
constexpr size_t kAlignment = 64;

struct Header
{
    char magic[8];
    uint32_t version;
    uint32_t reserved;
    uint64_t fileBytes;
    uint64_t structureBytes;
    uint64_t columns;
    uint64_t structureSum;
    uint64_t tableSum;
    uint64_t headerSum;  // of what stands before it
};
static_assert(sizeof(Header) == 64);

struct Entry
{
    uint32_t storage;
    uint32_t reserved;
    uint64_t count;
    uint64_t sum;  // of the column and of what fills it up
};
static_assert(sizeof(Entry) == 24);

// Behind each part there are zeros up to the next multiple.
constexpr uint64_t padded(uint64_t bytes) { return (bytes + kAlignment - 1) / kAlignment * kAlignment; }

uint64_t sumOf(const Header &header)
{
    return checksum({reinterpret_cast<const char *>(&header), offsetof(Header, headerSum)});
}

/// Goes through the parts of a file in their order.
class Opening
{
public:
    Opening(const Source &source, RQGFile &file) : source_(source), file_(file) {}

    bool header();
    bool parts();

private:
    // The next part, which messages call `what`.
    bool take(const char *what, uint64_t bytes, uint64_t sum, const char *&part);
    bool failAt(size_t offset, std::string what) const { return source_.fail(source_.text.data() + offset, what); }

    const Source &source_;
    RQGFile &file_;
    Header header_{};
    size_t at_ = 0;
};

bool Opening::header()
{
    const size_t size = source_.text.size();
    if (size < sizeof(Header))
        return failAt(size, fmt::format("expected a header of {} bytes, found {}", sizeof(Header), size));
    std::memcpy(&header_, source_.text.data(), sizeof(Header));
    if (!source_.text.starts_with(RQGFile::kMagic))
        return failAt(0, "expected the mark of an RQG file, found other bytes: it was damaged on its way");
    if (header_.version != kVersion)
        return failAt(offsetof(Header, version), fmt::format("expected version {}, found {}", kVersion, header_.version));
    if (sumOf(header_) != header_.headerSum)
        return failAt(offsetof(Header, headerSum), "the checksum of the header is not right: the file was altered");
    if (header_.fileBytes != size)
        return failAt(size, fmt::format("expected a file of {} bytes, found {}", header_.fileBytes, size));
    at_ = sizeof(Header);
    return true;
}

bool Opening::take(const char *what, uint64_t bytes, uint64_t sum, const char *&part)
{
    const std::string_view left = source_.text.substr(at_);
    if (bytes > left.size() || padded(bytes) > left.size())
        return failAt(at_, fmt::format("expected {} of {} bytes, found {}", what, bytes, left.size()));
    const std::string_view found = left.substr(0, padded(bytes));
    if (checksum(found) != sum)
        return failAt(at_, fmt::format("the checksum of {} is not right: the file was altered", what));
    part = found.data();
    at_ += found.size();
    return true;
}

bool Opening::parts()
{
    // A count that the file cannot hold is made one that is too large, but no larger.
    const uint64_t entries = std::min<uint64_t>(header_.columns, source_.text.size());
    const char *table, *structure;
    if (!take("a table of columns", entries * sizeof(Entry), header_.tableSum, table) ||
        !take("a JSON text", header_.structureBytes, header_.structureSum, structure))
        return false;
    file_.structure = {structure, header_.structureBytes};
    file_.columns.resize(entries);
    for (uint64_t i = 0; i < entries; ++i)
    {
        Entry entry;
        std::memcpy(&entry, table + i * sizeof(Entry), sizeof(Entry));
        RQGColumn &column = file_.columns[i];
        column.storage = RQ_Storage(entry.storage);
        if (!RQisNumeric(column.storage))
            return source_.fail(table + i * sizeof(Entry), fmt::format("{} is no storage of numbers", entry.storage));
        column.count = int64_t(std::min<uint64_t>(entry.count, source_.text.size()));
        if (!take("a column", uint64_t(column.count) * uint64_t(RQsizeof(column.storage)), entry.sum, column.values))
            return false;
    }
    return at_ == source_.text.size() || failAt(at_, "expected the end of the file");
}
}  // namespace

bool RQGFile::open(const Source &source)
{
    Opening opening(source, *this);
    return opening.header() && opening.parts();
}

std::string RQGFile::write(std::string_view structure, std::span<const RQGColumn> columns)
{
    uint64_t size = sizeof(Header) + padded(columns.size() * sizeof(Entry)) + padded(structure.size());
    for (const RQGColumn &column : columns)
        size += padded(column.bytes().size());
    std::string file(sizeof(Header), '\0');
    file.reserve(size);
    const auto append = [&file](std::string_view part) {
        const size_t at = file.size();
        file += part;
        file.resize(padded(file.size()));
        return checksum(std::string_view(file).substr(at));
    };
    std::vector<Entry> entries(columns.size());
    const std::string_view table(reinterpret_cast<const char *>(entries.data()), columns.size() * sizeof(Entry));

    Header header{};
    std::copy(kMagic.begin(), kMagic.end(), header.magic);
    header.version = kVersion;
    header.fileBytes = size;
    header.structureBytes = structure.size();
    header.columns = columns.size();
    append(table);
    header.structureSum = append(structure);
    for (size_t i = 0; i < columns.size(); ++i)
        entries[i] = {uint32_t(columns[i].storage), 0, uint64_t(columns[i].count), append(columns[i].bytes())};
    std::copy(table.begin(), table.end(), file.begin() + sizeof(Header));
    header.tableSum = checksum(std::string_view(file).substr(sizeof(Header), padded(table.size())));
    header.headerSum = sumOf(header);
    std::memcpy(file.data(), &header, sizeof(Header));
    return file;
}
}  // namespace rq::io
