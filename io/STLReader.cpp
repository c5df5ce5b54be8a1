#include <io/STLReader.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include <host/bas/Parallel.h>
#include <host/mod/Edit.h>
#include <io/detail/STLText.h>
#include <io/detail/Tally.h>
#include <io/detail/weldPoints.h>

namespace rq::io
{
namespace
{
constexpr int64_t kHeaderBytes = 84;  // the last four are the number of facets
constexpr int64_t kFacetBytes = 50;   // a normal, three corners, a word
constexpr int64_t kNormalBytes = 12, kWordAt = 48;
constexpr int64_t kMostFacets = INT32_MAX / 3;

// Some nanoseconds each.
constexpr int64_t kFacetsPerTask = 8192;

template <class T> T load(const char *from)
{
    T value;
    std::memcpy(&value, from, sizeof(value));
    return value;
}

int64_t announcedFacets(std::string_view text) { return load<uint32_t>(text.data() + kHeaderBytes - 4); }

bool isBinarySize(std::string_view text)
{
    return std::ssize(text) >= kHeaderBytes && std::ssize(text) == kHeaderBytes + kFacetBytes * announcedFacets(text);
}

bool beginsWithSolid(std::string_view text)
{
    Scanner scanner(text);
    while (!scanner.toWord() && !scanner.atEnd())
        scanner.toNextLine();
    std::string word(scanner.word());
    std::transform(word.begin(), word.end(), word.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return word == "solid";
}

// The comment at the start of a binary file may begin with "solid" as well; then zeros follow somewhere.
bool isText(std::string_view text)
{
    return !isBinarySize(text) && beginsWithSolid(text) && text.substr(0, 512).find('\0') == text.npos;
}

// `at(i)` tells where the values of row i lie, at any address.
template <class T, class At> void writeColumn(ELM_Attribute *attribute, int64_t count, At &&at)
{
    T *values = attribute->writeAll<T>();
    const int size = attribute->tupleSize();
    host::parallelFor(count, kFacetsPerTask,
                      [&](int64_t i) { std::memcpy(values + i * size, at(i), size_t(size) * sizeof(T)); });
}

/// The facets of either form.
struct Facets
{
    TriangleCorners corners;
    const char *normals = nullptr;
    int64_t normalStride = kNormalBytes;
    const char *words = nullptr;  ///< one per facet, `kFacetBytes` apart; null without any

    int64_t count() const { return corners.triangles; }
};

void writeWords(MOD_Edit &edit, const Facets &facets)
{
    const auto wordOf = [&](int64_t i) { return load<uint16_t>(facets.words + i * kFacetBytes); };
    int64_t i = 0;
    while (i < facets.count() && wordOf(i) == 0)
        ++i;
    if (i == facets.count())
        return;
    int32_t *values = edit.attribute(ELM_OWNER_PRIMITIVE, "attribute", ELM_STORAGE_INT32)->writeAll<int32_t>();
    host::parallelFor(facets.count(), kFacetsPerTask, [&](int64_t facet) { values[facet] = wordOf(facet); });
}

bool build(const Source &source, const Facets &facets, MOD_DetailHandle &detail)
{
    if (facets.count() == 0)
        source.messages.warn(source.name, {}, "expected facets, found none");
    if (facets.count() > kMostFacets)
        return source.messages.fail(source.name, {},
                                    fmt::format("expected at most {} facets, found {}", kMostFacets, facets.count()));

    const auto welded = std::make_shared<WeldedPoints>(weldPoints(facets.corners));
    MOD_DetailHandle result;
    MOD_Edit edit(result);
    // Welded corners become the column that tells the points of vertices.
    if (!edit.appendPoints(std::ssize(welded->corners)) ||
        (facets.count() > 0 && !edit.adoptPolygons(3, true, ELM_STORAGE_INT32, welded->points.data(), sizeof(int32_t),
                                                   std::ssize(welded->points), [welded] {})))
        return source.messages.fail(source.name, {}, edit.message());
    writeColumn<float>(edit.attribute(ELM_OWNER_POINT, ELM_POSITION_NAME, ELM_STORAGE_REAL32, 3, ELM_TYPE_POINT),
                       std::ssize(welded->corners),
                       [&](int64_t i) { return facets.corners.at(welded->corners[size_t(i)]); });
    writeColumn<float>(edit.attribute(ELM_OWNER_PRIMITIVE, "N", ELM_STORAGE_REAL32, 3, ELM_TYPE_NORMAL), facets.count(),
                       [&](int64_t i) { return facets.normals + i * facets.normalStride; });
    if (facets.words)
        writeWords(edit, facets);
    edit.commit();
    detail = result;
    return true;
}

bool readText(const Source &source, MOD_DetailHandle &detail)
{
    STLFacets read;
    if (!read.read(source))
        return false;
    Facets facets;
    facets.corners = {.first = reinterpret_cast<const char *>(read.positions.data()),
                      .stride = 3 * kNormalBytes,
                      .triangles = std::ssize(read.normals) / 3};
    facets.normals = reinterpret_cast<const char *>(read.normals.data());
    return build(source, facets, detail);
}

bool readBinary(const Source &source, MOD_DetailHandle &detail)
{
    const int64_t size = std::ssize(source.text);
    if (size < kHeaderBytes)
        return source.fail(source.end(), fmt::format("expected \"solid\" or a binary header of {} bytes, found {}",
                                                     kHeaderBytes, counted(size, "byte", "bytes")));
    const int64_t count = announcedFacets(source.text), found = (size - kHeaderBytes) / kFacetBytes;
    if (found < count)
        return source.fail(source.text.data() + kHeaderBytes + found * kFacetBytes,
                           fmt::format("expected {} facets, found {} before the end of the file", count, found));
    const char *first = source.text.data() + kHeaderBytes, *end = first + count * kFacetBytes;
    if (end != source.end())
        source.warn(end, fmt::format("expected the end of the file, found {}; what is too much is passed over",
                                     counted(source.end() - end, "more byte", "more bytes")));
    return build(source,
                 {.corners = {.first = first + kNormalBytes, .stride = kFacetBytes, .triangles = count},
                  .normals = first,
                  .normalStride = kFacetBytes,
                  .words = first + kWordAt},
                 detail);
}
}  // namespace

bool isSTL(std::string_view text) { return isBinarySize(text) || beginsWithSolid(text); }

bool readSTL(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages)
{
    try
    {
        const Source source{text, name, messages, !isText(text)};
        return source.binary ? readBinary(source, detail) : readText(source, detail);
    }
    catch (const std::bad_alloc &)
    {
        return messages.fail(name, {}, "needs more memory than there is");
    }
}
}  // namespace rq::io
