#include <io/detail/OBJTags.h>

#include <algorithm>
#include <array>
#include <map>

#include <fmt/format.h>

#include <io/Scanner.h>

namespace rq::io
{
namespace
{
/// A line "t NAME INTS/REALS/STRINGS VALUES...".
struct Tag
{
    std::string_view name;
    std::vector<int64_t> ints;
    std::vector<float> reals;
    std::vector<std::string_view> strings;

    float real(size_t i) const { return reals[reals.size() == 1 ? 0 : i]; }
};

/// Read what follows the "t".  False where something else stands, which the scanner is left at.
bool readTag(Scanner &scanner, Tag &tag)
{
    tag.name = scanner.word();
    std::array<int64_t, 3> counts{};
    for (size_t i = 0; i < counts.size(); ++i)
        if ((i == 0 ? !scanner.toWord() : !scanner.skip('/')) || !scanner.integer(counts[i]) || counts[i] < 0)
            return false;
    for (int64_t i = 0; i < counts[0]; ++i)
        if (!scanner.toWord() || !scanner.integer(tag.ints.emplace_back()) || !scanner.atWordEnd())
            return false;
    for (int64_t i = 0; i < counts[1]; ++i)
        if (!scanner.toWord() || !scanner.real(tag.reals.emplace_back()))
            return false;
    for (int64_t i = 0; i < counts[2]; ++i)
    {
        if (!scanner.toWord())
            return false;
        tag.strings.push_back(scanner.word());
    }
    return true;
}

class TagWriter
{
public:
    TagWriter(MOD_Edit &edit, const std::vector<OBJBlock> &blocks, const std::vector<int32_t> &points, int64_t pointCount)
        : edit_(edit), points_(points), pointCount_(pointCount)
    {
        for (const OBJBlock &block : blocks)
            counts_.insert(counts_.end(), block.counts.begin(), block.counts.end());
    }

    void add(const Tag &tag)
    {
        const size_t n = tag.ints.size(), reals = tag.reals.size();
        // Points in a row, with a sharpness for each edge or one for all.
        if (tag.name == "crease" && n >= 2 && (reals == 1 || reals == n - 1))
            for (size_t i = 0; i + 1 < n; ++i)
            {
                float &sharpness = creases_[std::minmax(tag.ints[i], tag.ints[i + 1])];
                sharpness = std::max(sharpness, tag.real(i));
            }
        else if (tag.name == "corner" && n >= 1 && (reals == 1 || reals == n))
            for (size_t i = 0; i < n; ++i)
                corners_.emplace_back(tag.ints[i], tag.real(i));
        else if (tag.name == "hole")
            holes_.insert(holes_.end(), tag.ints.begin(), tag.ints.end());
        else if ((tag.name == "interpolateboundary" || tag.name == "facevaryinginterpolateboundary") && n >= 1)
            *edit_.attribute(ELM_OWNER_DETAIL, tag.name, ELM_STORAGE_INT32)->writeAll<int32_t>() = int32_t(tag.ints[0]);
        else if (tag.name == "creasemethod" && !tag.strings.empty())
            method("osd_creasingmethod", tag.strings[0] == "chaikin" ? "chaikin" : "uniform");
        else if (tag.name == "smoothtriangles" && !tag.strings.empty())
            method("osd_trianglesubdiv", tag.strings[0] == "smooth" ? "smooth" : "catmullClark");
    }

    void finish()
    {
        if (!creases_.empty())
            writeCreases();
        if (!corners_.empty())
        {
            float *values = edit_.attribute(ELM_OWNER_POINT, "corner", ELM_STORAGE_REAL32)->writeAll<float>();
            std::fill_n(values, pointCount_, 0.0f);
            for (const auto &[point, sharpness] : corners_)
                if (point >= 0 && point < pointCount_)
                    values[point] = sharpness;
        }
        if (!holes_.empty())
        {
            int32_t *values = edit_.attribute(ELM_OWNER_PRIMITIVE, "hole", ELM_STORAGE_INT32)->writeAll<int32_t>();
            std::fill_n(values, counts_.size(), 0);
            for (const int64_t face : holes_)
                if (face >= 0 && face < std::ssize(counts_))
                    values[face] = 1;
        }
    }

private:
    void writeCreases()
    {
        float *values = edit_.attribute(ELM_OWNER_VERTEX, "crease", ELM_STORAGE_REAL32)->writeAll<float>();
        const int32_t *face = points_.data();
        for (const int32_t count : counts_)
        {
            for (int32_t i = 0; i < count; ++i)
            {
                const int64_t from = face[i], to = face[i + 1 < count ? i + 1 : 0];
                const auto at = creases_.find(std::minmax(from, to));
                *values++ = at == creases_.end() ? 0.0f : at->second;
            }
            face += count;
        }
    }

    void method(std::string_view attribute, std::string_view value)
    {
        ELM_Attribute *text = edit_.stringAttribute(ELM_OWNER_DETAIL, attribute);
        text->strings()->fill(0, 1, text->strings()->add(value));
    }

    MOD_Edit &edit_;
    const std::vector<int32_t> &points_;
    int64_t pointCount_;
    std::vector<int32_t> counts_;
    std::map<std::pair<int64_t, int64_t>, float> creases_;
    std::vector<std::pair<int64_t, float>> corners_;
    std::vector<int64_t> holes_;
};
}  // namespace

void writeOBJTags(MOD_Edit &edit, const OBJSource &source, const std::vector<OBJBlock> &blocks,
                  const std::vector<int32_t> &points, int64_t pointCount, Messages &messages)
{
    if (std::none_of(blocks.begin(), blocks.end(), [](const OBJBlock &block) { return !block.tags.empty(); }))
        return;
    TagWriter writer(edit, blocks, points, pointCount);
    bool warned = false;
    for (const OBJBlock &block : blocks)
        for (const std::string_view line : block.tags)
        {
            Scanner scanner(line);
            Tag tag;
            if (readTag(scanner, tag))
                writer.add(tag);
            else if (!std::exchange(warned, true))
                messages.warn(source.name, placeOf(source.text, scanner.at()),
                              fmt::format("expected NAME INTEGERS/REALS/STRINGS and as many values, found {}; the tag is "
                                          "passed over",
                                          describe(source.text, scanner.at())));
        }
    writer.finish();
}
}  // namespace rq::io
