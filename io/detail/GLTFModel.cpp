#include <io/detail/GLTFModel.h>

#include <cstring>
#include <filesystem>
#include <limits>

#include <host/bas/JSONValue.h>
#include <io/FileText.h>

namespace rq::io
{
namespace
{
// The parser calls itself for every level.
constexpr int kDeepest = 128;

constexpr size_t kHeaderBytes = 12, kChunkHeaderBytes = 8;
constexpr uint32_t kVersion = 2, kJSON = 0x4E4F534A, kBinary = 0x004E4942;

struct GLBChunks
{
    std::string_view json;
    std::string_view binary;
};

uint32_t numberAt(std::string_view bytes, size_t at)
{
    uint32_t number;
    std::memcpy(&number, bytes.data() + at, sizeof(number));
    return number;
}

// Cut the next chunk off.
bool takeChunk(const Source &source, std::string_view &rest, uint32_t &kind, std::string_view &chunk)
{
    if (rest.size() < kChunkHeaderBytes)
        return source.fail(
            rest.data(), fmt::format("expected the {} bytes of a chunk's header, found {}", kChunkHeaderBytes, rest.size()));
    const uint32_t length = numberAt(rest, 0);
    kind = numberAt(rest, 4);
    if (length > rest.size() - kChunkHeaderBytes)
        return source.fail(rest.data(), fmt::format("expected a chunk of {} bytes, found {} before the end of the file",
                                                    length, rest.size() - kChunkHeaderBytes));
    chunk = rest.substr(kChunkHeaderBytes, length);
    rest.remove_prefix(kChunkHeaderBytes + length);
    return true;
}

bool findChunks(const Source &source, GLBChunks &chunks)
{
    const std::string_view text = source.text;
    if (text.size() < kHeaderBytes)
        return source.fail(text.data(), fmt::format("expected a header of {} bytes, found {}", kHeaderBytes, text.size()));
    if (numberAt(text, 4) != kVersion)
        return source.fail(text.data() + 4, fmt::format("expected version 2, found {}", numberAt(text, 4)));
    const uint32_t length = numberAt(text, 8);
    if (length < kHeaderBytes || length > text.size())
        return source.fail(text.data() + 8, fmt::format("expected {} bytes, found {}", length, text.size()));
    std::string_view rest = text.substr(kHeaderBytes, length - kHeaderBytes);
    uint32_t kind = 0;
    const char *first = rest.data();
    if (!takeChunk(source, rest, kind, chunks.json))
        return false;
    if (kind != kJSON)
        return source.fail(first, "expected a chunk of JSON, found another");
    while (!rest.empty() && chunks.binary.empty())
    {
        std::string_view chunk;
        if (!takeChunk(source, rest, kind, chunk))
            return false;
        chunks.binary = kind == kBinary ? chunk : std::string_view();
    }
    return true;
}

bool checkJSON(const Source &source, std::string_view json)
{
    int64_t offset = 0;
    const char *what = "";
    if (!BAS_JSONValue::check(json, offset, what))
        return source.fail(json.data() + offset, what);
    int depth = 0;
    bool quoted = false;
    for (size_t i = 0; i < json.size(); ++i)
    {
        const char c = json[i];
        if (c == '"')
            quoted = !quoted;
        else if (quoted)
            i += c == '\\';
        else if ((c == '{' || c == '[') && ++depth > kDeepest)
            return source.fail(json.data() + i, fmt::format("expected at most {} levels of brackets, found more", kDeepest));
        else if (c == '}' || c == ']')
            --depth;
    }
    return true;
}

struct Folder
{
    std::string path;
    Messages &messages;
};

// Buffers in files: only beside the file, and never a pipe.
bool isBeside(const std::string &path, void *base)
{
    std::error_code ignored;
    const Folder &folder = *static_cast<const Folder *>(base);
    if (!path.starts_with(folder.path + '/'))
        return false;
    folder.messages.noteFile(path);
    return std::filesystem::is_regular_file(path, ignored);
}

std::string asItIs(const std::string &path, void *) { return path; }

bool readAll(std::vector<unsigned char> *bytes, std::string *error, const std::string &path, void *)
{
    Messages messages;
    FileText file;
    if (!file.open(path, messages))
        return *error += messages.all()[0].text, false;
    bytes->assign(file.text().begin(), file.text().end());
    return true;
}

bool writeNothing(std::string *, const std::string &, const std::vector<unsigned char> &, void *) { return false; }

bool passOverImage(tinygltf::Image *, int, std::string *, std::string *, int, int, const unsigned char *, int, void *)
{
    return true;
}

// Its messages may be several lines, and hold whole files as URIs.
std::string oneLine(std::string text)
{
    constexpr size_t kLongest = 200;
    text = text.substr(0, kLongest);
    while (!text.empty() && (text.back() == '\n' || text.back() == '.' || text.back() == ' '))
        text.pop_back();
    for (char &c : text)
        c = c == '\n' ? ';' : uint8_t(c) < 0x20 ? ' ' : c;
    constexpr std::string_view kMissing = "File not found : ";
    if (text.starts_with(kMissing))
        return fmt::format("expected a file \"{}\" of a buffer beside this one, found none", text.substr(kMissing.size()));
    return text.empty() ? "expected glTF, found something else" : "expected glTF: " + text;
}
}  // namespace

bool parseGLTF(const Source &source, tinygltf::Model &model)
{
    GLBChunks chunks{source.text, {}};
    if (source.binary && !findChunks(source, chunks))
        return false;
    if (source.text.size() > std::numeric_limits<uint32_t>::max())
        return source.fail(source.text.data(), "expected less than 4 GiB, found more");
    const size_t first = chunks.json.find_first_not_of(" \t\r\n");
    if (first == chunks.json.npos || chunks.json[first] != '{')
        return source.failAtWord(chunks.json.data() + std::min(first, chunks.json.size()), "\"glTF\" or a map in JSON");
    if (!checkJSON(source, chunks.json))
        return false;

    Folder folder{std::filesystem::path(source.name).parent_path().string(), source.messages};
    std::string &base = folder.path;
    base = base.empty() ? "." : base;
    tinygltf::TinyGLTF parser;
    parser.SetFsCallbacks({isBeside, asItIs, readAll, writeNothing, &folder});
    parser.SetImageLoader(passOverImage, nullptr);
    std::string error, warning;
    bool good = false;
    try
    {
        good = source.binary ? parser.LoadBinaryFromMemory(&model, &error, &warning,
                                                           reinterpret_cast<const unsigned char *>(source.text.data()),
                                                           numberAt(source.text, 8), base)
                             : parser.LoadASCIIFromString(&model, &error, &warning, source.text.data(),
                                                          uint32_t(source.text.size()), base);
    }
    catch (const std::bad_alloc &)
    {
        throw;
    }
    catch (const std::exception &thrown)
    {
        error = thrown.what();
    }
    return good || source.messages.fail(source.name, {}, oneLine(error));
}
}  // namespace rq::io
