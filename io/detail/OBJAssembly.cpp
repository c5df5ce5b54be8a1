#include <io/detail/OBJAssembly.h>

#include <algorithm>
#include <numeric>

#include <fmt/format.h>

#include <host/bas/Parallel.h>
#include <io/Scanner.h>
#include <io/detail/Materials.h>
#include <io/detail/OBJMaterials.h>
#include <io/detail/OBJState.h>
#include <io/detail/OBJTags.h>

namespace rq::io
{
namespace
{
// Looking up a corner costs some nanoseconds.
constexpr int64_t kCornersPerTask = 16384;
}  // namespace

const OBJAssembly::Slot OBJAssembly::kPoint{0, "point", &OBJBlock::pointIndices, &Before::points};
const OBJAssembly::Slot OBJAssembly::kUV{1, "uv", &OBJBlock::uvIndices, &Before::uvs};
const OBJAssembly::Slot OBJAssembly::kNormal{2, "normal", &OBJBlock::normalIndices, &Before::normals};

OBJAssembly::OBJAssembly(const OBJSource &source, const std::vector<OBJBlock> &blocks, Messages &messages)
    : source_(source), blocks_(blocks), messages_(messages), before_(1)
{
    before_.reserve(blocks.size() + 1);
    for (const OBJBlock &block : blocks)
    {
        Before next = before_.back();
        next.points += int64_t(block.positions.size() / 3);
        next.uvs += int64_t(block.uvs.size() / 3);
        next.normals += int64_t(block.normals.size() / 3);
        next.corners += int64_t(block.pointIndices.size());
        next.primitives += int64_t(block.counts.size());
        before_.push_back(next);
    }
}

bool OBJAssembly::build(MOD_DetailHandle &detail)
{
    const Before &total = before_.back();
    if (std::max({total.points, total.uvs, total.normals}) > objIndex::kMost)
        return messages_.fail(source_.name, {}, fmt::format("expected at most {} points, found more", objIndex::kMost));

    std::vector<int32_t> points, uvs, normals;
    if (!resolve(kPoint, points) || !resolve(kUV, uvs) || !resolve(kNormal, normals))
        return false;
    if (total.points == 0)
        messages_.warn(source_.name, {}, "expected points, found none");

    MOD_DetailHandle result;
    MOD_Edit edit(result);
    if (!edit.appendPoints(total.points) || !appendPrimitives(edit, points))
        return messages_.fail(source_.name, {}, edit.message());
    writePoints(edit);
    if (!uvs.empty())
    {
        const bool three =
            std::any_of(blocks_.begin(), blocks_.end(), [](const OBJBlock &block) { return block.uvSize == 3; });
        writeCorners(edit, "uv", ELM_TYPE_TEXTURE, three ? 3 : 2, &OBJBlock::uvs, uvs);
    }
    if (!normals.empty())
        writeCorners(edit, "N", ELM_TYPE_NORMAL, 3, &OBJBlock::normals, normals);

    std::vector<int64_t> firstPrimitive;
    for (const Before &before : before_)
        firstPrimitive.push_back(before.primitives);
    writeOBJState(edit, blocks_, firstPrimitive);
    writeOBJTags(edit, source_, blocks_, points, total.points, messages_);
    writeMaterials(edit, readOBJMaterials(source_, blocks_, messages_));
    edit.commit();
    detail = result;
    return true;
}

// Turn what the corners of all blocks refer to into element numbers; nothing when no corner refers to this sort.
bool OBJAssembly::resolve(const Slot &slot, std::vector<int32_t> &elements)
{
    const int64_t total = before_.back().*slot.before;
    if (total == 0 && slot.number != kPoint.number)
    {
        warnOfReferences(slot);
        return true;
    }
    if (std::none_of(blocks_.begin(), blocks_.end(), [&](const OBJBlock &block) { return !(block.*slot.indices).empty(); }))
        return true;

    elements.resize(size_t(before_.back().corners), objIndex::kNone);
    std::vector<int64_t> failed(blocks_.size(), -1);
    host::parallelFor(int64_t(blocks_.size()), 1, [&](int64_t b) {
        const std::vector<int32_t> &indices = blocks_[size_t(b)].*slot.indices;
        const Before &before = before_[size_t(b)];
        for (size_t i = 0; i < indices.size() && failed[size_t(b)] < 0; ++i)
        {
            if (!objIndex::resolve(indices[i], before.*slot.before, total, elements[size_t(before.corners) + i]))
                failed[size_t(b)] = int64_t(i);
        }
    });
    const auto first = std::find_if(failed.begin(), failed.end(), [](int64_t corner) { return corner >= 0; });
    if (first == failed.end())
        return true;
    const char *place = findCorner(blocks_[size_t(first - failed.begin())].text, *first, slot.number);
    return messages_.fail(source_.name, placeOf(source_.text, place), expectation(slot, place));
}

// Corners may name uv or normals that an exporter left out of the whole file: they lose nothing but these.
void OBJAssembly::warnOfReferences(const Slot &slot)
{
    for (const OBJBlock &block : blocks_)
    {
        const std::vector<int32_t> &indices = block.*slot.indices;
        const auto first =
            std::find_if(indices.begin(), indices.end(), [](int32_t index) { return index != objIndex::kNone; });
        if (first == indices.end())
            continue;
        const char *place = findCorner(block.text, first - indices.begin(), slot.number);
        messages_.warn(source_.name, placeOf(source_.text, place), expectation(slot, place) + "; corners get none");
        return;
    }
}

std::string OBJAssembly::expectation(const Slot &slot, const char *place) const
{
    return fmt::format("expected the number of a {}, of which the file has {}, found {}", slot.name,
                       before_.back().*slot.before, describe(source_.text, place));
}

// Primitives of the same kind that follow each other are appended together.
bool OBJAssembly::appendPrimitives(MOD_Edit &edit, const std::vector<int32_t> &points)
{
    std::vector<int32_t> counts;
    counts.reserve(size_t(before_.back().primitives));
    std::vector<std::pair<OBJKind, int64_t>> runs;
    for (size_t b = 0; b < blocks_.size(); ++b)
    {
        counts.insert(counts.end(), blocks_[b].counts.begin(), blocks_[b].counts.end());
        for (const OBJChange &change : blocks_[b].changes)
        {
            if (change.what == OBJChange::Kind && (runs.empty() || runs.back().first != change.kind))
                runs.emplace_back(change.kind, before_[b].primitives + change.primitive);
        }
    }

    const int32_t *corners = points.data();
    for (size_t r = 0; r < runs.size(); ++r)
    {
        const size_t first = size_t(runs[r].second), end = r + 1 < runs.size() ? size_t(runs[r + 1].second) : counts.size();
        const std::span<const int32_t> run(counts.data() + first, end - first);
        const size_t sum = std::accumulate(run.begin(), run.end(), size_t(0));
        if (!appendRun(edit, runs[r].first, run, {corners, sum}))
            return false;
        corners += sum;
    }
    return true;
}

bool OBJAssembly::appendRun(MOD_Edit &edit, OBJKind kind, std::span<const int32_t> counts, std::span<const int32_t> points)
{
    if (kind != OBJKind::Points)
        return edit.appendPolygons(counts, points, kind == OBJKind::Face);
    for (const int32_t count : counts)
    {
        if (!edit.appendParticles(points.first(size_t(count))))
            return false;
        points = points.subspan(size_t(count));
    }
    return true;
}

void OBJAssembly::writePoints(MOD_Edit &edit)
{
    const int64_t count = before_.back().points;
    if (count == 0)
        return;
    const auto write = [&](const char *name, ELM_TypeInfo type, Floats values) {
        float *target = edit.attribute(ELM_OWNER_POINT, name, ELM_STORAGE_REAL32, 3, type)->writeAll<float>();
        host::parallelFor(int64_t(blocks_.size()), 1, [&](int64_t b) {
            const std::vector<float> &block = blocks_[size_t(b)].*values;
            float *end = std::copy(block.begin(), block.end(), target + 3 * before_[size_t(b)].points);
            // What a block leaves out is white: only colours may be shorter.
            std::fill(end, target + 3 * before_[size_t(b) + 1].points, 1.0f);
        });
    };
    write(ELM_POSITION_NAME, ELM_TYPE_POINT, &OBJBlock::positions);
    if (std::any_of(blocks_.begin(), blocks_.end(), [](const OBJBlock &block) { return !block.colors.empty(); }))
        write("Cd", ELM_TYPE_COLOR, &OBJBlock::colors);
}

std::vector<float> OBJAssembly::flatten(Floats values, int64_t count) const
{
    std::vector<float> flat;
    flat.reserve(size_t(3 * count));
    for (const OBJBlock &block : blocks_)
        flat.insert(flat.end(), (block.*values).begin(), (block.*values).end());
    return flat;
}

void OBJAssembly::writeCorners(MOD_Edit &edit, const char *name, ELM_TypeInfo type, int size, Floats values,
                               const std::vector<int32_t> &elements)
{
    const std::vector<float> flat = flatten(values, values == &OBJBlock::uvs ? before_.back().uvs : before_.back().normals);
    float *target = edit.attribute(ELM_OWNER_VERTEX, name, ELM_STORAGE_REAL32, size, type)->writeAll<float>();
    host::parallelFor(int64_t(elements.size()), kCornersPerTask, [&](int64_t corner) {
        const int32_t element = elements[size_t(corner)];
        for (int component = 0; component < size; ++component)
            target[corner * size + component] = element < 0 ? 0.0f : flat[size_t(element) * 3 + size_t(component)];
    });
}
}  // namespace rq::io
