#include <io/RQGReader.h>

#include <new>

#include <host/bas/JSONValue.h>
#include <host/mod/Edit.h>
#include <io/detail/RQGDetail.h>

namespace rq::io
{
namespace
{
constexpr const char *kBlanks = " \t\r\n";
constexpr std::string_view kVersion = "1";

/// Reads the structure of a file of either form: the details that others refer to, and then the file's own.
bool readStructure(RQGInput &input, MOD_DetailHandle &detail)
{
    const std::string_view structure = input.file.structure;
    int64_t offset;
    const char *what;
    if (!BAS_JSONValue::check(structure, offset, what))
        return input.source.fail(structure.data() + offset, what);
    RQGMap members;
    if (!members.open(input, JSONText(structure.data() + structure.find_first_not_of(kBlanks))))
        return false;
    const JSONText told = members.find("rqg"), embedded = members.find("details");
    if (!told || told.raw() != kVersion)
        return input.fail(told ? told : members.at(),
                          fmt::format("expected \"rqg\": {}, the version, found {}", kVersion, told ? told.raw() : "none"));
    if (embedded && !embedded.isArray())
        return input.failAt(embedded, "a list of details");
    const auto readEmbedded = [&](JSONText map) {
        RQGMap own;
        MOD_DetailHandle made;
        if (!own.open(input, map) || !readDetail(input, own, made))
            return false;
        input.details.push_back(made.read());
        input.depths.push_back(input.depth);
        return true;
    };
    if ((embedded && !embedded.forEach(readEmbedded)) || !readDetail(input, members, detail))
        return false;
    if (input.unknown.count > 0)
        input.source.warn(input.unknown.first, fmt::format("expected a known key, found {}; {} passed over",
                                                           describe(input.source.text, input.unknown.first),
                                                           counted(input.unknown.count, "such key is", "such keys are")));
    return true;
}

bool isBinary(std::string_view text) { return text.starts_with(RQGFile::kMagic[0]); }

bool read(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages,
          const std::shared_ptr<const void> &owner)
{
    const Source source{text, name, messages, isBinary(text)};
    RQGInput input{source};
    input.file.structure = text;
    if (source.binary)
    {
        input.owner = owner;
        if (!input.file.open(source))
            return false;
    }
    MOD_DetailHandle result;
    if (!readStructure(input, result))
        return false;
    detail = result;
    return true;
}
}  // namespace

bool isRQG(std::string_view text)
{
    constexpr std::string_view kKey = "\"rqg\"";
    const size_t begin = text.find_first_not_of(kBlanks);
    if (begin == text.npos || text[begin] != '{')
        return text.starts_with(RQGFile::kMagic);
    const size_t key = text.find_first_not_of(kBlanks, begin + 1);
    return key != text.npos && text.substr(key).starts_with(kKey);
}

bool readRQG(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages,
             const std::shared_ptr<const void> &owner)
{
    try
    {
        if (!isBinary(text) || reinterpret_cast<uintptr_t>(text.data()) % alignof(int64_t) == 0)
            return read(text, name, detail, messages, owner);
        const std::vector<char> aligned(text.begin(), text.end());
        return read({aligned.data(), aligned.size()}, name, detail, messages, {});
    }
    catch (const std::bad_alloc &)
    {
        return messages.fail(name, {}, "needs more memory than there is");
    }
}
}  // namespace rq::io
