#include <io/OFFReader.h>

#include <algorithm>
#include <new>

#include <host/mod/Edit.h>
#include <io/detail/LineBlocks.h>
#include <io/detail/OFFRecords.h>

namespace rq::io
{
namespace
{
/// Builds a detail from the lines of an OFF file.
class OFFAssembly
{
public:
    OFFAssembly(const Source &source, const OFFHeader &header)
        : source_(source), header_(header), lines_(source, {header.end, size_t(source.end() - header.end)})
    {}

    bool build(MOD_DetailHandle &detail);

private:
    using Blocks = std::vector<OFFBlock>;

    bool countElements();
    bool appendFaces(MOD_Edit &edit);
    void warnOfFaces() const;
    template <class T> std::vector<T> flatten(const Blocks &blocks, std::vector<T> OFFBlock::*values) const;
    void write(MOD_Edit &edit, ELM_Owner owner, const char *name, int size, ELM_TypeInfo type,
               const std::vector<float> &values) const;
    void writeColors(MOD_Edit &edit, ELM_Owner owner, const Blocks &blocks) const;

    const Source &source_;
    const OFFHeader &header_;
    TextRecords lines_;
    int64_t points_ = 0;
    int64_t faces_ = 0;
    Blocks pointBlocks_, faceBlocks_;
};

bool OFFAssembly::build(MOD_DetailHandle &detail)
{
    if (!lines_.count() || !countElements())
        return false;
    pointBlocks_.resize(size_t(lines_.blocks()));
    faceBlocks_.resize(size_t(lines_.blocks()));
    if (!lines_.forEach(1, points_, [&](TextCursor &c) { return pointBlocks_[size_t(c.block)].point(c, header_); }) ||
        !lines_.forEach(1 + points_, faces_, [&](TextCursor &c) { return faceBlocks_[size_t(c.block)].face(c, points_); }))
        return false;
    warnOfFaces();
    lines_.warnOfSurplus(1 + points_ + faces_);

    MOD_DetailHandle result;
    MOD_Edit edit(result);
    if (!edit.appendPoints(points_) ||
        !edit.appendPolygons(flatten(faceBlocks_, &OFFBlock::counts), flatten(faceBlocks_, &OFFBlock::corners), true))
        return source_.messages.fail(source_.name, {}, edit.message());
    const auto writePoints = [&](const char *name, int size, ELM_TypeInfo type, std::vector<float> OFFBlock::*values) {
        write(edit, ELM_OWNER_POINT, name, size, type, flatten(pointBlocks_, values));
    };
    writePoints(ELM_POSITION_NAME, 3, ELM_TYPE_POINT, &OFFBlock::positions);
    if (header_.normals)
        writePoints("N", 3, ELM_TYPE_NORMAL, &OFFBlock::normals);
    if (header_.texture)
        writePoints("uv", 2, ELM_TYPE_TEXTURE, &OFFBlock::uvs);
    writeColors(edit, ELM_OWNER_POINT, pointBlocks_);
    writeColors(edit, ELM_OWNER_PRIMITIVE, faceBlocks_);
    edit.commit();
    detail = result;
    return true;
}

// The first line: points, faces, and perhaps edges, which nobody needs.
bool OFFAssembly::countElements()
{
    if (lines_.size() == 0)
        return source_.failAtWord(source_.end(), "the numbers of points and faces");
    const auto read = [](TextCursor &cursor, const char *expected, int64_t &number) {
        cursor.scanner.toWord();
        const char *at = cursor.scanner.at();
        return (cursor.scanner.integer(number) && cursor.scanner.atWordEnd() && number >= 0) || cursor.fail(at, expected);
    };
    const bool good = lines_.forEach(0, 1, [&](TextCursor &cursor) {
        int64_t edges;
        return read(cursor, "the number of points", points_) && read(cursor, "the number of faces", faces_) &&
               (!cursor.scanner.toWord() || read(cursor, "the number of edges", edges));
    });
    const int64_t left = lines_.size() - 1;
    if (good && (points_ > left || faces_ > left - points_ || points_ > INT32_MAX))
        return source_.fail(lines_.find(0), fmt::format("expected a line for each of {} points and {} faces, found {} lines",
                                                        points_, faces_, left));
    return good;
}

void OFFAssembly::warnOfFaces() const
{
    Tally small, mapColors;
    for (const OFFBlock &block : faceBlocks_)
    {
        small.add(block.smallFaces);
        mapColors.add(block.mapColors);
    }
    if (small.count > 0)
        source_.warn(small.first, fmt::format("expected three or more corners, found fewer; {} kept",
                                              counted(small.count, "such face is", "such faces are")));
    if (mapColors.count > 0)
        source_.warn(mapColors.first, fmt::format("expected three or four numbers of a colour, found fewer; {} passed over",
                                                  counted(mapColors.count, "such colour is", "such colours are")));
}

template <class T> std::vector<T> OFFAssembly::flatten(const Blocks &blocks, std::vector<T> OFFBlock::*values) const
{
    std::vector<T> flat;
    for (const OFFBlock &block : blocks)
        flat.insert(flat.end(), (block.*values).begin(), (block.*values).end());
    return flat;
}

void OFFAssembly::write(MOD_Edit &edit, ELM_Owner owner, const char *name, int size, ELM_TypeInfo type,
                        const std::vector<float> &values) const
{
    edit.attribute(owner, name, ELM_STORAGE_REAL32, size, type)->write(0, std::ssize(values) / size, values.data());
}

void OFFAssembly::writeColors(MOD_Edit &edit, ELM_Owner owner, const Blocks &blocks) const
{
    std::vector<float> colors, alphas;
    bool hasColor = false, hasAlpha = false;
    float largest = 0.0f;
    for (const OFFBlock &block : blocks)
    {
        hasColor |= !block.colors.values.empty();
        hasAlpha |= block.colors.alpha;
        largest = std::max(largest, block.colors.largest);
    }
    if (!hasColor)
        return;
    const float divisor = largest > 1.0f ? 255.0f : 1.0f;
    for (const OFFBlock &block : blocks)
    {
        const size_t count = owner == ELM_OWNER_POINT ? block.positions.size() / 3 : block.counts.size();
        for (size_t i = 0; i < count; ++i)
        {
            const int numbers = i < block.colors.numbers.size() ? block.colors.numbers[i] : 0;
            for (int c = 0; c < 4; ++c)
                (c < 3 ? colors : alphas).push_back(c < numbers ? block.colors.values[4 * i + size_t(c)] / divisor : 1.0f);
        }
    }
    write(edit, owner, "Cd", 3, ELM_TYPE_COLOR, colors);
    if (hasAlpha)
        write(edit, owner, "Alpha", 1, ELM_TYPE_NONE, alphas);
}
}  // namespace

bool isOFF(std::string_view text) { return OFFHeader().find(text); }

bool readOFF(std::string_view text, const std::string &name, MOD_DetailHandle &detail, Messages &messages)
{
    try
    {
        const Source source{text, name, messages};
        OFFHeader header;
        // The word may be left out.
        int64_t points;
        if (!header.find(text) && !Scanner({header.end, size_t(source.end() - header.end)}).integer(points))
            return source.failAtWord(header.end, "\"OFF\"");
        return OFFAssembly(source, header).build(detail);
    }
    catch (const std::bad_alloc &)
    {
        return messages.fail(name, {}, "needs more memory than there is");
    }
}
}  // namespace rq::io
